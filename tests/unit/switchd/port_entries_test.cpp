// Commands 105 and 111, asked by tree and interface: the ports of trees. Asked by interface alone:
// bridge_port_entries_test.cpp.
#include <gmock/gmock.h>

#include "support/command_test.h"
#include "support/octets.h"
#include "support/states.h"

using namespace stpswitch;
using testing::ElementsAre;
using testing::Pair;

namespace {

constexpr char kScenario[] = R"(
[switch]
mode = "rapid-pvst"
[[mst.instance]]
id = 5
vlans = "10-30"
[[mst.instance]]
id = 6
vlans = "2000"
[[mst.instance]]
id = 8
vlans = "4000-4094"
[rapid_pvst]
disabled_vlans = "30"
[[port]]
number = 1
vlans = "1,10"
path_cost = 200000000
edge = true
[[port]]
number = 4
vlans = "10,30"
link = "down"
boundary = true
[[port]]
number = 7
channel = 2
vlans = "50"
[[port]]
number = 9
switchport = false
vlans = "60"
[[port]]
number = 3967
vlans = "4094"
[[port_channel]]
number = 2
vlans = "10,4094"
path_cost = 1
peer = true
pre_standard_neighbor = true
[[port_channel]]
number = 4095
vlans = "30"
)";

constexpr uint32_t kPort = 0x1A000000;
constexpr uint32_t kChannel = 0x16000000;
constexpr uint32_t kAnyOtherInterface = 129;
constexpr uint32_t kHighest = 0xFFFF'FFFF;

class PortEntries : public CommandTest {
 protected:
  PortEntries() { switch_.replace(parse_scenario(kScenario, "test.toml")); }
};

// Command 105 with a tree.

class RapidPvstPortsCommand : public PortEntries {
 protected:
  static RequestText request(uint32_t action, uint32_t tree, uint32_t if_index) {
    return {105, action, {one_tree(protocol::kVlanTreeKey, tree), {protocol::kInterfaceKey, {if_index}}}};
  }
  static RequestText request_after(const TreePortRow &row) {
    return request(kGetNext, row.first, row.second);
  }

  // From before all trees: tree 0 does not exist here.
  std::vector<TreePortRow> rows() const { return walk_tree_ports(request_after, {0, kAnyOtherInterface}); }
};

constexpr char kPort1InVlan1[] =
    "57505453 0100 0300 60000000 07000000 00000000 06000000"
    "06a00214 04000000 01000000"
    "01a0020c 04000000 0100001a"
    "08a00214 04000000 00c2eb0b"
    "03a00202 04000000 03000000"
    "1da00202 04000000 01000000"
    "27a00202 04000000 00000000";

constexpr char kChannel2InVlan10[] =
    "57505453 0100 0300 60000000 07000000 00000000 06000000"
    "06a00214 04000000 0a000000"
    "01a0020c 04000000 02000016"
    "08a00214 04000000 01000000"
    "03a00202 04000000 03000000"
    "1da00202 04000000 00000000"
    "27a00202 04000000 01000000";

constexpr char kPort4WithoutLinkInVlan10[] =
    "57505453 0100 0300 60000000 07000000 00000000 06000000"
    "06a00214 04000000 0a000000"
    "01a0020c 04000000 0400001a"
    "08a00214 04000000 204e0000"
    "03a00202 04000000 01000000"
    "1da00202 04000000 00000000"
    "27a00202 04000000 00000000";

constexpr char kChannel2InVlan4094[] =
    "57505453 0100 0300 60000000 07000000 00000000 06000000"
    "06a00214 04000000 fe0f0000"
    "01a0020c 04000000 02000016"
    "08a00214 04000000 01000000"
    "03a00202 04000000 03000000"
    "1da00202 04000000 00000000"
    "27a00202 04000000 01000000";

TEST_F(RapidPvstPortsCommand, AnswersForExactlyThePortOfTheTree) {
  EXPECT_EQ(reply_to(request(kGet, 1, kPort + 1)), hex(octets(kPort1InVlan1)));
  EXPECT_EQ(reply_to(request(kGet, 10, kChannel + 2)), hex(octets(kChannel2InVlan10)));
  EXPECT_EQ(reply_to(request(kGet, 10, kPort + 4)), hex(octets(kPort4WithoutLinkInVlan10)));
}

