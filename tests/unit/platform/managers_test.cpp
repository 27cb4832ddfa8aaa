// The interface, port-channel and VLAN managers and the STP library, over an image.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "connection.h"
#include "mutation.h"
#include "platform/im.h"
#include "platform/pcm.h"
#include "platform/stp.h"
#include "platform/vlan_mgr.h"
#include "platform_test.h"
#include "wire/if_index.h"

namespace wire = stpplatform::wire;

namespace {

constexpr uint32_t kPc1 = 0x16000001;
constexpr uint32_t kPc2 = 0x16000002;
constexpr uint32_t kPort1 = 0x1A000001;
constexpr uint32_t kPort2 = 0x1A000002;
constexpr uint32_t kPort3 = 0x1A000003;
constexpr uint32_t kRoutedPort = 0x1A000004;
constexpr uint32_t kUnknownPort = 0x1A000009;

struct Free {
  void operator()(void *memory) const { std::free(memory); }
};
using PortBitmap = std::unique_ptr<vlan_mgr_baseport_bmp, Free>;

stp_vlan_bmp vlan_set(const std::vector<uint16_t> &vlans) {
  stp_vlan_bmp set{STP_VLAN_BITMAP_SIZE, {}};
  for (const uint16_t vlan : vlans) {
    add_vlan(set.bits, vlan);
  }
  return set;
}

std::vector<uint32_t> bits_of(const uint8_t *octets, size_t size) {
  std::vector<uint32_t> bits;
  for (uint32_t bit = 0; bit < size * 8; ++bit) {
    if ((octets[bit / 8] & (0x80 >> (bit % 8))) != 0) {
      bits.push_back(bit);
    }
  }
  return bits;
}

std::vector<uint32_t> members_of(const stp_vlan_bmp &vlans) {
  const PortBitmap ports(vlan_mgr_get_baseport_membership_range(&vlans));
  if (ports == nullptr) {
    ADD_FAILURE() << "no bitmap";
    return {};
  }
  EXPECT_EQ(ports->size, static_cast<uint32_t>(BASEPORT_BITMAP_SIZE));
  return bits_of(ports->bits, sizeof ports->bits);
}

// Port-channel 1 with port 2 in it, port-channel 2 without link, port 1 up, port 3 down, port 4 routed.
class Managers : public PlatformTest {
 protected:
  Managers() {
    ImagePort member = physical_port(2, {10, 20});
    member.channel = 1;
    member.pc_if_index = kPc1;
    ImagePort down = physical_port(3, {10, 4094});
    down.oper_status = IF_OPER_DOWN;
    ImagePort routed = physical_port(4, {10});
    routed.switched = 0;
    routed.base_port = 0;
    ImagePort down_channel = port_channel(2);
    down_channel.oper_status = IF_OPER_DOWN;
    switch_.image().publish(
        {{port_channel(1, {10, 20}), down_channel, physical_port(1, {1}), member, down, routed},
         {mst_instance(0, {1}), mst_instance(5, {10, 4094})}});
  }
};

TEST_F(Managers, InterfacesAreEnumeratedInAscendingOrder) {
  std::vector<uint32_t> found;
  uint32_t next = 0;
  while (im_get_next_ifindex(next, &next) == CMD_OK && next != 0) {
    found.push_back(next);
  }
  EXPECT_EQ(found, (std::vector<uint32_t>{kPc1, kPc2, kPort1, kPort2, kPort3, kRoutedPort}));
  EXPECT_EQ(im_get_next_ifindex(kPc1 - 1, &next), CMD_OK);
  EXPECT_EQ(next, kPc1);
  EXPECT_EQ(im_get_next_ifindex(UINT32_MAX, &next), CMD_OK);
  EXPECT_EQ(next, 0U);
  EXPECT_EQ(im_get_next_ifindex(0, nullptr), CMD_INVALID_ARGUMENT);
}

TEST_F(Managers, OperStatusIsFilledIntoEveryEntry) {
  std::vector<im_oper_status_entry> entries(3);
  std::memset(entries.data(), 0, entries.size() * sizeof entries[0]);
  entries[0].if_index = kPort3;
  entries[1].if_index = kPc1;
  entries[2].if_index = kPort2;
  EXPECT_EQ(im_get_ifindex_oper_status_list(entries.data(), 3), CMD_OK);
  EXPECT_EQ(entries[0].oper_status, IF_OPER_DOWN);
  EXPECT_EQ(entries[1].oper_status, IF_OPER_UP);
  EXPECT_EQ(entries[2].oper_status, IF_OPER_UP);
  entries[1].if_index = kUnknownPort;
  EXPECT_EQ(im_get_ifindex_oper_status_list(entries.data(), 3), CMD_NO_ENTRY);
  EXPECT_EQ(im_get_ifindex_oper_status_list(nullptr, 1), CMD_INVALID_ARGUMENT);
  EXPECT_EQ(im_get_ifindex_oper_status_list(nullptr, 0), CMD_OK);
}

TEST(InterfaceIndex, TellsItsType) {
  uint8_t type = 99;
  EXPECT_EQ(if_index_get_type(kPc1, &type), CMD_OK);
  EXPECT_EQ(type, IF_TYPE_PORT_CHANNEL);
  EXPECT_EQ(if_index_get_type(kPort1, &type), CMD_OK);
  EXPECT_EQ(type, IF_TYPE_PHYSICAL);
  for (const uint32_t unknown : {0U, 1U, 0x17000001U, UINT32_MAX}) {
    EXPECT_EQ(if_index_get_type(unknown, &type), CMD_NO_ENTRY);
    EXPECT_EQ(type, IF_TYPE_PHYSICAL);
  }
  EXPECT_EQ(if_index_get_type(kPort1, nullptr), CMD_INVALID_ARGUMENT);
}

TEST(InterfaceIndex, IsMadeForEveryChannelNumberThatCanBe) {
  uint32_t if_index = 7;
  for (const uint32_t none : {0U, wire::kMaxChannel + 1, 0x01000001U, UINT32_MAX}) {
    EXPECT_EQ(if_index_eth_port_channel_init(&if_index, none), CMD_INVALID_ARGUMENT);
    EXPECT_EQ(if_index, 7U);
  }
  EXPECT_EQ(if_index_eth_port_channel_init(&if_index, 1), CMD_OK);
  EXPECT_EQ(if_index, kPc1);
  EXPECT_EQ(if_index_eth_port_channel_init(&if_index, 4095), CMD_OK);
  EXPECT_EQ(if_index, 0x16000FFFU);
  EXPECT_EQ(if_index_eth_port_channel_init(nullptr, 1), CMD_INVALID_ARGUMENT);
}

TEST_F(Managers, BridgePortsAreToldFromTheRest) {
  struct Case {
    uint32_t if_index;
    bool of_all;
    bool of_active;
    bool takes_part;
  };
  for (const Case &c : {Case{kPc1, true, true, true}, Case{kPc2, true, false, true},
                        Case{kPort1, true, true, true}, Case{kPort2, false, false, true},
                        Case{kPort3, true, false, true}, Case{kRoutedPort, false, false, false},
                        Case{kUnknownPort, false, false, false}, Case{0, false, false, false}}) {
    EXPECT_EQ(check_if_valid_base_port_ifindex(c.if_index, BASE_PORT_ALL) != 0, c.of_all)
        << std::hex << c.if_index;
    EXPECT_EQ(check_if_valid_base_port_ifindex(c.if_index, BASE_PORT_ACTIVE) != 0, c.of_active)
        << std::hex << c.if_index;
    EXPECT_EQ(check_if_valid_base_port_ifindex(c.if_index, 2), 0);
    EXPECT_EQ(stp_valid_if_index(c.if_index) != 0, c.takes_part) << std::hex << c.if_index;
  }
}

TEST_F(Managers, MembershipInPortChannels) {
  pcm_port_channel record{9, 9, 9};
  EXPECT_EQ(pcm_get_pc_for_port(kPort2, &record), CMD_OK);
  EXPECT_EQ(int{record.channel}, 1);
  EXPECT_EQ(uint32_t{record.if_index}, kPort2);
  EXPECT_EQ(uint32_t{record.pc_if_index}, kPc1);
  EXPECT_EQ(pcm_get_pc_for_port(kUnknownPort, &record), CMD_NO_ENTRY);
  EXPECT_EQ(uint32_t{record.if_index}, kPort2);
  EXPECT_EQ(pcm_get_pc_for_port(kPort1, &record), CMD_OK);
  EXPECT_EQ(int{record.channel}, 0);
  EXPECT_EQ(uint32_t{record.if_index}, kPort1);
  EXPECT_EQ(uint32_t{record.pc_if_index}, 0U);
  EXPECT_EQ(pcm_get_pc_for_port(kPort1, nullptr), CMD_INVALID_ARGUMENT);
}

TEST_F(Managers, PortNumbersConvertBothWays) {
  uint16_t port = 7;
  uint32_t if_index = 7;
  EXPECT_EQ(stp_ifindex2dot1dportnum(kRoutedPort, &port), CMD_NO_ENTRY);
  EXPECT_EQ(stp_ifindex2dot1dportnum(kUnknownPort, &port), CMD_NO_ENTRY);
  EXPECT_EQ(port, 7);
  for (const uint16_t none : std::initializer_list<uint16_t>{0, 128, 132, 4096, 8191, 8192, 65535}) {
    EXPECT_EQ(stp_dot1dportnum2ifindex(none, &if_index), CMD_NO_ENTRY) << none;
  }
  EXPECT_EQ(if_index, 7U);
  EXPECT_EQ(stp_ifindex2dot1dportnum(kPort2, &port), CMD_OK);
  EXPECT_EQ(port, 130);
  EXPECT_EQ(stp_ifindex2dot1dportnum(kPc1, &port), CMD_OK);
  EXPECT_EQ(port, 4097);
  EXPECT_EQ(stp_dot1dportnum2ifindex(130, &if_index), CMD_OK);
  EXPECT_EQ(if_index, kPort2);
  EXPECT_EQ(stp_dot1dportnum2ifindex(4097, &if_index), CMD_OK);
  EXPECT_EQ(if_index, kPc1);
  EXPECT_EQ(stp_ifindex2dot1dportnum(kPort1, nullptr), CMD_INVALID_ARGUMENT);
  EXPECT_EQ(stp_dot1dportnum2ifindex(129, nullptr), CMD_INVALID_ARGUMENT);
}

TEST_F(Managers, TheVlansOfAnMstInstance) {
  stp_vlan_bmp vlans{7, {}};
  EXPECT_EQ(stp_dot1d_bridgemib_get_mst_ctx(4, &vlans), CMD_NO_ENTRY);
  EXPECT_EQ(vlans.size, 7U);
  EXPECT_EQ(stp_dot1d_bridgemib_get_mst_ctx(5, &vlans), CMD_OK);
  EXPECT_EQ(vlans.size, static_cast<uint32_t>(STP_VLAN_BITMAP_SIZE));
  EXPECT_EQ(bits_of(vlans.bits, sizeof vlans.bits), (std::vector<uint32_t>{10, 4094}));
  EXPECT_EQ(stp_dot1d_bridgemib_get_mst_ctx(0, &vlans), CMD_OK);
  EXPECT_EQ(bits_of(vlans.bits, sizeof vlans.bits), (std::vector<uint32_t>{1}));
  EXPECT_EQ(stp_dot1d_bridgemib_get_mst_ctx(0, nullptr), CMD_INVALID_ARGUMENT);
}

TEST_F(Managers, BridgePortsOfVlans) {
  EXPECT_EQ(members_of(vlan_set({})), (std::vector<uint32_t>{}));
  EXPECT_EQ(members_of(vlan_set({2})), (std::vector<uint32_t>{}));
  EXPECT_EQ(members_of(vlan_set({1})), (std::vector<uint32_t>{129}));
  EXPECT_EQ(members_of(vlan_set({10})), (std::vector<uint32_t>{131, 4097}));
  EXPECT_EQ(members_of(vlan_set({4094})), (std::vector<uint32_t>{131}));
  EXPECT_EQ(members_of(vlan_set({1, 20, 4094})), (std::vector<uint32_t>{129, 131, 4097}));
  EXPECT_EQ(vlan_mgr_get_baseport_membership_range(nullptr), nullptr);
}

TEST_F(Managers, BridgePortsOfAllVlansAreThoseThatHaveAny) {
  stp_vlan_bmp all = vlan_set({});
  for (uint16_t vlan = 1; vlan <= 4094; ++vlan) {
    add_vlan(all.bits, vlan);
  }
  EXPECT_EQ(members_of(all), (std::vector<uint32_t>{129, 131, 4097}));
  switch_.image().publish(
      {{port_channel(1), port_channel(2, {1}), physical_port(1), physical_port(2, {4094})}});
  EXPECT_EQ(members_of(all), (std::vector<uint32_t>{130, 4098}));
}

TEST_F(Managers, OnlyTheOctetsInUseOfAVlanSetCount) {
  stp_vlan_bmp vlans = vlan_set({1, 4094});
  vlans.size = 1;
  EXPECT_EQ(members_of(vlans), (std::vector<uint32_t>{129}));
  vlans.size = 0;
  EXPECT_EQ(members_of(vlans), (std::vector<uint32_t>{}));
  vlans.size = UINT32_MAX;
  EXPECT_EQ(members_of(vlans), (std::vector<uint32_t>{129, 131}));
}

TEST_F(Managers, AnyVlanSetFindsThePortsThatABitByBitSearchFinds) {
  Random random = seeded(1);
  std::vector<ImagePort> interfaces;
  for (uint32_t i = 1; i <= 60; ++i) {
    std::vector<uint16_t> vlans;
    for (auto k = random() % 6; k > 0; --k) {
      vlans.push_back(static_cast<uint16_t>(random() % 4096));
    }
    interfaces.push_back(physical_port(i, vlans));
  }
  switch_.image().publish({interfaces});
  for (int round = 0; round < 300; ++round) {
    stp_vlan_bmp set = vlan_set({});
    for (auto k = random() % 800; k > 0; --k) {
      add_vlan(set.bits, static_cast<uint16_t>(random() % 4096));
    }
    const std::vector<uint32_t> wanted = bits_of(set.bits, sizeof set.bits);
    std::vector<uint32_t> expected;
    for (const ImagePort &interface : interfaces) {
      const std::vector<uint16_t> &of_port = interface.vlans;
      if (std::find_first_of(of_port.begin(), of_port.end(), wanted.begin(), wanted.end()) != of_port.end()) {
        expected.push_back(interface.base_port);
      }
    }
    ASSERT_EQ(members_of(set), expected) << round;
  }
}

TEST_F(Managers, AChangeIsSeenAtOnce) {
  uint32_t if_index = 0;
  EXPECT_EQ(stp_dot1dportnum2ifindex(129, &if_index), CMD_OK);
  switch_.image().publish({{physical_port(7)}});
  EXPECT_EQ(stp_dot1dportnum2ifindex(129, &if_index), CMD_NO_ENTRY);
  EXPECT_EQ(stp_dot1dportnum2ifindex(135, &if_index), CMD_OK);
  EXPECT_EQ(switch_.connections(), 1U);
}

TEST_F(Managers, WithoutASwitchNothingIsKnownAndNothingWritten) {
  uint32_t if_index = 7;
  ASSERT_EQ(im_get_next_ifindex(0, &if_index), CMD_OK);
  switch_.stop();
  run_main_loop_once();
  if_index = 7;
  uint16_t port = 7;
  stp_vlan_bmp vlans{7, {}};
  pcm_port_channel record{7, 7, 7};
  im_oper_status_entry entry{};
  entry.if_index = kPort1;
  EXPECT_EQ(im_get_next_ifindex(0, &if_index), CMD_UNREACHABLE);
  EXPECT_EQ(im_get_ifindex_oper_status_list(&entry, 1), CMD_UNREACHABLE);
  EXPECT_EQ(stp_dot1dportnum2ifindex(129, &if_index), CMD_UNREACHABLE);
  EXPECT_EQ(stp_ifindex2dot1dportnum(kPort1, &port), CMD_UNREACHABLE);
  EXPECT_EQ(stp_dot1d_bridgemib_get_mst_ctx(5, &vlans), CMD_UNREACHABLE);
  EXPECT_EQ(pcm_get_pc_for_port(kPort1, &record), CMD_UNREACHABLE);
  EXPECT_EQ(vlan_mgr_get_baseport_membership_range(&vlans), nullptr);
  EXPECT_EQ(check_if_valid_base_port_ifindex(kPort1, BASE_PORT_ALL), 0);
  EXPECT_EQ(stp_valid_if_index(kPort1), 0);
  EXPECT_EQ(if_index, 7U);
  EXPECT_EQ(port, 7);
  EXPECT_EQ(vlans.size, 7U);
  EXPECT_EQ(uint32_t{record.if_index}, 7U);
  EXPECT_EQ(entry.oper_status, 0);
}

}  // namespace
