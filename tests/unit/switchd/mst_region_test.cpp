// Command 112: the MST region.
#include "support/command_test.h"
#include "support/octets.h"
#include "support/states.h"

using namespace stpswitch;

namespace {

class MstRegionCommand : public CommandTest {
 protected:
  static std::string reply(const char *digits) { return hex(octets(digits)); }

  // The attribute of one instance: its head, its number, and a bitmap that is zero but for `digits` at
  // `octet`.
  static std::string vlan_map(const char *instance, size_t octet, const std::string &digits,
                              char rest = '0') {
    std::string bitmap(size_t{2} * 512, rest);
    bitmap.replace(2 * octet, digits.size(), digits);
    return "07b0023002020000" + std::string(instance) + bitmap + "0000";
  }
};

constexpr char kRegionWithDigestsKey[] =
    "57505453 0100 0300 64000000 07000000 00000000 04000000"
    "03b00214 04000000 03000000"
    "02b00230 06000000 63616d707573 0000"
    "05b00230 10000000 43bb10a0c6a64cb320ea2a463b7bfa52"
    "06b00230 10000000 7d3c1b90a45e62f88c01d9b7f3a6520e";

// The same with four maps of 524 octets.
constexpr char kRegionWithoutKey[] =
    "57505453 0100 0300 94080000 07000000 00000000 08000000"
    "03b00214 04000000 03000000"
    "02b00230 06000000 63616d707573 0000"
    "05b00230 10000000 43bb10a0c6a64cb320ea2a463b7bfa52"
    "06b00230 10000000 7d3c1b90a45e62f88c01d9b7f3a6520e";

TEST_F(MstRegionCommand, AnswersTheDigestsKeyWithoutAVlanMap) {
  EXPECT_EQ(reply_to({112, kGet, {protocol::kMstDigestsKey}}), reply(kRegionWithDigestsKey));
}

// VLANs 10-19,30 and 20-29 and 100-199; all others from 1 to 4094 are the CIST's.
TEST_F(MstRegionCommand, AnswersNoKeyWithTheVlanMapOfEveryInstance) {
  std::string cist = vlan_map("0000", 0, "7fc00001", 'f');
  cist.replace(size_t{2} * (8 + 2 + 12), 26, "f0000000000000000000000000");
  cist.replace(size_t{2} * (8 + 2 + 511), 2, "fe");
  EXPECT_EQ(reply_to({112, kGet, {}}), reply(kRegionWithoutKey) + cist + vlan_map("0001", 1, "3ff002") +
                                           vlan_map("0002", 2, "0ffc") +
                                           vlan_map("000a", 12, "0fffffffffffffffffffffffff"));
}

TEST_F(MstRegionCommand, AnswersInAnyMode) {
  const std::string in_mst_mode = reply_to({112, kGet, {}});
  set("switch.mode", "rapid-pvst");
  EXPECT_EQ(reply_to({112, kGet, {}}), in_mst_mode);
}

constexpr char kNamelessRegion[] =
    "57505453 0100 0300 68020000 07000000 00000000 05000000"
    "03b00214 04000000 00000000"
    "02b00230 00000000"
    "05b00230 10000000 ac36177f50283cd4b83821d8ab26de62"
    "06b00230 10000000 ac36177f50283cd4b83821d8ab26de62";

TEST_F(MstRegionCommand, AnswersForARegionWithoutNameStatedDigestOrInstances) {
  switch_.replace(empty_switch());
  std::string cist = vlan_map("0000", 0, "7f", 'f');
  cist.replace(size_t{2} * (8 + 2 + 511), 2, "fe");
  EXPECT_EQ(reply_to({112, kGet, {}}), reply(kNamelessRegion) + cist);
}

TEST_F(MstRegionCommand, MapsInstancesInAscendingOrderHighOctetFirst) {
  SwitchState state = empty_switch();
  state.mst_instances[4094].vlans = parse_vlans("4094");
  state.mst_instances[256].vlans = parse_vlans("1-4093");
  state.mst_instances[9] = {};
  switch_.replace(state);
  std::string most = vlan_map("0100", 0, "7f", 'f');
  most.replace(size_t{2} * (8 + 2 + 511), 2, "fc");
  const std::string whole = reply_to({112, kGet, {}});
  EXPECT_EQ(whole.substr(whole.size() - size_t{2} * 4 * 524),
            vlan_map("0000", 0, "") + vlan_map("0009", 0, "") + most + vlan_map("0ffe", 511, "02"));
}

TEST_F(MstRegionCommand, MapsAsManyInstancesAsThereCanBe) {
  SwitchState state = empty_switch();
  for (uint32_t id = 1; id <= 64; ++id) {
    state.mst_instances[id].vlans.insert(id);
  }
  switch_.replace(state);
  const std::string whole = reply_to({112, kGet, {}});
  EXPECT_EQ(whole.size(), 2 * (24 + 12 + 8 + 24 + 24 + size_t{65} * 524));
  EXPECT_EQ(whole.substr(whole.size() - size_t{2} * 524), vlan_map("0040", 8, "80"));
}

TEST_F(MstRegionCommand, HasNoNextEntry) {
  EXPECT_EQ(refusal_of({112, kGetNext, {}}), CMD_NO_ENTRY);
  EXPECT_EQ(refusal_of({112, kGetNext, {protocol::kMstDigestsKey}}), CMD_NO_ENTRY);
}

TEST_F(MstRegionCommand, TakesItsKeyOnly) {
  EXPECT_EQ(refusal_of({112, kGet, {protocol::kGlobalSettingsKey}}), CMD_UNKNOWN_KEY);
  EXPECT_EQ(refusal_of({112, kGet, {protocol::kMstDigestsKey, protocol::kMstDigestsKey}}), CMD_UNKNOWN_KEY);
  EXPECT_EQ(refusal_of({112, kGet, {one_tree(protocol::kMstTreeKey, 0)}}), CMD_UNKNOWN_KEY);
  EXPECT_EQ(refusal_of({112, kGetNext, {protocol::kGlobalSettingsKey}}), CMD_UNKNOWN_KEY);
}

}  // namespace
