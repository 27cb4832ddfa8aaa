// Bridge port numbers, their two ranges, and the interfaces behind them.
#pragma once

#include <cstdint>

#include "platform/im.h"
#include "platform/stp.h"

namespace stpsnmp::search {

inline constexpr uint16_t kMinPhysicalPort = 129;
inline constexpr uint16_t kMaxPhysicalPort = 4095;
inline constexpr uint16_t kMinChannelPort = 4097;
inline constexpr uint16_t kMaxChannelPort = 8191;

inline constexpr uint16_t kNoPort = 0;

// A search that starts here comes to the first physical port.
inline constexpr uint16_t kBeforePhysicalPorts = kMinPhysicalPort - 1;

// An interface's type; 0 where its index has none.
inline uint8_t type_of(uint32_t if_index) {
  uint8_t type = 0;
  if_index_get_type(if_index, &type);
  return type;
}

// Turns a port id into its interface index, where that is a usable interface.
inline bool find_interface(uint16_t port_id, uint32_t *if_index) {
  return port_id != kNoPort && stp_dot1dportnum2ifindex(port_id, if_index) == 0 &&
         stp_valid_if_index(*if_index) != 0;
}

}  // namespace stpsnmp::search
