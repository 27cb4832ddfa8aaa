// A Linux bridge in the terms of the model.
#include "sources/linux_bridge/bridge_state.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/recorded_links.h"

using namespace stpswitch;
using testing::ElementsAre;
using testing::Key;
using testing::Pair;

namespace {

constexpr TickRates kTickRates{.user = 100, .kernel = 250};
constexpr uint32_t kBridge = 2;
constexpr BridgeId kOwn = {0x8000, {0x02, 0x00, 0x5E, 0x00, 0x53, 0x10}};
constexpr BridgeId kOther = {0x8000, {0x02, 0x00, 0x5E, 0x00, 0x53, 0x11}};
constexpr BridgeId kRoot = {0x1000, {0x02, 0x00, 0x5E, 0x00, 0x53, 0x01}};

// A bridge below a root, with its root port 1 and port 2, both single interfaces.
class StateOfALinuxBridge : public testing::Test {
 protected:
  StateOfALinuxBridge() {
    table_.bridge.if_index = kBridge;
    table_.bridge.name = "br0";
    table_.bridge.bridge = BridgeAttributes{.stp_state = StpState::kKernel,
                                            .priority = 32768,
                                            .bridge_id = kOwn,
                                            .root_id = kRoot,
                                            .root_path_cost = 6,
                                            .root_port = 1,
                                            .max_age = 2000,
                                            .hello_time = 200,
                                            .forward_delay = 1500,
                                            .topology_change = false,
                                            .topology_change_detected = false,
                                            .vlan_filtering = false};
    add_port(1, PortState::kForwarding, kOther, 2, 0x8005);
    add_port(2, PortState::kForwarding, kOwn, 6, 0x8002);
  }

  // Its interface index is ten times its number.
  void add_port(uint16_t number, PortState state, const BridgeId &designated_bridge, uint16_t designated_cost,
                uint16_t designated_port) {
    Link link;
    link.if_index = 10U * number;
    link.has_link = true;
    link.name = "veth" + std::to_string(number);
    link.kind = "veth";
    link.master = kBridge;
    BridgePortAttributes attributes;
    attributes.state = state;
    attributes.designated_bridge = designated_bridge;
    attributes.designated_cost = designated_cost;
    attributes.designated_port = designated_port;
    attributes.number = number;
    attributes.port_id = static_cast<uint16_t>(0x8000 | number);
    attributes.priority = 32;
    attributes.path_cost = 4;
    attributes.root_block = false;
    attributes.designated_root = kRoot;
    link.bridge_port = attributes;
    table_.ports[link.if_index] = link;
  }

  BridgePortAttributes &port(uint32_t number) { return *table_.ports.at(10 * number).bridge_port; }

  BridgeState whole() const { return bridge_state(table_, history_, kTickRates); }
  SwitchState state() const { return whole().state; }
  std::optional<PortRole> role(uint32_t number) const { return state().ports.at(number).role.in(kCistId); }

