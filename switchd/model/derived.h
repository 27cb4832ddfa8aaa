// What follows from the state of a switch without being stated.
#pragma once

#include <cstdint>
#include <set>

#include "model/switch_state.h"

namespace stpswitch {

// MST knows long path costs only.
PathCostMethod operational_path_cost_method(const Settings &settings);

// A port-channel is up while at least one of its members has a link.
std::set<uint32_t> port_channels_up(const SwitchState &state);

// The VLANs that no MST instance claims.
VlanSet cist_vlans(const SwitchState &state);

// The Configuration Digest of the VLAN mapping (IEEE 802.1Q clause 13.8).
MstDigest mst_config_digest(const SwitchState &state);

}  // namespace stpswitch
