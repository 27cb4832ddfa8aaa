#include "model/vlan_set.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "model/refusal.h"

using namespace stpswitch;

namespace {

std::string reprinted(const std::string &text) { return print_vlans(parse_vlans(text)); }

void expect_refused(const std::string &text, const std::string &reason) {
  try {
    parse_vlans(text);
    ADD_FAILURE() << "'" << text << "' was taken";
  } catch (const Refusal &refusal) {
    EXPECT_EQ(refusal.what(), reason);
  }
}

TEST(VlanSet, ReadsAndPrintsLists) {
  EXPECT_EQ(reprinted(""), "");
  EXPECT_EQ(reprinted("1"), "1");
  EXPECT_EQ(reprinted("4094"), "4094");
  EXPECT_EQ(reprinted("10-19,30"), "10-19,30");
  EXPECT_EQ(reprinted("1-4094"), "1-4094");
}

TEST(VlanSet, PrintsTheShortestAscendingList) {
  EXPECT_EQ(reprinted("30,10-14,15-19,12,31"), "10-19,30-31");
  EXPECT_EQ(reprinted("7-7"), "7");
  EXPECT_EQ(reprinted("0010"), "10");
}

TEST(VlanSet, HoldsExactlyTheVlansOfTheList) {
  const VlanSet vlans = parse_vlans("2-3,4094");
  std::vector<uint32_t> contained;
  for (uint32_t vlan = kMinVlan; vlan <= kMaxVlan; ++vlan) {
    if (vlans.contains(vlan)) {
      contained.push_back(vlan);
    }
  }
  EXPECT_EQ(contained, (std::vector<uint32_t>{2, 3, 4094}));
}

TEST(VlanSet, InsertsAndErases) {
  VlanSet vlans;
  vlans.insert(8);
  vlans.insert(9);
  vlans.insert(9);
  vlans.erase(8);
  vlans.erase(10);
  EXPECT_EQ(print_vlans(vlans), "9");
}

TEST(VlanSet, RefusesWhatIsNoList) {
  for (const char *const text : {",", "1,", ",1", "1,,2", "-5", "5-", "5--7", "5-7-9", "x", "1 2", " 1", "1 ",
                                 "1, 2", "1;2", "+1", "1.5", "1x10"}) {
    expect_refused(text, "'" + std::string(text) + "' is not a list of VLANs such as 1,10-19");
  }
}

TEST(VlanSet, RefusesNumbersThatNoVlanHas) {
  expect_refused("0", "VLAN 0 is not in 1..4094");
  expect_refused("4095", "VLAN 4095 is not in 1..4094");
  expect_refused("1,5-4095", "VLAN 4095 is not in 1..4094");
  expect_refused("99999999999999999999", "VLAN 99999999999999999999 is not in 1..4094");
}

TEST(VlanSet, RefusesABackwardRange) { expect_refused("19-10", "the range 19-10 runs backwards"); }

TEST(VlanSet, LaysOutTheLowestVlanInTheHighestBit) {
  const auto octets = parse_vlans("1,7,8,4094").octets();
  EXPECT_EQ(octets[0], 0x41);
  EXPECT_EQ(octets[1], 0x80);
  EXPECT_EQ(octets[2], 0x00);
  EXPECT_EQ(octets[511], 0x02);
}

TEST(VlanSet, JoinAndPart) {
  VlanSet vlans = parse_vlans("1,10-20,4094");
  vlans.insert(parse_vlans("2,15-25"));
  EXPECT_EQ(print_vlans(vlans), "1-2,10-25,4094");
  vlans.erase(parse_vlans("1,3,12-4094"));
  EXPECT_EQ(print_vlans(vlans), "2,10-11");
}

}  // namespace
