// Commands 130 and 131: the bridge in a tree, and its ports there.
#include <gmock/gmock.h>

#include <chrono>
#include <optional>
#include <thread>
#include <vector>

#include "support/command_test.h"
#include "support/octets.h"
#include "support/states.h"

using namespace stpswitch;
using testing::ElementsAre;

namespace {

class BridgeInTree : public CommandTest {
 protected:
  static RequestText tree(uint32_t action, uint32_t id) {
    return {130, action, {one_tree(protocol::kMstTreeKey, id)}};
  }
  static RequestText port(uint32_t action, uint32_t number) {
    return {131, action, {{protocol::kBridgePortKey, {number}}}};
  }
  static RequestText port(uint32_t action, uint32_t tree, uint32_t number) {
    return {131, action, {one_tree(protocol::kMstTreeKey, tree), {protocol::kBridgePortKey, {number}}}};
  }

  void change_cist_at(std::chrono::steady_clock::time_point time) {
    SwitchState state = switch_.state();
    state.trees[0].observed.last_topology_change = time;
    switch_.replace(state);
  }
  // However long the test takes, no time passes.
  void let_the_cist_change_now() { change_cist_at(std::chrono::steady_clock::now() + std::chrono::hours(1)); }

  std::vector<uint32_t> trees_after(uint32_t from) const {
    return walk([](uint32_t id) { return tree(kGetNext, id); }, from, 0x1402'9001);
  }
  std::vector<uint32_t> ports_of(uint32_t id) const {
    return walk([id](uint32_t number) { return port(kGetNext, id, number); }, 0, 0x1402'A040);
  }
};

// What the scenario says of the CIST.
constexpr char kCist[] =
    "57505453 0100 0300 04010000 07000000 00000000 13000000"
    "01900214 04000000 00000000"
    "01b00202 04000000 04000000"
    "50900214 04000000 0c000000"
    "40900214 04000000 00800000"
    "4190020f 06000000 00005e005310 0000"
    "42900214 04000000 00600000"
    "4390020f 06000000 00005e00532a 0000"
    "44900214 04000000 d0070000"
    "45900214 04000000 8b000000"
    "46900214 04000000 d0070000"
    "47900214 04000000 c8000000"
    "48900214 04000000 dc050000"
    "49900214 04000000 d0070000"
    "4a900214 04000000 c8000000"
    "4b900214 04000000 dc050000"
    "4c900214 04000000 06000000"
    "4d900202 04000000 03000000"
    "4e900214 04000000 03000000"
    "4f900214 04000000 00000000";

// The port to the root: what the neighbour sends there.
constexpr char kRootPort[] =
    "57505453 0100 0300 ec000000 07000000 00000000 11000000"
    "40a00214 04000000 8b000000"
    "41a00214 04000000 8b000000"
    "42a00214 04000000 80000000"
    "03a00202 04000000 02000000"
    "43a00202 04000000 04000000"
    "08a00214 04000000 d0070000"
    "4aa00214 04000000 04000000"
    "4ba00202 04000000 00000000"
    "1da00202 04000000 00000000"
    "19a00202 04000000 03000000"
    "1ea00202 04000000 01000000"
    "44a00214 04000000 00600000"
    "45a0020f 06000000 00005e00532a 0000"
    "46a00214 04000000 00000000"
    "47a00214 04000000 00600000"
    "48a0020f 06000000 00005e00532a 0000"
    "49a00214 04000000 01800000";

// One that nobody else sends to: what the bridge itself sends there. Root guard blocks it.
constexpr char kBlockedPort[] =
    "57505453 0100 0300 ec000000 07000000 00000000 11000000"
    "40a00214 04000000 82000000"
    "41a00214 04000000 82000000"
    "42a00214 04000000 80000000"
    "03a00202 04000000 03000000"
    "43a00202 04000000 01000000"
    "08a00214 04000000 204e0000"
    "4aa00214 04000000 01000000"
    "4ba00202 04000000 00000000"
    "1da00202 04000000 00000000"
    "19a00202 04000000 03000000"
    "1ea00202 04000000 01000000"
    "44a00214 04000000 00600000"
    "45a0020f 06000000 00005e00532a 0000"
    "46a00214 04000000 d0070000"
    "47a00214 04000000 00800000"
    "48a0020f 06000000 00005e005310 0000"
    "49a00214 04000000 82800000";

TEST_F(BridgeInTree, IsWhatTheTreeSays) {
  let_the_cist_change_now();
  EXPECT_EQ(reply_to(tree(kGet, 0)), hex(octets(kCist)));
  EXPECT_EQ(number_in_reply_to(tree(kGet, 2), protocol::kBridgePriority), 0x8002U);
  EXPECT_EQ(number_in_reply_to(tree(kGet, 2), protocol::kRootPriority), 0x6002U);
  EXPECT_EQ(number_in_reply_to(tree(kGet, 2), protocol::kRootCost), 10000U);
  EXPECT_EQ(number_in_reply_to(tree(kGet, 2), protocol::kRootPort), 4097U);
  EXPECT_EQ(number_in_reply_to(tree(kGet, 10), protocol::kRootPort), 0U);
  EXPECT_EQ(number_in_reply_to(tree(kGet, 10), protocol::kRootCost), 0U);
}

TEST_F(BridgeInTree, IsThatOfTheDefaultTreeWithoutAKey) {
  let_the_cist_change_now();
  EXPECT_EQ(reply_to({130, kGet, {}}), hex(octets(kCist)));
  EXPECT_EQ(reply_to(port(kGet, 139)), hex(octets(kRootPort)));
  set("switch.mode", "rapid-pvst");
  EXPECT_EQ(number_in_reply_to({130, kGet, {}}, protocol::kTree), 1U);
  EXPECT_EQ(number_in_reply_to(port(kGetNext, 0), protocol::kBridgePort), 129U);
  set("rapid_pvst.disabled_vlans", "1-19");
  EXPECT_EQ(number_in_reply_to({130, kGet, {}}, protocol::kTree), 20U);
  EXPECT_EQ(number_in_reply_to(port(kGetNext, 0), protocol::kBridgePort), 131U);
}

TEST_F(BridgeInTree, HasTheTreesThatRun) {
  EXPECT_THAT(trees_after(0), ElementsAre(1, 2, 10));
  EXPECT_THAT(trees_after(2), ElementsAre(10));
  for (const uint32_t id : {10U, 4094U, 4095U, 4096U, 0xFFFF'FFFFU}) {
    EXPECT_EQ(refusal_of(tree(kGetNext, id)), CMD_NO_ENTRY) << id;
  }
  for (const uint32_t id : {3U, 9U, 11U, 4095U, 4096U, 65538U, 0xFFFF'FFFFU}) {
    EXPECT_EQ(refusal_of(tree(kGet, id)), CMD_NO_ENTRY) << id;
    EXPECT_EQ(refusal_of(port(kGet, id, 129)), CMD_NO_ENTRY) << id;
    EXPECT_EQ(refusal_of(port(kGetNext, id, 0)), CMD_NO_ENTRY) << id;
  }
}

TEST_F(BridgeInTree, HasItsTreesByTheModesKey) {
  const KeyText vlan_tree = one_tree(protocol::kVlanTreeKey, 1);
  EXPECT_EQ(refusal_of({130, kGet, {vlan_tree}}), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of({131, kGetNext, {vlan_tree, protocol::kBridgePortKey}}), CMD_NO_ENTRY);
  set("switch.mode", "rapid-pvst");
  EXPECT_EQ(number_in_reply_to({130, kGet, {vlan_tree}}, protocol::kBridgePriority), 0x8001U);
  EXPECT_EQ(number_in_reply_to({131, kGetNext, {vlan_tree, protocol::kBridgePortKey}}, protocol::kBridgePort),
            129U);
  EXPECT_EQ(refusal_of(tree(kGet, 1)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(port(kGet, 1, 129)), CMD_NO_ENTRY);
  // Whoever steps through the trees need not know which kind there is.
  EXPECT_EQ(number_in_reply_to(tree(kGetNext, 1), protocol::kTree), 10U);
}

TEST_F(BridgeInTree, HasThePortsOfTheTreeByNumber) {
  EXPECT_THAT(ports_of(0), ElementsAre(129, 130, 131, 132, 138, 139, 140, 141, 142, 143, 4097, 4098));
  EXPECT_THAT(ports_of(1), ElementsAre(129, 130, 139, 142, 4097, 4098));
  EXPECT_THAT(ports_of(2), ElementsAre(131, 132, 138, 140, 141, 4097, 4098));
  EXPECT_THAT(ports_of(10), ElementsAre(143, 4097, 4098));
  EXPECT_EQ(number_in_reply_to(tree(kGet, 0), protocol::kBridgePortCount), 12U);
  EXPECT_EQ(number_in_reply_to(tree(kGet, 10), protocol::kBridgePortCount), 3U);
  for (const uint32_t number : {0U, 128U, 133U, 137U, 144U, 4096U, 4099U, 65665U, 0xFFFF'FFFFU}) {
    EXPECT_EQ(refusal_of(port(kGet, 0, number)), CMD_NO_ENTRY) << number;
  }
  EXPECT_EQ(refusal_of(port(kGet, 1, 131)), CMD_NO_ENTRY);
  EXPECT_EQ(number_in_reply_to(port(kGetNext, 1, 131), protocol::kBridgePort), 139U);
  EXPECT_EQ(refusal_of(port(kGetNext, 1, 4098)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(port(kGetNext, 1, 0xFFFF'FFFF)), CMD_NO_ENTRY);
}

TEST_F(BridgeInTree, HasWhatItsPortsKnow) {
  EXPECT_EQ(reply_to(port(kGet, 0, 139)), hex(octets(kRootPort)));
  EXPECT_EQ(reply_to(port(kGet, 0, 130)), hex(octets(kBlockedPort)));
  // A backup port has the bridge's own identifier only where somebody says so.
  EXPECT_EQ(number_in_reply_to(port(kGet, 0, 141), protocol::kDesignatedRootPriority), 0x6000U);
  EXPECT_EQ(number_in_reply_to(port(kGet, 0, 4097), protocol::kPortRole), 4U);
  EXPECT_EQ(number_in_reply_to(port(kGet, 0, 4097), protocol::kPortState), 1U);
  EXPECT_EQ(number_in_reply_to(port(kGet, 2, 4097), protocol::kPortState), 4U);
  EXPECT_EQ(number_in_reply_to(port(kGet, 0, 140), protocol::kPortState), 2U);
  EXPECT_EQ(number_in_reply_to(port(kGet, 2, 140), protocol::kPortState), 3U);
  EXPECT_EQ(number_in_reply_to(port(kGet, 0, 132), protocol::kPortRole), 1U);
  EXPECT_EQ(number_in_reply_to(port(kGet, 0, 132), protocol::kPortState), 0U);
  EXPECT_EQ(number_in_reply_to(port(kGet, 0, 129), protocol::kIfMibIndex), 2U);
  EXPECT_EQ(number_in_reply_to(port(kGet, 0, 129), protocol::kAdminEdge), 1U);
  EXPECT_EQ(number_in_reply_to(port(kGet, 0, 129), protocol::kEdge), 1U);
  // Without a link there is no type of it.
  EXPECT_EQ(number_in_reply_to(port(kGet, 0, 132), protocol::kLinkType), 1U);
  EXPECT_EQ(number_in_reply_to(port(kGet, 0, 132), protocol::kPointToPoint), std::nullopt);
}

TEST_F(BridgeInTree, HasWhatADesignatedPortIsSaidToKnowWhereTheBridgeDoesNot) {
  SwitchState known = empty_switch();
  known.bridge = {};
  ObservedTree &tree = known.trees[0].observed;
  tree.root_id = parse_bridge_id("2000.00005e005301");
  tree.bridge_id = parse_bridge_id("3000.00005e005302");
  tree.root_cost = 5;
  tree.root_port = 999;
  Port &only = ::port(known, 1);
  only.priority = 0x80;
  only.role.elsewhere = PortRole::kDesignated;
  only.designated = {parse_bridge_id("6000.00005e005371"), parse_bridge_id("7000.00005e005372"), 71, 72};
  const auto told = [this](const SwitchState &state) {
    switch_.replace(state);
    std::vector<std::optional<uint32_t>> numbers;
    for (const uint32_t attribute : {protocol::kDesignatedRootPriority, protocol::kDesignatedBridgePriority,
                                     protocol::kDesignatedCost, protocol::kDesignatedPort}) {
      numbers.push_back(number_in_reply_to(port(kGet, 0, 129), attribute));
    }
    return numbers;
  };
  EXPECT_THAT(told(known), ElementsAre(0x2000, 0x3000, 5, 0x8081));
  SwitchState state = known;
  state.trees[0].observed.root_id = std::nullopt;
  EXPECT_THAT(told(state), ElementsAre(0x6000, 0x3000, 5, 0x8081));
  state = known;
  state.trees[0].observed.bridge_id = std::nullopt;
  EXPECT_THAT(told(state), ElementsAre(0x2000, 0x7000, 5, 0x8081));
  state = known;
  state.trees[0].observed.root_cost = std::nullopt;
  EXPECT_THAT(told(state), ElementsAre(0x2000, 0x3000, 71, 0x8081));
  state = known;
  ::port(state, 1).priority = std::nullopt;
  EXPECT_THAT(told(state), ElementsAre(0x2000, 0x3000, 5, 72));
}

TEST_F(BridgeInTree, LeavesOutWhatNobodyKnows) {
  SwitchState state = empty_switch();
  state.bridge = {};
  Port &unknown = state.ports[1];
  unknown.numbers = {0x1A000001, 129, std::nullopt, std::nullopt, 7};
  unknown.vlans = parse_vlans("1");
  switch_.replace(state);
  EXPECT_EQ(reply_to({130, kGet, {}}), hex(octets("57505453 0100 0300 3c000000 07000000 00000000 03000000"
                                                  "01900214 04000000 00000000"
                                                  "01b00202 04000000 04000000"
                                                  "50900214 04000000 01000000")));
  EXPECT_EQ(reply_to(port(kGetNext, 0)), hex(octets("57505453 0100 0300 24000000 07000000 00000000 01000000"
                                                    "40a00214 04000000 07000000")));
}

TEST_F(BridgeInTree, HasThePortsOfARealBridgeByItsOwnNumbers) {
  SwitchState state = empty_switch();
  channel(state, 5).numbers.own_number = 2;
  ::port(state, 1).numbers.own_number = 3;
  ::port(state, 2).numbers.own_number = 1;
  ::port(state, 2).role.exceptions = {{PortRole::kRoot, parse_trees("0")}};
  switch_.replace(state);
  EXPECT_THAT(ports_of(0), ElementsAre(1, 2, 3));
  EXPECT_EQ(number_in_reply_to({130, kGet, {}}, protocol::kRootPort), 1U);
  EXPECT_EQ(refusal_of(port(kGet, 129)), CMD_NO_ENTRY);
}

TEST_F(BridgeInTree, TellsHowLongAgoTheTopologyChanged) {
  // Not longer ago than a machine has been up that has just built this: its clock began then.
  change_cist_at(std::chrono::steady_clock::now() - std::chrono::minutes(1));
  EXPECT_GE(number_in_reply_to(tree(kGet, 0), protocol::kTopologyAge), 6000U);
  EXPECT_LT(number_in_reply_to(tree(kGet, 0), protocol::kTopologyAge), 60000U) << "in hundredths";
  let_the_cist_change_now();
  EXPECT_EQ(number_in_reply_to(tree(kGet, 0), protocol::kTopologyAge), 0U);
  // Where the topology has not changed, it has not since the switch was looked at first.
  EXPECT_TRUE(number_in_reply_to(tree(kGet, 2), protocol::kTopologyAge).has_value());
  EXPECT_EQ(number_in_reply_to(tree(kGet, 2), protocol::kTopologyChanges), 0U);
  set("port.12.learning_in", "");
  EXPECT_EQ(number_in_reply_to(tree(kGet, 2), protocol::kTopologyChanges), 1U);
}

TEST_F(BridgeInTree, CountsAndTimesTopologyChangesByOneObserver) {
  constexpr std::chrono::milliseconds kSinceItWasLookedAt{50};
  constexpr uint32_t kInHundredths = 5;
  std::this_thread::sleep_for(kSinceItWasLookedAt);
  SwitchState state = switch_.state();
  state.trees[2].observed.topology_changes = 7;
  switch_.replace(state);
  set("port.12.learning_in", "");
  EXPECT_EQ(number_in_reply_to(tree(kGet, 2), protocol::kTopologyChanges), 7U);
  EXPECT_GE(number_in_reply_to(tree(kGet, 2), protocol::kTopologyAge), kInHundredths);
}

TEST_F(BridgeInTree, TakesItsKeysOnly) {
  const KeyText mst = one_tree(protocol::kMstTreeKey, 0);
  const KeyText vlan = one_tree(protocol::kVlanTreeKey, 0);
  const KeyText number(protocol::kBridgePortKey, {129});
  EXPECT_EQ(refusal_of({130, kGetNext, {}}), CMD_UNKNOWN_KEY);
  EXPECT_EQ(refusal_of({131, kGet, {}}), CMD_UNKNOWN_KEY);
  for (const uint32_t action : {kGet, kGetNext}) {
    EXPECT_EQ(refusal_of({130, action, {number}}), CMD_UNKNOWN_KEY);
    EXPECT_EQ(refusal_of({130, action, {mst, vlan}}), CMD_UNKNOWN_KEY);
    EXPECT_EQ(refusal_of({130, action, {mst, number}}), CMD_UNKNOWN_KEY);
    EXPECT_EQ(refusal_of({131, action, {mst}}), CMD_UNKNOWN_KEY);
    EXPECT_EQ(refusal_of({131, action, {mst, vlan}}), CMD_UNKNOWN_KEY);
    EXPECT_EQ(refusal_of({131, action, {mst, number, number}}), CMD_UNKNOWN_KEY);
    const KeyText two = range_list(protocol::kMstTreeKey, {{0, 1}});
    EXPECT_EQ(refusal_of({130, action, {two}}), CMD_BAD_REQUEST);
    EXPECT_EQ(refusal_of({131, action, {two, number}}), CMD_BAD_REQUEST);
  }
}

TEST_F(BridgeInTree, IsNotThereWhereNoSpanningTreeRuns) {
  SwitchState state = switch_.state();
  state.settings.mode = std::nullopt;
  switch_.replace(state);
  EXPECT_EQ(refusal_of({130, kGet, {}}), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(tree(kGet, 0)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(tree(kGetNext, 0)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(port(kGetNext, 0)), CMD_NO_ENTRY);
}

}  // namespace
