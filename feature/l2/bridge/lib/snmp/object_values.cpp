#include "object_values.h"

#include <algorithm>

#include "stpsnmp/values.h"

namespace stpbridge {
namespace {

constexpr size_t kPortIdSize = 2;

// dot1dStpVersion (RFC 4318).
constexpr uint32_t kStpCompatible = 0;
constexpr uint32_t kRstp = 2;

// dot1dStpPortEnable (RFC 4188).
constexpr uint32_t kEnabled = 1;
constexpr uint32_t kDisabled = 2;

// dot1dStpPortAdminPointToPoint (RFC 4318).
constexpr uint32_t kForceTrue = 0;
constexpr uint32_t kForceFalse = 1;
constexpr uint32_t kAuto = 2;

// dot1dStpPortPathCost (RFC 4188): the costs that there are, and the most that it can say.
constexpr Range kPathCosts{1, UINT32_MAX};
constexpr uint32_t kMaxShortPathCost = UINT16_MAX;

}  // namespace

bool read_number_in(const Reply &reply, stp_attribute attribute, Range range, uint32_t *number) {
  return reply.read_number(attribute, number) == 0 && *number >= range.first && *number <= range.last;
}

bool read_identifier_from(const Reply &reply, stp_attribute priority, stp_attribute mac, Value *value) {
  uint32_t number = 0;
  const void *address = nullptr;
  if (!read_number_in(reply, priority, kTwoOctets, &number) || reply.find(mac, &address) != 0) {
    return false;
  }
  const auto two_octets = static_cast<uint16_t>(number);
  uint8_t identifier[STP_BRIDGE_ID_SIZE];
  stp_dot1d_prio_to_bridge_id(identifier, &two_octets);
  stp_dot1d_mac_to_bridge_id(identifier, address);
  value->set(ASN_OCTET_STR, identifier, sizeof identifier);
  return true;
}

bool read_bridge_address(const Reply &reply, Value *value) {
  const void *address = nullptr;
  if (reply.find(STP_ATTRIBUTE_BRIDGE_MAC, &address) != 0) {
    return false;
  }
  value->set(ASN_OCTET_STR, address, STP_MAC_ADDRESS_SIZE);
  return true;
}

// The object knows no later version than RSTP, which MSTP contains: a bridge of an MST region speaks RSTP
// with every other one.
bool read_protocol_version(const Reply &reply, Value *value) {
  uint32_t version = 0;
  if (!read_number_in(reply, STP_ATTRIBUTE_PROTOCOL_VERSION, kAny, &version)) {
    return false;
  }
  switch (version) {
    case STP_PROTOCOL_VERSION_STP:
      value->set_number(ASN_INTEGER, kStpCompatible);
      return true;
    case STP_PROTOCOL_VERSION_RSTP:
    case STP_PROTOCOL_VERSION_MSTP:
      value->set_number(ASN_INTEGER, kRstp);
      return true;
    default:
      return false;
  }
}

// dot1dBasePortCircuit of a port that is the only one on its interface.
bool read_no_circuit(const Reply &, Value *value) {
  constexpr oid kZeroDotZero[] = {0, 0};
  value->set(ASN_OBJECT_ID, kZeroDotZero, sizeof kZeroDotZero);
  return true;
}

bool read_port_state(const Reply &reply, Value *value) {
  uint32_t state = 0;
  if (!read_number_in(reply, STP_ATTRIBUTE_PORT_STATE, kAny, &state)) {
    return false;
  }
  uint32_t port_state = 0;
  stp_dot1d_port_state(&port_state, &state);
  value->set_number(ASN_INTEGER, port_state);
  return true;
}

bool read_port_enable(const Reply &reply, Value *value) {
  uint32_t state = 0;
  if (!read_number_in(reply, STP_ATTRIBUTE_PORT_STATE, kAny, &state)) {
    return false;
  }
  value->set_number(ASN_INTEGER, state == STP_PORT_STATE_DISABLED ? kDisabled : kEnabled);
  return true;
}

bool read_short_path_cost(const Reply &reply, Value *value) {
  uint32_t cost = 0;
  if (!read_number_in(reply, STP_ATTRIBUTE_PATH_COST, kPathCosts, &cost)) {
    return false;
  }
  value->set_number(ASN_INTEGER, std::min(cost, kMaxShortPathCost));
  return true;
}

bool read_designated_port(const Reply &reply, Value *value) {
  uint32_t number = 0;
  if (!read_number_in(reply, STP_ATTRIBUTE_DESIGNATED_PORT, kTwoOctets, &number)) {
    return false;
  }
  const auto port_id = static_cast<uint16_t>(number);
  uint8_t octets[kPortIdSize];
  stp_dot1d_port_to_dport(octets, &port_id);
  value->set(ASN_OCTET_STR, octets, sizeof octets);
  return true;
}

bool read_admin_point_to_point(const Reply &reply, Value *value) {
  uint32_t link_type = 0;
  if (!read_number_in(reply, STP_ATTRIBUTE_LINK_TYPE, kAny, &link_type)) {
    return false;
  }
  switch (link_type) {
    case STP_LINK_POINT_TO_POINT:
      value->set_number(ASN_INTEGER, kForceTrue);
      return true;
    case STP_LINK_SHARED:
      value->set_number(ASN_INTEGER, kForceFalse);
      return true;
    case STP_LINK_AUTO:
      value->set_number(ASN_INTEGER, kAuto);
      return true;
    default:
      return false;
  }
}

}  // namespace stpbridge
