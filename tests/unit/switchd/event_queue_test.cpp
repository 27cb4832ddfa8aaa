// Events that wait: their order, the bound, and what is left when it is reached.
#include "server/event_queue.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <tuple>
#include <vector>

using namespace stpswitch;

namespace {

constexpr uint32_t kPort = 0x1A000000;

InconsistencyEvent event(uint32_t tree, uint32_t state, uint32_t if_index = kPort,
                         InconsistencyEventKind kind = InconsistencyEventKind::kLoop) {
  return {kind, tree, if_index, state, SpanningTreeMode::kMst};
}

// As many events of different keys as there is room for: trees 1, 2, and so on, in state 1.
void fill(EventQueue *queue) {
  for (uint32_t tree = 1; tree <= EventQueue::kRoom; ++tree) {
    queue->push(event(tree, 1));
  }
}

struct TreeState {
  uint32_t tree;
  uint32_t state;
  bool operator==(const TreeState &) const = default;
};

std::vector<TreeState> take_all(EventQueue *queue) {
  std::vector<TreeState> taken;
  for (; !queue->is_empty(); queue->pop()) {
    const auto &front = std::get<InconsistencyEvent>(queue->front());
    taken.push_back({front.tree, front.state});
  }
  return taken;
}

TEST(EventQueues, StartEmpty) {
  EventQueue queue;
  EXPECT_TRUE(queue.is_empty());
  EXPECT_EQ(queue.size(), 0U);
  EXPECT_EQ(queue.take_replaced(), 0U);
}

TEST(EventQueues, KeepEveryEventAndTheOrderWhileThereIsRoom) {
  EventQueue queue;
  std::vector<TreeState> pushed;
  for (uint32_t i = 0; i < EventQueue::kRoom; ++i) {
    pushed.push_back({i % 3, 1 + i % 2});
    queue.push(event(pushed.back().tree, pushed.back().state));
  }
  EXPECT_EQ(queue.size(), EventQueue::kRoom);
  EXPECT_EQ(take_all(&queue), pushed);
  EXPECT_EQ(queue.take_replaced(), 0U);
}

TEST(EventQueues, KeepAllOfAnEvent) {
  EventQueue queue;
  queue.push(InconsistencyEvent{InconsistencyEventKind::kPvidAndType, 4094, 369098752, 3,
                                SpanningTreeMode::kRapidPvst});
  const auto &front = std::get<InconsistencyEvent>(queue.front());
  EXPECT_EQ(front.kind, InconsistencyEventKind::kPvidAndType);
  EXPECT_EQ(front.tree, 4094U);
  EXPECT_EQ(front.if_index, 369098752U);
  EXPECT_EQ(front.state, 3U);
  EXPECT_EQ(front.mode, SpanningTreeMode::kRapidPvst);
}

TEST(EventQueues, ReplaceAWaitingEventOfTheKeyWhenFull) {
  EventQueue queue;
  fill(&queue);
  queue.push(event(2, 2));
  EXPECT_EQ(queue.size(), EventQueue::kRoom);
  EXPECT_EQ(queue.take_replaced(), 1U);
  const std::vector<TreeState> taken = take_all(&queue);
  EXPECT_EQ(taken.at(0), (TreeState{1, 1}));
  EXPECT_EQ(taken.at(1), (TreeState{2, 2}));
  EXPECT_EQ(taken.at(2), (TreeState{3, 1}));
}

TEST(EventQueues, ReplaceTheLatestOfSeveralWaitingEventsOfAKey) {
  EventQueue queue;
  queue.push(event(1, 1));
  queue.push(event(1, 2));
  fill(&queue);
  const size_t size = queue.size();
  queue.push(event(1, 7));
  EXPECT_EQ(queue.size(), size);
  const std::vector<TreeState> taken = take_all(&queue);
  EXPECT_EQ(taken.at(0), (TreeState{1, 1}));
  EXPECT_EQ(taken.at(1), (TreeState{1, 2}));
  EXPECT_EQ(taken.at(2), (TreeState{1, 7})) << "the filling's, replaced";
}

TEST(EventQueues, KeepTheLatestEventOfATreeWhenFull) {
  EventQueue queue;
  fill(&queue);
  queue.push(TreeEvent{TreeEventKind::kTopologyChange, 1, 129, 0, SpanningTreeMode::kMst});
  queue.push(TreeEvent{TreeEventKind::kNewRoot, 1, 0, 0, SpanningTreeMode::kMst});
  queue.push(TreeEvent{TreeEventKind::kTopologyChange, 1, 130, 0, SpanningTreeMode::kMst});
  EXPECT_EQ(queue.size(), EventQueue::kRoom + 2);
  EXPECT_EQ(queue.take_replaced(), 1U);
  for (size_t i = 0; i < EventQueue::kRoom; ++i) {
    queue.pop();
  }
  EXPECT_EQ(std::get<TreeEvent>(queue.front()).port, 130U);
}

TEST(EventQueues, TellKindTreeAndInterfaceApartWhenFull) {
  EventQueue queue;
  fill(&queue);
  queue.push(event(1, 5, kPort + 1));
  queue.push(event(1, 6, kPort, InconsistencyEventKind::kRoot));
  queue.push(event(EventQueue::kRoom + 1, 7));
  EXPECT_EQ(queue.size(), EventQueue::kRoom + 3) << "none of these keys waited";
  EXPECT_EQ(queue.take_replaced(), 0U);
  queue.push(event(1, 8, kPort + 1));
  queue.push(event(1, 9, kPort, InconsistencyEventKind::kRoot));
  queue.push(event(1, 10));
  EXPECT_EQ(queue.size(), EventQueue::kRoom + 3);
  EXPECT_EQ(queue.take_replaced(), 3U);
  const std::vector<TreeState> taken = take_all(&queue);
  EXPECT_EQ(taken.at(0).state, 10U);
  EXPECT_EQ(taken.at(EventQueue::kRoom).state, 8U);
  EXPECT_EQ(taken.at(EventQueue::kRoom + 1).state, 9U);
  EXPECT_EQ(taken.at(EventQueue::kRoom + 2).state, 7U);
}

TEST(EventQueues, AppendAKeyThatNoLongerWaitsWhenFull) {
  EventQueue queue;
  fill(&queue);
  queue.pop();
  queue.push(event(5000, 1));
  ASSERT_EQ(queue.size(), EventQueue::kRoom);
  queue.push(event(1, 2));
  EXPECT_EQ(queue.take_replaced(), 0U);
  const std::vector<TreeState> taken = take_all(&queue);
  EXPECT_EQ(taken.front(), (TreeState{2, 1}));
  EXPECT_EQ(taken.back(), (TreeState{1, 2}));
}

TEST(EventQueues, KeepEveryEventAgainWhenThereIsRoomAgain) {
  EventQueue queue;
  fill(&queue);
  queue.push(event(1, 2));
  take_all(&queue);
  queue.push(event(1, 1));
  queue.push(event(1, 2));
  EXPECT_EQ(take_all(&queue), (std::vector<TreeState>{{1, 1}, {1, 2}}));
}

TEST(EventQueues, CountTheReplacedOnceOnly) {
  EventQueue queue;
  fill(&queue);
  for (uint32_t i = 0; i < 10; ++i) {
    queue.push(event(1 + i, 2));
  }
  EXPECT_EQ(queue.take_replaced(), 10U);
  EXPECT_EQ(queue.take_replaced(), 0U);
}

TEST(EventQueues, DoNotGrowWithAStormOfTheSameKeys) {
  constexpr uint32_t kEvents = 100000;
  constexpr uint32_t kKeys = 50;
  EventQueue queue;
  for (uint32_t i = 0; i < kEvents; ++i) {
    queue.push(event(i % kKeys, i));
  }
  EXPECT_EQ(queue.size(), EventQueue::kRoom);
  EXPECT_EQ(queue.take_replaced(), kEvents - EventQueue::kRoom);
}

// Whoever pushes and takes in whatever order: for each key, the last that is taken is the last that was
// pushed, what is taken was pushed in that order, and nothing is counted wrongly.
class EventQueuesUnderStorm : public testing::TestWithParam<uint32_t> {};

TEST_P(EventQueuesUnderStorm, NeverLoseAFinalState) {
  constexpr uint32_t kTurns = 60000;
  constexpr uint32_t kKeys = 1500;
  std::mt19937 numbers(GetParam());
  EventQueue queue;
  std::map<uint32_t, uint32_t> pushed;
  std::map<uint32_t, uint32_t> taken;
  uint64_t taken_count = 0;
  uint32_t pushed_count = 0;
  const auto take = [&] {
    const auto &front = std::get<InconsistencyEvent>(queue.front());
    ASSERT_LT(taken[front.tree], front.state) << "order, tree " << front.tree;
    taken[front.tree] = front.state;
    queue.pop();
    ++taken_count;
  };
  for (uint32_t turn = 0; turn < kTurns; ++turn) {
    // Long stretches in which more is pushed than taken, and the other way round.
    const bool is_pushing = numbers() % 8 < (turn / 5000 % 2 == 0 ? 7U : 2U);
    if (is_pushing) {
      const auto tree = static_cast<uint32_t>(numbers() % kKeys);
      pushed[tree] = ++pushed_count;
      queue.push(event(tree, pushed_count));
    } else if (!queue.is_empty()) {
      take();
    }
    ASSERT_LE(queue.size(), EventQueue::kRoom + kKeys);
  }
  while (!queue.is_empty()) {
    take();
  }
  EXPECT_EQ(taken, pushed);
  const uint64_t replaced = queue.take_replaced();
  EXPECT_GT(replaced, 0U);
  EXPECT_EQ(taken_count + replaced, pushed_count);
}

INSTANTIATE_TEST_SUITE_P(Seeds, EventQueuesUnderStorm, testing::Values(1U, 2U, 3U, 4U),
                         testing::PrintToStringParamName());

}  // namespace
