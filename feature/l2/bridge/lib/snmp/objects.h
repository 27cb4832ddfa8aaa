// The objects: BRIDGE-MIB's dot1dBase and dot1dStp (RFC 4188) with what RSTP-MIB adds to it (RFC 4318).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "object_values.h"
#include "stpsnmp/agent.h"

namespace stpbridge {

// dot1dBridge.
inline constexpr oid kBridgeMib[] = {1, 3, 6, 1, 2, 1, 17};
inline constexpr size_t kBridgeMibLength = sizeof kBridgeMib / sizeof *kBridgeMib;

// The groups below it.
inline constexpr oid kBaseGroup = 1;
inline constexpr oid kStpGroup = 2;

inline constexpr size_t kScalarArcs = 2;
inline constexpr size_t kColumnArcs = 4;

struct Object {
  size_t length;          // kColumnArcs: a column of the table of ports; kScalarArcs: a scalar of the tree
  oid name[kColumnArcs];  // below dot1dBridge
  Read read;              // null where nobody knows the value

  bool is_column() const { return length == kColumnArcs; }
};

// Those of a group, or, of nothing, those of all groups; in the order of their names. `root`: below
// dot1dBridge.
std::span<const Object> objects_of(std::span<const oid> root);

}  // namespace stpbridge
