// Contexts with the real agent library's registry: what is registered follows what runs.
#include "contexts.h"

#include <numeric>

#include <gmock/gmock.h>

#include "fake_alarms.h"
#include "registered.h"
#include "scripted_bridge.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr size_t kMostParts = 10'000;

class Contexts : public BridgeTest {
 protected:
  static void SetUpTestSuite() { registered::prepare_agent(); }

  void SetUp() override {
    BridgeTest::SetUp();
    fake_agent::reset();
    bridge_.trees.clear();
    fake::platform().writes_trace = false;
  }

  void TearDown() override {
    stpbridge::withdraw_contexts();
    EXPECT_EQ(fake_agent::alarms(), 0U);
    BridgeTest::TearDown();
  }

  void run(const std::vector<uint32_t> &trees) {
    bridge_.trees.clear();
    for (const uint32_t tree : trees) {
      bridge_.trees[tree] = {};
    }
  }

  static std::vector<uint32_t> many_trees(uint32_t count) {
    std::vector<uint32_t> trees(count);
    std::iota(trees.begin(), trees.end(), 1U);
    return trees;
  }

  // As the notification service delivers it.
  static void tell() {
    int status = 7;
    oid trap_oid[MAX_OID_LEN] = {};
    size_t trap_oid_len = 0;
    EXPECT_EQ(stpbridge::follow_trees(nullptr, trap_oid, &trap_oid_len, &status), nullptr);
    EXPECT_EQ(status, 0);
  }

  static size_t follow() {
    tell();
    return fake_agent::fire_alarms(kMostParts);
  }

  static std::vector<uint32_t> vlans() {
    std::vector<uint32_t> found;
    for (uint32_t tree = 0; tree < 4096; ++tree) {
      const std::string bare = registered::names(std::to_string(tree));
      EXPECT_EQ(registered::names("vlan-" + std::to_string(tree)), bare) << tree;
      if (!bare.empty()) {
        EXPECT_EQ(bare, "dot1dBridge") << tree;
        found.push_back(tree);
      }
    }
    return found;
  }

  static std::vector<uint32_t> instances() {
    std::vector<uint32_t> found;
    for (uint32_t tree = 0; tree < 4096; ++tree) {
      const std::string registered = registered::names("mst-" + std::to_string(tree));
      if (!registered.empty()) {
        EXPECT_EQ(registered, "dot1dBridge") << tree;
        found.push_back(tree);
      }
    }
    return found;
  }
};

