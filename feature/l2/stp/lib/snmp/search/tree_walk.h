// The next row of tables that are numbered by tree and port: trees in the order of the spanning-tree process,
// and in each tree the bridge ports that are members of its VLANs, in ascending order. A following tree
// without such a port ends the walk, deliberately.
//
// Both return 0 with `*tree_id` and `*port_id` those of the row and `*resp_h` its entry, the caller's to
// release, or -1, after which `*resp_h` is not to be touched. `resp_h` itself may be null.
#pragma once

#include <cstdint>

namespace stpsnmp::search {

// Rapid PVST, where a tree is a VLAN. The first two tokens are those of the entry's keys, `selector` says
// which ports are accepted (enum base_port_selector). A `*tree_id` of 0 becomes 1, also where nothing is
// found.
int get_next_stp_dual_indices_entry_rpvst(uint32_t port_attr, uint16_t *port_id, uint32_t tree_attr,
                                          uint32_t *tree_id, void **resp_h, uint32_t cmd_id,
                                          uint8_t selector);

// MST, where a tree is an instance, 0 the CIST; the entries are those of MST ports.
int get_next_stp_dual_indices_entry_mst(uint16_t *port_id, uint32_t *tree_id, void **resp_h);

}  // namespace stpsnmp::search
