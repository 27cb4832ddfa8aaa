// The values of the objects, each read from the spanning-tree process's reply about a tree or a bridge port.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "query/reply.h"
#include "stpsnmp/agent.h"

namespace stpbridge {

using stpsnmp::query::Reply;

// As it goes into a binding.
struct Value {
  static constexpr size_t kMaxSize = 2 * sizeof(oid);

  u_char type;
  size_t size;
  alignas(oid) uint8_t octets[kMaxSize];

  // Four octets are right for every number, whatever the width of long is.
  void set_number(u_char asn_type, uint32_t number) { set(asn_type, &number, sizeof number); }

  void set(u_char asn_type, const void *data, size_t length) {
    type = asn_type;
    size = length;
    std::memcpy(octets, data, length);
  }
};

// Reads a value. False where the reply does not hold it, or holds what the object cannot: it is absent then.
using Read = bool (*)(const Reply &reply, Value *value);

// The numbers that an object can have.
struct Range {
  uint32_t first;
  uint32_t last;
};
inline constexpr Range kInteger32{0, INT32_MAX};
inline constexpr Range kAny{0, UINT32_MAX};
inline constexpr Range kOctet{0, UINT8_MAX};
inline constexpr Range kTwoOctets{0, UINT16_MAX};
inline constexpr Range kPortNumbers{1, UINT16_MAX};
inline constexpr Range kPositive{1, INT32_MAX};

bool read_number_in(const Reply &reply, stp_attribute attribute, Range range, uint32_t *number);

// An attribute as it is.
template <stp_attribute attribute, Range range = kInteger32, u_char type = ASN_INTEGER>
bool read_number(const Reply &reply, Value *value) {
  uint32_t number = 0;
  if (!read_number_in(reply, attribute, range, &number)) {
    return false;
  }
  value->set_number(type, number);
  return true;
}

// A TruthValue (RFC 2579) of a flag.
inline constexpr uint32_t kTrue = 1;
inline constexpr uint32_t kFalse = 2;

template <stp_attribute attribute>
bool read_truth(const Reply &reply, Value *value) {
  constexpr Range kFlag{0, 1};
  uint32_t flag = 0;
  if (!read_number_in(reply, attribute, kFlag, &flag)) {
    return false;
  }
  value->set_number(ASN_INTEGER, flag != 0 ? kTrue : kFalse);
  return true;
}

// What is the same of every tree, or of every port, that there is.
template <uint32_t number>
bool read_constant(const Reply &, Value *value) {
  value->set_number(ASN_INTEGER, number);
  return true;
}

bool read_identifier_from(const Reply &reply, stp_attribute priority, stp_attribute mac, Value *value);

// A bridge identifier (RFC 4188, BridgeId).
template <stp_attribute priority, stp_attribute mac>
bool read_identifier(const Reply &reply, Value *value) {
  return read_identifier_from(reply, priority, mac, value);
}

bool read_bridge_address(const Reply &reply, Value *value);
bool read_protocol_version(const Reply &reply, Value *value);
bool read_no_circuit(const Reply &reply, Value *value);
bool read_port_state(const Reply &reply, Value *value);
bool read_port_enable(const Reply &reply, Value *value);
bool read_short_path_cost(const Reply &reply, Value *value);
bool read_designated_port(const Reply &reply, Value *value);
bool read_admin_point_to_point(const Reply &reply, Value *value);

}  // namespace stpbridge
