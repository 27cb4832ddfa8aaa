// Command 115: the spanning trees of single VLANs.
#include <gmock/gmock.h>

#include "support/command_test.h"
#include "support/octets.h"

using namespace stpswitch;
using testing::ElementsAre;

namespace {

constexpr char kScenario[] = R"(
[switch]
mode = "rapid-pvst"
[rapid_pvst]
disabled_vlans = "30,50"
[[port]]
number = 1
vlans = "10,30"
link = "down"
[[port]]
number = 2
channel = 1
vlans = "11"
[[port]]
number = 3
switchport = false
vlans = "12"
[[port_channel]]
number = 1
vlans = "1,10,4094"
)";

class VlanTreesCommand : public CommandTest {
 protected:
  VlanTreesCommand() { switch_.replace(parse_scenario(kScenario, "test.toml")); }

  static RequestText request(uint32_t action, uint32_t vlan) {
    return {115, action, {one_tree(protocol::kVlanTreeKey, vlan)}};
  }
  static RequestText request_after(uint32_t vlan) { return request(kGetNext, vlan); }

  std::vector<uint32_t> rows(uint32_t from = 0) const { return walk(request_after, from, 0x1402'9001); }
};

constexpr char kRunsOnVlan10[] =
    "57505453 0100 0300 3c000000 07000000 00000000 03000000"
    "01b00202 04000000 05000000"
    "01900214 04000000 0a000000"
    "2c100000 04000000 01000000";

constexpr char kIsOffOnVlan30[] =
    "57505453 0100 0300 3c000000 07000000 00000000 03000000"
    "01b00202 04000000 05000000"
    "01900214 04000000 1e000000"
    "2c100000 04000000 00000000";

constexpr char kMstMode[] =
    "57505453 0100 0300 24000000 07000000 00000000 01000000"
    "01b00202 04000000 04000000";

TEST_F(VlanTreesCommand, AnswersForExactlyTheVlan) {
  EXPECT_EQ(reply_to(request(kGet, 10)), hex(octets(kRunsOnVlan10)));
  EXPECT_EQ(reply_to(request(kGet, 30)), hex(octets(kIsOffOnVlan30)));
}

TEST_F(VlanTreesCommand, AnswersForTheNextVlan) {
  EXPECT_EQ(reply_to(request(kGetNext, 1)), hex(octets(kRunsOnVlan10)));
  EXPECT_EQ(reply_to(request(kGetNext, 9)), hex(octets(kRunsOnVlan10)));
  EXPECT_EQ(reply_to(request(kGetNext, 10)), hex(octets(kIsOffOnVlan30)));
}

TEST_F(VlanTreesCommand, HasARowForEachVlanOfABridgePort) {
  EXPECT_THAT(rows(), ElementsAre(1, 10, 30, 4094));
  EXPECT_THAT(rows(1), ElementsAre(10, 30, 4094));
  EXPECT_THAT(rows(4093), ElementsAre(4094));
}

TEST_F(VlanTreesCommand, HasNothingBehindTheLastRow) {
  for (const uint32_t vlan : {4094U, 4095U, 65536U, 0xFFFF'FFFFU}) {
    EXPECT_EQ(refusal_of(request(kGetNext, vlan)), CMD_NO_ENTRY) << vlan;
  }
}

TEST_F(VlanTreesCommand, HasNoRowForVlansOutOfUse) {
  for (const uint32_t vlan : {0U, 2U, 11U, 12U, 50U, 4095U, 4096U, 65546U, 0xFFFF'FFFFU}) {
    EXPECT_EQ(refusal_of(request(kGet, vlan)), CMD_NO_ENTRY) << vlan;
  }
}

TEST_F(VlanTreesCommand, FollowsVlansMembershipAndBridging) {
  set("port.1.vlans", "20");
  EXPECT_THAT(rows(), ElementsAre(1, 10, 20, 4094));
  set("port_channel.1.vlans", "");
  EXPECT_THAT(rows(), ElementsAre(20));
  set("port.2.channel", "0");
  EXPECT_THAT(rows(), ElementsAre(11, 20));
  set("port.1.channel", "1");
  EXPECT_THAT(rows(), ElementsAre(11));
  set("port.3.switchport", "true");
  EXPECT_THAT(rows(), ElementsAre(11, 12));
  set("port.2.switchport", "false");
  EXPECT_THAT(rows(), ElementsAre(12));
  set("port.3.vlans", "");
  EXPECT_THAT(rows(), ElementsAre());
}

TEST_F(VlanTreesCommand, FollowsTheDisabledVlans) {
  set("rapid_pvst.disabled_vlans", "1-29");
  std::string off(kRunsOnVlan10);
  off.replace(off.size() - 8, 8, "00000000");
  EXPECT_EQ(reply_to(request(kGet, 10)), hex(octets(off)));
  set("rapid_pvst.disabled_vlans", "");
  EXPECT_EQ(reply_to(request(kGet, 10)), hex(octets(kRunsOnVlan10)));
  EXPECT_THAT(rows(), ElementsAre(1, 10, 30, 4094));
}

TEST_F(VlanTreesCommand, AnswersWithTheModeAloneInMstMode) {
  set("switch.mode", "mst");
  for (const uint32_t action : {kGet, kGetNext}) {
    for (const uint32_t vlan : {0U, 10U, 11U, 4094U, 0xFFFF'FFFFU}) {
      EXPECT_EQ(reply_to(request(action, vlan)), hex(octets(kMstMode))) << vlan;
    }
  }
}

TEST_F(VlanTreesCommand, TakesItsKeyOnly) {
  const KeyText key = one_tree(protocol::kVlanTreeKey, 10);
  for (const char *const mode : {"mst", "rapid-pvst"}) {
    set("switch.mode", mode);
    for (const uint32_t action : {kGet, kGetNext}) {
      EXPECT_EQ(refusal_of({115, action, {}}), CMD_UNKNOWN_KEY);
      EXPECT_EQ(refusal_of({115, action, {key, key}}), CMD_UNKNOWN_KEY);
      EXPECT_EQ(refusal_of({115, action, {one_tree(protocol::kMstTreeKey, 10)}}), CMD_UNKNOWN_KEY);
      EXPECT_EQ(refusal_of({115, action, {key, {protocol::kInterfaceKey, {0x1A000001}}}}), CMD_UNKNOWN_KEY);
    }
  }
}

TEST_F(VlanTreesCommand, TakesAListOfExactlyOneVlan) {
  const std::vector<std::vector<std::pair<uint32_t, uint32_t>>> lists = {
      {},         {{10, 10}, {10, 10}}, {{10, 11}},
      {{11, 10}}, {{0, 0xFFFF'FFFF}},   std::vector<std::pair<uint32_t, uint32_t>>(512, {10, 10})};
  for (const char *const mode : {"mst", "rapid-pvst"}) {
    set("switch.mode", mode);
    for (const auto &list : lists) {
      for (const uint32_t action : {kGet, kGetNext}) {
        EXPECT_EQ(refusal_of({115, action, {range_list(protocol::kVlanTreeKey, list)}}), CMD_BAD_REQUEST);
      }
    }
  }
}

TEST_F(VlanTreesCommand, RefusesAListOfAnotherLengthThanItsCount) {
  EXPECT_EQ(refusal_of({115, kGet, {{protocol::kVlanTreeKey, {0, 2, 10, 10}}}}), CMD_BAD_REQUEST);
  EXPECT_EQ(refusal_of({115, kGet, {{protocol::kVlanTreeKey, {0, 0, 10, 10}}}}), CMD_BAD_REQUEST);
  EXPECT_EQ(refusal_of({115, kGet, {{protocol::kVlanTreeKey, {0}}}}), CMD_BAD_REQUEST);
}

TEST_F(VlanTreesCommand, IgnoresTheReservedWordOfAList) {
  EXPECT_EQ(reply_to({115, kGet, {{protocol::kVlanTreeKey, {0xFFFF'FFFF, 1, 10, 10}}}}),
            hex(octets(kRunsOnVlan10)));
}

}  // namespace
