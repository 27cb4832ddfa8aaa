// Commands 117, 118 and 119: what is configured on the bridge ports.
#include <gmock/gmock.h>

#include "protocol_numbers.h"
#include "support/command_test.h"
#include "support/octets.h"

using namespace stpswitch;
using testing::ElementsAre;

namespace {

constexpr char kScenario[] = R"(
[switch]
mode = "mst"
[[port]]
number = 3967
[[port]]
number = 4
link = "down"
root_guard = true
loop_guard = "disabled"
link_type = "shared"
pre_standard_mst = true
[[port]]
number = 7
channel = 2
root_guard = true
loop_guard = "enabled"
link_type = "shared"
[[port]]
number = 9
switchport = false
root_guard = true
loop_guard = "enabled"
link_type = "shared"
[[port_channel]]
number = 4095
root_guard = true
[[port_channel]]
number = 2
)";

constexpr uint32_t kPort = 0x1A000000;
constexpr uint32_t kChannel = 0x16000000;

RequestText request(uint32_t command, uint32_t action, uint32_t if_index) {
  return {command, action, {{protocol::kInterfaceKey, {if_index}}}};
}

class PortSettings : public CommandTest {
 protected:
  PortSettings() { switch_.replace(parse_scenario(kScenario, "test.toml")); }
};

// What each of the commands has to itself.

constexpr char kRootGuardOfPort4[] =
    "57505453 0100 0300 30000000 07000000 00000000 02000000"
    "01a0020c 04000000 0400001a"
    "1aa00202 04000000 01000000";

constexpr char kRootGuardOfChannel2[] =
    "57505453 0100 0300 30000000 07000000 00000000 02000000"
    "01a0020c 04000000 02000016"
    "1aa00202 04000000 02000000";

TEST_F(PortSettings, TellWhetherRootGuardIsEnabled) {
  EXPECT_EQ(reply_to(request(protocol::kRootGuard, kGet, kPort + 4)), hex(octets(kRootGuardOfPort4)));
  EXPECT_EQ(reply_to(request(protocol::kRootGuard, kGet, kChannel + 2)), hex(octets(kRootGuardOfChannel2)));
  EXPECT_EQ(reply_to(request(protocol::kRootGuard, kGetNext, 0)), hex(octets(kRootGuardOfChannel2)));
  EXPECT_EQ(reply_to(request(protocol::kRootGuard, kGetNext, kChannel + 4095)),
            hex(octets(kRootGuardOfPort4)));
}

TEST_F(PortSettings, FollowRootGuard) {
  set("port.4.root_guard", "false");
  EXPECT_EQ(reply_to(request(protocol::kRootGuard, kGet, kPort + 4)),
            hex(octets("57505453 0100 0300 30000000 07000000 00000000 02000000"
                       "01a0020c 04000000 0400001a"
                       "1aa00202 04000000 02000000")));
  set("port.4.root_guard", "true");
  EXPECT_EQ(reply_to(request(protocol::kRootGuard, kGet, kPort + 4)), hex(octets(kRootGuardOfPort4)));
}

constexpr char kLoopGuardOfPort4[] =
    "57505453 0100 0300 30000000 07000000 00000000 02000000"
    "01a0020c 04000000 0400001a"
    "1aa00202 04000000 02000000";

constexpr char kLoopGuardOfChannel2[] =
    "57505453 0100 0300 30000000 07000000 00000000 02000000"
    "01a0020c 04000000 02000016"
    "1aa00202 04000000 03000000";

TEST_F(PortSettings, TellWhatLoopGuardIsSetTo) {
  EXPECT_EQ(reply_to(request(protocol::kLoopGuard, kGet, kPort + 4)), hex(octets(kLoopGuardOfPort4)));
  EXPECT_EQ(reply_to(request(protocol::kLoopGuard, kGet, kChannel + 2)), hex(octets(kLoopGuardOfChannel2)));
  EXPECT_EQ(reply_to(request(protocol::kLoopGuard, kGetNext, 0)), hex(octets(kLoopGuardOfChannel2)));
  EXPECT_EQ(reply_to(request(protocol::kLoopGuard, kGetNext, kChannel + 4095)),
            hex(octets(kLoopGuardOfPort4)));
}

