// The next row of tables that are numbered by tree and port: trees in the order of the spanning-tree process,
// and in each tree the bridge ports that are members of its VLANs, in ascending order. A following tree
// without such a port ends the walk, deliberately.
#pragma once

#include <cstdint>

#include "query/reply.h"
#include "search/entries.h"

namespace stpsnmp::search {

// True with the row found and its entry's reply; after false the row is as it was and there is no reply.
// `reply` is empty, or null where only the row is wanted.

// Rapid PVST, where a tree is a VLAN; `selector` says which ports are accepted (enum base_port_selector). A
// tree id of 0 becomes 1, also where nothing is found.
bool find_next_vlan_port(const EntryKind &kind, uint8_t selector, TreePort *row, query::Reply *reply);

// MST, where a tree is an instance, 0 the CIST; the entries are those of MST ports.
bool find_next_mst_port(TreePort *row, query::Reply *reply);

}  // namespace stpsnmp::search
