// What the kernel tells of links: recorded messages, and such as no kernel sends.
#include "sources/linux_bridge/link_message.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>

#include <algorithm>
#include <array>
#include <random>

#include "sources/linux_bridge/bridge_state.h"
#include "sources/linux_bridge/netlink_socket.h"
#include "support/octets.h"
#include "support/recorded_links.h"

using namespace stpswitch;
using testing::ElementsAre;

namespace {

constexpr BridgeId kBr0 = {0x8000, {0x02, 0x00, 0x5E, 0x00, 0x53, 0x10}};

// A message of the type about interface 7, with these attributes.
std::vector<uint8_t> message(uint16_t type, uint8_t family, const std::string &attributes) {
  const std::vector<uint8_t> tail = octets(attributes);
  std::array<uint8_t, 32> head{};
  head[0] = static_cast<uint8_t>(head.size() + tail.size());
  head[4] = static_cast<uint8_t>(type);
  head[16] = family;
  head[20] = 7;
  std::vector<uint8_t> all(head.begin(), head.end());
  all.insert(all.end(), tail.begin(), tail.end());
  return all;
}

Link link_with(uint8_t family, const std::string &attributes) {
  const auto parsed = parse(message(RTM_NEWLINK, family, attributes));
  return parsed ? parsed->link : Link();
}

TEST(LinkMessages, TellOfABridge) {
  const auto links = links_of(recorded("bridge"));
  ASSERT_EQ(links.size(), 1U);
  Link expected;
  expected.if_index = 2;
  expected.has_link = true;
  expected.name = "br0";
  expected.kind = "bridge";
  expected.bridge = BridgeAttributes{.stp_state = StpState::kKernel,
                                     .priority = 32768,
                                     .bridge_id = kBr0,
                                     .root_id = kBr0,
                                     .root_path_cost = 0,
                                     .root_port = 0,
                                     .max_age = 600,
                                     .hello_time = 100,
                                     .forward_delay = 200,
                                     .topology_change = false,
                                     .topology_change_detected = false,
                                     .vlan_filtering = true};
  EXPECT_EQ(links[0], expected);
}

TEST(LinkMessages, TellOfPortsOfABridge) {
  const auto links = links_of(recorded("ports"));
  ASSERT_EQ(links.size(), 3U);
  Link v0;
  v0.if_index = 7;
  v0.has_link = true;
  v0.name = "v0";
  v0.kind = "veth";
  v0.master = 2;
  v0.bridge_port = BridgePortAttributes{.number = 3,
                                        .port_id = 0x4003,
                                        .state = PortState::kListening,
                                        .priority = 16,
                                        .path_cost = 17,
                                        .root_block = true,
                                        .designated_root = kBr0,
                                        .designated_bridge = kBr0,
                                        .designated_cost = 0,
                                        .designated_port = 0x4003,
                                        .message_age_timer = 0};
  EXPECT_EQ(links[0], v0);
  Link team0;
  team0.if_index = 9;
  team0.name = "team0";
  team0.kind = "team";
  team0.master = 2;
  team0.bridge_port = BridgePortAttributes{.number = 2,
                                           .port_id = 0x8002,
                                           .state = PortState::kDisabled,
                                           .priority = 32,
                                           .path_cost = 100,
                                           .root_block = false,
                                           .designated_root = kBr0,
                                           .designated_bridge = kBr0,
                                           .designated_cost = 0,
                                           .designated_port = 0x8002,
                                           .message_age_timer = 0};
  EXPECT_EQ(links[2], team0);
  EXPECT_EQ(links[1].name, "bond0");
  EXPECT_EQ(links[1].kind, "bond");
  EXPECT_EQ(links[1].bridge_port->state, PortState::kForwarding);
}

TEST(LinkMessages, TellOfMembersOfBondsAndTeams) {
  const auto of_bond = links_of(recorded("members of bond0"));
  ASSERT_EQ(of_bond.size(), 2U);
  EXPECT_EQ(of_bond[0].name, "d0");
  EXPECT_EQ(of_bond[0].master, 8U);
  EXPECT_EQ(of_bond[0].has_link, true);
  EXPECT_EQ(of_bond[0].mii_link, true);
  EXPECT_EQ(of_bond[0].bridge_port, std::nullopt);
  EXPECT_EQ(of_bond[1].name, "d1");
  EXPECT_EQ(of_bond[1].has_link, false);
  EXPECT_EQ(of_bond[1].mii_link, false);
  const auto of_team = links_of(recorded("members of team0"));
  ASSERT_EQ(of_team.size(), 1U);
  EXPECT_EQ(of_team[0].name, "d2");
  EXPECT_EQ(of_team[0].master, 9U);
  EXPECT_EQ(of_team[0].mii_link, std::nullopt);
}

std::vector<std::string> names_and_vlans(const std::string &section) {
  std::vector<std::string> lines;
  for (const Link &link : links_of(recorded(section))) {
    lines.push_back(*link.name + (link.vlans ? " " + print_vlans(*link.vlans) : ""));
  }
  return lines;
}

TEST(LinkMessages, TellTheVlansOfPortsInRangesAndOneByOne) {
  const auto expected = ElementsAre("br0 1", "v1 1", "v0 1,10-19,30", "bond0 4094", "team0 1", "br1 1");
  EXPECT_THAT(names_and_vlans("bridge ports, VLANs in ranges"), expected);
  EXPECT_THAT(names_and_vlans("bridge ports, VLANs one by one"), expected);
}

TEST(LinkMessages, TellOfAPortThatHasHeardOfABetterRoot) {
  const auto notifications = recorded("notifications");
  const auto heard = parse(notifications.at(2).octets);
  ASSERT_TRUE(heard);
  EXPECT_TRUE(heard->is_of_bridge);
  EXPECT_FALSE(heard->is_gone);
  EXPECT_EQ(heard->link.name, "v0");
  EXPECT_EQ(heard->link.master, 2U);
  EXPECT_EQ(heard->link.bridge_port->state, PortState::kListening);
  EXPECT_EQ(heard->link.bridge_port->root_block, true);
  EXPECT_EQ(heard->link.bridge_port->message_age_timer, 600U);
  EXPECT_EQ(heard->link.bridge_port->designated_root,
            (BridgeId{0x1000, {0x02, 0x00, 0x5E, 0x00, 0x53, 0x01}}));
}

TEST(LinkMessages, TellThatALinkIsGone) {
  const auto gone = parse(message(RTM_DELLINK, AF_UNSPEC, "0700 0300 76300000"));
  ASSERT_TRUE(gone);
  EXPECT_TRUE(gone->is_gone);
  EXPECT_FALSE(gone->is_of_bridge);
  EXPECT_EQ(gone->link.if_index, 7U);
  EXPECT_EQ(gone->link.name, "v0");
}

TEST(LinkMessages, AreNotAboutAnythingElse) {
  EXPECT_EQ(parse(message(RTM_NEWADDR, AF_UNSPEC, "")), std::nullopt);
  EXPECT_EQ(parse(message(RTM_NEWLINK, AF_INET6, "")), std::nullopt);
  auto no_index = message(RTM_NEWLINK, AF_UNSPEC, "");
  no_index[20] = 0;
  EXPECT_EQ(parse(no_index), std::nullopt);
  auto negative_index = message(RTM_NEWLINK, AF_UNSPEC, "");
  negative_index[23] = 0x80;
  EXPECT_EQ(parse(negative_index), std::nullopt);
  auto too_short = message(RTM_NEWLINK, AF_UNSPEC, "");
  too_short[0] = 28;
  EXPECT_EQ(parse(too_short), std::nullopt);
}

TEST(LinkMessages, LeaveOutWhatHasAnotherLength) {
  EXPECT_EQ(link_with(AF_UNSPEC, "0800 0a00 02000000").master, 2U);
  EXPECT_EQ(link_with(AF_UNSPEC, "0700 0a00 02000000").master, std::nullopt);
  EXPECT_EQ(link_with(AF_UNSPEC, "0c00 0a00 02000000 00000000").master, std::nullopt);
  // A name without a terminator, an empty one, one that is too long.
  EXPECT_EQ(link_with(AF_UNSPEC, "0600 0300 7630 0000").name, "v0");
  EXPECT_EQ(link_with(AF_UNSPEC, "0500 0300 00000000").name, std::nullopt);
  EXPECT_EQ(link_with(AF_UNSPEC, "0400 0300").name, std::nullopt);
  EXPECT_EQ(link_with(AF_UNSPEC, "1400 0300 61616161 61616161 61616161 61616161").name, std::nullopt);
}

TEST(LinkMessages, LeaveOutWhatLiesBeyondThem) {
  EXPECT_EQ(link_with(AF_UNSPEC, "0900 0a00 02000000").master, std::nullopt);
  EXPECT_EQ(link_with(AF_UNSPEC, "0300 0a00 02000000").master, std::nullopt);
  EXPECT_EQ(link_with(AF_UNSPEC, "0800 0a").master, std::nullopt);
  // PROTINFO whose only attribute is longer than it is.
  EXPECT_EQ(link_with(AF_BRIDGE, "0c00 0c80 0900 0100 03000000").bridge_port, BridgePortAttributes());
}

TEST(LinkMessages, LeaveOutStatesThatNobodyKnows) {
  EXPECT_EQ(link_with(AF_BRIDGE, "0c00 0c80 0500 0100 03000000").bridge_port->state, PortState::kForwarding);
  EXPECT_EQ(link_with(AF_BRIDGE, "0c00 0c80 0500 0100 05000000").bridge_port->state, std::nullopt);
  // LINKINFO of kind "bridge", whose spanning tree is nobody's, a program's, and unknown.
  constexpr char kBridge[] = "1c00 1200 0b00 0100 62726964 67650000 0c00 0280 0800 0500 ";
  EXPECT_EQ(link_with(AF_UNSPEC, kBridge + std::string("00000000")).bridge->stp_state, StpState::kNobody);
  EXPECT_EQ(link_with(AF_UNSPEC, kBridge + std::string("02000000")).bridge->stp_state, StpState::kUserSpace);
  EXPECT_EQ(link_with(AF_UNSPEC, kBridge + std::string("03000000")).bridge->stp_state, std::nullopt);
}

// AF_SPEC with entries of flags and VLAN: 8 begins a range, 16 ends one.
TEST(LinkMessages, LeaveOutVlansThatCannotBe) {
  const auto vlans = [](const std::string &entries) {
    const std::string length = entries.size() > 20 ? "1400" : "0c00";
    return print_vlans(*link_with(AF_BRIDGE, length + "1a00" + entries).vlans);
  };
  EXPECT_EQ(vlans("0800 0200 0000 0a00"), "10");
  EXPECT_EQ(vlans("0800 0200 0000 0000"), "");
  EXPECT_EQ(vlans("0800 0200 0000 ff0f"), "");
  EXPECT_EQ(vlans("0800 0200 0000 ffff"), "");
  EXPECT_EQ(vlans("0800 0200 0800 0a00 0800 0200 1000 0c00"), "10-12");
  EXPECT_EQ(vlans("0800 0200 0800 0c00 0800 0200 1000 0a00"), "");
  EXPECT_EQ(vlans("0800 0200 1000 0c00"), "12");
  EXPECT_EQ(vlans("0800 0200 0800 0c00"), "");
}

// A bounded run of damaged messages: each of them is read, with all that follows from it, without harm, and
// leaves nothing behind once the kernel tells all anew.
class DamagedMessages : public testing::Test {
 protected:
  static constexpr TickRates kTickRates{.user = 100, .kernel = 250};

