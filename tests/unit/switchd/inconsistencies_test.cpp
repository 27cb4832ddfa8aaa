// Commands 116, 120 and 121: the inconsistencies of ports of trees.
#include <gmock/gmock.h>

#include "support/command_test.h"
#include "support/octets.h"

using namespace stpswitch;
using testing::ElementsAre;
using testing::Pair;

namespace {

constexpr char kScenario[] = R"(
[switch]
mode = "rapid-pvst"
[[mst.instance]]
id = 10
vlans = "10-30"
[rapid_pvst]
disabled_vlans = "40"
[[port]]
number = 1
vlans = "1,10,20,40"
root_inconsistent = "0-2,10,40"
pvid_inconsistent = "1,10"
type_inconsistent = "10,40"
[[port]]
number = 2
vlans = "1,4094"
loop_inconsistent = "4094"
type_inconsistent = "4094"
link = "down"
[[port]]
number = 7
channel = 2
vlans = "1,10"
root_inconsistent = "1"
pvid_inconsistent = "1"
[[port]]
number = 9
switchport = false
vlans = "1,10"
loop_inconsistent = "1"
[[port_channel]]
number = 2
vlans = "10,20"
root_inconsistent = "0,10"
loop_inconsistent = "10,20"
pvid_inconsistent = "20"
)";

constexpr uint32_t kPort = 0x1A000000;
constexpr uint32_t kChannel = 0x16000000;
constexpr uint32_t kAnyOtherInterface = 129;
constexpr uint32_t kHighest = 0xFFFF'FFFF;

class InconsistencyCommands : public CommandTest {
 protected:
  InconsistencyCommands() { switch_.replace(parse_scenario(kScenario, "test.toml")); }

  static RequestText request(uint32_t command, uint32_t action, uint32_t tree, uint32_t if_index) {
    return {command, action, {one_tree(protocol::kVlanTreeKey, tree), {protocol::kInterfaceKey, {if_index}}}};
  }

  template <uint32_t kCommand>
  static RequestText request_after(const TreePortRow &row) {
    return request(kCommand, kGetNext, row.first, row.second);
  }

  template <uint32_t kCommand>
  std::vector<TreePortRow> rows() const {
    return walk_tree_ports(request_after<kCommand>, {0, kAnyOtherInterface});
  }
};

// A reply with one row, its numbers as they stand in it.
std::string row(const std::string &tree, const std::string &if_index, const std::string &state) {
  return hex(
      octets("57505453 0100 0300 3c000000 07000000 00000000 03000000"
             "06a00214 04000000" +
             tree + "01a0020c 04000000" + if_index + "15a00214 04000000" + state));
}

TEST_F(InconsistencyCommands, AnswerForExactlyThePortOfTheTree) {
  EXPECT_EQ(reply_to(request(116, kGet, 1, kPort + 1)), row("01000000", "0100001a", "01000000"));
  EXPECT_EQ(reply_to(request(116, kGet, 4094, kPort + 2)), row("fe0f0000", "0200001a", "02000000"));
  EXPECT_EQ(reply_to(request(116, kGet, 10, kPort + 1)), row("0a000000", "0100001a", "03000000"));
  EXPECT_EQ(reply_to(request(120, kGet, 10, kChannel + 2)), row("0a000000", "02000016", "01000000"));
  EXPECT_EQ(reply_to(request(121, kGet, 20, kChannel + 2)), row("14000000", "02000016", "01000000"));
}

TEST_F(InconsistencyCommands, TakeTheirKeysInAnyOrder) {
  EXPECT_EQ(
      reply_to({116, kGet, {{protocol::kInterfaceKey, {kPort + 1}}, one_tree(protocol::kVlanTreeKey, 10)}}),
      row("0a000000", "0100001a", "03000000"));
}

