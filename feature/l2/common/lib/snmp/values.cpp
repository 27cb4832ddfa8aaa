#include "stpsnmp/values.h"

#include <cstring>

#include "diagnostics.h"

namespace {

constexpr int32_t kEnabled = 1;
constexpr int32_t kDisabled = 2;

constexpr int32_t kPreStandard = 2;
constexpr int32_t kNotPreStandard = 3;

constexpr uint32_t kTicksPerSecond = 100;

// dot1dStpPortState (RFC 4188).
constexpr uint32_t kPortDisabled = 1;
constexpr uint32_t kPortBroken = 6;
constexpr uint32_t kPortStates = kPortBroken - kPortDisabled;  // those that the process numbers from 0

// BITS (RFC 2578 clause 7.1.4): bit 0 is the octet's most significant one.
constexpr uint8_t bits_octet(unsigned bit) { return static_cast<uint8_t>(0x80U >> bit); }

constexpr uint8_t kOperEdge = bits_octet(0);
constexpr uint8_t kBoundary = bits_octet(1);
constexpr uint8_t kPeer = bits_octet(3);
constexpr uint8_t kDispute = bits_octet(4);

constexpr uint32_t kIsPeer = 1;

constexpr unsigned kInconsistencies = 2;

template <class Number>
Number load(const void *value) {
  Number number;
  std::memcpy(&number, value, sizeof number);
  return number;
}

void store_high_octet_first(uint8_t *octets, uint16_t number) {
  octets[0] = static_cast<uint8_t>(number >> 8U);
  octets[1] = static_cast<uint8_t>(number & 0xFFU);
}

void set_bridge_id_mac(uint8_t *bridge_id, const void *mac_address) {
  std::memcpy(bridge_id + STP_BRIDGE_PRIORITY_SIZE, mac_address, STP_MAC_ADDRESS_SIZE);
}

void set_if(bool condition, uint8_t bit, uint8_t *flags) {
  if (condition) {
    *flags = static_cast<uint8_t>(*flags | bit);
  }
}

bool is_set(const void *flag) { return load<uint32_t>(flag) != 0; }

bool is_peer(const void *peer) { return load<uint32_t>(peer) == kIsPeer; }

}  // namespace

void set_bridge_id_prio(uint8_t *bridge_id, const void *priority) {
  store_high_octet_first(bridge_id, load<uint16_t>(priority));
}

void stp_prio_to_bridge_id(SmstInstanceRow *row, const void *priority) {
  set_bridge_id_prio(row->bridge_id, priority);
}

void stp_mac_to_bridge_id(SmstInstanceRow *row, const void *mac_address) {
  set_bridge_id_mac(row->bridge_id, mac_address);
}

void stp_dot1d_prio_to_bridge_id(uint8_t *bridge_id, const void *priority) {
  set_bridge_id_prio(bridge_id, priority);
}

void stp_dot1d_mac_to_bridge_id(uint8_t *bridge_id, const void *mac_address) {
  set_bridge_id_mac(bridge_id, mac_address);
}

void stp_dot1d_droot_prio_to_bridge_id(uint8_t *designated_root, const void *priority) {
  set_bridge_id_prio(designated_root, priority);
}

void stp_dot1d_droot_mac_to_bridge_id(uint8_t *designated_root, const void *mac_address) {
  set_bridge_id_mac(designated_root, mac_address);
}

void stp_dot1d_dbridge_prio_to_bridge_id(uint8_t *designated_bridge, const void *priority) {
  set_bridge_id_prio(designated_bridge, priority);
}

void stp_dot1d_dbridge_mac_to_bridge_id(uint8_t *designated_bridge, const void *mac_address) {
  set_bridge_id_mac(designated_bridge, mac_address);
}

void stp_dot1d_sec_to_ticks(uint32_t *ticks, const void *seconds) {
  *ticks = load<uint32_t>(seconds) * kTicksPerSecond;
}

void stp_dot1d_port_state(uint32_t *port_state, const void *state) {
  const auto number = load<uint32_t>(state);
  *port_state = number < kPortStates ? number + kPortDisabled : kPortBroken;
}

void stp_dot1d_port_to_dport(uint8_t *designated_port, const void *port_id) {
  const auto number = load<uint16_t>(port_id);
  STP_LOG(stpsnmp::diagnostics::kTrace, "%s(%d) port_id %d\n", __func__, __LINE__, int{number});
  store_high_octet_first(designated_port, number);
}

int32_t stp_mst_prestd_status(int32_t *status, const void *flag) {
  *status = is_set(flag) ? kPreStandard : kNotPreStandard;
  return *status;
}

void stp_loopguard_global_default_mode_2_snmp_val(ScalarValueRecord *record) {
  record->loop_guard_default = record->loop_guard_default != 0 ? kEnabled : kDisabled;
}

void stp_mst_oper_edge_to_bit(SmstPortRow *row, const void *flag) {
  set_if(is_set(flag), kOperEdge, &row->port_flags);
}

void stp_mst_boundary_to_bit(SmstPortRow *row, const void *flag) {
  set_if(is_set(flag), kBoundary, &row->port_flags);
}

void stp_mst_peer_to_bit(SmstPortRow *row, const void *peer) {
  set_if(is_peer(peer), kPeer, &row->port_flags);
}

void stp_mst_dispute_to_bit(SmstPortRow *row, const void *flag) {
  set_if(is_set(flag), kDispute, &row->port_flags);
}

void stp_oper_edge_to_bit(RpvstPortRow *row, const void *flag) {
  set_if(is_set(flag), kOperEdge, &row->port_flags);
}

void stp_peer_to_bit(RpvstPortRow *row, const void *peer) { set_if(is_peer(peer), kPeer, &row->port_flags); }

void stp_sstp_inc_to_bmp(InconsistencyRow *row, const void *state, uint32_t /*length*/) {
  const auto word = load<uint32_t>(state);
  uint8_t octet = 0;
  for (unsigned bit = 0; bit < kInconsistencies; ++bit) {
    set_if((word >> bit & 1U) != 0, bits_octet(bit), &octet);
  }
  std::memcpy(&row->value, &octet, sizeof octet);
}
