// How the shipped platform numbers interfaces: the type in the top byte, the port or channel number below.
// Port-channels therefore come before physical ports in the order of interface indexes.
#pragma once

#include <cstdint>

#include "platform/im.h"

namespace stpplatform::wire {

inline constexpr uint32_t kIfTypeShift = 24;
inline constexpr uint32_t kIfNumberMask = (1U << kIfTypeShift) - 1;

// Bridge port numbers are the port's or channel's number above these; the ranges end at 4095 and 8191.
inline constexpr uint32_t kPhysicalBasePortOffset = 128;
inline constexpr uint32_t kChannelBasePortOffset = 4096;
inline constexpr uint32_t kMaxPhysicalPort = 4095 - kPhysicalBasePortOffset;
inline constexpr uint32_t kMaxChannel = 8191 - kChannelBasePortOffset;

constexpr uint32_t if_index_of(if_type type, uint32_t number) {
  return (static_cast<uint32_t>(type) << kIfTypeShift) | number;
}

}  // namespace stpplatform::wire
