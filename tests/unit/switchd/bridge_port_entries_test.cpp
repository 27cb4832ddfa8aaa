// Commands 105 and 111 asked by interface alone: the bridge ports.
#include <gmock/gmock.h>

#include "protocol_numbers.h"
#include "support/command_test.h"
#include "support/octets.h"

using namespace stpswitch;
using testing::ElementsAre;
using testing::Optional;

namespace {

constexpr char kScenario[] = R"(
[switch]
mode = "mst"
[[port]]
number = 1
path_cost = 200000000
edge = true
half_duplex = true
[[port]]
number = 4
link = "down"
link_type = "point-to-point"
boundary = true
[[port]]
number = 7
channel = 2
edge = true
half_duplex = true
[[port]]
number = 9
switchport = false
[[port]]
number = 3967
vlans = ""
[[port_channel]]
number = 2
path_cost = 1
peer = true
pre_standard_neighbor = true
[[port_channel]]
number = 4095
)";

constexpr uint32_t kPort = 0x1A000000;
constexpr uint32_t kChannel = 0x16000000;
constexpr uint32_t kHighest = 0xFFFF'FFFF;

class BridgePortEntries : public CommandTest {
 protected:
  BridgePortEntries() { switch_.replace(parse_scenario(kScenario, "test.toml")); }
};

// Command 105.

class BridgePortsCommand : public BridgePortEntries {
 protected:
  static RequestText request(uint32_t action, uint32_t if_index) {
    return {105, action, {{protocol::kInterfaceKey, {if_index}}}};
  }
  static RequestText request_after(uint32_t if_index) { return request(kGetNext, if_index); }

  std::vector<uint32_t> rows(uint32_t from = 0) const {
    return walk(request_after, from, protocol::kInterface);
  }

  std::optional<uint32_t> link_of(uint32_t if_index) const {
    return number_in_reply_to(request(kGet, if_index), protocol::kPointToPoint);
  }
};

constexpr char kPort1[] =
    "57505453 0100 0300 54000000 07000000 00000000 05000000"
    "01a0020c 04000000 0100001a"
    "08a00214 04000000 00c2eb0b"
    "1ea00202 04000000 00000000"
    "1da00202 04000000 01000000"
    "27a00202 04000000 00000000";

constexpr char kPort4WithoutLink[] =
    "57505453 0100 0300 48000000 07000000 00000000 04000000"
    "01a0020c 04000000 0400001a"
    "08a00214 04000000 204e0000"
    "1da00202 04000000 00000000"
    "27a00202 04000000 00000000";

constexpr char kChannel2[] =
    "57505453 0100 0300 54000000 07000000 00000000 05000000"
    "01a0020c 04000000 02000016"
    "08a00214 04000000 01000000"
    "1ea00202 04000000 01000000"
    "1da00202 04000000 00000000"
    "27a00202 04000000 01000000";

TEST_F(BridgePortsCommand, AnswersForExactlyTheInterface) {
  EXPECT_EQ(reply_to(request(kGet, kPort + 1)), hex(octets(kPort1)));
  EXPECT_EQ(reply_to(request(kGet, kPort + 4)), hex(octets(kPort4WithoutLink)));
  EXPECT_EQ(reply_to(request(kGet, kChannel + 2)), hex(octets(kChannel2)));
}

TEST_F(BridgePortsCommand, AnswersForTheNextInterface) {
  EXPECT_EQ(reply_to(request(kGetNext, 0)), hex(octets(kChannel2)));
  EXPECT_EQ(reply_to(request(kGetNext, kChannel + 1)), hex(octets(kChannel2)));
  EXPECT_EQ(reply_to(request(kGetNext, kChannel + 4095)), hex(octets(kPort1)));
  EXPECT_EQ(reply_to(request(kGetNext, kPort)), hex(octets(kPort1)));
  EXPECT_EQ(reply_to(request(kGetNext, kPort + 1)), hex(octets(kPort4WithoutLink)));
  EXPECT_EQ(reply_to(request(kGetNext, kPort + 3)), hex(octets(kPort4WithoutLink)));
}

TEST_F(BridgePortsCommand, HasEachBridgePortOnceInAnyMode) {
  for (const char *const mode : {"mst", "rapid-pvst"}) {
    set("switch.mode", mode);
    EXPECT_THAT(rows(), ElementsAre(kChannel + 2, kChannel + 4095, kPort + 1, kPort + 4, kPort + 3967));
    EXPECT_THAT(rows(kChannel + 4095), ElementsAre(kPort + 1, kPort + 4, kPort + 3967));
    EXPECT_EQ(reply_to(request(kGet, kPort + 1)), hex(octets(kPort1)));
  }
}

