// What commands share that answer entry by entry: the values of the keys that name an entry, and the entry
// found or, for bridge ports, its answer.
#pragma once

#include <cstdint>
#include <optional>

#include "commands/command.h"

namespace stpswitch {

// The interface index in a request that has the key.
uint32_t asked_interface(const CommandRequest &request, stp_key key);

// The VLAN or MST instance in the range list of a request that has the key. Nothing when the list does not
// name exactly one: CMD_BAD_REQUEST.
std::optional<uint32_t> asked_tree(const CommandRequest &request, stp_key key);

// The same for a port of a tree.
std::optional<TreePort> asked_tree_port(const CommandRequest &request, stp_key tree_key,
                                        stp_key interface_key);

// The entry with exactly the asked key or, for CMD_ACTION_GET_NEXT, the one after it; entries.end() when
// there is none: CMD_NO_ENTRY. `entries` is an ordered set or map.
template <class Entries>
typename Entries::const_iterator find_entry(const Entries &entries, cmd_action action,
                                            const typename Entries::key_type &asked) {
  return action == CMD_ACTION_GET ? entries.find(asked) : entries.upper_bound(asked);
}

// Answers from the bridge port that a request with the key asks for: its interface index, then what
// `add_values` adds.
cmd_result answer_bridge_port(const Switch &the_switch, const CommandRequest &request, stp_key key,
                              void (*add_values)(const BridgePort &, ReplyBuilder *), ReplyBuilder *reply);

// The same as find_entry among ports of trees.
std::optional<TreePort> find_tree_port(const Switch &the_switch, const TreePorts &entries, cmd_action action,
                                       const TreePort &asked);

}  // namespace stpswitch
