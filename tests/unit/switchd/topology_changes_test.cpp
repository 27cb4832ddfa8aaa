// Topology changes, counted from a flag and the states of ports.
#include "sources/linux_bridge/topology_changes.h"

#include <gtest/gtest.h>

using namespace stpswitch;
using std::chrono::seconds;

namespace {

class CountedTopologyChanges : public testing::Test {
 protected:
  void see_flag(bool is_up) { changes_.see_flag(is_up, now_); }
  void see_port(uint32_t if_index, PortState state) { changes_.see_port(if_index, state, now_); }

  TopologyChanges changes_;
  TopologyChanges::Time now_{};
};

TEST_F(CountedTopologyChanges, AreRisesOfTheFlag) {
  see_flag(false);
  EXPECT_EQ(changes_.count(), 0U);
  EXPECT_EQ(changes_.last(), std::nullopt);
  now_ += seconds(5);
  see_flag(true);
  EXPECT_EQ(changes_.count(), 1U);
  EXPECT_EQ(changes_.last(), TopologyChanges::Time(seconds(5)));
  now_ += seconds(1);
  see_flag(true);
  see_flag(false);
  EXPECT_EQ(changes_.count(), 1U);
  EXPECT_EQ(changes_.last(), TopologyChanges::Time(seconds(5)));
  see_flag(true);
  EXPECT_EQ(changes_.count(), 2U);
  EXPECT_EQ(changes_.last(), TopologyChanges::Time(seconds(6)));
}

TEST_F(CountedTopologyChanges, ArePortsThatBeginOrStopForwardingWhileTheFlagIsUp) {
  see_flag(false);
  see_port(1, PortState::kLearning);
  see_port(1, PortState::kForwarding);
  EXPECT_EQ(changes_.count(), 0U);
  see_flag(true);
  EXPECT_EQ(changes_.count(), 1U);
  see_port(1, PortState::kForwarding);
  see_port(2, PortState::kListening);
  see_port(2, PortState::kLearning);
  EXPECT_EQ(changes_.count(), 1U);
  see_port(2, PortState::kForwarding);
  EXPECT_EQ(changes_.count(), 2U);
  now_ += seconds(3);
  see_port(1, PortState::kDisabled);
  EXPECT_EQ(changes_.count(), 3U);
  EXPECT_EQ(changes_.last(), TopologyChanges::Time(seconds(3)));
}

TEST_F(CountedTopologyChanges, AreNotWhatWasSeenFirst) {
  see_flag(true);
  see_port(1, PortState::kForwarding);
  EXPECT_EQ(changes_.count(), 0U);
  changes_.forget_port(1);
  see_port(1, PortState::kBlocking);
  EXPECT_EQ(changes_.count(), 0U);
  see_flag(false);
  changes_.forget_flag();
  see_flag(true);
  EXPECT_EQ(changes_.count(), 0U);
}

}  // namespace