TEST_F(BridgePortsCommand, HasNothingElse) {
  for (const uint32_t if_index : {kPort + 3967, kPort + 3968, kHighest}) {
    EXPECT_EQ(refusal_of(request(kGetNext, if_index)), CMD_NO_ENTRY) << if_index;
  }
  for (const uint32_t if_index : {0U, 129U, kPort + 7, kPort + 9, kChannel + 1, kHighest}) {
    EXPECT_EQ(refusal_of(request(kGet, if_index)), CMD_NO_ENTRY) << if_index;
  }
}

TEST_F(BridgePortsCommand, FollowsWhoIsABridgePort) {
  set("port.7.channel", "0");
  set("port.1.channel", "4095");
  set("port.9.switchport", "true");
  EXPECT_THAT(rows(),
              ElementsAre(kChannel + 2, kChannel + 4095, kPort + 4, kPort + 7, kPort + 9, kPort + 3967));
}

TEST_F(BridgePortsCommand, TellsTheLinksTypeAsLongAsThereIsOne) {
  EXPECT_THAT(link_of(kPort + 1), Optional(0U));
  set("port.1.link", "down");
  EXPECT_EQ(link_of(kPort + 1), std::nullopt);
  set("port.1.link", "up");
  EXPECT_THAT(link_of(kPort + 1), Optional(0U));
}

TEST_F(BridgePortsCommand, TakesTheLinksTypeFromTheDuplexModeUnlessItIsForced) {
  const auto link_with = [this](const std::string &type, const std::string &half_duplex) {
    set("port.1.link_type", type);
    set("port.1.half_duplex", half_duplex);
    return link_of(kPort + 1);
  };
  EXPECT_THAT(link_with("auto", "false"), Optional(1U));
  EXPECT_THAT(link_with("auto", "true"), Optional(0U));
  EXPECT_THAT(link_with("point-to-point", "false"), Optional(1U));
  EXPECT_THAT(link_with("point-to-point", "true"), Optional(1U));
  EXPECT_THAT(link_with("shared", "false"), Optional(0U));
  EXPECT_THAT(link_with("shared", "true"), Optional(0U));
}

TEST_F(BridgePortsCommand, TakesAPortChannelForPointToPointUnlessItIsForced) {
  EXPECT_THAT(link_of(kChannel + 2), Optional(1U));
  set("port_channel.2.link_type", "shared");
  EXPECT_THAT(link_of(kChannel + 2), Optional(0U));
  set("port_channel.2.link_type", "point-to-point");
  EXPECT_THAT(link_of(kChannel + 2), Optional(1U));
}

TEST_F(BridgePortsCommand, FollowsThePortsThatJoinAndLeaveAPortChannel) {
  EXPECT_EQ(link_of(kChannel + 4095), std::nullopt);
  set("port.1.channel", "4095");
  EXPECT_THAT(link_of(kChannel + 4095), Optional(1U));
  EXPECT_EQ(refusal_of(request(kGet, kPort + 1)), CMD_NO_ENTRY);
  set("port.1.channel", "0");
  EXPECT_EQ(link_of(kChannel + 4095), std::nullopt);
  EXPECT_EQ(reply_to(request(kGet, kPort + 1)), hex(octets(kPort1)));
}

TEST_F(BridgePortsCommand, FollowsTheFlags) {
  set("port.4.edge", "true");
  set("port.4.peer", "true");
  EXPECT_EQ(reply_to(request(kGet, kPort + 4)),
            hex(octets("57505453 0100 0300 48000000 07000000 00000000 04000000"
                       "01a0020c 04000000 0400001a"
                       "08a00214 04000000 204e0000"
                       "1da00202 04000000 01000000"
                       "27a00202 04000000 01000000")));
}

// Command 111.

class MstBridgePortsCommand : public BridgePortEntries {
 protected:
  static RequestText request(uint32_t action, uint32_t if_index) {
    return {111, action, {{protocol::kMstInterfaceKey, {if_index}}}};
  }
  static RequestText request_after(uint32_t if_index) { return request(kGetNext, if_index); }

  std::vector<uint32_t> rows(uint32_t from = 0) const {
    return walk(request_after, from, protocol::kInterface);
  }
};

constexpr char kMstPort1[] =
    "57505453 0100 0300 6c000000 07000000 00000000 07000000"
    "01a0020c 04000000 0100001a"
    "08a00214 04000000 00c2eb0b"
    "1da00202 04000000 01000000"
    "28a00202 04000000 00000000"
    "27a00202 04000000 00000000"
    "2da00202 04000000 00000000"
    "2ea00202 04000000 00000000";

constexpr char kMstPort4WithoutLink[] =
    "57505453 0100 0300 6c000000 07000000 00000000 07000000"
    "01a0020c 04000000 0400001a"
    "08a00214 04000000 204e0000"
    "1da00202 04000000 00000000"
    "28a00202 04000000 01000000"
    "27a00202 04000000 00000000"
    "2da00202 04000000 00000000"
    "2ea00202 04000000 00000000";

