// What follows from the state of a switch without being stated.
#pragma once

#include <cstdint>
#include <map>
#include <set>

#include "model/switch_state.h"

namespace stpswitch {

// MST knows long path costs only.
PathCostMethod operational_path_cost_method(const Settings &settings);

// A port-channel is up while at least one of its members has a link.
std::set<uint32_t> port_channels_up(const SwitchState &state);

// A port is a bridge port when it takes part in bridging by itself, not as a member of a port-channel.
bool is_bridge_port(const Port &port);

// The bridge ports by interface index: port-channels, then ports. They stay where they are in the state.
using BridgePorts = std::map<uint32_t, const Interface *>;
BridgePorts bridge_ports(const SwitchState &state);

// The VLANs that some bridge port is a member of.
std::set<uint32_t> vlans_in_use(const BridgePorts &ports);

// The VLANs that no MST instance claims.
VlanSet cist_vlans(const SwitchState &state);

// By instance, the CIST included: the VLANs mapped to it, and its remaining hops.
std::map<uint32_t, VlanSet> mst_vlan_map(const SwitchState &state);
std::map<uint32_t, uint32_t> mst_remaining_hops(const SwitchState &state);

// The Configuration Digest of the VLAN mapping (IEEE 802.1Q clause 13.8).
MstDigest mst_config_digest(const SwitchState &state);

}  // namespace stpswitch