TEST_F(InconsistencyCommands, AnswerForTheNextPort) {
  EXPECT_EQ(reply_to(request(116, kGetNext, 10, 0)), row("0a000000", "0100001a", "03000000"));
  EXPECT_EQ(reply_to(request(116, kGetNext, 1, kPort + 1)), row("0a000000", "0100001a", "03000000"));
  EXPECT_EQ(reply_to(request(116, kGetNext, 5, kAnyOtherInterface)), row("0a000000", "0100001a", "03000000"));
  EXPECT_EQ(reply_to(request(120, kGetNext, 10, kAnyOtherInterface)),
            row("0a000000", "02000016", "01000000"));
  EXPECT_EQ(reply_to(request(120, kGetNext, 10, kChannel + 2)), row("0a000000", "0100001a", "01000000"));
  EXPECT_EQ(reply_to(request(121, kGetNext, 10, kHighest)), row("14000000", "02000016", "01000000"));
  EXPECT_EQ(reply_to(request(121, kGetNext, 4000, kHighest)), row("fe0f0000", "0200001a", "01000000"));
}

TEST_F(InconsistencyCommands, AnswerForALaterTreeBehindOneWithoutRows) {
  EXPECT_EQ(reply_to(request(121, kGetNext, 1, 0)), row("0a000000", "02000016", "01000000"));
}

TEST_F(InconsistencyCommands, HaveNothingAtTheBeginningOfATreeThatDoesNotExist) {
  for (const uint32_t command : {116U, 120U, 121U}) {
    for (const uint32_t tree : {0U, 2U, 40U, 4093U, 4095U, kHighest}) {
      EXPECT_EQ(refusal_of(request(command, kGetNext, tree, 0)), CMD_NO_ENTRY) << command << ": " << tree;
    }
  }
}

TEST_F(InconsistencyCommands, HaveRowsWherePortAndTreeExist) {
  EXPECT_THAT(rows<116>(), ElementsAre(Pair(1, kPort + 1), Pair(10, kPort + 1), Pair(20, kChannel + 2),
                                       Pair(4094, kPort + 2)));
  EXPECT_THAT(rows<120>(), ElementsAre(Pair(1, kPort + 1), Pair(10, kChannel + 2), Pair(10, kPort + 1)));
  EXPECT_THAT(rows<121>(),
              ElementsAre(Pair(10, kChannel + 2), Pair(20, kChannel + 2), Pair(4094, kPort + 2)));
}

TEST_F(InconsistencyCommands, HaveRowsOfTheCistAndOfInstancesInMstMode) {
  set("switch.mode", "mst");
  EXPECT_THAT(rows<120>(), ElementsAre(Pair(0, kChannel + 2), Pair(0, kPort + 1), Pair(10, kChannel + 2),
                                       Pair(10, kPort + 1)));
  EXPECT_THAT(rows<121>(), ElementsAre(Pair(10, kChannel + 2)));
  EXPECT_EQ(reply_to(request(120, kGetNext, 0, 0)), row("00000000", "02000016", "01000000"));
  EXPECT_EQ(reply_to(request(121, kGetNext, 0, 0)), row("0a000000", "02000016", "01000000"));
  EXPECT_EQ(refusal_of(request(121, kGetNext, 1, 0)), CMD_NO_ENTRY);
}

