#include "stpsnmp/values.h"

#include <cstring>
#include <string>

#include <gmock/gmock.h>

#include "fake_platform.h"

namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

// A value at an address that is not aligned to anything, as replies hold them.
template <class Number>
class Unaligned {
 public:
  explicit Unaligned(Number number) { std::memcpy(octets_ + 1, &number, sizeof number); }
  const void *get() const { return octets_ + 1; }

 private:
  alignas(8) uint8_t octets_[sizeof(Number) + 1] = {};
};

Unaligned<uint16_t> number16(uint16_t number) { return Unaligned<uint16_t>(number); }
Unaligned<uint32_t> number32(uint32_t number) { return Unaligned<uint32_t>(number); }

constexpr uint8_t kMac[] = {0x02, 0x11, 0x22, 0x33, 0x44, 0x55};

TEST(BridgeIdentifier, PriorityIsWrittenHighOctetFirst) {
  uint8_t bridge_id[8] = {9, 9, 9, 9, 9, 9, 9, 9};
  set_bridge_id_prio(bridge_id, number16(32768).get());
  EXPECT_THAT(bridge_id, ElementsAre(0x80, 0x00, 9, 9, 9, 9, 9, 9));
  set_bridge_id_prio(bridge_id, number16(0x1234).get());
  EXPECT_THAT(bridge_id, ElementsAre(0x12, 0x34, 9, 9, 9, 9, 9, 9));
}

TEST(BridgeIdentifier, OfAnMstInstance) {
  SmstInstanceRow row{};
  stp_mac_to_bridge_id(&row, kMac);
  EXPECT_THAT(row.bridge_id, ElementsAre(0, 0, 0x02, 0x11, 0x22, 0x33, 0x44, 0x55));
  stp_prio_to_bridge_id(&row, number16(0x6001).get());
  EXPECT_THAT(row.bridge_id, ElementsAre(0x60, 0x01, 0x02, 0x11, 0x22, 0x33, 0x44, 0x55));
  EXPECT_EQ(row.instance_value, 0);
  EXPECT_EQ(row.counter_value, 0U);
}

TEST(BridgeIdentifier, OfABridgeAndOfItsDesignatedRootAndBridge) {
  Dot1dBridgeRecord record{};
  stp_dot1d_prio_to_bridge_id(record.bridge_id, number16(0x1001).get());
  stp_dot1d_mac_to_bridge_id(record.bridge_id, kMac);
  EXPECT_THAT(record.bridge_id, ElementsAre(0x10, 0x01, 0x02, 0x11, 0x22, 0x33, 0x44, 0x55));
  EXPECT_THAT(record.designated_root, ElementsAre(0, 0, 0, 0, 0, 0, 0, 0));
  stp_dot1d_droot_prio_to_bridge_id(record.designated_root, number16(0x2002).get());
  stp_dot1d_droot_mac_to_bridge_id(record.designated_root, kMac);
  EXPECT_THAT(record.designated_root, ElementsAre(0x20, 0x02, 0x02, 0x11, 0x22, 0x33, 0x44, 0x55));
  EXPECT_THAT(record.designated_bridge, ElementsAre(0, 0, 0, 0, 0, 0, 0, 0));
  stp_dot1d_dbridge_prio_to_bridge_id(record.designated_bridge, number16(0x3003).get());
  stp_dot1d_dbridge_mac_to_bridge_id(record.designated_bridge, kMac);
  EXPECT_THAT(record.designated_bridge, ElementsAre(0x30, 0x03, 0x02, 0x11, 0x22, 0x33, 0x44, 0x55));
}

TEST(Ticks, AreHundredthsOfASecond) {
  Dot1dBridgeRecord record{};
  stp_dot1d_sec_to_ticks(&record.time_since_topology_change, number32(15).get());
  EXPECT_EQ(record.time_since_topology_change, 1500U);
  stp_dot1d_sec_to_ticks(&record.time_since_topology_change, number32(0).get());
  EXPECT_EQ(record.time_since_topology_change, 0U);
}

TEST(Ticks, WrapAround) {
  uint32_t ticks = 0;
  stp_dot1d_sec_to_ticks(&ticks, number32(42949673).get());
  EXPECT_EQ(ticks, 4U);
}

TEST(PortState, IsThatOfTheBridgeMib) {
  Dot1dBridgeRecord record{};
  for (const auto &[state, served] : {std::pair<uint32_t, uint32_t>{0, 1}, {1, 2}, {2, 3}, {3, 4}, {4, 5}}) {
    stp_dot1d_port_state(&record.port_state, number32(state).get());
    EXPECT_EQ(record.port_state, served);
  }
}

TEST(PortState, AnythingElseIsBroken) {
  uint32_t port_state = 0;
  for (const uint32_t state : {5U, 6U, 255U, 256U, 0x80000000U, 0xFFFFFFFFU}) {
    stp_dot1d_port_state(&port_state, number32(state).get());
    EXPECT_EQ(port_state, 6U) << state;
  }
}

