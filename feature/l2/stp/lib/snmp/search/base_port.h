// Rows that are numbered by the bridge port alone: is this port one, which one is next among the members of a
// set of VLANs, and its entry.
#pragma once

#include <cstdint>

#include "platform/vlan_mgr.h"
#include "query/reply.h"
#include "search/entries.h"

namespace stpsnmp::search {

// Bits of a base-port bitmap.
inline constexpr uint32_t kBasePorts = 8 * BASEPORT_BITMAP_SIZE;

// GET: accepts `*port_id` where it stands for a usable interface that is in no port-channel. Any other
// action: moves it to the next member of the VLANs that `selector` (enum base_port_selector) accepts; with
// `use_cache`, among members as they were up to ten seconds ago, and then the VLANs are all VLANs. True with
// `*if_index` the port's, or false with nothing changed.
bool find_base_port(cmd_action action, uint8_t selector, const stp_vlan_bmp *vlans, bool use_cache,
                    uint16_t *port_id, uint32_t *if_index);

// Ports that are down can be spared the question: `*is_down` then becomes true, and there is no reply.
struct DownPorts {
  bool are_spared;
  bool *is_down;  // stays as it was for others; where it is null, a port that is down fails
};

// Finds the port that a request means among all VLANs, and fetches its entry with exactly that port as the
// key. True with `*port_id` the row's port; false, after which it may have moved. `reply` may be null.
bool find_base_port_entry(const EntryKind &kind, cmd_action action, uint8_t selector, DownPorts down,
                          uint16_t *port_id, query::Reply *reply);

// The members of VLANs. A walk asks for those of all VLANs once a row, so they are kept for some seconds.

// Returns a record for the caller to free, or null. It may be up to ten seconds old, and then holds the ports
// of the VLANs that were asked for when it was fresh: ask for bitmap::kAllVlans only.
vlan_mgr_baseport_bmp *cached_members(const stp_vlan_bmp *vlans);

// Logs lines of runs such as "1-3,5", each of which fits into 80 octets with its terminator. While they are
// built, printf_curr_idx is the last port that was listed; afterwards it is 0.
void list_members(const vlan_mgr_baseport_bmp &members);

}  // namespace stpsnmp::search
