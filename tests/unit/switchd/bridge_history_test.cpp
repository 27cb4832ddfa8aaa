// What only the order of the kernel's messages tells about a bridge.
#include "sources/linux_bridge/bridge_history.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace stpswitch;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr std::chrono::seconds kMaxAge{20};

class HistoryOfABridge : public testing::Test {
 protected:
  HistoryOfABridge() {
    table_.bridge.if_index = 2;
    table_.bridge.bridge = BridgeAttributes();
    table_.bridge.bridge->stp_state = StpState::kKernel;
    table_.bridge.bridge->root_port = 1;
    set_flag(false);
    table_.ports[11] = port(1, PortState::kForwarding);
    table_.ports[12] = port(2, PortState::kForwarding);
    see_table();
  }

  static Link port(uint16_t number, PortState state) {
    Link link;
    link.if_index = 10U + number;
    link.bridge_port = BridgePortAttributes();
    link.bridge_port->number = number;
    link.bridge_port->state = state;
    link.bridge_port->root_block = true;
    link.bridge_port->message_age_timer = 2000;
    return link;
  }

  void set_flag(bool is_up) {
    table_.bridge.bridge->topology_change = false;
    table_.bridge.bridge->topology_change_detected = is_up;
  }

  void see_table() {
    history_.see_bridge(table_.bridge, now_);
    history_.see_ports(table_, now_);
  }

  void see_flag(bool is_up) {
    set_flag(is_up);
    see_table();
  }

  BridgeHistory::Facts facts() const { return history_.facts(kMaxAge, now_); }

  LinkTable table_;
  BridgeHistory history_;
  const BridgeHistory::Time now_{};
};

TEST_F(HistoryOfABridge, HasRootInconsistentPorts) {
  history_.see_port(port(2, PortState::kListening), now_);
  EXPECT_THAT(facts().root_inconsistent, ElementsAre(12U));
}

// Root guard that is switched on at the root port takes effect with the next hello.
TEST_F(HistoryOfABridge, HasNoRootPortThatIsInconsistent) {
  history_.see_port(port(1, PortState::kListening), now_);
  EXPECT_THAT(facts().root_inconsistent, IsEmpty());
  table_.bridge.bridge->root_port = 0;
  history_.see_bridge(table_.bridge, now_);
  history_.see_port(port(1, PortState::kListening), now_);
  EXPECT_THAT(facts().root_inconsistent, ElementsAre(11U));
}

TEST_F(HistoryOfABridge, ForgetsPortsThatHaveLeft) {
  history_.see_port(port(2, PortState::kListening), now_);
  table_.ports.erase(12);
  see_table();
  EXPECT_THAT(facts().root_inconsistent, IsEmpty());
}

TEST_F(HistoryOfABridge, CountsTopologyChanges) {
  see_flag(true);
  EXPECT_EQ(facts().topology_changes, 1U);
  history_.see_port(port(2, PortState::kBlocking), now_);
  EXPECT_EQ(facts().topology_changes, 2U);
  table_.ports[12] = port(2, PortState::kForwarding);  // which no notification told
  see_table();
  EXPECT_EQ(facts().topology_changes, 3U);
  EXPECT_EQ(facts().last_topology_change, now_);
}

TEST_F(HistoryOfABridge, BeginsAnewWithAnotherBridge) {
  table_.bridge.if_index = 3;
  see_flag(true);
  EXPECT_EQ(facts().topology_changes, 0U);
}

TEST_F(HistoryOfABridge, CountsNoTopologyChangesOfOthers) {
  table_.bridge.bridge->stp_state = StpState::kUserSpace;
  see_flag(false);
  see_flag(true);
  table_.bridge.bridge->stp_state = StpState::kKernel;
  see_flag(true);
  EXPECT_EQ(facts().topology_changes, 0U);
}

}  // namespace