constexpr char kMstChannel2[] =
    "57505453 0100 0300 6c000000 07000000 00000000 07000000"
    "01a0020c 04000000 02000016"
    "08a00214 04000000 01000000"
    "1da00202 04000000 00000000"
    "28a00202 04000000 00000000"
    "27a00202 04000000 01000000"
    "2da00202 04000000 00000000"
    "2ea00202 04000000 01000000";

TEST_F(MstBridgePortsCommand, AnswersForExactlyTheInterface) {
  EXPECT_EQ(reply_to(request(kGet, kPort + 1)), hex(octets(kMstPort1)));
  EXPECT_EQ(reply_to(request(kGet, kPort + 4)), hex(octets(kMstPort4WithoutLink)));
  EXPECT_EQ(reply_to(request(kGet, kChannel + 2)), hex(octets(kMstChannel2)));
}

TEST_F(MstBridgePortsCommand, AnswersForTheNextInterface) {
  EXPECT_EQ(reply_to(request(kGetNext, 0)), hex(octets(kMstChannel2)));
  EXPECT_EQ(reply_to(request(kGetNext, kChannel + 4095)), hex(octets(kMstPort1)));
  EXPECT_EQ(reply_to(request(kGetNext, kPort + 2)), hex(octets(kMstPort4WithoutLink)));
}

TEST_F(MstBridgePortsCommand, HasEachBridgePortOnceWhateverItsVlansAndLink) {
  EXPECT_THAT(rows(), ElementsAre(kChannel + 2, kChannel + 4095, kPort + 1, kPort + 4, kPort + 3967));
  EXPECT_THAT(rows(kPort + 1), ElementsAre(kPort + 4, kPort + 3967));
}

TEST_F(MstBridgePortsCommand, HasNothingElse) {
  for (const uint32_t if_index : {kPort + 3967, kPort + 3968, kHighest}) {
    EXPECT_EQ(refusal_of(request(kGetNext, if_index)), CMD_NO_ENTRY) << if_index;
  }
  for (const uint32_t if_index : {0U, 129U, kPort + 7, kPort + 9, kChannel + 1, kHighest}) {
    EXPECT_EQ(refusal_of(request(kGet, if_index)), CMD_NO_ENTRY) << if_index;
  }
}

TEST_F(MstBridgePortsCommand, HasNothingOutsideMstMode) {
  set("switch.mode", "rapid-pvst");
  for (const uint32_t if_index : {0U, kChannel + 2, kPort + 1, kPort + 3967}) {
    EXPECT_EQ(refusal_of(request(kGet, if_index)), CMD_NO_ENTRY) << if_index;
    EXPECT_EQ(refusal_of(request(kGetNext, if_index)), CMD_NO_ENTRY) << if_index;
  }
  set("switch.mode", "mst");
  EXPECT_EQ(reply_to(request(kGet, kPort + 1)), hex(octets(kMstPort1)));
}

TEST_F(MstBridgePortsCommand, FollowsTheFlags) {
  for (const char *const key : {"port.1.boundary", "port.1.peer", "port.1.dispute"}) {
    set(key, "true");
  }
  set("port.1.edge", "false");
  set("port.1.pre_standard_neighbor", "true");
  EXPECT_EQ(reply_to(request(kGet, kPort + 1)),
            hex(octets("57505453 0100 0300 6c000000 07000000 00000000 07000000"
                       "01a0020c 04000000 0100001a"
                       "08a00214 04000000 00c2eb0b"
                       "1da00202 04000000 00000000"
                       "28a00202 04000000 01000000"
                       "27a00202 04000000 01000000"
                       "2da00202 04000000 01000000"
                       "2ea00202 04000000 01000000")));
}

TEST_F(MstBridgePortsCommand, TellsEachFlagByItself) {
  const std::vector<std::pair<const char *, uint32_t>> flags = {
      {"port_channel.4095.edge", 0x0202'A01D},
      {"port_channel.4095.boundary", 0x0202'A028},
      {"port_channel.4095.peer", 0x0202'A027},
      {"port_channel.4095.dispute", 0x0202'A02D},
      {"port_channel.4095.pre_standard_neighbor", 0x0202'A02E}};
  for (const auto &[key, token_set] : flags) {
    set(key, "true");
    for (const auto &[other_key, token] : flags) {
      EXPECT_THAT(number_in_reply_to(request(kGet, kChannel + 4095), token),
                  Optional(token == token_set ? 1U : 0U))
          << key << ", " << other_key;
    }
    set(key, "false");
  }
}

TEST_F(MstBridgePortsCommand, TakesItsKeyOnly) {
  for (const uint32_t action : {kGet, kGetNext}) {
    EXPECT_EQ(refusal_of({111, action, {{protocol::kInterfaceKey, {kPort + 1}}}}), CMD_UNKNOWN_KEY);
    EXPECT_EQ(refusal_of({111, action, {{0x0C02'A001, {kPort + 1}}}}), CMD_UNKNOWN_KEY);
  }
}

}  // namespace
