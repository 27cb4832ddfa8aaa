#include "model/derived.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/switch.h"
#include "support/octets.h"
#include "support/states.h"

using namespace stpswitch;
using testing::ElementsAre;
using testing::Pair;

namespace {

// The value that IEEE 802.1Q publishes for a table that maps all VLANs to the CIST.
TEST(MstConfigDigest, OfAnUnmappedTableIsThePublishedOne) {
  EXPECT_EQ(hex(mst_config_digest(empty_switch()).value()), "ac36177f50283cd4b83821d8ab26de62");
}

// Computed with another implementation of HMAC-MD5.
TEST(MstConfigDigest, CoversEveryMapping) {
  SwitchState state = empty_switch();
  state.mst_instances[1].vlans = parse_vlans("10-19,30");
  state.mst_instances[2].vlans = parse_vlans("20-29");
  state.mst_instances[10].vlans = parse_vlans("100-199");
  EXPECT_EQ(hex(mst_config_digest(state).value()), "43bb10a0c6a64cb320ea2a463b7bfa52");
}

TEST(MstConfigDigest, TakesInstanceNumbersMostSignificantOctetFirst) {
  SwitchState state = empty_switch();
  state.mst_instances[4094].vlans = parse_vlans("4094");
  state.mst_instances[256].vlans = parse_vlans("1");
  EXPECT_EQ(hex(mst_config_digest(state).value()), "033b8e20238b939d4b856dc4b8d9c349");
}

PathCostMethod operational_method(SpanningTreeMode mode, PathCostMethod configured) {
  Settings settings;
  settings.mode = mode;
  settings.path_cost_method = configured;
  return operational_path_cost_method(settings).value();
}

TEST(PathCostMethod, IsLongInMstModeWhateverIsConfigured) {
  EXPECT_EQ(operational_method(SpanningTreeMode::kMst, PathCostMethod::kShort), PathCostMethod::kLong);
  EXPECT_EQ(operational_method(SpanningTreeMode::kMst, PathCostMethod::kLong), PathCostMethod::kLong);
}

TEST(PathCostMethod, IsTheConfiguredOneInRapidPvstMode) {
  EXPECT_EQ(operational_method(SpanningTreeMode::kRapidPvst, PathCostMethod::kShort), PathCostMethod::kShort);
  EXPECT_EQ(operational_method(SpanningTreeMode::kRapidPvst, PathCostMethod::kLong), PathCostMethod::kLong);
}

TEST(PortChannels, AreUpWithOneMemberUp) {
  SwitchState state = empty_switch();
  port(state, 1).channel = 2;
  port(state, 1).link_up = false;
  port(state, 2).channel = 2;
  port(state, 3).channel = 4;
  port(state, 3).link_up = false;
  port(state, 4).channel = 0;
  channel(state, 2);
  channel(state, 4);
  channel(state, 5);
  EXPECT_THAT(links_of_channels(state), ElementsAre(Pair(2, true), Pair(4, false), Pair(5, false)));
}

SwitchState state_with_interfaces() {
  SwitchState state = empty_switch();
  port(state, 1).vlans = parse_vlans("1-3");
  port(state, 2).channel = 5;
  port(state, 2).vlans = parse_vlans("20");
  port(state, 3).switchport = false;
  port(state, 3).vlans = parse_vlans("30");
  channel(state, 5).vlans = parse_vlans("3,4094");
  channel(state, 6);
  return state;
}

TEST(BridgePorts, ArePortChannelsThenPortsOfTheirOwn) {
  const SwitchState state = state_with_interfaces();
  EXPECT_THAT(bridge_ports(state),
              ElementsAre(Pair(0x16000005, BridgePort{&state.port_channels.at(5), true, true}),
                          Pair(0x16000006, BridgePort{&state.port_channels.at(6), false, true}),
                          Pair(0x1A000001, BridgePort{&state.ports.at(1), true, true})));
}

TEST(BridgePorts, HaveTheLinkOfThePortOrOfAnyMember) {
  SwitchState state = state_with_interfaces();
  port(state, 1).link_up = false;
  port(state, 2).link_up = false;
  const BridgePorts down = bridge_ports(state);
  EXPECT_EQ(down.at(0x1A000001).link_up, false);
  EXPECT_EQ(down.at(0x16000005).link_up, false);
  port(state, 4).channel = 5;
  EXPECT_EQ(bridge_ports(state).at(0x16000005).link_up, true);
}

TEST(BridgePorts, ArePointToPointWhenFullDuplexUnlessTheLinkTypeIsForced) {
  SwitchState state = state_with_interfaces();
  const auto is_point_to_point = [&state](LinkType type, bool half_duplex) {
    port(state, 1).link_type = type;
    port(state, 1).half_duplex = half_duplex;
    return bridge_ports(state).at(0x1A000001).point_to_point;
  };
  EXPECT_EQ(is_point_to_point(LinkType::kAuto, false), true);
  EXPECT_EQ(is_point_to_point(LinkType::kAuto, true), false);
  EXPECT_EQ(is_point_to_point(LinkType::kPointToPoint, true), true);
  EXPECT_EQ(is_point_to_point(LinkType::kShared, false), false);
}

TEST(BridgePorts, ArePointToPointWhenPortChannelsWhateverTheirMembersAre) {
  SwitchState state = state_with_interfaces();
  port(state, 2).half_duplex = true;
  port(state, 2).link_type = LinkType::kShared;
  EXPECT_EQ(bridge_ports(state).at(0x16000005).point_to_point, true);
  channel(state, 5).link_type = LinkType::kShared;
  EXPECT_EQ(bridge_ports(state).at(0x16000005).point_to_point, false);
  channel(state, 5).link_type = LinkType::kPointToPoint;
  EXPECT_EQ(bridge_ports(state).at(0x16000005).point_to_point, true);
}

TEST(PortRole, IsTheStatedOneAndElseDesignated) {
  Interface interface;
  interface.role.elsewhere = PortRole::kDesignated;
  interface.role.exceptions = {{PortRole::kRoot, parse_trees("0")},
                               {PortRole::kAlternate, parse_trees("4094")},
                               {PortRole::kBackup, parse_trees("7-9")}};
  const BridgePort port = {&interface, true, true};
  EXPECT_EQ(role_in(0, port), PortRole::kRoot);
  EXPECT_EQ(role_in(4094, port), PortRole::kAlternate);
  EXPECT_EQ(role_in(8, port), PortRole::kBackup);
  EXPECT_EQ(role_in(1, port), PortRole::kDesignated);
}

TEST(PortRole, IsDisabledWithoutLink) {
  Interface interface;
  interface.role.elsewhere = PortRole::kDesignated;
  interface.role.exceptions = {{PortRole::kRoot, parse_trees("0")}};
  const BridgePort port = {&interface, false, true};
  EXPECT_EQ(role_in(0, port), PortRole::kDisabled);
  EXPECT_EQ(role_in(1, port), PortRole::kDisabled);
}

TEST(PortRole, IsUnknownWhereNothingIsStated) {
  Interface interface;
  interface.role.exceptions = {{PortRole::kRoot, parse_trees("7")}};
  EXPECT_EQ(role_in(7, {&interface, true, true}), PortRole::kRoot);
  EXPECT_EQ(role_in(7, {&interface, std::nullopt, true}), PortRole::kRoot);
  EXPECT_EQ(role_in(8, {&interface, true, true}), std::nullopt);
  EXPECT_EQ(role_in(8, {&interface, false, true}), std::nullopt);
}

TEST(BridgePorts, HaveNoLinkThatIsUnknown) {
  SwitchState state = state_with_interfaces();
  port(state, 1).link_up.reset();
  port(state, 2).link_up.reset();
  EXPECT_EQ(bridge_ports(state).at(0x1A000001).link_up, std::nullopt);
  EXPECT_EQ(bridge_ports(state).at(0x16000005).link_up, std::nullopt);
  channel(state, 5).link_up = true;
  port(state, 2).link_up = false;
  EXPECT_EQ(bridge_ports(state).at(0x16000005).link_up, true);
}

TEST(BridgePorts, HaveNoTypeOfLinkThatIsUnknown) {
  SwitchState state = state_with_interfaces();
  port(state, 1).half_duplex.reset();
  EXPECT_EQ(bridge_ports(state).at(0x1A000001).point_to_point, std::nullopt);
  port(state, 1).link_type = LinkType::kPointToPoint;
  EXPECT_EQ(bridge_ports(state).at(0x1A000001).point_to_point, true);
  port(state, 1).link_type.reset();
  EXPECT_EQ(bridge_ports(state).at(0x1A000001).point_to_point, std::nullopt);
}

TEST(Switch, HasNoTreesWhereNoSpanningTreeRuns) {
  SwitchState state = state_with_interfaces();
  state.settings.mode.reset();
  const Switch the_switch(state);
  EXPECT_THAT(the_switch.bridge_ports(), ElementsAre());
  EXPECT_THAT(the_switch.mst_vlan_map(), ElementsAre());
  EXPECT_THAT(the_switch.mst_remaining_hops(), ElementsAre());
  EXPECT_EQ(print_trees(the_switch.running_trees()), "");
}

TEST(Switch, HasNoDigestOutsideAnyRegion) {
  SwitchState state = empty_switch();
  state.mst.name.reset();
  const Switch the_switch(state);
  EXPECT_EQ(the_switch.config_digest(), std::nullopt);
  EXPECT_EQ(the_switch.pre_standard_digest(), std::nullopt);
}

TEST(VlansInUse, AreThoseOfBridgePorts) {
  const SwitchState state = state_with_interfaces();
  EXPECT_EQ(print_vlans(vlans_in_use(bridge_ports(state))), "1-3,4094");
  EXPECT_EQ(print_vlans(vlans_in_use({})), "");
}

TEST(MstTrees, AreTheCistAndEachInstance) {
  SwitchState state = empty_switch();
  state.mst_cist.remaining_hops = 17;
  state.mst_instances[4094] = {parse_vlans("2-4094"), 18};
  state.mst_instances[3] = {parse_vlans(""), 19};
  EXPECT_THAT(mst_remaining_hops(state), ElementsAre(Pair(0, 17), Pair(3, 19), Pair(4094, 18)));
  std::string map;
  for (const auto &[id, vlans] : mst_vlan_map(state)) {
    map += std::to_string(id) + ": " + print_vlans(vlans) + "; ";
  }
  EXPECT_EQ(map, "0: 1; 3: ; 4094: 2-4094; ");
}

TEST(RunningTrees, AreTheCistAndTheInstancesInMstMode) {
  SwitchState state = state_with_interfaces();
  state.rapid_pvst.disabled_vlans = parse_vlans("7");
  state.mst_instances[7].vlans = parse_vlans("2000");
  state.mst_instances[4094] = {};
  EXPECT_EQ(print_trees(running_trees(state, parse_vlans("1-3"))), "0,7,4094");
  EXPECT_EQ(print_trees(running_trees(empty_switch(), {})), "0");
}

TEST(RunningTrees, AreTheVlansInUseUnlessDisabledInRapidPvstMode) {
  SwitchState state = empty_switch();
  state.settings.mode = SpanningTreeMode::kRapidPvst;
  state.mst_instances[7].vlans = parse_vlans("1");
  state.rapid_pvst.disabled_vlans = parse_vlans("2,9");
  EXPECT_EQ(print_trees(running_trees(state, parse_vlans("1-3,4094"))), "1,3,4094");
  EXPECT_EQ(print_trees(running_trees(state, {})), "");
}

TEST(CistVlans, AreThoseThatNoInstanceClaims) {
  SwitchState state = empty_switch();
  EXPECT_EQ(print_vlans(cist_vlans(state)), "1-4094");
  state.mst_instances[1].vlans = parse_vlans("10-19");
  state.mst_instances[2].vlans = parse_vlans("1,4094");
  EXPECT_EQ(print_vlans(cist_vlans(state)), "2-9,20-4093");
}

TEST(Switch, ComputesTheDigestAnewForEachState) {
  Switch the_switch(empty_switch());
  SwitchState mapped = empty_switch();
  mapped.mst_instances[4094].vlans = parse_vlans("4094");
  mapped.mst_instances[256].vlans = parse_vlans("1");
  the_switch.replace(mapped);
  EXPECT_EQ(hex(the_switch.config_digest().value()), "033b8e20238b939d4b856dc4b8d9c349");
}

TEST(Switch, FindsTheBridgePortsOfEachState) {
  Switch the_switch(state_with_interfaces());
  EXPECT_EQ(the_switch.bridge_ports().size(), 3U);
  EXPECT_EQ(print_vlans(the_switch.vlans_in_use()), "1-3,4094");
  SwitchState other = empty_switch();
  port(other, 9).vlans = parse_vlans("7");
  port(other, 9).name = "renamed";
  the_switch.replace(other);
  ASSERT_EQ(the_switch.bridge_ports().size(), 1U);
  EXPECT_EQ(the_switch.bridge_ports().at(0x1A000009).interface, &the_switch.state().ports.at(9));
  EXPECT_EQ(print_vlans(the_switch.vlans_in_use()), "7");
}

TEST(Switch, TakesTheStandardDigestForAPreStandardOneThatIsNotStated) {
  Switch the_switch(empty_switch());
  EXPECT_EQ(hex(the_switch.pre_standard_digest().value()), "ac36177f50283cd4b83821d8ab26de62");
  SwitchState stated = empty_switch();
  stated.mst.pre_standard_digest = MstDigest{0x12, 0x34};
  the_switch.replace(stated);
  EXPECT_EQ(hex(the_switch.pre_standard_digest().value()), "12340000000000000000000000000000");
}

TEST(Switch, TellsItsListenerAfterTheChange) {
  Switch the_switch(empty_switch());
  std::string seen;
  the_switch.on_change([&] { seen += the_switch.state().settings.name; });
  SwitchState renamed = empty_switch();
  renamed.settings.name = "renamed";
  the_switch.replace(renamed);
  EXPECT_EQ(seen, "renamed");
}

}  // namespace