TEST_F(RapidPvstPortsCommand, TakesItsKeysInAnyOrder) {
  EXPECT_EQ(
      reply_to({105, kGet, {{protocol::kInterfaceKey, {kPort + 1}}, one_tree(protocol::kVlanTreeKey, 1)}}),
      hex(octets(kPort1InVlan1)));
}

TEST_F(RapidPvstPortsCommand, AnswersForTheNextPortOfTheTree) {
  EXPECT_EQ(reply_to(request(kGetNext, 10, 0)), hex(octets(kChannel2InVlan10)));
  EXPECT_EQ(reply_to(request(kGetNext, 10, kAnyOtherInterface)), hex(octets(kChannel2InVlan10)));
  EXPECT_EQ(reply_to(request(kGetNext, 10, kChannel + 1)), hex(octets(kChannel2InVlan10)));
  EXPECT_EQ(reply_to(request(kGetNext, 10, kPort + 1)), hex(octets(kPort4WithoutLinkInVlan10)));
  EXPECT_EQ(reply_to(request(kGetNext, 10, kPort + 3)), hex(octets(kPort4WithoutLinkInVlan10)));
}

TEST_F(RapidPvstPortsCommand, AnswersForTheNextTreeBehindATree) {
  EXPECT_EQ(reply_to(request(kGetNext, 1, kPort + 1)), hex(octets(kChannel2InVlan10)));
  EXPECT_EQ(reply_to(request(kGetNext, 1, kHighest)), hex(octets(kChannel2InVlan10)));
  EXPECT_EQ(reply_to(request(kGetNext, 10, kPort + 4)), hex(octets(kChannel2InVlan4094)));
}

TEST_F(RapidPvstPortsCommand, AnswersForTheNextTreeBehindOneThatDoesNotExist) {
  EXPECT_EQ(reply_to(request(kGetNext, 0, kAnyOtherInterface)), hex(octets(kPort1InVlan1)));
  EXPECT_EQ(reply_to(request(kGetNext, 0, 1)), hex(octets(kPort1InVlan1)));
  EXPECT_EQ(reply_to(request(kGetNext, 2, kAnyOtherInterface)), hex(octets(kChannel2InVlan10)));
  EXPECT_EQ(reply_to(request(kGetNext, 30, kChannel)), hex(octets(kChannel2InVlan4094)));
  EXPECT_EQ(reply_to(request(kGetNext, 4093, kHighest)), hex(octets(kChannel2InVlan4094)));
}

TEST_F(RapidPvstPortsCommand, HasNothingAtTheBeginningOfATreeThatDoesNotExist) {
  for (const uint32_t tree : {0U, 2U, 30U, 50U, 60U, 4093U, 4095U, kHighest}) {
    EXPECT_EQ(refusal_of(request(kGetNext, tree, 0)), CMD_NO_ENTRY) << tree;
  }
}

TEST_F(RapidPvstPortsCommand, HasARowForEachMemberOfAVlanWithSpanningTree) {
  EXPECT_THAT(rows(), ElementsAre(Pair(1, kPort + 1), Pair(10, kChannel + 2), Pair(10, kPort + 1),
                                  Pair(10, kPort + 4), Pair(4094, kChannel + 2), Pair(4094, kPort + 3967)));
}

