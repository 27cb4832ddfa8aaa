// What is configured on a switch, and the state of its links: plain data, as a scenario states it. What
// follows from it is in derived.h.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "model/vlan_set.h"

namespace stpswitch {

// The numbers are those that the spanning-tree process answers with.
enum class SpanningTreeMode : uint32_t { kMst = 4, kRapidPvst = 5 };
enum class PathCostMethod : uint32_t { kShort = 1, kLong = 2 };

struct Settings {
  std::string name;
  SpanningTreeMode mode = SpanningTreeMode::kMst;
  PathCostMethod path_cost_method = PathCostMethod::kShort;
  bool loop_guard_default = false;
};

// IEEE 802.1Q clause 13.8: Configuration Digest.
using MstDigest = std::array<uint8_t, 16>;

struct MstRegion {
  std::string name;  // Configuration Name
  uint32_t revision = 0;
  uint32_t max_hops = 20;                        // as IEEE 802.1Q recommends
  std::optional<MstDigest> pre_standard_digest;  // none: equal to the standard one
};

struct MstInstance {
  VlanSet vlans;
};

struct Port {
  std::string name;
  bool link_up = true;
  VlanSet vlans;
  uint32_t channel = 0;    // the port-channel it is a member of, 0 for none
  bool switchport = true;  // takes part in bridging
};

struct PortChannel {
  std::string name;
  VlanSet vlans;
};

struct Access {
  std::vector<std::string> refused_users;
};

struct SwitchState {
  Settings settings;
  MstRegion mst;
  Access access;
  // By number.
  std::map<uint32_t, MstInstance> mst_instances;  // without the CIST
  std::map<uint32_t, Port> ports;
  std::map<uint32_t, PortChannel> port_channels;
};

}  // namespace stpswitch