TEST_F(PortSettings, FollowLoopGuard) {
  set("port.4.loop_guard", "enabled");
  EXPECT_EQ(reply_to(request(protocol::kLoopGuard, kGet, kPort + 4)),
            hex(octets("57505453 0100 0300 30000000 07000000 00000000 02000000"
                       "01a0020c 04000000 0400001a"
                       "1aa00202 04000000 01000000")));
  set("port_channel.2.loop_guard", "disabled");
  EXPECT_EQ(reply_to(request(protocol::kLoopGuard, kGet, kChannel + 2)),
            hex(octets("57505453 0100 0300 30000000 07000000 00000000 02000000"
                       "01a0020c 04000000 02000016"
                       "1aa00202 04000000 02000000")));
  set("port_channel.2.loop_guard", "default");
  EXPECT_EQ(reply_to(request(protocol::kLoopGuard, kGet, kChannel + 2)), hex(octets(kLoopGuardOfChannel2)));
}

TEST_F(PortSettings, TellDefaultLoopGuardWhateverTheDefaultIs) {
  set("switch.loop_guard_default", "true");
  EXPECT_EQ(reply_to(request(protocol::kLoopGuard, kGet, kChannel + 2)), hex(octets(kLoopGuardOfChannel2)));
}

constexpr char kSettingsOfPort4[] =
    "57505453 0100 0300 3c000000 07000000 00000000 03000000"
    "01a0020c 04000000 0400001a"
    "19a00202 04000000 02000000"
    "aa000201 04000000 01000000";

constexpr char kSettingsOfChannel2[] =
    "57505453 0100 0300 3c000000 07000000 00000000 03000000"
    "01a0020c 04000000 02000016"
    "19a00202 04000000 03000000"
    "aa000201 04000000 00000000";

TEST_F(PortSettings, TellLinkTypeAndPreStandardMst) {
  EXPECT_EQ(reply_to(request(protocol::kPortSettings, kGet, kPort + 4)), hex(octets(kSettingsOfPort4)));
  EXPECT_EQ(reply_to(request(protocol::kPortSettings, kGet, kChannel + 2)), hex(octets(kSettingsOfChannel2)));
  EXPECT_EQ(reply_to(request(protocol::kPortSettings, kGetNext, 0)), hex(octets(kSettingsOfChannel2)));
  EXPECT_EQ(reply_to(request(protocol::kPortSettings, kGetNext, kChannel + 4095)),
            hex(octets(kSettingsOfPort4)));
}

TEST_F(PortSettings, FollowLinkTypeAndPreStandardMst) {
  set("port.4.link_type", "point-to-point");
  set("port.4.pre_standard_mst", "false");
  EXPECT_EQ(reply_to(request(protocol::kPortSettings, kGet, kPort + 4)),
            hex(octets("57505453 0100 0300 3c000000 07000000 00000000 03000000"
                       "01a0020c 04000000 0400001a"
                       "19a00202 04000000 01000000"
                       "aa000201 04000000 00000000")));
}

TEST_F(PortSettings, TellTheLinkTypeThatIsConfiguredWhateverTheLinkIs) {
  set("port.3967.half_duplex", "true");
  EXPECT_EQ(reply_to(request(protocol::kPortSettings, kGet, kPort + 3967)),
            hex(octets("57505453 0100 0300 3c000000 07000000 00000000 03000000"
                       "01a0020c 04000000 7f0f001a"
                       "19a00202 04000000 03000000"
                       "aa000201 04000000 00000000")));
}

// What they have in common.

class EachPortSettingsCommand : public PortSettings, public testing::WithParamInterface<uint32_t> {
 protected:
  std::vector<uint32_t> rows(uint32_t from = 0) const {
    return walk([](uint32_t if_index) { return request(GetParam(), kGetNext, if_index); }, from,
                protocol::kInterface);
  }
};

INSTANTIATE_TEST_SUITE_P(Commands, EachPortSettingsCommand,
                         testing::Values(protocol::kRootGuard, protocol::kLoopGuard, protocol::kPortSettings),
                         testing::PrintToStringParamName());

