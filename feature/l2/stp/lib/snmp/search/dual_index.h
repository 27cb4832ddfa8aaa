// Rows by tree and port. SNMP orders them by tree and then by port id, physical ports before port-channels;
// the spanning-tree process orders its entries by tree and then by interface index, port-channels before
// physical ports.
#pragma once

#include <cstdint>

#include "query/reply.h"
#include "search/entries.h"

namespace stpsnmp::search {

// Find the entry of exactly this row, and the one behind it. True with the row found and its entry's reply;
// after false, the row's port id may have moved, its tree id has not, and there is no reply. `selector` (enum
// base_port_selector) says which ports are candidates. `reply` is empty, or null where only the row is
// wanted.
bool find_exact_row(const EntryKind &kind, TreePort *row, query::Reply *reply);
bool find_next_row(const EntryKind &kind, uint8_t selector, TreePort *row, query::Reply *reply);

// Finds the first entry of a port-channel in the tree, from the port on, and moves the port there. After
// false the tree may have moved, and there is no reply.
bool find_channel(const EntryKind &kind, uint32_t *tree, uint16_t *port_id, query::Reply *reply);

// Offers the first physical port in place of a port-channel with which the process answered: takes over its
// entry in the tree, or the one behind it, unless that lies in a later tree. Of the caller's reply and the
// new one, the one that is not kept is released. After false the caller's is still there, and place and port
// are as they were, or, where no port is usable, where the count ended.
bool offer_physical_entry(const EntryKind &kind, Place *place, uint16_t *port_id, query::Reply *reply);

}  // namespace stpsnmp::search
