// Command 112: the MST region.
#include "support/command_test.h"
#include "support/octets.h"
#include "support/states.h"

using namespace stpswitch;

namespace {

class MstRegionCommand : public CommandTest {
 protected:
  static std::string reply(const char *digits) { return hex(octets(digits)); }

  // The VLANs of one instance, which are none but for `digits` at `octet` of the bitmap.
  static std::string vlan_map(size_t octet, const std::string &digits, char rest = '0') {
    std::string bitmap(size_t{2} * 512, rest);
    bitmap.replace(2 * octet, digits.size(), digits);
    return bitmap;
  }

  // As whoever has a reply of the command finds them.
  std::string vlans_of(uint32_t instance) const {
    const auto *const found = publisher_.view().find_mst_instance(instance);
    return found != nullptr ? hex(found->vlans) : "none";
  }
};

constexpr char kRegion[] =
    "57505453 0100 0300 64000000 07000000 00000000 04000000"
    "03b00214 04000000 03000000"
    "02b00230 06000000 63616d707573 0000"
    "05b00230 10000000 43bb10a0c6a64cb320ea2a463b7bfa52"
    "06b00230 10000000 7d3c1b90a45e62f88c01d9b7f3a6520e";

TEST_F(MstRegionCommand, AnswersWithAndWithoutItsKey) {
  EXPECT_EQ(reply_to({112, kGet, {protocol::kMstDigestsKey}}), reply(kRegion));
  EXPECT_EQ(reply_to({112, kGet, {}}), reply(kRegion));
}

// VLANs 10-19,30 and 20-29 and 100-199; all others from 1 to 4094 are the CIST's.
TEST_F(MstRegionCommand, HasTheVlansOfEveryInstanceInTheImage) {
  std::string cist = vlan_map(0, "7fc00001", 'f');
  cist.replace(size_t{2} * 12, 26, "f0000000000000000000000000");
  cist.replace(size_t{2} * 511, 2, "fe");
  EXPECT_EQ(vlans_of(0), cist);
  EXPECT_EQ(vlans_of(1), vlan_map(1, "3ff002"));
  EXPECT_EQ(vlans_of(2), vlan_map(2, "0ffc"));
  EXPECT_EQ(vlans_of(3), "none");
  EXPECT_EQ(vlans_of(10), vlan_map(12, "0fffffffffffffffffffffffff"));
}

TEST_F(MstRegionCommand, AnswersInAnyMode) {
  const std::string in_mst_mode = reply_to({112, kGet, {}});
  set("switch.mode", "rapid-pvst");
  EXPECT_EQ(reply_to({112, kGet, {}}), in_mst_mode);
}

constexpr char kNamelessRegion[] =
    "57505453 0100 0300 5c000000 07000000 00000000 04000000"
    "03b00214 04000000 00000000"
    "02b00230 00000000"
    "05b00230 10000000 ac36177f50283cd4b83821d8ab26de62"
    "06b00230 10000000 ac36177f50283cd4b83821d8ab26de62";

TEST_F(MstRegionCommand, AnswersForARegionWithoutNameStatedDigestOrInstances) {
  switch_.replace(empty_switch());
  EXPECT_EQ(reply_to({112, kGet, {}}), reply(kNamelessRegion));
  std::string cist = vlan_map(0, "7f", 'f');
  cist.replace(size_t{2} * 511, 2, "fe");
  EXPECT_EQ(vlans_of(0), cist);
}

TEST_F(MstRegionCommand, KnowsInstancesOfAnyNumber) {
  SwitchState state = empty_switch();
  state.mst_instances[4094].vlans = parse_vlans("4094");
  state.mst_instances[256].vlans = parse_vlans("1-4093");
  state.mst_instances[9] = {};
  switch_.replace(state);
  std::string most = vlan_map(0, "7f", 'f');
  most.replace(size_t{2} * 511, 2, "fc");
  EXPECT_EQ(vlans_of(0), vlan_map(0, ""));
  EXPECT_EQ(vlans_of(9), vlan_map(0, ""));
  EXPECT_EQ(vlans_of(256), most);
  EXPECT_EQ(vlans_of(4094), vlan_map(511, "02"));
}

TEST_F(MstRegionCommand, KnowsAsManyInstancesAsThereCanBe) {
  SwitchState state = empty_switch();
  for (uint32_t id = 1; id <= 64; ++id) {
    state.mst_instances[id].vlans.insert(id);
  }
  switch_.replace(state);
  EXPECT_EQ(vlans_of(64), vlan_map(8, "80"));
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