  std::vector<RecordedMessage> damaged(std::vector<RecordedMessage> messages) {
    for (RecordedMessage &message : messages) {
      damage(&message.octets);
    }
    return messages;
  }

  SwitchState state_of(const LinkTable &table) {
    history_.see_bridge(table.bridge, now_);
    history_.see_ports(table, now_);
    return bridge_state(table, history_.facts(std::chrono::seconds(6), now_), kTickRates).state;
  }

  std::minstd_rand random_{20};  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same damage each time
  BridgeHistory history_;
  BridgeHistory::Time now_{};

 private:
  uint32_t below(size_t end) { return static_cast<uint32_t>(random_() % end); }

  void damage(std::vector<uint8_t> *octets) {
    constexpr size_t kMostChanges = 8;
    constexpr std::array<uint8_t, 6> kTelling = {0x00, 0x01, 0x03, 0x04, 0x7F, 0xFF};
    for (size_t i = below(kMostChanges + 1); i > 0; --i) {
      uint8_t &octet = (*octets)[below(octets->size())];
      octet = below(2) == 0 ? kTelling.at(below(kTelling.size())) : static_cast<uint8_t>(below(256));
    }
    if (below(4) == 0) {
      octets->resize(below(octets->size() + 1));
    }
  }
};

TEST_F(DamagedMessages, DoNoHarmAndLeaveNothingBehind) {
  constexpr int kRounds = 1000;
  const auto notifications = recorded("notifications");
  const auto bridge = recorded("bridge");
  const auto ports = recorded("ports");
  const auto members = recorded("members of bond0");
  const auto vlans = recorded("bridge ports, VLANs in ranges");
  const LinkTable fresh = recorded_table();
  const SwitchState expected = state_of(fresh);
  ASSERT_EQ(expected.ports.size(), 4U);
  int differing = 0;
  for (int round = 0; round < kRounds; ++round) {
    for (const RecordedMessage &message : damaged(notifications)) {
      for_each_message(message.octets, [this, &fresh](const nlmsghdr &damaged) {
        const auto news = parse_link_message(damaged);
        if (news && concerns(*news, fresh)) {
          history_.see_port(news->link, now_);
        }
      });
    }
    const auto bridges = links_of(damaged(bridge));
    if (!bridges.empty() && is_bridge(bridges[0])) {
      LinkTable table = make_table(bridges[0], links_of(damaged(ports)));
      table.members[8] = links_of(damaged(members));
      add_vlans(links_of(damaged(vlans)), &table);
      SwitchState state = state_of(table);
      differing += state == expected ? 0 : 1;
    }
    now_ += std::chrono::seconds(7);  // beyond the maximum age of what was heard
    SwitchState after = state_of(fresh);
    // What was counted stays counted.
    after.trees[kCistId].observed.topology_changes = 0;
    after.trees[kCistId].observed.last_topology_change.reset();
    ASSERT_EQ(after, expected) << "round " << round;
  }
  EXPECT_GT(differing, kRounds / 2);
}

}  // namespace
