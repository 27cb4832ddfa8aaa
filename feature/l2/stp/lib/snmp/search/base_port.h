// Which bridge port a request means: is this one a row, and which one is next among the members of a set of
// VLANs.
#pragma once

#include <cstdint>

#include "platform/vlan_mgr.h"

namespace stpsnmp::search {

// Bits of a base-port bitmap.
inline constexpr uint32_t kBasePorts = 8 * BASEPORT_BITMAP_SIZE;

// Mode GET (enum cmd_action): accepts `*port_id` where it stands for a usable interface that is in no
// port-channel. Any other mode: moves it to the next member of the VLANs that `selector` (enum
// base_port_selector) accepts; with `use_cache` not 0, among members as they were up to ten seconds ago, and
// then the VLANs are all VLANs. Returns 0 with both interface indexes set to the port's, or -1 with nothing
// changed.
int validate_port_id_for_snmp_search_new(uint32_t mode, uint32_t *in_if_index, uint32_t *ret_if_index,
                                         uint16_t *port_id, uint8_t selector, const stp_vlan_bmp *vlan_bmp,
                                         uint32_t use_cache);

}  // namespace stpsnmp::search
