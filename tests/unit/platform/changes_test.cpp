// What the operator of a running switch changes is known to the library at once.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "platform/cmd.h"
#include "platform/im.h"
#include "platform/pcm.h"
#include "platform/stp.h"
#include "platform/vlan_mgr.h"
#include "running_switch.h"

namespace {

// Bridge ports: 129, 130 (without link), 4100 with port 3 in it. Port 5 is routed.
constexpr char kScenario[] = R"(
[switch]
mode = "mst"
[[mst.instance]]
id = 5
vlans = "10"
[[port]]
number = 1
vlans = "1,10"
[[port]]
number = 2
link = "down"
vlans = "4094"
[[port]]
number = 3
channel = 4
vlans = "30"
[[port]]
number = 5
switchport = false
vlans = "40"
[[port_channel]]
number = 4
vlans = "20"
)";

constexpr uint32_t kChannel4 = 0x16000004;
constexpr uint32_t kPort1 = 0x1A000001;
constexpr uint32_t kPort2 = 0x1A000002;
constexpr uint32_t kPort3 = 0x1A000003;
constexpr uint32_t kPort5 = 0x1A000005;

using Numbers = std::vector<uint32_t>;

Numbers bits_of(const uint8_t *octets, uint32_t size) {
  Numbers bits;
  for (uint32_t bit = 0; bit < size * 8; ++bit) {
    if ((octets[bit / 8] & (0x80U >> (bit % 8))) != 0) {
      bits.push_back(bit);
    }
  }
  return bits;
}

Numbers range(uint32_t first, uint32_t last) {
  Numbers numbers;
  for (uint32_t number = first; number <= last; ++number) {
    numbers.push_back(number);
  }
  return numbers;
}

Numbers members_of(const Numbers &vlans) {
  stp_vlan_bmp set{STP_VLAN_BITMAP_SIZE, {}};
  for (const uint32_t vlan : vlans) {
    set.bits[vlan / 8] = static_cast<uint8_t>(set.bits[vlan / 8] | (0x80U >> (vlan % 8)));
  }
  const std::unique_ptr<vlan_mgr_baseport_bmp, void (*)(void *)> ports(
      vlan_mgr_get_baseport_membership_range(&set), std::free);
  return ports ? bits_of(ports->bits, ports->size) : Numbers{0};
}

const Numbers kAllVlans = range(1, 4094);

// Empty when there is no such instance.
Numbers vlans_of(uint16_t instance) {
  stp_vlan_bmp vlans{};
  return stp_dot1d_bridgemib_get_mst_ctx(instance, &vlans) == CMD_OK ? bits_of(vlans.bits, vlans.size)
                                                                     : Numbers{};
}

uint8_t oper_status(uint32_t if_index) {
  im_oper_status_entry entry{};
  entry.if_index = if_index;
  EXPECT_EQ(im_get_ifindex_oper_status_list(&entry, 1), CMD_OK);
  return entry.oper_status;
}

bool is_bridge_port(uint32_t if_index) {
  return check_if_valid_base_port_ifindex(if_index, BASE_PORT_ALL) != 0;
}
bool is_active(uint32_t if_index) {
  return check_if_valid_base_port_ifindex(if_index, BASE_PORT_ACTIVE) != 0;
}

uint32_t channel_of(uint32_t if_index) {
  pcm_port_channel record{};
  EXPECT_EQ(pcm_get_pc_for_port(if_index, &record), CMD_OK);
  return record.pc_if_index;
}

class Changes : public RunningSwitchTest {
 protected:
  Changes() : RunningSwitchTest(kScenario) {}
};

TEST_F(Changes, Links) {
  EXPECT_EQ(oper_status(kPort1), IF_OPER_UP);
  EXPECT_EQ(oper_status(kPort2), IF_OPER_DOWN);
  EXPECT_EQ(oper_status(kChannel4), IF_OPER_UP);
  EXPECT_EQ(set("port.1.link", "down"), "");
  EXPECT_EQ(oper_status(kPort1), IF_OPER_DOWN);
  EXPECT_TRUE(is_bridge_port(kPort1));
  EXPECT_FALSE(is_active(kPort1));
  EXPECT_EQ(set("port.2.link", "up"), "");
  EXPECT_EQ(oper_status(kPort2), IF_OPER_UP);
  EXPECT_TRUE(is_active(kPort2));
  EXPECT_EQ(set("port.3.link", "down"), "");
  EXPECT_EQ(oper_status(kChannel4), IF_OPER_DOWN);
  EXPECT_TRUE(is_bridge_port(kChannel4));
  EXPECT_FALSE(is_active(kChannel4));
  // Membership in VLANs does not depend on links.
  EXPECT_EQ(members_of(kAllVlans), (Numbers{129, 130, 4100}));
}