TEST_F(InconsistencyCommands, HaveNoRowsOfPortVlanIdentifiersAndTypesInMstMode) {
  set("switch.mode", "mst");
  EXPECT_THAT(rows<116>(), ElementsAre());
  EXPECT_EQ(refusal_of(request(116, kGet, 10, kPort + 1)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(request(116, kGetNext, 0, 0)), CMD_NO_ENTRY);
}

TEST_F(InconsistencyCommands, HaveNothingBehindTheLastRow) {
  EXPECT_EQ(refusal_of(request(116, kGetNext, 4094, kPort + 2)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(request(120, kGetNext, 10, kPort + 1)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(request(120, kGetNext, 20, 0)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(request(121, kGetNext, 4095, kAnyOtherInterface)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(request(121, kGetNext, kHighest, kHighest)), CMD_NO_ENTRY);
}

TEST_F(InconsistencyCommands, HaveNoOtherRows) {
  EXPECT_EQ(refusal_of(request(116, kGet, 20, kPort + 1)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(request(116, kGet, 40, kPort + 1)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(request(120, kGet, 0, kPort + 1)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(request(120, kGet, 2, kPort + 1)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(request(120, kGet, 1, kPort + 7)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(request(121, kGet, 1, kPort + 9)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(request(121, kGet, 4096 + 20, kChannel + 2)), CMD_NO_ENTRY);
}

TEST_F(InconsistencyCommands, FollowTheKeys) {
  set("port.1.pvid_inconsistent", "");
  EXPECT_EQ(reply_to(request(116, kGet, 10, kPort + 1)), row("0a000000", "0100001a", "02000000"));
  set("port.1.type_inconsistent", "20");
  EXPECT_THAT(rows<116>(), ElementsAre(Pair(20, kChannel + 2), Pair(20, kPort + 1), Pair(4094, kPort + 2)));
  set("port_channel.2.root_inconsistent", "");
  EXPECT_THAT(rows<120>(), ElementsAre(Pair(1, kPort + 1), Pair(10, kPort + 1)));
  set("port.2.loop_inconsistent", "0-4094");
  EXPECT_THAT(rows<121>(), ElementsAre(Pair(1, kPort + 2), Pair(10, kChannel + 2), Pair(20, kChannel + 2),
                                       Pair(4094, kPort + 2)));
}

TEST_F(InconsistencyCommands, FollowMembershipAndTrees) {
  set("port.7.channel", "0");
  set("port.9.switchport", "true");
  set("port_channel.2.vlans", "20");
  set("rapid_pvst.disabled_vlans", "4094");
  EXPECT_THAT(rows<116>(), ElementsAre(Pair(1, kPort + 1), Pair(1, kPort + 7), Pair(10, kPort + 1),
                                       Pair(20, kChannel + 2), Pair(40, kPort + 1)));
  EXPECT_THAT(rows<120>(),
              ElementsAre(Pair(1, kPort + 1), Pair(1, kPort + 7), Pair(10, kPort + 1), Pair(40, kPort + 1)));
  EXPECT_THAT(rows<121>(), ElementsAre(Pair(1, kPort + 9), Pair(20, kChannel + 2)));
}

TEST_F(InconsistencyCommands, TakeTheirKeysOnly) {
  const KeyText tree = one_tree(protocol::kVlanTreeKey, 10);
  const KeyText interface(protocol::kInterfaceKey, {kPort + 1});
  for (const char *const mode : {"mst", "rapid-pvst"}) {
    set("switch.mode", mode);
    for (const uint32_t command : {116U, 120U, 121U}) {
      for (const uint32_t action : {kGet, kGetNext}) {
        EXPECT_EQ(refusal_of({command, action, {}}), CMD_UNKNOWN_KEY);
        EXPECT_EQ(refusal_of({command, action, {tree}}), CMD_UNKNOWN_KEY);
        EXPECT_EQ(refusal_of({command, action, {interface}}), CMD_UNKNOWN_KEY);
        EXPECT_EQ(refusal_of({command, action, {tree, interface, interface}}), CMD_UNKNOWN_KEY);
        EXPECT_EQ(refusal_of({command, action, {one_tree(protocol::kMstTreeKey, 10), interface}}),
                  CMD_UNKNOWN_KEY);
        EXPECT_EQ(refusal_of({command, action, {tree, {protocol::kMstInterfaceKey, {kPort + 1}}}}),
                  CMD_UNKNOWN_KEY);
      }
    }
  }
}

TEST_F(InconsistencyCommands, TakeAListOfExactlyOneTree) {
  const std::vector<std::vector<std::pair<uint32_t, uint32_t>>> lists = {
      {}, {{10, 10}, {10, 10}}, {{10, 11}}, {{11, 10}}};
  for (const char *const mode : {"mst", "rapid-pvst"}) {
    set("switch.mode", mode);
    for (const uint32_t command : {116U, 120U, 121U}) {
      for (const auto &list : lists) {
        for (const uint32_t action : {kGet, kGetNext}) {
          EXPECT_EQ(refusal_of(
                        {command,
                         action,
                         {range_list(protocol::kVlanTreeKey, list), {protocol::kInterfaceKey, {kPort + 1}}}}),
                    CMD_BAD_REQUEST);
        }
      }
    }
  }
}

}  // namespace