TEST_P(EachPortSettingsCommand, HasARowForEachBridgePortInTheOrderOfInterfaceIndexes) {
  EXPECT_THAT(rows(), ElementsAre(kChannel + 2, kChannel + 4095, kPort + 4, kPort + 3967));
  EXPECT_THAT(rows(kChannel + 2), ElementsAre(kChannel + 4095, kPort + 4, kPort + 3967));
  EXPECT_THAT(rows(kPort + 3), ElementsAre(kPort + 4, kPort + 3967));
  EXPECT_THAT(rows(kPort + 5), ElementsAre(kPort + 3967));
  EXPECT_THAT(rows(kPort + 3966), ElementsAre(kPort + 3967));
}

TEST_P(EachPortSettingsCommand, HasNothingBehindTheLastRow) {
  for (const uint32_t if_index : {kPort + 3967, kPort + 3968, 0xFFFF'FFFFU}) {
    EXPECT_EQ(refusal_of(request(GetParam(), kGetNext, if_index)), CMD_NO_ENTRY) << if_index;
  }
}

TEST_P(EachPortSettingsCommand, HasNoRowForMembersRoutedPortsAndWhatIsNotThere) {
  for (const uint32_t if_index :
       {0U, 4U, kPort, kPort + 1, kPort + 7, kPort + 9, kChannel + 1, 0x1700'0002U, 0xFFFF'FFFFU}) {
    EXPECT_EQ(refusal_of(request(GetParam(), kGet, if_index)), CMD_NO_ENTRY) << if_index;
  }
}

TEST_P(EachPortSettingsCommand, HasNoRowsOnASwitchWithoutPorts) {
  switch_.replace({});
  EXPECT_THAT(rows(), ElementsAre());
}

TEST_P(EachPortSettingsCommand, FollowsMembershipAndBridging) {
  set("port.7.channel", "0");
  EXPECT_THAT(rows(), ElementsAre(kChannel + 2, kChannel + 4095, kPort + 4, kPort + 7, kPort + 3967));
  set("port.4.channel", "4095");
  EXPECT_THAT(rows(), ElementsAre(kChannel + 2, kChannel + 4095, kPort + 7, kPort + 3967));
  set("port.9.switchport", "true");
  EXPECT_THAT(rows(), ElementsAre(kChannel + 2, kChannel + 4095, kPort + 7, kPort + 9, kPort + 3967));
  set("port.3967.switchport", "false");
  EXPECT_THAT(rows(), ElementsAre(kChannel + 2, kChannel + 4095, kPort + 7, kPort + 9));
}

TEST_P(EachPortSettingsCommand, DoesNotDependOnModeVlansOrLinks) {
  const auto before = rows();
  const std::string port = reply_to(request(GetParam(), kGet, kPort + 4));
  set("switch.mode", "rapid-pvst");
  set("port.3967.link", "down");
  set("port.4.link", "up");
  set("port.4.vlans", "");
  EXPECT_EQ(rows(), before);
  EXPECT_EQ(reply_to(request(GetParam(), kGet, kPort + 4)), port);
}

TEST_P(EachPortSettingsCommand, TakesItsKeyOnly) {
  const KeyText key(protocol::kInterfaceKey, {kPort + 4});
  for (const uint32_t action : {kGet, kGetNext}) {
    EXPECT_EQ(refusal_of({GetParam(), action, {}}), CMD_UNKNOWN_KEY);
    EXPECT_EQ(refusal_of({GetParam(), action, {key, key}}), CMD_UNKNOWN_KEY);
    EXPECT_EQ(refusal_of({GetParam(), action, {protocol::kGlobalSettingsKey}}), CMD_UNKNOWN_KEY);
    EXPECT_EQ(refusal_of({GetParam(), action, {key, one_tree(protocol::kMstTreeKey, 0)}}), CMD_UNKNOWN_KEY);
    EXPECT_EQ(refusal_of({GetParam(), action, {key, one_tree(protocol::kVlanTreeKey, 1)}}), CMD_UNKNOWN_KEY);
    EXPECT_EQ(refusal_of({GetParam(), action, {{protocol::kMstInterfaceKey, {kPort + 4}}}}), CMD_UNKNOWN_KEY);
    EXPECT_EQ(refusal_of({GetParam(), action, {{0x0C02'A001, {kPort + 4}}}}), CMD_UNKNOWN_KEY);
  }
}

}  // namespace