TEST_F(Changes, MembersOfPortChannels) {
  EXPECT_EQ(channel_of(kPort3), kChannel4);
  EXPECT_FALSE(is_bridge_port(kPort3));
  EXPECT_EQ(set("port.3.channel", "0"), "");
  EXPECT_EQ(channel_of(kPort3), 0U);
  EXPECT_TRUE(is_active(kPort3));
  EXPECT_EQ(oper_status(kChannel4), IF_OPER_DOWN);
  EXPECT_EQ(members_of({30}), (Numbers{131}));
  EXPECT_EQ(set("port.1.channel", "4"), "");
  EXPECT_EQ(channel_of(kPort1), kChannel4);
  EXPECT_FALSE(is_bridge_port(kPort1));
  EXPECT_NE(stp_valid_if_index(kPort1), 0);
  EXPECT_EQ(oper_status(kChannel4), IF_OPER_UP);
  EXPECT_EQ(members_of({1, 10}), Numbers{});
  EXPECT_EQ(members_of(kAllVlans), (Numbers{130, 131, 4100}));
}

TEST_F(Changes, VlansOfPorts) {
  EXPECT_EQ(members_of({}), Numbers{});
  EXPECT_EQ(members_of({10}), (Numbers{129}));
  EXPECT_EQ(members_of({20}), (Numbers{4100}));
  EXPECT_EQ(members_of({4094}), (Numbers{130}));
  EXPECT_EQ(members_of({40}), Numbers{});
  EXPECT_EQ(set("port.1.vlans", "2-9"), "");
  EXPECT_EQ(members_of({1}), Numbers{});
  EXPECT_EQ(members_of({9}), (Numbers{129}));
  EXPECT_EQ(set("port_channel.4.vlans", ""), "");
  EXPECT_EQ(members_of(kAllVlans), (Numbers{129, 130}));
}

TEST_F(Changes, Bridging) {
  EXPECT_FALSE(is_bridge_port(kPort5));
  EXPECT_EQ(set("port.5.switchport", "true"), "");
  EXPECT_TRUE(is_active(kPort5));
  EXPECT_EQ(members_of({40}), (Numbers{133}));
  EXPECT_EQ(set("port.5.switchport", "false"), "");
  EXPECT_FALSE(is_bridge_port(kPort5));
  EXPECT_EQ(stp_valid_if_index(kPort5), 0);
  EXPECT_EQ(members_of({40}), Numbers{});
}

TEST_F(Changes, VlansOfInstances) {
  EXPECT_EQ(vlans_of(5), (Numbers{10}));
  EXPECT_EQ(vlans_of(0).size(), 4093U);
  EXPECT_EQ(vlans_of(4), Numbers{});
  EXPECT_EQ(set("mst.instance.5.vlans", "3-4094"), "");
  EXPECT_EQ(vlans_of(5), range(3, 4094));
  EXPECT_EQ(vlans_of(0), (Numbers{1, 2}));
  EXPECT_EQ(set("mst.instance.5.vlans", ""), "");
  EXPECT_EQ(vlans_of(0), kAllVlans);
  stp_vlan_bmp vlans{};
  EXPECT_EQ(stp_dot1d_bridgemib_get_mst_ctx(5, &vlans), CMD_OK);
  EXPECT_EQ(bits_of(vlans.bits, vlans.size), Numbers{});
  EXPECT_EQ(stp_dot1d_bridgemib_get_mst_ctx(4, &vlans), CMD_NO_ENTRY);
  EXPECT_EQ(stp_dot1d_bridgemib_get_mst_ctx(4094, &vlans), CMD_NO_ENTRY);
}

// Instances are configured whether or not they run.
TEST_F(Changes, TheModeChangesNothingHere) {
  EXPECT_EQ(set("switch.mode", "rapid-pvst"), "");
  EXPECT_EQ(vlans_of(5), (Numbers{10}));
  EXPECT_EQ(members_of(kAllVlans), (Numbers{129, 130, 4100}));
  EXPECT_TRUE(is_active(kPort1));
}

TEST_F(Changes, ThatAreRefusedChangeNothing) {
  EXPECT_EQ(set("port.1.channel", "9"), "stp-switchctl: port.1.channel: there is no port-channel 9\n");
  EXPECT_EQ(channel_of(kPort1), 0U);
  EXPECT_EQ(members_of({10}), (Numbers{129}));
}

}  // namespace
