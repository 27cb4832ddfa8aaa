// The VLANs of MST instances, for whoever has a reply that carries the MST region.
#include <cstring>

#include "platform/cmd.h"
#include "platform/stp.h"
#include "platform_test.h"
#include "protocol_numbers.h"

namespace {

constexpr uint16_t kUntouched = 0xABCD;

class MstVlanMaps : public PlatformTest {
 protected:
  ~MstVlanMaps() override { cmd_snmp_free_rx_hndl(reply_); }

  // Has a reply from a switch with these instances.
  void receive(const std::vector<ImageMstInstance> &instances) {
    switch_.image().publish({{}, instances});
    alignas(max_align_t) uint8_t buffer[512];
    void *request = cmd_req_init(buffer, sizeof buffer);
    cmd_req_cmdId_set(request, protocol::kMstRegion);
    ASSERT_EQ(cmd_snmp_req_send_recv(protocol::kDestination, protocol::kService, request, "", 1, &reply_, 0),
              CMD_OK);
  }

  // The instance found, and whether just VLAN `vlan` is mapped to it.
  void expect_found(uint32_t action, uint16_t asked, uint16_t found, uint16_t vlan) {
    uint16_t instance = asked;
    stp_vlan_bmp vlans{0, {}};
    uint8_t expected[STP_VLAN_BITMAP_SIZE] = {};
    add_vlan(expected, vlan);
    EXPECT_EQ(stp_get_mst_vlan_bmp(reply_, action, &instance, &vlans), CMD_OK) << asked;
    EXPECT_EQ(instance, found);
    EXPECT_EQ(vlans.size, static_cast<uint32_t>(STP_VLAN_BITMAP_SIZE));
    EXPECT_EQ(std::memcmp(vlans.bits, expected, sizeof expected), 0);
  }

  void expect_failure(uint32_t action, uint16_t asked, int result) {
    uint16_t instance = asked;
    stp_vlan_bmp vlans{kUntouched, {}};
    EXPECT_EQ(stp_get_mst_vlan_bmp(reply_, action, &instance, &vlans), result) << asked;
    EXPECT_EQ(instance, asked);
    EXPECT_EQ(vlans.size, static_cast<uint32_t>(kUntouched));
  }

  void *reply_ = nullptr;
};

TEST_F(MstVlanMaps, GetFindsExactlyTheInstance) {
  receive({mst_instance(0, {1}), mst_instance(5, {10}), mst_instance(4094, {4094})});
  expect_found(CMD_ACTION_GET, 0, 0, 1);
  expect_found(CMD_ACTION_GET, 5, 5, 10);
  expect_found(CMD_ACTION_GET, 4094, 4094, 4094);
  expect_failure(CMD_ACTION_GET, 4, CMD_NO_ENTRY);
}

TEST_F(MstVlanMaps, GetNextFindsTheOneAfterIt) {
  receive({mst_instance(0, {1}), mst_instance(5, {10}), mst_instance(4094, {4094})});
  expect_found(CMD_ACTION_GET_NEXT, 0, 5, 10);
  expect_found(CMD_ACTION_GET_NEXT, 4, 5, 10);
  expect_found(CMD_ACTION_GET_NEXT, 5, 4094, 4094);
  expect_failure(CMD_ACTION_GET_NEXT, 4094, CMD_NO_ENTRY);
  expect_failure(CMD_ACTION_GET_NEXT, 65535, CMD_NO_ENTRY);
}

TEST_F(MstVlanMaps, ASwitchWithoutInstancesHasNone) {
  receive({});
  expect_failure(CMD_ACTION_GET, 0, CMD_NO_ENTRY);
  expect_failure(CMD_ACTION_GET_NEXT, 0, CMD_NO_ENTRY);
}

TEST_F(MstVlanMaps, AnInstanceThatNoRegionCanHaveIsRefused) {
  receive({mst_instance(5, {10}), mst_instance(65536 + 6, {11})});
  expect_failure(CMD_ACTION_GET_NEXT, 5, CMD_BAD_REPLY);
  expect_failure(CMD_ACTION_GET, 6, CMD_UNREACHABLE);
}

TEST_F(MstVlanMaps, AllInstancesThatARegionCanHaveAreFound) {
  std::vector<ImageMstInstance> instances;
  for (uint16_t instance = 0; instance <= 64; ++instance) {
    instances.push_back(mst_instance(instance, {instance}));
  }
  receive(instances);
  for (uint16_t instance = 0; instance < 64; ++instance) {
    expect_found(CMD_ACTION_GET_NEXT, instance, static_cast<uint16_t>(instance + 1),
                 static_cast<uint16_t>(instance + 1));
  }
}

TEST_F(MstVlanMaps, ArgumentsAreChecked) {
  receive({mst_instance(5, {10})});
  uint16_t instance = 5;
  stp_vlan_bmp vlans{};
  EXPECT_EQ(stp_get_mst_vlan_bmp(nullptr, CMD_ACTION_GET, &instance, &vlans), CMD_INVALID_ARGUMENT);
  EXPECT_EQ(stp_get_mst_vlan_bmp(&vlans, CMD_ACTION_GET, &instance, &vlans), CMD_INVALID_ARGUMENT);
  EXPECT_EQ(stp_get_mst_vlan_bmp(reply_, 2, &instance, &vlans), CMD_INVALID_ARGUMENT);
  EXPECT_EQ(stp_get_mst_vlan_bmp(reply_, CMD_ACTION_GET, nullptr, &vlans), CMD_INVALID_ARGUMENT);
  EXPECT_EQ(stp_get_mst_vlan_bmp(reply_, CMD_ACTION_GET, &instance, nullptr), CMD_INVALID_ARGUMENT);
}

TEST_F(MstVlanMaps, AReleasedReplyIsNoneAnyMore) {
  receive({mst_instance(5, {10})});
  cmd_snmp_free_rx_hndl(reply_);
  expect_failure(CMD_ACTION_GET, 5, CMD_INVALID_ARGUMENT);
  reply_ = nullptr;
}

}  // namespace