TEST(DesignatedPort, IsWrittenHighOctetFirstAndLogged) {
  fake::reset();
  Dot1dBridgeRecord record{};
  stp_dot1d_port_to_dport(record.designated_port, number16(0x8123).get());
  EXPECT_THAT(record.designated_port, ElementsAre(0x81, 0x23));
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("log(0x00730000, 101) \"stp_dot1d_port_to_dport(LINE) port_id 33059\\n\""));
}

TEST(PreStandardStatus, IsTwoWhenSetAndThreeWhenNot) {
  SmstPortRow row{};
  EXPECT_EQ(stp_mst_prestd_status(&row.prestd_status, number32(1).get()), 2);
  EXPECT_EQ(row.prestd_status, 2);
  EXPECT_EQ(stp_mst_prestd_status(&row.prestd_status, number32(0x80000000).get()), 2);
  EXPECT_EQ(stp_mst_prestd_status(&row.prestd_status, number32(0).get()), 3);
  EXPECT_EQ(row.prestd_status, 3);
}

int32_t converted(int32_t fetched) {
  ScalarValueRecord record{};
  record.loop_guard_default = fetched;
  stp_loopguard_global_default_mode_2_snmp_val(&record);
  return record.loop_guard_default;
}

TEST(LoopGuardDefault, ZeroBecomesTwo) { EXPECT_EQ(converted(0), 2); }

TEST(LoopGuardDefault, AnythingElseBecomesOne) {
  EXPECT_EQ(converted(1), 1);
  EXPECT_EQ(converted(5), 1);
  EXPECT_EQ(converted(-1), 1);
}

// A flag's helper, called on a row that holds these flags.
template <class Row>
int flags_after(void (*helper)(Row *, const void *), uint32_t value, uint8_t before = 0) {
  Row row{};
  row.port_flags = before;
  helper(&row, number32(value).get());
  return row.port_flags;
}

TEST(Flags, AreSetByAnyValueButZero) {
  for (const uint32_t value : {1U, 2U, 256U, 0xFFFFFFFFU}) {
    EXPECT_EQ(flags_after(stp_mst_oper_edge_to_bit, value), 0x80) << value;
    EXPECT_EQ(flags_after(stp_mst_boundary_to_bit, value), 0x40) << value;
    EXPECT_EQ(flags_after(stp_mst_dispute_to_bit, value), 0x08) << value;
    EXPECT_EQ(flags_after(stp_oper_edge_to_bit, value), 0x80) << value;
  }
  EXPECT_EQ(flags_after(stp_mst_oper_edge_to_bit, 0), 0);
  EXPECT_EQ(flags_after(stp_mst_boundary_to_bit, 0), 0);
  EXPECT_EQ(flags_after(stp_mst_dispute_to_bit, 0), 0);
  EXPECT_EQ(flags_after(stp_oper_edge_to_bit, 0), 0);
}

TEST(Flags, PeerIsSetByOneAloneAndLeftByEverythingElse) {
  EXPECT_EQ(flags_after(stp_mst_peer_to_bit, 1), 0x10);
  EXPECT_EQ(flags_after(stp_peer_to_bit, 1), 0x10);
  for (const uint32_t value : {0U, 2U, 257U, 0xFFFFFFFFU}) {
    EXPECT_EQ(flags_after(stp_mst_peer_to_bit, value, 0xC0), 0xC0) << value;
    EXPECT_EQ(flags_after(stp_peer_to_bit, value, 0x80), 0x80) << value;
  }
}

TEST(Flags, Accumulate) {
  SmstPortRow row{};
  const auto set = number32(1);
  stp_mst_oper_edge_to_bit(&row, set.get());
  stp_mst_boundary_to_bit(&row, set.get());
  stp_mst_peer_to_bit(&row, set.get());
  stp_mst_dispute_to_bit(&row, set.get());
  EXPECT_EQ(row.port_flags, 0xD8);
  stp_mst_boundary_to_bit(&row, number32(0).get());
  EXPECT_EQ(row.port_flags, 0xD8) << "0 clears nothing";
  RpvstPortRow rpvst{};
  stp_oper_edge_to_bit(&rpvst, set.get());
  stp_peer_to_bit(&rpvst, set.get());
  EXPECT_EQ(rpvst.port_flags, 0x90);
}

TEST(Inconsistency, GivesTheTwoLowBitsAsTheFirstTwoOfAnOctetAndAssignsIt) {
  for (const auto &[word, octet] : {std::pair<uint32_t, uint8_t>{0, 0x00},
                                    {1, 0x80},
                                    {2, 0x40},
                                    {3, 0xC0},
                                    {4, 0x00},
                                    {7, 0xC0},
                                    {0xFFFFFFFC, 0x00}}) {
    InconsistencyRow row{};
    std::memset(&row.value, 0xFF, sizeof row.value);
    stp_sstp_inc_to_bmp(&row, number32(word).get(), sizeof word);
    uint8_t octets[sizeof row.value];
    std::memcpy(octets, &row.value, sizeof octets);
    EXPECT_THAT(octets, ElementsAreArray({octet, uint8_t{0xFF}, uint8_t{0xFF}, uint8_t{0xFF}})) << word;
  }
}

}  // namespace
