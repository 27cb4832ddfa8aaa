// The VLAN map of the MST configuration, as replies to the MST region query carry it unless only digests are
// asked for: one attribute for every instance, in ascending order of instance identifiers.
#pragma once

#include <cstdint>

#include "platform/stp.h"

namespace stpplatform::wire {

inline constexpr uint32_t kMstVlanMapToken = 0x3002'B007;

// Two octets of instance identifier in network byte order, then the bitmap of the VLANs mapped to it.
inline constexpr uint32_t kMstVlanMapIdSize = 2;
inline constexpr uint32_t kMstVlanMapSize = kMstVlanMapIdSize + STP_VLAN_BITMAP_SIZE;

}  // namespace stpplatform::wire
