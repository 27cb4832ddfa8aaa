// What follows from the state of a switch without being stated. Its inconsistencies are in inconsistencies.h,
// where it stands in its trees in tree_values.h.
#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include "model/switch_state.h"
#include "model/tree_ports.h"

namespace stpswitch {

// MST knows long path costs only. Unknown where nobody knows the configured one.
std::optional<PathCostMethod> operational_path_cost_method(const Settings &settings);

// Whether each port-channel has a link, by number. Where that is not stated, it has one while at least one of
// its members has.
std::map<uint32_t, std::optional<bool>> links_of_channels(const SwitchState &state);

// A port is a bridge port when it takes part in bridging by itself, not as a member of a port-channel.
bool is_bridge_port(const Port &port);

struct BridgePort {
  const Interface *interface;  // stays where it is in the state
  std::optional<bool> link_up;
  std::optional<bool> point_to_point;  // what the link, if there is one, is taken to be

  bool operator==(const BridgePort &) const = default;
};

// The bridge ports by interface index: port-channels, then ports. Where no spanning tree runs there are none.
using BridgePorts = std::map<uint32_t, BridgePort>;
BridgePorts bridge_ports(const SwitchState &state);

// The role that the port has in the tree: without a link it is disabled.
std::optional<PortRole> role_in(uint32_t tree, const BridgePort &port);

// The VLANs that some bridge port is a member of.
VlanSet vlans_in_use(const BridgePorts &ports);

// The spanning trees that run in the switch's mode: one for each VLAN in use unless it is disabled, or the
// CIST and each MST instance.
TreeSet running_trees(const SwitchState &state, const VlanSet &vlans_in_use);

// The ports of these trees: the members of the VLAN, or of any VLAN mapped to the instance. The CIST has all
// bridge ports.
TreePorts tree_ports(const SwitchState &state, const BridgePorts &ports);

// The VLANs that no MST instance claims.
VlanSet cist_vlans(const SwitchState &state);

// By instance, the CIST included: the VLANs mapped to it, and its remaining hops. Where no spanning tree runs
// there are none.
std::map<uint32_t, VlanSet> mst_vlan_map(const SwitchState &state);
std::map<uint32_t, std::optional<uint32_t>> mst_remaining_hops(const SwitchState &state);

// The Configuration Digest of the VLAN mapping (IEEE 802.1Q clause 13.8). A bridge outside any region has
// none.
std::optional<MstDigest> mst_config_digest(const SwitchState &state);

}  // namespace stpswitch