TEST_F(Contexts, AreNotRegisteredWithinTheNotification) {
  run({1, 20});
  tell();
  EXPECT_EQ(fake_agent::alarms(), 1U);
  EXPECT_EQ(fake_agent::latest_delay_us(), 10'000);
  EXPECT_THAT(vlans(), IsEmpty());
  EXPECT_TRUE(fake_agent::fire_alarm());
  EXPECT_THAT(vlans(), ElementsAre(1, 20));
  EXPECT_THAT(instances(), IsEmpty());
}

TEST_F(Contexts, FollowTreesThatComeAndGo) {
  for (const std::vector<uint32_t> &trees :
       std::vector<std::vector<uint32_t>>{{1},
                                          {1, 20},
                                          {20},
                                          {5, 20, 4094},
                                          {},
                                          {1, 2, 3, 31, 32, 33, 63, 64, 65},
                                          {2, 32, 64},
                                          {4095},
                                          {}}) {
    run(trees);
    follow();
    EXPECT_EQ(vlans(), trees);
  }
}

TEST_F(Contexts, OfMstInstancesBeginWithTheCist) {
  bridge_.has_mst_trees = true;
  run({0, 1, 4094});
  follow();
  EXPECT_THAT(instances(), ElementsAre(0, 1, 4094));
  EXPECT_THAT(vlans(), IsEmpty());
  run({0});
  follow();
  EXPECT_THAT(instances(), ElementsAre(0));
}

TEST_F(Contexts, FollowTheMode) {
  run({1, 20, 30});
  follow();
  bridge_.has_mst_trees = true;
  run({0, 20});
  follow();
  EXPECT_THAT(vlans(), IsEmpty());
  EXPECT_THAT(instances(), ElementsAre(0, 20));
  bridge_.has_mst_trees = false;
  run({20});
  follow();
  EXPECT_THAT(vlans(), ElementsAre(20));
  EXPECT_THAT(instances(), IsEmpty());
}

TEST_F(Contexts, FollowTheModeInTheMiddleOfAPass) {
  run({1, 2, 3, 4, 5});
  tell();
  ASSERT_TRUE(fake_agent::fire_alarm());
  EXPECT_THAT(vlans(), ElementsAre(1, 2));
  bridge_.has_mst_trees = true;
  run({0, 7});
  fake_agent::fire_alarms(kMostParts);
  EXPECT_THAT(vlans(), IsEmpty());
  EXPECT_THAT(instances(), ElementsAre(7));
  follow();
  EXPECT_THAT(instances(), ElementsAre(0, 7));
}

TEST_F(Contexts, OfTwoTreesChangeInAPart) {
  run({1, 2, 3, 4, 5});
  tell();
  for (const std::vector<uint32_t> &so_far : std::vector<std::vector<uint32_t>>{{1, 2}, {1, 2, 3, 4}}) {
    ASSERT_TRUE(fake_agent::fire_alarm());
    EXPECT_EQ(vlans(), so_far);
    EXPECT_EQ(fake_agent::latest_delay_us(), 10'000);
  }
  EXPECT_EQ(fake_agent::fire_alarms(kMostParts), 1U);
  EXPECT_THAT(vlans(), ElementsAre(1, 2, 3, 4, 5));

  run({3});
  tell();
  ASSERT_TRUE(fake_agent::fire_alarm());
  EXPECT_THAT(vlans(), ElementsAre(3, 4, 5));
  EXPECT_EQ(fake_agent::fire_alarms(kMostParts), 2U);
  EXPECT_THAT(vlans(), ElementsAre(3));
}

TEST_F(Contexts, ThatAreThereTakeAPartForEach64Trees) {
  run(many_trees(128));
  EXPECT_EQ(follow(), 65U);
  EXPECT_EQ(follow(), 3U);
  bridge_.trees.erase(128);
  EXPECT_EQ(follow(), 3U) << "to withdraw it takes its turn, too";
  EXPECT_EQ(follow(), 2U);
}

TEST_F(Contexts, ThatChangeBehindAPartAreSeenByAnotherPass) {
  run({100, 101, 102, 103});
  tell();
  ASSERT_TRUE(fake_agent::fire_alarm());
  run({1, 101, 102, 103});
  tell();
  tell();
  EXPECT_EQ(fake_agent::alarms(), 1U);
  EXPECT_EQ(fake_agent::fire_alarms(kMostParts), 4U) << "two for the rest, two from the beginning";
  EXPECT_THAT(vlans(), ElementsAre(1, 101, 102, 103));
}

TEST_F(Contexts, BeginAgainWhereAPassWasCutShort) {
  run({10, 20, 30});
  tell();
  fake_agent::set_refuses_alarms(true);
  ASSERT_TRUE(fake_agent::fire_alarm());
  EXPECT_EQ(fake_agent::alarms(), 0U);
  fake_agent::set_refuses_alarms(false);
  run({5, 20, 30});
  follow();
  EXPECT_THAT(vlans(), ElementsAre(5, 20, 30));
}

TEST_F(Contexts, NeedOnePassWhereThatHasNotBegun) {
  run({1});
  tell();
  tell();
  EXPECT_EQ(fake_agent::alarms(), 1U);
  EXPECT_EQ(fake_agent::fire_alarms(kMostParts), 1U);
}

TEST_F(Contexts, StayWhereNobodyTellsWhatRuns) {
  run({1, 20});
  follow();
  const auto answer = fake::platform().answer;
  fake::platform().writes_trace = true;
  for (const fake::Send &useless : {fake::Send{0, false}, fake::Send{0, true, fake::Attributes{}},
                                    fake::Send{0, true, fake::Attributes{{0x14029001, fake::number(1)}}},
                                    fake::Send{0, true, fake::Attributes{{0x0202B001, fake::number(5)}}}}) {
    fake::platform().answer = [useless](const fake::Request &) { return useless; };
    fake::taken_trace();
    EXPECT_EQ(follow(), 1U);
    EXPECT_THAT(fake::taken_trace(), Not(Contains(HasSubstr("find_running_tree"))));
    EXPECT_THAT(vlans(), ElementsAre(1, 20));
  }
  fake::platform().answer = answer;
  run({20});
  follow();
  EXPECT_THAT(vlans(), ElementsAre(20));
}

TEST_F(Contexts, WaitForWhomDoesNotAnswerInTheMiddleOfAPass) {
  run({1, 2, 3, 4, 5});
  tell();
  ASSERT_TRUE(fake_agent::fire_alarm());
  const auto answer = fake::platform().answer;
  for (const int result : {4, 5, 20}) {
    fake::platform().answer = [result](const fake::Request &) { return fake::Send{result, false}; };
    ASSERT_TRUE(fake_agent::fire_alarm());
    EXPECT_EQ(fake_agent::latest_delay_us(), 10'000'000);
    EXPECT_EQ(fake_agent::alarms(), 1U);
    EXPECT_THAT(vlans(), ElementsAre(1, 2));
  }
  fake::platform().answer = answer;
  fake_agent::fire_alarms(kMostParts);
  EXPECT_THAT(vlans(), ElementsAre(1, 2, 3, 4, 5));
}

TEST_F(Contexts, WaitNoLongerWhereSomebodyTellsOfTrees) {
  run({1, 2, 3});
  const auto answer = fake::platform().answer;
  fake::platform().answer = [](const fake::Request &) { return fake::Send{5, false}; };
  tell();
  ASSERT_TRUE(fake_agent::fire_alarm());
  ASSERT_EQ(fake_agent::latest_delay_us(), 10'000'000);
  fake::platform().answer = answer;
  tell();
  EXPECT_EQ(fake_agent::alarms(), 1U);
  EXPECT_EQ(fake_agent::latest_delay_us(), 10'000);
  EXPECT_EQ(fake_agent::fire_alarms(kMostParts), 2U);
  EXPECT_THAT(vlans(), ElementsAre(1, 2, 3));
}

TEST_F(Contexts, StayWhereTheAnswerCannotBe) {
  run({5, 20});
  follow();
  fake::platform().writes_trace = true;
  struct Answer {
    uint32_t tree;
    uint32_t mode;
  };
  for (const Answer &rogue : {Answer{4096, 5}, Answer{0xFFFFFFFF, 5}, Answer{5, 3}, Answer{5, 0}}) {
    fake::platform().answer = [rogue](const fake::Request &) {
      return fake::Send{
          0, true,
          fake::Attributes{{0x14029001, fake::number(rogue.tree)}, {0x0202B001, fake::number(rogue.mode)}}};
    };
    fake::taken_trace();
    EXPECT_EQ(follow(), 1U);
    EXPECT_THAT(fake::taken_trace(),
                Contains(HasSubstr("find_running_tree: asked for a tree from 0 on, got ")));
    EXPECT_THAT(vlans(), ElementsAre(5, 20));
  }
}

TEST_F(Contexts, AreNotLookedForInACircle) {
  fake::platform().answer = [](const fake::Request &) {
    return fake::Send{0, true,
                      fake::Attributes{{0x14029001, fake::number(7)}, {0x0202B001, fake::number(5)}}};
  };
  EXPECT_EQ(follow(), 1U);
  EXPECT_THAT(vlans(), ElementsAre(7));
}

TEST_F(Contexts, ThatTheAgentRefusesAreTriedAgain) {
  fake::platform().writes_trace = true;
  for (const size_t accepted : {0U, 1U}) {
    run({1, 20});
    fake_agent::refuse_registration_after(accepted);
    fake::taken_trace();
    follow();
    EXPECT_THAT(fake::taken_trace(),
                Contains("log(0x00730000, 100) \"step: the agent refuses the contexts of tree 1\\n\""));
    EXPECT_THAT(vlans(), ElementsAre(20));
    follow();
    EXPECT_THAT(vlans(), ElementsAre(1, 20));
    run({});
    follow();
  }
}

TEST_F(Contexts, OfAnMstInstanceThatTheAgentRefusesIsTriedAgain) {
  bridge_.has_mst_trees = true;
  run({0, 20});
  fake_agent::refuse_registration_after(0);
  follow();
  EXPECT_THAT(instances(), ElementsAre(20));
  follow();
  EXPECT_THAT(instances(), ElementsAre(0, 20));
  EXPECT_THAT(vlans(), IsEmpty());
}

TEST_F(Contexts, FollowTheNextNotificationWhereNoAlarmCanBeSet) {
  run({1});
  fake::platform().writes_trace = true;
  fake_agent::set_refuses_alarms(true);
  EXPECT_EQ(follow(), 0U);
  EXPECT_THAT(fake::taken_trace(),
              Contains(HasSubstr("wait_for_next_part: the agent has no memory for an alarm")));
  EXPECT_THAT(vlans(), IsEmpty());
  fake_agent::set_refuses_alarms(false);
  follow();
  EXPECT_THAT(vlans(), ElementsAre(1));
}

TEST_F(Contexts, AreWithdrawnInTheMiddleOfAPass) {
  run({1, 2, 3, 4, 5});
  tell();
  fake_agent::fire_alarm();
  tell();
  stpbridge::withdraw_contexts();
  EXPECT_EQ(fake_agent::alarms(), 0U);
  EXPECT_THAT(vlans(), IsEmpty());
  EXPECT_EQ(follow(), 3U) << "from the beginning, and once";
  EXPECT_THAT(vlans(), ElementsAre(1, 2, 3, 4, 5));
}

TEST_F(Contexts, TheQuestionsOfAPass) {
  run({2, 9});
  fake::platform().writes_trace = true;
  follow();
  std::vector<std::string> keys;
  for (const std::string &line : fake::taken_trace()) {
    if (line.starts_with("cmd_req_cmdId_set") || line.starts_with("cmd_req_action_set") ||
        line.starts_with("cmd_req_attr_add")) {
      keys.push_back(line);
    }
  }
  EXPECT_THAT(keys, ElementsAre("cmd_req_cmdId_set(request, 130)", "cmd_req_action_set(request, 1)",
                                "cmd_req_cmdId_set(request, 130)", "cmd_req_action_set(request, 3)",
                                "cmd_req_attr_add(request, 0x130200B4, 00000000010000000200000002000000)",
                                "cmd_req_cmdId_set(request, 130)", "cmd_req_action_set(request, 3)",
                                "cmd_req_attr_add(request, 0x130200B4, 00000000010000000900000009000000)"));
}

TEST_F(Contexts, OfManyTrees) {
  const std::vector<uint32_t> trees = many_trees(500);
  run(trees);
  follow();
  EXPECT_EQ(vlans(), trees);
  stpbridge::withdraw_contexts();
  EXPECT_THAT(vlans(), IsEmpty());
}

}  // namespace
