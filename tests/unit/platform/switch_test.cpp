// The largest MST region that there is, from the switch to the library: the VLANs of 64 MST instances.
#include <gtest/gtest.h>

#include <string>

#include "platform/cmd.h"
#include "platform/stp.h"
#include "protocol_numbers.h"
#include "running_switch.h"

namespace {

constexpr uint32_t kInstances = 64;

// Instance i is number 60 * i and carries VLAN 62 * i.
uint16_t instance_number(uint32_t i) { return static_cast<uint16_t>(60 * i); }
uint16_t instance_vlan(uint32_t i) { return static_cast<uint16_t>(62 * i); }

std::string scenario() {
  std::string text = "switch.mode = 'mst'\n";
  for (uint32_t i = 1; i <= kInstances; ++i) {
    text += "[[mst.instance]]\nid = " + std::to_string(instance_number(i)) + "\nvlans = '" +
            std::to_string(instance_vlan(i)) + "'\n";
  }
  return text;
}

bool contains(const stp_vlan_bmp &vlans, uint32_t vlan) {
  return (vlans.bits[vlan / 8] & (0x80U >> (vlan % 8))) != 0;
}

size_t count(const stp_vlan_bmp &vlans) {
  size_t number = 0;
  for (uint32_t vlan = 0; vlan < 8 * STP_VLAN_BITMAP_SIZE; ++vlan) {
    number += contains(vlans, vlan) ? 1U : 0U;
  }
  return number;
}

class LargestRegion : public RunningSwitchTest {
 protected:
  LargestRegion() : RunningSwitchTest(scenario()) {}
  ~LargestRegion() override { cmd_snmp_free_rx_hndl(reply_); }

  void ask(bool with_digests_key) {
    alignas(max_align_t) uint8_t buffer[512];
    void *request = cmd_req_init(buffer, sizeof buffer);
    cmd_req_cmdId_set(request, protocol::kMstRegion);
    cmd_req_action_set(request, CMD_ACTION_GET);
    const uint32_t nothing = 0;
    if (with_digests_key) {
      ASSERT_EQ(cmd_req_attr_add(request, protocol::kMstDigestsKey, &nothing, sizeof nothing), CMD_OK);
    }
    ASSERT_EQ(cmd_snmp_req_send_recv(protocol::kDestination, protocol::kService, request, "", 1, &reply_, 0),
              CMD_OK)
        << switch_.errors();
  }

  void *reply_ = nullptr;
};

class EveryReply : public LargestRegion, public testing::WithParamInterface<bool> {};

TEST_P(EveryReply, LeadsToEveryInstance) {
  ask(GetParam());
  uint16_t instance = 0;
  stp_vlan_bmp vlans{};
  ASSERT_EQ(stp_get_mst_vlan_bmp(reply_, CMD_ACTION_GET, &instance, &vlans), CMD_OK);
  EXPECT_EQ(count(vlans), 4094U - kInstances);
  for (uint32_t i = 1; i <= kInstances; ++i) {
    EXPECT_FALSE(contains(vlans, instance_vlan(i)));
  }
  for (uint32_t i = 1; i <= kInstances; ++i) {
    ASSERT_EQ(stp_get_mst_vlan_bmp(reply_, CMD_ACTION_GET_NEXT, &instance, &vlans), CMD_OK);
    EXPECT_EQ(instance, instance_number(i));
    EXPECT_EQ(count(vlans), 1U);
    EXPECT_TRUE(contains(vlans, instance_vlan(i)));
  }
  EXPECT_EQ(stp_get_mst_vlan_bmp(reply_, CMD_ACTION_GET_NEXT, &instance, &vlans), CMD_NO_ENTRY);
}

INSTANTIATE_TEST_SUITE_P(DigestsKey, EveryReply, testing::Bool());

}  // namespace
