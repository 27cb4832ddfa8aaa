// The two ranges of bridge port numbers.
#pragma once

#include <cstdint>

#include "platform/im.h"

namespace stpsnmp::search {

inline constexpr uint16_t kMinPhysicalPort = 129;
inline constexpr uint16_t kMaxPhysicalPort = 4095;
inline constexpr uint16_t kMinChannelPort = 4097;
inline constexpr uint16_t kMaxChannelPort = 8191;

// A search that starts here comes to the first physical port.
inline constexpr uint16_t kBeforePhysicalPorts = kMinPhysicalPort - 1;

// An interface's type; 0 where its index has none.
inline uint8_t type_of(uint32_t if_index) {
  uint8_t type = 0;
  if_index_get_type(if_index, &type);
  return type;
}

}  // namespace stpsnmp::search