  LinkTable table_;
  BridgeHistory::Facts history_;
};

TEST_F(StateOfALinuxBridge, HasTheCistAlone) {
  const SwitchState now = state();
  EXPECT_EQ(now.settings.name, "br0");
  EXPECT_EQ(now.settings.mode, SpanningTreeMode::kMst);
  EXPECT_EQ(now.bridge.address, kOwn.address);
  ASSERT_THAT(now.trees, ElementsAre(Key(0U)));
  Tree expected;
  expected.settings.priority = 32768;
  expected.settings.protocol_version = ProtocolVersion::kStp;
  expected.observed.bridge_id = kOwn;
  expected.observed.root_id = kRoot;
  expected.observed.root_cost = 6;
  expected.observed.root_port = 129;
  expected.observed.timers_in_force = {2000, 200, 1500};
  expected.observed.topology_changes = 0;
  EXPECT_EQ(now.trees.at(0), expected);
}

TEST_F(StateOfALinuxBridge, HasItsPorts) {
  const SwitchState now = state();
  EXPECT_TRUE(now.port_channels.empty());
  ASSERT_THAT(now.ports, ElementsAre(Key(1U), Key(2U)));
  Port expected;
  expected.numbers = {
      .if_index = 0x1A000001, .bridge_port = 129, .port_id = 0x8001, .if_mib_index = 10, .own_number = 1};
  expected.name = "veth1";
  expected.vlans = parse_vlans("1");
  expected.path_cost = 4;
  expected.priority = 128;
  expected.root_guard = false;
  expected.link_up = true;
  expected.role.set(0, PortRole::kRoot);
  expected.state.set(0, PortState::kForwarding);
  expected.designated = {kRoot, kOther, 2, 0x8005};
  EXPECT_EQ(now.ports.at(1), expected);
}

TEST_F(StateOfALinuxBridge, CountsHowOftenPortsBeganToForward) {
  table_.ports.at(20).kind = "bond";
  const auto port = [this] { return state().ports.at(1).forward_transitions; };
  const auto channel = [this] { return state().port_channels.at(2).forward_transitions; };
  EXPECT_EQ(port(), std::nullopt);
  EXPECT_EQ(channel(), std::nullopt);
  table_.ports.at(10).forward_transitions = 0;
  table_.ports.at(20).forward_transitions = 0xFFFF'FFFF;
  EXPECT_EQ(port(), 0U);
  EXPECT_EQ(channel(), 0xFFFF'FFFFU);
  // As a Counter32 goes on.
  table_.ports.at(10).forward_transitions = 0x1'0000'0000;
  table_.ports.at(20).forward_transitions = 0xABCD'0000'0007;
  EXPECT_EQ(port(), 0U);
  EXPECT_EQ(channel(), 7U);
  // Of another's spanning tree, nothing that the kernel counted.
  table_.bridge.bridge->stp_state = StpState::kUserSpace;
  EXPECT_EQ(port(), std::nullopt);
  table_.bridge.bridge->stp_state = StpState::kNobody;
  EXPECT_EQ(port(), std::nullopt);
}

// The kernel takes them, and neither a log nor an answer of stp-switchd does.
TEST_F(StateOfALinuxBridge, HasNoNamesThatCannotBePrinted) {
  table_.bridge.name = "br\xFF";
  table_.ports.at(10).name = "\xC3\x28";
  table_.ports.at(20).name = "\x1B[2J";
  const SwitchState now = state();
  EXPECT_EQ(now.settings.name, "br?");
  EXPECT_EQ(now.ports.at(1).name, "?(");
  EXPECT_EQ(now.ports.at(2).name, "?[2J");
}

TEST_F(StateOfALinuxBridge, TellsItsOwnTimersWhereItIsTheRoot) {
  table_.bridge.bridge->root_id = kOwn;
  table_.bridge.bridge->root_port = 0;
  table_.bridge.bridge->root_path_cost = 0;
  const Tree tree = state().trees.at(0);
  EXPECT_EQ(tree.observed.root_port, 0U);
  EXPECT_EQ(tree.settings.timers, (Timers{2000, 200, 1500}));
}

TEST_F(StateOfALinuxBridge, HasItsOwnTimersAsTheKernelTellsThem) {
  EXPECT_EQ(state().trees.at(0).settings.timers, Timers());
  table_.own_timers = {.max_age = 4500, .hello_time = 750, .forward_delay = 1700};
  EXPECT_EQ(state().trees.at(0).settings.timers, (Timers{1800, 300, 1700}));
  EXPECT_EQ(state().trees.at(0).observed.timers_in_force, (Timers{2000, 200, 1500}));
  const auto other = bridge_state(table_, history_, {.user = 1000, .kernel = 300}).state;
  EXPECT_EQ(other.trees.at(0).settings.timers, (Timers{1500, 250, 170}));
}

TEST_F(StateOfALinuxBridge, HasTimersInHundredthsWhateverTheTicks) {
  table_.bridge.bridge->max_age = 0xFFFF'FFFF;
  const auto timers = [this](uint32_t ticks_per_second) {
    return bridge_state(table_, history_, {ticks_per_second, 250}).state.trees.at(0).observed.timers_in_force;
  };
  EXPECT_EQ(timers(1000), (Timers{429496729, 20, 150}));
  EXPECT_EQ(timers(50), (Timers{std::nullopt, 400, 3000}));
  EXPECT_EQ(duration_of(2000, 100), std::chrono::seconds(20));
  EXPECT_EQ(duration_of(0xFFFF'FFFF, 1), std::chrono::seconds(0xFFFF'FFFF));
}

TEST_F(StateOfALinuxBridge, CountsTopologyChanges) {
  history_.topology_changes = 3;
  history_.last_topology_change = BridgeHistory::Time(std::chrono::seconds(7));
  const ObservedTree tree = state().trees.at(0).observed;
  EXPECT_EQ(tree.topology_changes, 3U);
  EXPECT_EQ(tree.last_topology_change, BridgeHistory::Time(std::chrono::seconds(7)));
}

TEST_F(StateOfALinuxBridge, DerivesRoles) {
  add_port(3, PortState::kBlocking, kOther, 2, 0x8003);
  add_port(4, PortState::kBlocking, kOwn, 2, 0x8002);
  add_port(5, PortState::kDisabled, kOwn, 2, 0x8005);
  EXPECT_EQ(role(1), PortRole::kRoot);
  EXPECT_EQ(role(2), PortRole::kDesignated);
  EXPECT_EQ(role(3), PortRole::kAlternate);
  EXPECT_EQ(role(4), PortRole::kBackup);
  EXPECT_EQ(role(5), PortRole::kDisabled);
}

// Another bridge's port may have the number of one's own.
TEST_F(StateOfALinuxBridge, IsDesignatedByBridgeAndPort) {
  port(2).designated_bridge = kOther;
  EXPECT_EQ(role(2), PortRole::kAlternate);
}

TEST_F(StateOfALinuxBridge, HasNoRoleThatTheKernelDoesNotTell) {
  port(2).designated_bridge.reset();
  EXPECT_EQ(role(2), std::nullopt);
  port(1).state.reset();
  EXPECT_EQ(state().ports.at(1).state.in(kCistId), std::nullopt);
  table_.bridge.bridge->root_port.reset();
  EXPECT_EQ(role(1), std::nullopt);
  EXPECT_EQ(state().trees.at(0).observed.root_port, std::nullopt);
  table_.bridge.bridge->root_port = 77;  // which left a moment ago
  EXPECT_EQ(state().trees.at(0).observed.root_port, std::nullopt);
}

// Its netlink attribute ends after 16 bits.
TEST_F(StateOfALinuxBridge, TellsDesignatedCostsOnlyWhereTheyAreWhole) {
  add_port(3, PortState::kBlocking, kOther, 5, 0x8003);
  const auto costs = [this] {
    std::vector<std::optional<uint32_t>> all;
    for (const auto &[number, port] : state().ports) {
      all.push_back(port.designated.cost);
    }
    return all;
  };
  EXPECT_THAT(costs(), ElementsAre(2, 6, 5));
  table_.bridge.bridge->root_path_cost = 0x1'0006;
  EXPECT_THAT(costs(), ElementsAre(0x1'0002, 0x1'0006, std::nullopt));
}

TEST_F(StateOfALinuxBridge, HasPortsWithoutALink) {
  table_.ports.at(20).has_link = false;
  EXPECT_EQ(state().ports.at(2).link_up, false);
}

TEST_F(StateOfALinuxBridge, HasRootGuardAndRootInconsistency) {
  port(2).root_block = true;
  history_.root_inconsistent = {20};
  const SwitchState now = state();
  EXPECT_EQ(now.ports.at(2).root_guard, true);
  TreeSet cist;
  cist.insert(kCistId);
  EXPECT_THAT(now.ports.at(2).inconsistencies, ElementsAre(Pair(Inconsistency::kRoot, cist)));
  EXPECT_THAT(now.ports.at(1).inconsistencies, ElementsAre());
}

TEST_F(StateOfALinuxBridge, HasVlansWhereItFiltersThem) {
  table_.bridge.bridge->vlan_filtering = true;
  table_.ports.at(10).vlans = parse_vlans("1,10-12");
  EXPECT_EQ(print_vlans(state().ports.at(1).vlans), "1,10-12");
  EXPECT_EQ(print_vlans(state().ports.at(2).vlans), "");
}

TEST_F(StateOfALinuxBridge, IsWithoutATreeWhereNobodyRunsOne) {
  table_.bridge.bridge->stp_state = StpState::kNobody;
  const SwitchState now = state();
  EXPECT_EQ(now.settings.name, "br0");
  EXPECT_EQ(now.settings.mode, std::nullopt);
  EXPECT_TRUE(now.trees.empty());
  Port expected;
  expected.numbers = {
      .if_index = 0x1A000002, .bridge_port = 130, .port_id = {}, .if_mib_index = 20, .own_number = 2};
  expected.name = "veth2";
  expected.vlans = parse_vlans("1");
  expected.link_up = true;
  EXPECT_EQ(now.ports.at(2), expected);
}

TEST_F(StateOfALinuxBridge, HasPortStatesOnlyWhereAProgramRunsTheTree) {
  table_.bridge.bridge->stp_state = StpState::kUserSpace;
  history_.root_inconsistent = {20};
  history_.topology_changes = 3;
  const SwitchState now = state();
  EXPECT_EQ(now.settings.mode, SpanningTreeMode::kMst);
  EXPECT_THAT(now.trees, ElementsAre(Pair(0U, Tree())));
  Port expected;
  expected.numbers = {
      .if_index = 0x1A000002, .bridge_port = 130, .port_id = {}, .if_mib_index = 20, .own_number = 2};
  expected.name = "veth2";
  expected.vlans = parse_vlans("1");
  expected.link_up = true;
  expected.state.set(0, PortState::kForwarding);
  EXPECT_EQ(now.ports.at(2), expected);
}

TEST_F(StateOfALinuxBridge, LeavesOutWhatItHasNoNumberFor) {
  table_.ports.at(10).bridge_port->number = 3968;
  table_.ports.at(20).bridge_port->number = 0;
  table_.ports[30] = table_.ports.at(20);
  table_.ports.at(30).bridge_port->number.reset();
  EXPECT_EQ(whole().left_out, 3U);
  EXPECT_TRUE(state().ports.empty());
  table_.ports.at(10).bridge_port->number = 3967;
  EXPECT_EQ(whole().left_out, 2U);
  EXPECT_THAT(state().ports, ElementsAre(Key(3967U)));
}

TEST_F(StateOfALinuxBridge, LeavesOutMembersWithIndexesTooHigh) {
  table_.ports.at(10).kind = "bond";
  Link member;
  member.if_index = 0xFF'FFFF - 3968;
  table_.members[10] = {member};
  EXPECT_THAT(state().ports, ElementsAre(Key(2U), Key(0xFF'FFFFU)));
  ++table_.members[10][0].if_index;
  EXPECT_THAT(state().ports, ElementsAre(Key(2U)));
  EXPECT_EQ(whole().left_out, 1U);
}

TEST(StateOfARecordedLinuxBridge, HasBondsAndTeamsAsPortChannels) {
  const SwitchState now = bridge_state(recorded_table(), {}, kTickRates).state;
  ASSERT_THAT(now.port_channels, ElementsAre(Key(1U), Key(2U)));
  const PortChannel &bond = now.port_channels.at(1);
  EXPECT_EQ(bond.name, "bond0");
  EXPECT_EQ(bond.numbers, (InterfaceNumbers{0x16000001, 4097, 0x8001, 8, 1}));
  EXPECT_EQ(bond.link_up, true);
  EXPECT_EQ(bond.role.in(kCistId), PortRole::kDesignated);
  EXPECT_EQ(bond.state.in(kCistId), PortState::kForwarding);
  EXPECT_EQ(print_vlans(bond.vlans), "4094");
  const PortChannel &team = now.port_channels.at(2);
  EXPECT_EQ(team.name, "team0");
  EXPECT_EQ(team.link_up, false);
  EXPECT_EQ(team.role.in(kCistId), PortRole::kDisabled);
  EXPECT_EQ(team.state.in(kCistId), PortState::kDisabled);
}

TEST(StateOfARecordedLinuxBridge, HasMembersOfPortChannels) {
  const SwitchState now = bridge_state(recorded_table(), {}, kTickRates).state;
  ASSERT_THAT(now.ports, ElementsAre(Key(3U), Key(3968U + 3), Key(3968U + 4), Key(3968U + 5)));
  Port d0;
  d0.numbers = {.if_index = 0x1A000F83, .bridge_port = 0, .port_id = {}, .if_mib_index = 3};
  d0.name = "d0";
  d0.link_up = true;
  d0.channel = 1;
  EXPECT_EQ(now.ports.at(3968 + 3), d0);
  EXPECT_EQ(now.ports.at(3968 + 4).name, "d1");
  EXPECT_EQ(now.ports.at(3968 + 4).channel, 1U);
  EXPECT_EQ(now.ports.at(3968 + 4).link_up, false);
  EXPECT_EQ(now.ports.at(3968 + 5).name, "d2");
  EXPECT_EQ(now.ports.at(3968 + 5).channel, 2U);
  EXPECT_EQ(now.ports.at(3968 + 5).link_up, true);
}

// The carrier of a member may be there, but not what the bond takes for a link.
TEST(StateOfARecordedLinuxBridge, HasMembersDownThatTheBondTakesForDown) {
  LinkTable table = recorded_table();
  table.members.at(8).at(0).mii_link = false;
  EXPECT_EQ(bridge_state(table, {}, kTickRates).state.ports.at(3968 + 3).link_up, false);
}

TEST(StateOfARecordedLinuxBridge, HasVlansOfItsPorts) {
  const SwitchState now = bridge_state(recorded_table(), {}, kTickRates).state;
  EXPECT_EQ(print_vlans(now.ports.at(3).vlans), "1,10-19,30");
  EXPECT_EQ(now.ports.at(3).root_guard, true);
  EXPECT_EQ(now.ports.at(3).priority, 64U);
  EXPECT_EQ(now.ports.at(3).path_cost, 17U);
}

}  // namespace
