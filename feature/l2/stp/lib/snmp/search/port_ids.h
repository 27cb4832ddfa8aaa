// Bridge port numbers (port ids): their two ranges, the interfaces behind them, and which of them is next.
#pragma once

#include <cstdint>

#include "platform/cmd.h"

namespace stpsnmp::search {

inline constexpr uint16_t kMinPhysicalPort = 129;
inline constexpr uint16_t kMaxPhysicalPort = 4095;
inline constexpr uint16_t kMinChannelPort = 4097;
inline constexpr uint16_t kMaxChannelPort = 8191;

inline constexpr uint16_t kNoPort = 0;

// A search that starts here comes to the first physical port.
inline constexpr uint16_t kBeforePhysicalPorts = kMinPhysicalPort - 1;

// An interface's type; 0 where its index has none.
uint8_t type_of(uint32_t if_index);

// Turns a port id into its interface index, where that is a usable interface.
bool find_interface(uint16_t port_id, uint32_t *if_index);

// What the two exported validations of a port id do, for a GET and for any other action
// (stpsnmp/index_search.h).
bool validate_by_counting(cmd_action action, uint32_t *in_if_index, uint32_t *ret_if_index, uint16_t *port_id,
                          uint8_t *if_type);
bool validate_by_interface_manager(cmd_action action, uint8_t selector, uint16_t *port_id,
                                   uint32_t *if_index);

// The lowest port id above `port_id` among the interfaces that the interface manager knows and that
// `selector` (enum base_port_selector) accepts; kNoPort where there is none.
uint16_t next_port_id(uint16_t port_id, uint8_t selector);

}  // namespace stpsnmp::search
