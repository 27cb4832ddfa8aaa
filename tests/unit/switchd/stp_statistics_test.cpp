// What the kernel counts of a bridge port's spanning tree: a recorded message, and such as no kernel sends.
#include "sources/linux_bridge/stp_statistics.h"

#include <gtest/gtest.h>
#include <linux/rtnetlink.h>

#include <array>
#include <string>
#include <vector>

#include "sources/linux_bridge/netlink_socket.h"
#include "support/octets.h"
#include "support/recorded_links.h"

using namespace stpswitch;

namespace {

// What octets that hold one whole message tell.
std::optional<uint64_t> told(const std::vector<uint8_t> &octets) {
  std::optional<uint64_t> transitions;
  for_each_message(octets,
                   [&](const nlmsghdr &message) { transitions = parse_forward_transitions(message); });
  return transitions;
}

// A message of the type about interface 7, with these attributes.
std::vector<uint8_t> message(const std::string &attributes, uint16_t type = RTM_NEWSTATS) {
  const std::vector<uint8_t> tail = octets(attributes);
  std::array<uint8_t, 28> head{};
  head[0] = static_cast<uint8_t>(head.size() + tail.size());
  head[4] = static_cast<uint8_t>(type);
  head[20] = 7;
  std::vector<uint8_t> all(head.begin(), head.end());
  all.insert(all.end(), tail.begin(), tail.end());
  return all;
}

// How often it blocked and began to forward, and how many packets were received and sent of both kinds.
constexpr char kCounted[] =
    "0200000000000000 0807060504030201 0400000000000000 0500000000000000 0600000000000000 0700000000000000";

std::string in_nests(const std::string &of_port, const std::string &of_bridge, const std::string &of_stp) {
  return "3c00" + of_port + "3800" + of_bridge + "3400" + of_stp + kCounted;
}

TEST(StpStatistics, TellHowOftenAPortBeganToForward) {
  EXPECT_EQ(told(recorded("statistics of v0").at(0).octets), 3U);
  EXPECT_EQ(told(recorded("statistics of v0, before it forwarded").at(0).octets), 0U);
}

TEST(StpStatistics, HaveCountersOf64Bits) {
  EXPECT_EQ(told(message(in_nests("0300", "0100", "0400"))), 0x0102'0304'0506'0708U);
  // Nests, marked as such.
  EXPECT_EQ(told(message(in_nests("0380", "0180", "0400"))), 0x0102'0304'0506'0708U);
}

TEST(StpStatistics, MayTellMoreThanIsKnownToday) {
  EXPECT_EQ(told(message("4400 0300 4000 0100 3c00 0400" + std::string(kCounted) + "0900000000000000")),
            0x0102'0304'0506'0708U);
}

TEST(StpStatistics, AreFoundBehindOthers) {
  EXPECT_EQ(told(message("0800 0200 00000000 4400 0300 4000 0100 0800 0200 00000000 3400 0400" +
                         std::string(kCounted))),
            0x0102'0304'0506'0708U);
}

TEST(StpStatistics, AreNotThoseOfOtherNests) {
  EXPECT_EQ(told(message(in_nests("0200", "0100", "0400"))), std::nullopt);  // of the bridge itself
  EXPECT_EQ(told(message(in_nests("0300", "0200", "0400"))), std::nullopt);  // of a member of a bond
  EXPECT_EQ(told(message(in_nests("0300", "0100", "0200"))), std::nullopt);  // of multicast
}

TEST(StpStatistics, MayBeAbsent) {
  EXPECT_EQ(told(message("")), std::nullopt);
  EXPECT_EQ(told(message("0400 0300")), std::nullopt);
  EXPECT_EQ(told(message("0800 0300 0400 0100")), std::nullopt);
  EXPECT_EQ(told(message("0c00 0300 0800 0100 0400 0400")), std::nullopt);
}

TEST(StpStatistics, AreNotAboutAnythingElse) {
  EXPECT_EQ(told(message(in_nests("0300", "0100", "0400"), RTM_NEWLINK)), std::nullopt);
  EXPECT_EQ(told(message(in_nests("0300", "0100", "0400"), RTM_GETSTATS)), std::nullopt);
  std::vector<uint8_t> too_short = message("");
  too_short.resize(24);
  too_short[0] = 24;
  EXPECT_EQ(told(too_short), std::nullopt);
}

// Statistics that are as many octets too short, with nests around them that fit; and such as lie beyond their
// nests.
TEST(StpStatistics, AreLeftOutWhereTheyAreTruncated) {
  const std::string without_the_last = std::string(kCounted).substr(0, sizeof kCounted - 1 - 16);
  EXPECT_EQ(told(message("3400 0300 3000 0100 2c00 0400" + without_the_last)), std::nullopt);
  EXPECT_EQ(told(message("3c00 0300 3800 0100 3500 0400" + std::string(kCounted))), std::nullopt);
  EXPECT_EQ(told(message("3c00 0300 3900 0100 3400 0400" + std::string(kCounted))), std::nullopt);
  EXPECT_EQ(told(message("3d00 0300 3800 0100 3400 0400" + std::string(kCounted))), std::nullopt);
  EXPECT_EQ(told(message("3c00 0300 0300 0100 3400 0400" + std::string(kCounted))), std::nullopt);
}

// As many octets of a recorded message as there may be, whose length says that these are all.
TEST(StpStatistics, DoNoHarmWhereverTheyEnd) {
  const std::vector<uint8_t> whole = recorded("statistics of v0").at(0).octets;
  for (size_t length = 0; length < whole.size(); ++length) {
    std::vector<uint8_t> part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
    EXPECT_EQ(told(part), std::nullopt) << length;
    if (part.size() >= sizeof(uint32_t)) {
      part[0] = static_cast<uint8_t>(length);
      part[1] = static_cast<uint8_t>(length >> 8);
      EXPECT_EQ(told(part), std::nullopt) << length;
    }
  }
}

}  // namespace
