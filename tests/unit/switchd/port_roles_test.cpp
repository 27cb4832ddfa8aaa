// The roles of ports in trees, as commands 105 and 111 tell them.
#include <gmock/gmock.h>

#include "protocol_numbers.h"
#include "support/command_test.h"

using namespace stpswitch;
using testing::ElementsAre;
using testing::Optional;

namespace {

// Instance 1 carries VLAN 10, instance 2 VLAN 20; VLAN 5 stays with the CIST.
constexpr char kScenario[] = R"(
[switch]
mode = "mst"
[[mst.instance]]
id = 1
vlans = "10"
[[mst.instance]]
id = 2
vlans = "20"
[[port]]
number = 1
vlans = "5,10,20"
root_port_of = "0-1,5"
alternate_port_of = "2,10"
backup_port_of = "20"
[[port]]
number = 2
vlans = "5,10,20"
[[port]]
number = 3
channel = 4
root_port_of = "0-20"
[[port_channel]]
number = 4
vlans = "5,10,20"
alternate_port_of = "0,10"
backup_port_of = "2,4094"
)";

constexpr uint32_t kPort = 0x1A000000;
constexpr uint32_t kChannel = 0x16000000;

constexpr uint32_t kDisabled = 1;
constexpr uint32_t kRoot = 2;
constexpr uint32_t kDesignated = 3;
constexpr uint32_t kAlternate = 4;
constexpr uint32_t kBackup = 5;

class PortRoles : public CommandTest {
 protected:
  PortRoles() { switch_.replace(parse_scenario(kScenario, "test.toml")); }

  static RequestText mst_request(uint32_t tree, uint32_t if_index) {
    return {111, kGet, {one_tree(protocol::kMstTreeKey, tree), {protocol::kMstInterfaceKey, {if_index}}}};
  }

  std::optional<uint32_t> mst_role(uint32_t tree, uint32_t if_index) const {
    return number_in_reply_to(mst_request(tree, if_index), protocol::kPortRole);
  }

  // In the CIST and the two instances.
  std::vector<uint32_t> mst_roles(uint32_t if_index) const {
    std::vector<uint32_t> roles;
    for (const uint32_t tree : {0U, 1U, 2U}) {
      roles.push_back(mst_role(tree, if_index).value_or(0));
    }
    return roles;
  }

  // In the trees of the three VLANs.
  std::vector<uint32_t> rapid_pvst_roles(uint32_t if_index) const {
    std::vector<uint32_t> roles;
    for (const uint32_t vlan : {5U, 10U, 20U}) {
      const RequestText request = {
          105, kGet, {one_tree(protocol::kVlanTreeKey, vlan), {protocol::kInterfaceKey, {if_index}}}};
      roles.push_back(number_in_reply_to(request, protocol::kPortRole).value_or(0));
    }
    return roles;
  }
};

TEST_F(PortRoles, AreThoseOfTheListsAndElseDesignated) {
  EXPECT_THAT(mst_roles(kPort + 1), ElementsAre(kRoot, kRoot, kAlternate));
  EXPECT_THAT(mst_roles(kPort + 2), ElementsAre(kDesignated, kDesignated, kDesignated));
  EXPECT_THAT(mst_roles(kChannel + 4), ElementsAre(kAlternate, kDesignated, kBackup));
}

TEST_F(PortRoles, AreThoseOfTheModesTrees) {
  set("switch.mode", "rapid-pvst");
  EXPECT_THAT(rapid_pvst_roles(kPort + 1), ElementsAre(kRoot, kAlternate, kBackup));
  EXPECT_THAT(rapid_pvst_roles(kPort + 2), ElementsAre(kDesignated, kDesignated, kDesignated));
  EXPECT_THAT(rapid_pvst_roles(kChannel + 4), ElementsAre(kDesignated, kAlternate, kDesignated));
}

TEST_F(PortRoles, OfPortsWithoutLinkAreDisabled) {
  set("port.1.link", "down");
  set("port.2.link", "down");
  EXPECT_THAT(mst_roles(kPort + 1), ElementsAre(kDisabled, kDisabled, kDisabled));
  EXPECT_THAT(mst_roles(kPort + 2), ElementsAre(kDisabled, kDisabled, kDisabled));
  set("port.1.link", "up");
  EXPECT_THAT(mst_roles(kPort + 1), ElementsAre(kRoot, kRoot, kAlternate));
}

TEST_F(PortRoles, OfPortChannelsFollowTheLinksOfTheirMembers) {
  set("port.3.link", "down");
  EXPECT_THAT(mst_roles(kChannel + 4), ElementsAre(kDisabled, kDisabled, kDisabled));
  set("port.2.channel", "4");
  EXPECT_THAT(mst_roles(kChannel + 4), ElementsAre(kAlternate, kDesignated, kBackup));
}

TEST_F(PortRoles, OfAPortThatJoinsAPortChannelAreGoneUntilItLeaves) {
  EXPECT_EQ(refusal_of(mst_request(0, kPort + 3)), CMD_NO_ENTRY);
  set("port.1.channel", "4");
  EXPECT_EQ(refusal_of(mst_request(0, kPort + 1)), CMD_NO_ENTRY);
  set("port.1.channel", "0");
  EXPECT_THAT(mst_roles(kPort + 1), ElementsAre(kRoot, kRoot, kAlternate));
}

TEST_F(PortRoles, FollowTheLists) {
  set("port.1.root_port_of", "0");
  EXPECT_THAT(mst_roles(kPort + 1), ElementsAre(kRoot, kDesignated, kAlternate));
  set("port.1.alternate_port_of", "1");
  set("port.1.backup_port_of", "2");
  EXPECT_THAT(mst_roles(kPort + 1), ElementsAre(kRoot, kAlternate, kBackup));
  set("port_channel.4.alternate_port_of", "");
  set("port_channel.4.backup_port_of", "");
  EXPECT_THAT(mst_roles(kChannel + 4), ElementsAre(kDesignated, kDesignated, kDesignated));
}

TEST_F(PortRoles, MakeNoPortAMember) {
  set("port.1.vlans", "5");
  EXPECT_THAT(mst_role(0, kPort + 1), Optional(kRoot));
  EXPECT_EQ(refusal_of(mst_request(1, kPort + 1)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(mst_request(2, kPort + 1)), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of(mst_request(4094, kChannel + 4)), CMD_NO_ENTRY);
}

}  // namespace
