// The bridges that the command line names.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace stpswitch {

struct WatchedBridge {
  std::string name;
  std::optional<uint32_t> vlan;  // whose tree it is; none: the tree of all VLANs

  bool operator==(const WatchedBridge &) const = default;
};

// How many there can be: the ports of each have a block of numbers of their own (bridge_state.h).
inline constexpr size_t kMaxWatchedBridges = 15;

// Reads "NAME", or one "NAME=VLAN" for each VLAN's tree. Throws Refusal.
std::vector<WatchedBridge> parse_watched_bridges(const std::vector<std::string> &texts);

// What the switch is called: the bridges' names.
std::string joined_names(const std::vector<WatchedBridge> &bridges);

}  // namespace stpswitch
