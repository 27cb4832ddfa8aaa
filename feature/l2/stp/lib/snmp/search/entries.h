// The spanning-tree process's entries of ports and of ports in trees, and the rows that searches make of
// them.
#pragma once

#include <cstdint>
#include <optional>

#include "call_site.h"
#include "diagnostics.h"
#include "platform/stp_protocol.h"
#include "query/reply.h"

namespace stpsnmp::search {

// A row's index in SNMP order: by tree, then by bridge port number.
struct TreePort {
  uint32_t tree_id;
  uint16_t port_id;

  bool operator>(const TreePort &other) const {
    return tree_id > other.tree_id || (tree_id == other.tree_id && port_id > other.port_id);
  }
};

// An entry's place in the process's own order: by tree, then by interface index.
struct Place {
  uint32_t tree;
  uint32_t if_index;
};

// Entries of one kind: the command, and the keys that they are asked for by.
struct EntryKind {
  stp_command command;
  stp_key interface;
  std::optional<stp_key> tree;  // none: an interface is the whole key
};

inline constexpr EntryKind kRapidPvstPorts = {STP_COMMAND_RAPID_PVST_PORTS, STP_KEY_INTERFACE,
                                              STP_KEY_VLAN_TREE};
inline constexpr EntryKind kMstPorts = {STP_COMMAND_MST_PORTS, STP_KEY_MST_INTERFACE, STP_KEY_MST_TREE};

// Fetches the entry with this key, or the one behind it. `*tree`, where it is part of the key, and
// `*if_index` become the entry's, as far as the reply names them. False with everything as it was where there
// is no such entry, or where what the key needs is null or out of range. `reply` is empty, or null where only
// the key is wanted.
bool fetch_entry(const EntryKind &kind, cmd_action action, uint32_t *tree, uint32_t *if_index,
                 query::Reply *reply);

// The same for an entry of a port in a tree.
inline bool fetch_entry(const EntryKind &kind, cmd_action action, Place *place, query::Reply *reply) {
  return fetch_entry(kind, action, &place->tree, &place->if_index, reply);
}

inline void release(query::Reply *reply) {
  if (reply != nullptr) {
    reply->release();
  }
}

// The end of the searches by tree and port: makes the entry that was found the row. False with the reply
// released where its interface has no port. What goes wrong is logged for `caller` at `failure_level`.
bool finish(const Place &found, TreePort *row, query::Reply *reply, diagnostics::Level failure_level,
            CallSite caller);

}  // namespace stpsnmp::search
