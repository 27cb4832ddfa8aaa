// A bridge and what hangs on it, as the kernel told it at one time.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "sources/linux_bridge/link_message.h"

namespace stpswitch {

// It is made anew for every state: the kernel notifies of part of the changes only, so that every state needs
// a dump, and a row that is in none is in no table.
struct LinkTable {
  Link bridge;
  std::optional<OwnTimers> own_timers;            // asked for where they are not those in force
  std::map<uint32_t, Link> ports;                 // by interface index
  std::map<uint32_t, std::vector<Link>> members;  // of the ports that are port-channels
};

bool is_bridge(const Link &link);

// A bond or team.
bool is_port_channel(const Link &link);

bool has_vlan_filtering(const Link &bridge);

bool is_root(const Link &bridge);

// The kernel runs the bridge's spanning tree itself.
bool runs_kernel_stp(const Link &bridge);

// The table of a bridge that has these ports, with nothing that is asked for by itself.
LinkTable make_table(Link bridge, std::vector<Link> ports);

// Puts in the VLANs of those that are in the table. A port that is not told of has none.
void add_vlans(const std::vector<Link> &bridge_ports, LinkTable *table);

// The message may tell of a change of what is in the table, or of something that belongs there.
bool concerns(const LinkMessage &message, const LinkTable &table);

}  // namespace stpswitch
