// What the rows of Open vSwitch's database say about the spanning trees of bridges. The one place that
// decides which column becomes which value; what no column says stays unset.
#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "model/switch_state.h"
#include "sources/openvswitch/ovsdb_rows.h"
#include "sources/openvswitch/watched_bridge.h"

namespace stpswitch {

// The ports of several bridges have the same numbers. Those of bridge 0, 1, ... on the command line have
// theirs in a block of numbers each, from this multiple on.
inline constexpr uint32_t kPortsOfBridge = 256;
// A member of a port-channel has its OpenFlow port number in such a block, behind kFirstMember.
inline constexpr uint32_t kMembersOfBridge = 65536;

struct BridgesReading {
  SwitchState state;
  // In the order of the bridges: why there is no tree of it, and what to do, without the subject; empty when
  // there is one.
  std::vector<std::string> without_tree;
  // Which ports are left out, and why. Ports on which nobody runs RSTP are no ports of the tree: not here.
  std::set<std::string> left_out;
};

BridgesReading read_bridges(const OvsdbRows &rows, const std::vector<WatchedBridge> &bridges);

// Nothing is known but what the switch is called.
SwitchState unknown_state(const std::vector<WatchedBridge> &bridges);

// The values of ovs-vswitchd's own in the rows are written anew at least so often, in milliseconds: as long
// as some port runs RSTP. 0: nothing says that they are.
uint64_t status_interval(const OvsdbRows &rows);

}  // namespace stpswitch
