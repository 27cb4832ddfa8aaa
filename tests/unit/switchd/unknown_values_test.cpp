// What nobody knows is left out of replies, and nothing else with it.
#include "support/command_test.h"
#include "support/octets.h"

using namespace stpswitch;

namespace {

constexpr uint32_t kPort = 0x1A000001;

class UnknownValues : public CommandTest {
 protected:
  UnknownValues() { switch_.replace(barely_known(SpanningTreeMode::kMst)); }

  // One port, of which no more is known than that it is there.
  static SwitchState barely_known(SpanningTreeMode mode) {
    SwitchState state;
    state.settings.mode = mode;
    Port &port = state.ports[1];
    port.numbers = {kPort, 129, std::nullopt, std::nullopt};
    port.vlans = parse_vlans("1");
    return state;
  }

  void set_mode(std::optional<SpanningTreeMode> mode) {
    SwitchState state = switch_.state();
    state.settings.mode = mode;
    switch_.replace(std::move(state));
  }

  static RequestText port_request(uint32_t command, uint32_t key) {
    return {command, kGet, {{key, {kPort}}}};
  }
};

constexpr char kInterfaceAlone[] =
    "57505453 0100 0300 24000000 07000000 00000000 01000000"
    "01a0020c 04000000 0100001a";

TEST_F(UnknownValues, LeaveTheModeOfTheSwitch) {
  EXPECT_EQ(reply_to({}), hex(octets("57505453 0100 0300 24000000 07000000 00000000 01000000"
                                     "01b00202 04000000 04000000")));
}

TEST_F(UnknownValues, LeaveTheTreeAndTheInterfaceOfAnEntry) {
  constexpr char kTreeAndInterface[] =
      "57505453 0100 0300 30000000 07000000 00000000 02000000"
      "06a00214 04000000 00000000"
      "01a0020c 04000000 0100001a";
  EXPECT_EQ(
      reply_to({111, kGet, {one_tree(protocol::kMstTreeKey, 0), {protocol::kMstInterfaceKey, {kPort}}}}),
      hex(octets(kTreeAndInterface)));
}

TEST_F(UnknownValues, LeaveTheInterfaceOfABridgePort) {
  const std::string expected = hex(octets(kInterfaceAlone));
  EXPECT_EQ(reply_to(port_request(105, protocol::kInterfaceKey)), expected);
  for (const uint32_t command : {117U, 118U, 119U}) {
    EXPECT_EQ(reply_to(port_request(command, protocol::kInterfaceKey)), expected) << command;
  }
}

// The agent would take all flags for flags that are not set.
TEST_F(UnknownValues, LeaveNoEntryOfAPortOfWhichAFlagIsUnknown) {
  const RequestText request = port_request(111, protocol::kMstInterfaceKey);
  EXPECT_EQ(refusal_of(request), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of({111, kGetNext, {{protocol::kMstInterfaceKey, {0}}}}), CMD_NO_ENTRY);
  SwitchState state = switch_.state();
  Port &port = state.ports.at(1);
  for (auto *const flag : {&port.edge, &port.boundary, &port.peer, &port.dispute}) {
    *flag = true;
    switch_.replace(state);
    EXPECT_EQ(number_in_reply_to(request, protocol::kInterface).has_value(), flag == &port.dispute);
  }
}

// The agent would take what the entry lacks for zero.
TEST_F(UnknownValues, LeaveNoEntryOfATreeOfWhichNotAllIsKnown) {
  const RequestText cist = {122, kGet, {one_tree(protocol::kMstTreeKey, 0)}};
  EXPECT_EQ(refusal_of(cist), CMD_NO_ENTRY);
  SwitchState state = switch_.state();
  state.mst_cist.remaining_hops = 19;
  state.mst_cist.regional_root_priority = 4096;
  state.mst_cist.internal_root_path_cost = 7;
  switch_.replace(state);
  EXPECT_EQ(refusal_of(cist), CMD_NO_ENTRY);
  state.mst_cist.regional_root_mac = {0x00, 0x00, 0x5E, 0x00, 0x53, 0x01};
  switch_.replace(state);
  EXPECT_EQ(number_in_reply_to(cist, protocol::kHops), 19U);
  state.mst_cist.remaining_hops.reset();
  state.mst_instances[5].remaining_hops = 18;
  switch_.replace(state);
  EXPECT_EQ(refusal_of(cist), CMD_NO_ENTRY);
  EXPECT_EQ(number_in_reply_to({122, kGet, {one_tree(protocol::kMstTreeKey, 5)}}, protocol::kHops), 18U);
}

// That one tree carries every VLAN needs no region.
TEST_F(UnknownValues, LeaveTheVlansOfABridgeOutsideAnyRegion) {
  EXPECT_EQ(reply_to({112, kGet, {protocol::kMstDigestsKey}}),
            hex(octets("57505453 0100 0300 18000000 07000000 00000000 00000000")));
  EXPECT_EQ(number_in_reply_to({112, kGet, {}}, protocol::kMstRegionRevision), std::nullopt);
  EXPECT_NE(publisher_.view().find_mst_instance(0), nullptr);
}

TEST_F(UnknownValues, LeaveTheTreesOfVlans) {
  set_mode(SpanningTreeMode::kRapidPvst);
  EXPECT_EQ(number_in_reply_to({115, kGet, {one_tree(protocol::kVlanTreeKey, 1)}}, protocol::kTree), 1U);
  const RequestText port = {
      105, kGet, {one_tree(protocol::kVlanTreeKey, 1), {protocol::kInterfaceKey, {kPort}}}};
  EXPECT_EQ(number_in_reply_to(port, protocol::kPortTree), 1U);
  EXPECT_EQ(number_in_reply_to(port, protocol::kPortRole), std::nullopt);
}

// Where no spanning tree runs, everything is empty.
TEST_F(UnknownValues, LeaveNothingWithoutAMode) {
  set_mode(std::nullopt);
  EXPECT_EQ(reply_to({}), hex(octets("57505453 0100 0300 18000000 07000000 00000000 00000000")));
  EXPECT_EQ(reply_to({112, kGet, {}}), hex(octets("57505453 0100 0300 18000000 07000000 00000000 00000000")));
  EXPECT_EQ(publisher_.view().find_mst_instance(0), nullptr);
  EXPECT_EQ(refusal_of({115, kGetNext, {one_tree(protocol::kVlanTreeKey, 0)}}), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of({122, kGetNext, {one_tree(protocol::kMstTreeKey, 0)}}), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of({122, kGet, {one_tree(protocol::kMstTreeKey, 0)}}), CMD_NO_ENTRY);
  for (const uint32_t command : {105U, 117U, 118U, 119U}) {
    EXPECT_EQ(refusal_of(port_request(command, protocol::kInterfaceKey)), CMD_NO_ENTRY) << command;
  }
  EXPECT_EQ(refusal_of(port_request(111, protocol::kMstInterfaceKey)), CMD_NO_ENTRY);
}

}  // namespace
