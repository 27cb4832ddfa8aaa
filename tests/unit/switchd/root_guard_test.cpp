// Command 117: root guard of the bridge ports.
#include <gmock/gmock.h>

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
root_guard = true
link = "down"
[[port]]
number = 7
channel = 2
root_guard = true
[[port]]
number = 9
switchport = false
root_guard = true
[[port_channel]]
number = 4095
root_guard = true
[[port_channel]]
number = 2
)";

constexpr uint32_t kPort = 0x1A000000;
constexpr uint32_t kChannel = 0x16000000;

class RootGuardCommand : public CommandTest {
 protected:
  RootGuardCommand() { switch_.replace(parse_scenario(kScenario, "test.toml")); }

  static RequestText request(uint32_t action, uint32_t if_index) {
    return {117, action, {{kInterfaceKey, {if_index}}}};
  }
  static RequestText request_after(uint32_t if_index) { return request(kGetNext, if_index); }

  std::vector<uint32_t> rows(uint32_t from = 0) const { return walk(request_after, from, 0x0C02'A001); }
};

constexpr char kEnabledOnPort4[] =
    "57505453 0100 0300 30000000 07000000 00000000 02000000"
    "01a0020c 04000000 0400001a"
    "1aa00202 04000000 01000000";

constexpr char kDisabledOnChannel2[] =
    "57505453 0100 0300 30000000 07000000 00000000 02000000"
    "01a0020c 04000000 02000016"
    "1aa00202 04000000 02000000";

TEST_F(RootGuardCommand, AnswersForExactlyTheInterface) {
  EXPECT_EQ(reply_to(request(kGet, kPort + 4)), hex(octets(kEnabledOnPort4)));
  EXPECT_EQ(reply_to(request(kGet, kChannel + 2)), hex(octets(kDisabledOnChannel2)));
}

TEST_F(RootGuardCommand, AnswersForTheNextInterface) {
  EXPECT_EQ(reply_to(request(kGetNext, 0)), hex(octets(kDisabledOnChannel2)));
  EXPECT_EQ(reply_to(request(kGetNext, kChannel + 1)), hex(octets(kDisabledOnChannel2)));
  EXPECT_EQ(reply_to(request(kGetNext, kChannel + 4095)), hex(octets(kEnabledOnPort4)));
  EXPECT_EQ(reply_to(request(kGetNext, kPort + 3)), hex(octets(kEnabledOnPort4)));
}

TEST_F(RootGuardCommand, HasARowForEachBridgePortInTheOrderOfInterfaceIndexes) {
  EXPECT_THAT(rows(), ElementsAre(kChannel + 2, kChannel + 4095, kPort + 4, kPort + 3967));
  EXPECT_THAT(rows(kChannel + 2), ElementsAre(kChannel + 4095, kPort + 4, kPort + 3967));
  EXPECT_THAT(rows(kPort + 5), ElementsAre(kPort + 3967));
  EXPECT_THAT(rows(kPort + 3966), ElementsAre(kPort + 3967));
}

TEST_F(RootGuardCommand, HasNothingBehindTheLastRow) {
  for (const uint32_t if_index : {kPort + 3967, kPort + 3968, 0xFFFF'FFFFU}) {
    EXPECT_EQ(refusal_of(request(kGetNext, if_index)), CMD_NO_ENTRY) << if_index;
  }
}

TEST_F(RootGuardCommand, HasNoRowForMembersRoutedPortsAndWhatIsNotThere) {
  for (const uint32_t if_index :
       {0U, 4U, kPort, kPort + 1, kPort + 7, kPort + 9, kChannel + 1, 0x1700'0002U, 0xFFFF'FFFFU}) {
    EXPECT_EQ(refusal_of(request(kGet, if_index)), CMD_NO_ENTRY) << if_index;
  }
}

TEST_F(RootGuardCommand, HasNoRowsOnASwitchWithoutPorts) {
  switch_.replace({});
  EXPECT_THAT(rows(), ElementsAre());
}

TEST_F(RootGuardCommand, FollowsTheSetting) {
  set("port.4.root_guard", "false");
  std::string disabled(kEnabledOnPort4);
  disabled.replace(disabled.size() - 8, 8, "02000000");
  EXPECT_EQ(reply_to(request(kGet, kPort + 4)), hex(octets(disabled)));
  set("port.4.root_guard", "true");
  EXPECT_EQ(reply_to(request(kGet, kPort + 4)), hex(octets(kEnabledOnPort4)));
}

TEST_F(RootGuardCommand, FollowsMembershipAndBridging) {
  set("port.7.channel", "0");
  EXPECT_THAT(rows(), ElementsAre(kChannel + 2, kChannel + 4095, kPort + 4, kPort + 7, kPort + 3967));
  set("port.4.channel", "4095");
  EXPECT_THAT(rows(), ElementsAre(kChannel + 2, kChannel + 4095, kPort + 7, kPort + 3967));
  set("port.9.switchport", "true");
  EXPECT_THAT(rows(), ElementsAre(kChannel + 2, kChannel + 4095, kPort + 7, kPort + 9, kPort + 3967));
  set("port.3967.switchport", "false");
  EXPECT_THAT(rows(), ElementsAre(kChannel + 2, kChannel + 4095, kPort + 7, kPort + 9));
}

TEST_F(RootGuardCommand, DoesNotDependOnModeOrLinks) {
  const auto before = rows();
  set("switch.mode", "rapid-pvst");
  set("port.3967.link", "down");
  EXPECT_EQ(rows(), before);
}

TEST_F(RootGuardCommand, TakesItsKeyOnly) {
  const KeyText key(kInterfaceKey, {kPort + 4});
  for (const uint32_t action : {kGet, kGetNext}) {
    EXPECT_EQ(refusal_of({117, action, {}}), CMD_UNKNOWN_KEY);
    EXPECT_EQ(refusal_of({117, action, {key, key}}), CMD_UNKNOWN_KEY);
    EXPECT_EQ(refusal_of({117, action, {kGlobalSettingsKey}}), CMD_UNKNOWN_KEY);
    EXPECT_EQ(refusal_of({117, action, {key, one_tree(kMstInstanceKey, 0)}}), CMD_UNKNOWN_KEY);
    EXPECT_EQ(refusal_of({117, action, {{0x0C02'A001, {kPort + 4}}}}), CMD_UNKNOWN_KEY);
  }
}

}  // namespace
