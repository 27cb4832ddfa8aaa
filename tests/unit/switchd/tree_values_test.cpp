// Where a switch stands in its trees, where that is stated and where it follows.
#include "model/tree_values.h"

#include <gtest/gtest.h>

#include "support/states.h"

using namespace stpswitch;

namespace {

constexpr uint32_t kPort = 0x1A000000;

// Three ports, in VLAN 1.
SwitchState three_ports() {
  SwitchState state = empty_switch();
  state.bridge.address = MacAddress{0x00, 0x00, 0x5E, 0x00, 0x53, 0x10};
  for (uint32_t number = 1; number <= 3; ++number) {
    port(state, number);
  }
  return state;
}

// The same, with a root port and an alternate port in the CIST.
SwitchState below_the_root() {
  SwitchState state = three_ports();
  port(state, 2).role.exceptions = {{PortRole::kRoot, parse_trees("0")}};
  port(state, 2).path_cost = 2000;
  port(state, 3).role.exceptions = {{PortRole::kAlternate, parse_trees("0")}};
  return state;
}

TreeValues values_of(const SwitchState &state, uint32_t tree) {
  RootSearch root;
  const BridgePorts ports = bridge_ports(state);
  for (const auto &[if_index, port] : ports) {
    root.add(role_in(tree, port), port);
  }
  return tree_values(state, root, tree);
}

struct PortValues {
  std::optional<PortRole> role;
  std::optional<PortState> state;
  std::optional<uint32_t> port_id;
  Designated designated;
};

PortValues port_values_of(const SwitchState &state, uint32_t tree, uint32_t number) {
  const BridgePort port = bridge_ports(state).at(kPort + number);
  const Interface &interface = *port.interface;
  bool is_blocked = false;
  for (const auto &[kind, trees] : interface.inconsistencies) {
    is_blocked = is_blocked || trees.contains(tree);
  }
  const std::optional<PortRole> role = role_in(tree, port);
  return {role, port_state(role, interface.state.in(tree), is_blocked), port_id(interface),
          designated_values(values_of(state, tree).observed, role, interface)};
}

std::string text_of(const std::optional<BridgeId> &id) { return id ? print_bridge_id(*id) : "unknown"; }

TEST(TreeValues, AreThoseOfTheRootWithoutARootPort) {
  const TreeValues values = values_of(three_ports(), 0);
  EXPECT_EQ(text_of(values.observed.bridge_id), "8000.00005e005310");
  EXPECT_EQ(text_of(values.observed.root_id), "8000.00005e005310");
  EXPECT_EQ(values.observed.root_cost, 0U);
  EXPECT_EQ(values.observed.root_port, 0U);
  EXPECT_EQ(values.observed.timers_in_force, (Timers{2000, 200, 1500}));
  EXPECT_EQ(values.settings.timers, (Timers{2000, 200, 1500}));
  EXPECT_EQ(values.settings.hold_count, 6U);
  EXPECT_EQ(values.settings.protocol_version, ProtocolVersion::kRstp);
}

TEST(TreeValues, FollowFromTheRootPort) {
  SwitchState state = below_the_root();
  state.bridge.root.timers_in_force = {1000, 100, 700};
  const TreeValues values = values_of(state, 0);
  EXPECT_EQ(text_of(values.observed.bridge_id), "8000.00005e005310");
  EXPECT_EQ(text_of(values.observed.root_id), "6000.00005e005301");
  EXPECT_EQ(values.observed.root_cost, 2000U);
  EXPECT_EQ(values.observed.root_port, 130U);
  EXPECT_EQ(values.observed.timers_in_force, (Timers{1000, 100, 700}));
  EXPECT_EQ(values.settings.timers, (Timers{2000, 200, 1500}));
  port(state, 2).designated.cost = 500;
  EXPECT_EQ(values_of(state, 0).observed.root_cost, 2500U);
}

TEST(TreeValues, HaveTheTreesNumberInIdentifiers) {
  SwitchState state = below_the_root();
  state.mst_instances[9].vlans = parse_vlans("1");
  EXPECT_EQ(text_of(values_of(state, 9).observed.bridge_id), "8009.00005e005310");
  EXPECT_EQ(text_of(values_of(state, 9).observed.root_id), "8009.00005e005310");
  port(state, 2).role.exceptions = {{PortRole::kRoot, parse_trees("9")}};
  EXPECT_EQ(text_of(values_of(state, 9).observed.root_id), "6009.00005e005301");
}

TEST(TreeValues, AreTheTreesOwnWhereTheyAreStated) {
  SwitchState state = below_the_root();
  Tree &tree = state.trees[0];
  tree.settings = {4096, {601, 101, 401}, 3, ProtocolVersion::kStp};
  tree.observed.bridge_id = parse_bridge_id("1000.00005e0053aa");
  tree.observed.root_id = parse_bridge_id("0001.00005e0053bb");
  tree.observed.root_cost = 77;
  tree.observed.root_port = 131;
  tree.observed.timers_in_force = {602, 102, 402};
  tree.observed.topology_changes = 5;
  const TreeValues values = values_of(state, 0);
  EXPECT_EQ(values.settings.priority, 4096U);
  EXPECT_EQ(values.settings.timers, (Timers{601, 101, 401}));
  EXPECT_EQ(values.settings.hold_count, 3U);
  EXPECT_EQ(values.settings.protocol_version, ProtocolVersion::kStp);
  EXPECT_EQ(text_of(values.observed.bridge_id), "1000.00005e0053aa");
  EXPECT_EQ(text_of(values.observed.root_id), "0001.00005e0053bb");
  EXPECT_EQ(values.observed.root_cost, 77U);
  EXPECT_EQ(values.observed.root_port, 131U);
  EXPECT_EQ(values.observed.timers_in_force, (Timers{602, 102, 402}));
  EXPECT_EQ(values.observed.topology_changes, 5U);
}

TEST(TreeValues, AreUnknownWhereNothingTellsThem) {
  SwitchState state;
  state.settings.mode = SpanningTreeMode::kMst;
  state.ports[1].numbers = {kPort + 1, 129, std::nullopt, std::nullopt};
  const TreeValues values = values_of(state, 0);
  EXPECT_EQ(values.observed.bridge_id, std::nullopt);
  EXPECT_EQ(values.observed.root_id, std::nullopt);
  EXPECT_EQ(values.observed.root_cost, std::nullopt);
  EXPECT_EQ(values.observed.root_port, std::nullopt);
  EXPECT_EQ(values.observed.timers_in_force, Timers());
  const PortValues port = port_values_of(state, 0, 1);
  EXPECT_EQ(port.role, std::nullopt);
  EXPECT_EQ(port.state, std::nullopt);
  EXPECT_EQ(port.port_id, std::nullopt);
  EXPECT_EQ(port.designated, Designated());
}

TEST(TreeValues, AreUnknownWithoutPortsAndIdentifier) {
  SwitchState state;
  state.settings.mode = SpanningTreeMode::kMst;
  state.trees[0] = {};
  const TreeValues values = values_of(state, 0);
  EXPECT_EQ(values.observed.root_id, std::nullopt);
  EXPECT_EQ(values.observed.root_cost, std::nullopt);
  EXPECT_EQ(values.observed.root_port, std::nullopt);
}

TEST(TreeValues, HaveNoRootPortThatNobodyKnowsOfToAForeignRoot) {
  SwitchState state = three_ports();
  state.trees[0].observed.root_id = parse_bridge_id("1000.00005e0053bb");
  EXPECT_EQ(values_of(state, 0).observed.root_port, std::nullopt);
  EXPECT_EQ(values_of(state, 0).observed.root_cost, std::nullopt);
}

TEST(TreePortValues, AreTheSwitchsOwnOnADesignatedPort) {
  const PortValues values = port_values_of(below_the_root(), 0, 1);
  EXPECT_EQ(values.role, PortRole::kDesignated);
  EXPECT_EQ(values.state, PortState::kForwarding);
  EXPECT_EQ(values.port_id, 0x8081U);
  EXPECT_EQ(text_of(values.designated.root), "6000.00005e005301");
  EXPECT_EQ(text_of(values.designated.bridge), "8000.00005e005310");
  EXPECT_EQ(values.designated.cost, 2000U);
  EXPECT_EQ(values.designated.port, 0x8081U);
}

TEST(TreePortValues, AreWhatIsHeardOnARootPort) {
  SwitchState state = below_the_root();
  const PortValues direct = port_values_of(state, 0, 2);
  EXPECT_EQ(direct.role, PortRole::kRoot);
  EXPECT_EQ(direct.state, PortState::kForwarding);
  EXPECT_EQ(text_of(direct.designated.root), "6000.00005e005301");
  EXPECT_EQ(text_of(direct.designated.bridge), "6000.00005e005301");
  EXPECT_EQ(direct.designated.cost, 0U);
  EXPECT_EQ(direct.designated.port, 0x8001U);
  port(state, 2).designated = {std::nullopt, parse_bridge_id("7000.00005e005302"), 300, 0x8003};
  const PortValues behind = port_values_of(state, 0, 2);
  EXPECT_EQ(text_of(behind.designated.root), "6000.00005e005301");
  EXPECT_EQ(text_of(behind.designated.bridge), "7000.00005e005302");
  EXPECT_EQ(behind.designated.cost, 300U);
  EXPECT_EQ(behind.designated.port, 0x8003U);
  port(state, 2).designated.bridge.reset();
  EXPECT_EQ(port_values_of(state, 0, 2).designated.bridge, std::nullopt);
}

TEST(TreePortValues, HaveTheStateOfTheRoleUnlessItIsStated) {
  SwitchState state = below_the_root();
  EXPECT_EQ(port_values_of(state, 0, 3).state, PortState::kBlocking);
  port(state, 3).state.exceptions = {{PortState::kLearning, parse_trees("0")}};
  EXPECT_EQ(port_values_of(state, 0, 3).state, PortState::kLearning);
  port(state, 1).inconsistencies = {{Inconsistency::kRoot, parse_trees("0")}};
  EXPECT_EQ(port_values_of(state, 0, 1).state, PortState::kBlocking);
  port(state, 3).link_up = false;
  EXPECT_EQ(port_values_of(state, 0, 3).role, PortRole::kDisabled);
  EXPECT_EQ(port_values_of(state, 0, 3).state, PortState::kDisabled);
  EXPECT_EQ(port_values_of(state, 0, 3).designated.port, 0x8083U);
}

TEST(TreePortValues, HaveThePortIdentifierThatIsStated) {
  SwitchState state = three_ports();
  port(state, 1).priority = 240;
  EXPECT_EQ(port_values_of(state, 0, 1).port_id, 0xF081U);
  port(state, 1).numbers.port_id = 0x8402;
  EXPECT_EQ(port_values_of(state, 0, 1).port_id, 0x8402U);
}

}  // namespace
