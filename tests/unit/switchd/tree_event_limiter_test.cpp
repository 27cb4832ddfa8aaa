// How often events of trees are told. However slow the machine is, none comes too soon.
#include "server/tree_event_limiter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <variant>
#include <vector>

using namespace stpswitch;
using testing::ElementsAre;

namespace {

TreeEvent change(uint32_t tree, uint32_t port) {
  return {TreeEventKind::kTopologyChange, tree, port, 0, SpanningTreeMode::kMst};
}
constexpr TreeEvent kTrees{TreeEventKind::kTrees, 0, 0, 0, std::nullopt};
constexpr TreeEvent kNewRoot{TreeEventKind::kNewRoot, 1, 0, 0, SpanningTreeMode::kMst};

class TreeEventLimiters : public testing::Test {
 protected:
  std::vector<TreeEvent> take_told() { return std::exchange(told_, {}); }

  void wait_until_told() {
    while (told_.empty()) {
      event_base_loop(loop_.base(), EVLOOP_ONCE);
    }
  }

  EventLoop loop_;
  std::vector<TreeEvent> told_;
  std::chrono::steady_clock::time_point told_at_;
  TreeEventLimiter limiter_{&loop_, [this](const std::vector<SwitchEvent> &events) {
                              for (const SwitchEvent &event : events) {
                                told_.push_back(std::get<TreeEvent>(event));
                              }
                              told_at_ = std::chrono::steady_clock::now();
                            }};
};

TEST_F(TreeEventLimiters, TellTheFirstOfEachKindAndTreeAtOnce) {
  limiter_.take({change(1, 5), kNewRoot, change(2, 6)});
  EXPECT_THAT(take_told(), ElementsAre(change(1, 5), kNewRoot, change(2, 6)));
}

TEST_F(TreeEventLimiters, TellTheLatestOfThoseThatComeTooSoonWhenItsSecondHasPassed) {
  const auto begin = std::chrono::steady_clock::now();
  limiter_.take({change(1, 5), change(1, 6), change(1, 7), change(2, 8)});
  EXPECT_THAT(take_told(), ElementsAre(change(1, 5), change(2, 8)));
  wait_until_told();
  EXPECT_THAT(take_told(), ElementsAre(change(1, 7)));
  EXPECT_GE(told_at_ - begin, TreeEventLimiter::kPause);
  // That was told now, so that the next one waits again. Where the test itself took a second, it need not.
  limiter_.take({change(1, 9)});
  wait_until_told();
  EXPECT_THAT(take_told(), ElementsAre(change(1, 9)));
  EXPECT_GE(told_at_ - begin, 2 * TreeEventLimiter::kPause);
}

TEST_F(TreeEventLimiters, DoNotHoldBackThatThereAreOtherTrees) {
  limiter_.take({kTrees});
  limiter_.take({kTrees, kTrees});
  EXPECT_THAT(take_told(), ElementsAre(kTrees, kTrees, kTrees));
}

TEST_F(TreeEventLimiters, WakeNobodyWhereNothingWaits) {
  limiter_.take({change(1, 5)});
  EXPECT_EQ(event_base_loop(loop_.base(), EVLOOP_NONBLOCK), 1) << "there is no event to wait for";
}

}  // namespace