TEST_F(RapidPvstPortsCommand, HasNothingBehindTheLastRow) {
  EXPECT_EQ(refusal_of(request(kGetNext, 4094, kPort + 3967)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(request(kGetNext, 4094, kHighest)), CMD_NO_ENTRY);
  for (const uint32_t tree : {4095U, 4096U, 65536U, kHighest}) {
    EXPECT_EQ(refusal_of(request(kGetNext, tree, kAnyOtherInterface)), CMD_NO_ENTRY) << tree;
  }
}

TEST_F(RapidPvstPortsCommand, HasNoRowForOtherPortsAndTrees) {
  for (const uint32_t if_index : {0U, kAnyOtherInterface, kChannel + 4095, kPort + 2, kPort + 7, kPort + 9,
                                  kPort + 3967, 1U, kHighest}) {
    EXPECT_EQ(refusal_of(request(kGet, 10, if_index)), CMD_NO_ENTRY) << if_index;
  }
  for (const uint32_t tree : {0U, 2U, 30U, 4095U, 4097U, 65537U, kHighest}) {
    EXPECT_EQ(refusal_of(request(kGet, tree, kPort + 1)), CMD_NO_ENTRY) << tree;
  }
}

TEST_F(RapidPvstPortsCommand, FollowsVlansMembershipBridgingAndSpanningTree) {
  set("port_channel.2.vlans", "30");
  EXPECT_THAT(rows(), ElementsAre(Pair(1, kPort + 1), Pair(10, kPort + 1), Pair(10, kPort + 4),
                                  Pair(4094, kPort + 3967)));
  set("rapid_pvst.disabled_vlans", "1,10");
  EXPECT_THAT(rows(), ElementsAre(Pair(30, kChannel + 2), Pair(30, kChannel + 4095), Pair(30, kPort + 4),
                                  Pair(4094, kPort + 3967)));
  set("port.7.channel", "0");
  set("port.9.switchport", "true");
  set("port.3967.switchport", "false");
  set("port.4.channel", "2");
  EXPECT_THAT(rows(), ElementsAre(Pair(30, kChannel + 2), Pair(30, kChannel + 4095), Pair(50, kPort + 7),
                                  Pair(60, kPort + 9)));
}

TEST_F(RapidPvstPortsCommand, FollowsPathCostAndLink) {
  set("port.1.path_cost", "1");
  set("port.1.link", "down");
  EXPECT_EQ(reply_to(request(kGet, 1, kPort + 1)),
            hex(octets("57505453 0100 0300 60000000 07000000 00000000 06000000"
                       "06a00214 04000000 01000000"
                       "01a0020c 04000000 0100001a"
                       "08a00214 04000000 01000000"
                       "03a00202 04000000 01000000"
                       "1da00202 04000000 01000000"
                       "27a00202 04000000 00000000")));
}

TEST_F(RapidPvstPortsCommand, FollowsTheFlags) {
  set("port.1.edge", "false");
  set("port.1.peer", "true");
  EXPECT_EQ(reply_to(request(kGet, 1, kPort + 1)),
            hex(octets("57505453 0100 0300 60000000 07000000 00000000 06000000"
                       "06a00214 04000000 01000000"
                       "01a0020c 04000000 0100001a"
                       "08a00214 04000000 00c2eb0b"
                       "03a00202 04000000 03000000"
                       "1da00202 04000000 00000000"
                       "27a00202 04000000 01000000")));
}

TEST_F(RapidPvstPortsCommand, TakesAPortChannelWithoutAnyLinkForDisabled) {
  set("port.7.link", "down");
  EXPECT_EQ(reply_to(request(kGet, 10, kChannel + 2)),
            hex(octets("57505453 0100 0300 60000000 07000000 00000000 06000000"
                       "06a00214 04000000 0a000000"
                       "01a0020c 04000000 02000016"
                       "08a00214 04000000 01000000"
                       "03a00202 04000000 01000000"
                       "1da00202 04000000 00000000"
                       "27a00202 04000000 01000000")));
  set("port.4.channel", "2");
  set("port.4.link", "up");
  EXPECT_EQ(reply_to(request(kGet, 10, kChannel + 2)), hex(octets(kChannel2InVlan10)));
}

TEST_F(RapidPvstPortsCommand, HasNoRowsInMstMode) {
  set("switch.mode", "mst");
  for (const uint32_t action : {kGet, kGetNext}) {
    for (const uint32_t tree : {0U, 1U, 5U, 10U}) {
      for (const uint32_t if_index : {0U, kAnyOtherInterface, kPort + 1}) {
        EXPECT_EQ(refusal_of(request(action, tree, if_index)), CMD_NO_ENTRY) << tree << ", " << if_index;
      }
    }
  }
}

TEST_F(RapidPvstPortsCommand, HasNoRowsOnASwitchWithoutPorts) {
  SwitchState empty = empty_switch();
  empty.settings.mode = SpanningTreeMode::kRapidPvst;
  switch_.replace(empty);
  EXPECT_THAT(rows(), ElementsAre());
}

TEST_F(RapidPvstPortsCommand, TakesItsKeysOnly) {
  const KeyText tree = one_tree(protocol::kVlanTreeKey, 1);
  const KeyText interface(protocol::kInterfaceKey, {kPort + 1});
  for (const char *const mode : {"mst", "rapid-pvst"}) {
    set("switch.mode", mode);
    for (const uint32_t action : {kGet, kGetNext}) {
      EXPECT_EQ(refusal_of({105, action, {}}), CMD_UNKNOWN_KEY);
      EXPECT_EQ(refusal_of({105, action, {tree}}), CMD_UNKNOWN_KEY);
      EXPECT_EQ(refusal_of({105, action, {tree, tree}}), CMD_UNKNOWN_KEY);
      EXPECT_EQ(refusal_of({105, action, {interface, interface}}), CMD_UNKNOWN_KEY);
      EXPECT_EQ(refusal_of({105, action, {tree, interface, tree}}), CMD_UNKNOWN_KEY);
      EXPECT_EQ(refusal_of({105, action, {one_tree(protocol::kMstTreeKey, 1), interface}}), CMD_UNKNOWN_KEY);
      EXPECT_EQ(refusal_of({105, action, {tree, {protocol::kMstInterfaceKey, {kPort + 1}}}}),
                CMD_UNKNOWN_KEY);
      EXPECT_EQ(refusal_of({105, action, {{protocol::kMstInterfaceKey, {kPort + 1}}}}), CMD_UNKNOWN_KEY);
    }
  }
}

// Lists that do not name exactly one tree.
const std::vector<std::vector<std::pair<uint32_t, uint32_t>>> kWrongLists = {
    {}, {{1, 1}, {1, 1}}, {{1, 2}}, {{2, 1}}, {{0, kHighest}}};

TEST_F(RapidPvstPortsCommand, TakesAListOfExactlyOneVlan) {
  for (const char *const mode : {"mst", "rapid-pvst"}) {
    set("switch.mode", mode);
    for (const auto &list : kWrongLists) {
      for (const uint32_t action : {kGet, kGetNext}) {
        EXPECT_EQ(
            refusal_of({105,
                        action,
                        {range_list(protocol::kVlanTreeKey, list), {protocol::kInterfaceKey, {kPort + 1}}}}),
            CMD_BAD_REQUEST);
      }
    }
  }
}

// Command 111.

class MstPortsCommand : public PortEntries {
 protected:
  MstPortsCommand() { set("switch.mode", "mst"); }

  static RequestText request(uint32_t action, uint32_t instance, uint32_t if_index) {
    return {
        111, action, {one_tree(protocol::kMstTreeKey, instance), {protocol::kMstInterfaceKey, {if_index}}}};
  }
  static RequestText request_after(const TreePortRow &row) {
    return request(kGetNext, row.first, row.second);
  }

  std::vector<TreePortRow> rows(TreePortRow from = {0, 0}) const {
    return walk_tree_ports(request_after, from);
  }
};

constexpr char kChannel2InTheCist[] =
    "57505453 0100 0300 84000000 07000000 00000000 09000000"
    "06a00214 04000000 00000000"
    "01a0020c 04000000 02000016"
    "08a00214 04000000 01000000"
    "03a00202 04000000 03000000"
    "1da00202 04000000 00000000"
    "28a00202 04000000 00000000"
    "27a00202 04000000 01000000"
    "2da00202 04000000 00000000"
    "2ea00202 04000000 01000000";

constexpr char kPort4InInstance5[] =
    "57505453 0100 0300 84000000 07000000 00000000 09000000"
    "06a00214 04000000 05000000"
    "01a0020c 04000000 0400001a"
    "08a00214 04000000 204e0000"
    "03a00202 04000000 01000000"
    "1da00202 04000000 00000000"
    "28a00202 04000000 01000000"
    "27a00202 04000000 00000000"
    "2da00202 04000000 00000000"
    "2ea00202 04000000 00000000";

constexpr char kChannel2InInstance8[] =
    "57505453 0100 0300 84000000 07000000 00000000 09000000"
    "06a00214 04000000 08000000"
    "01a0020c 04000000 02000016"
    "08a00214 04000000 01000000"
    "03a00202 04000000 03000000"
    "1da00202 04000000 00000000"
    "28a00202 04000000 00000000"
    "27a00202 04000000 01000000"
    "2da00202 04000000 00000000"
    "2ea00202 04000000 01000000";

TEST_F(MstPortsCommand, AnswersForExactlyThePortOfTheInstance) {
  EXPECT_EQ(reply_to(request(kGet, 0, kChannel + 2)), hex(octets(kChannel2InTheCist)));
  EXPECT_EQ(reply_to(request(kGet, 5, kPort + 4)), hex(octets(kPort4InInstance5)));
  EXPECT_EQ(
      reply_to({111, kGet, {{protocol::kMstInterfaceKey, {kPort + 4}}, one_tree(protocol::kMstTreeKey, 5)}}),
      hex(octets(kPort4InInstance5)));
}

TEST_F(MstPortsCommand, AnswersForTheNextPortOfTheInstanceOrOfALaterOne) {
  EXPECT_EQ(reply_to(request(kGetNext, 0, 0)), hex(octets(kChannel2InTheCist)));
  EXPECT_EQ(reply_to(request(kGetNext, 0, kAnyOtherInterface)), hex(octets(kChannel2InTheCist)));
  EXPECT_EQ(reply_to(request(kGetNext, 5, kPort + 1)), hex(octets(kPort4InInstance5)));
  EXPECT_EQ(reply_to(request(kGetNext, 5, kPort + 4)), hex(octets(kChannel2InInstance8)));
  EXPECT_EQ(reply_to(request(kGetNext, 7, kAnyOtherInterface)), hex(octets(kChannel2InInstance8)));
}

TEST_F(MstPortsCommand, AnswersForALaterInstanceBehindOneWithoutPorts) {
  EXPECT_EQ(reply_to(request(kGetNext, 6, 0)), hex(octets(kChannel2InInstance8)));
  EXPECT_EQ(reply_to(request(kGetNext, 6, kAnyOtherInterface)), hex(octets(kChannel2InInstance8)));
}

TEST_F(MstPortsCommand, HasNothingAtTheBeginningOfAnInstanceThatDoesNotExist) {
  for (const uint32_t instance : {1U, 4U, 7U, 9U, 10U, 4095U, kHighest}) {
    EXPECT_EQ(refusal_of(request(kGetNext, instance, 0)), CMD_NO_ENTRY) << instance;
  }
}

TEST_F(MstPortsCommand, HasEveryBridgePortInTheCistAndTheMembersOfItsVlansInAnInstance) {
  EXPECT_THAT(rows(), ElementsAre(Pair(0, kChannel + 2), Pair(0, kChannel + 4095), Pair(0, kPort + 1),
                                  Pair(0, kPort + 4), Pair(0, kPort + 3967), Pair(5, kChannel + 2),
                                  Pair(5, kChannel + 4095), Pair(5, kPort + 1), Pair(5, kPort + 4),
                                  Pair(8, kChannel + 2), Pair(8, kPort + 3967)));
  EXPECT_THAT(rows({5, kPort + 1}),
              ElementsAre(Pair(5, kPort + 4), Pair(8, kChannel + 2), Pair(8, kPort + 3967)));
}

TEST_F(MstPortsCommand, HasNothingBehindTheLastRow) {
  EXPECT_EQ(refusal_of(request(kGetNext, 8, kPort + 3967)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(request(kGetNext, 9, kAnyOtherInterface)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(request(kGetNext, kHighest, kHighest)), CMD_NO_ENTRY);
}

TEST_F(MstPortsCommand, HasNoRowForOtherPortsAndInstances) {
  EXPECT_EQ(refusal_of(request(kGet, 0, kPort + 7)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(request(kGet, 0, kPort + 9)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(request(kGet, 0, 0)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(request(kGet, 5, kPort + 3967)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(request(kGet, 6, kPort + 1)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(request(kGet, 10, kPort + 1)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(request(kGet, 65536, kPort + 1)), CMD_NO_ENTRY);
}

TEST_F(MstPortsCommand, FollowsVlansAndInstances) {
  set("mst.instance.8.vlans", "1");
  set("port_channel.4095.vlans", "");
  EXPECT_THAT(rows({0, kPort + 4}), ElementsAre(Pair(0, kPort + 3967), Pair(5, kChannel + 2),
                                                Pair(5, kPort + 1), Pair(5, kPort + 4), Pair(8, kPort + 1)));
  EXPECT_THAT(rows({0, kChannel + 2}), testing::Contains(Pair(0, kChannel + 4095)));
}

TEST_F(MstPortsCommand, FollowsTheFlags) {
  for (const char *const key :
       {"port.4.edge", "port.4.peer", "port.4.dispute", "port.4.pre_standard_neighbor"}) {
    set(key, "true");
  }
  set("port.4.boundary", "false");
  EXPECT_EQ(reply_to(request(kGet, 5, kPort + 4)),
            hex(octets("57505453 0100 0300 84000000 07000000 00000000 09000000"
                       "06a00214 04000000 05000000"
                       "01a0020c 04000000 0400001a"
                       "08a00214 04000000 204e0000"
                       "03a00202 04000000 01000000"
                       "1da00202 04000000 01000000"
                       "28a00202 04000000 00000000"
                       "27a00202 04000000 01000000"
                       "2da00202 04000000 01000000"
                       "2ea00202 04000000 01000000")));
}

TEST_F(MstPortsCommand, HasNoRowsOutsideMstMode) {
  set("switch.mode", "rapid-pvst");
  for (const uint32_t action : {kGet, kGetNext}) {
    for (const uint32_t instance : {0U, 1U, 5U, 10U}) {
      for (const uint32_t if_index : {0U, kAnyOtherInterface, kPort + 1}) {
        EXPECT_EQ(refusal_of(request(action, instance, if_index)), CMD_NO_ENTRY)
            << instance << ", " << if_index;
      }
    }
  }
}

TEST_F(MstPortsCommand, TakesItsKeysOnly) {
  const KeyText instance = one_tree(protocol::kMstTreeKey, 5);
  const KeyText interface(protocol::kMstInterfaceKey, {kPort + 1});
  for (const uint32_t action : {kGet, kGetNext}) {
    EXPECT_EQ(refusal_of({111, action, {}}), CMD_UNKNOWN_KEY);
    EXPECT_EQ(refusal_of({111, action, {instance}}), CMD_UNKNOWN_KEY);
    EXPECT_EQ(refusal_of({111, action, {interface, interface}}), CMD_UNKNOWN_KEY);
    EXPECT_EQ(refusal_of({111, action, {instance, {protocol::kInterfaceKey, {kPort + 1}}}}), CMD_UNKNOWN_KEY);
    EXPECT_EQ(refusal_of({111, action, {one_tree(protocol::kVlanTreeKey, 5), interface}}), CMD_UNKNOWN_KEY);
    EXPECT_EQ(refusal_of({111, action, {instance, interface, interface}}), CMD_UNKNOWN_KEY);
  }
}

TEST_F(MstPortsCommand, TakesAListOfExactlyOneInstance) {
  for (const auto &list : kWrongLists) {
    for (const uint32_t action : {kGet, kGetNext}) {
      EXPECT_EQ(
          refusal_of({111,
                      action,
                      {range_list(protocol::kMstTreeKey, list), {protocol::kMstInterfaceKey, {kPort + 1}}}}),
          CMD_BAD_REQUEST);
    }
  }
}

}  // namespace
