#include "model/switch.h"

#include <utility>

#include "model/tree_events.h"

namespace stpswitch {

Switch::Derived::Derived(const SwitchState &state)
    : config_digest(mst_config_digest(state)),
      mst_vlan_map(stpswitch::mst_vlan_map(state)),
      mst_remaining_hops(stpswitch::mst_remaining_hops(state)),
      bridge_ports(stpswitch::bridge_ports(state)),
      vlans_in_use(stpswitch::vlans_in_use(bridge_ports)),
      running_trees(stpswitch::running_trees(state, vlans_in_use)),
      tree_ports(stpswitch::tree_ports(state, bridge_ports)),
      inconsistencies(state.settings.mode, bridge_ports, tree_ports) {}

Switch::Switch(SwitchState state) : state_(std::move(state)), derived_(state_) {}

const std::optional<MstDigest> &Switch::pre_standard_digest() const {
  return state_.mst.pre_standard_digest ? state_.mst.pre_standard_digest : config_digest();
}

void Switch::replace(SwitchState state) {
  // All that can fail comes first; moving a state leaves its ports where the bridge ports point.
  Derived derived(state);
  // Where spanning tree has gone, what was inconsistent in its last mode is so no more.
  const auto mode = state.settings.mode ? state.settings.mode : state_.settings.mode;
  const auto events = mode ? inconsistency_events(inconsistencies(), derived.inconsistencies, *mode)
                           : std::vector<InconsistencyEvent>();
  const TreeChanges changes =
      tree_changes({state_, derived_.bridge_ports, derived_.tree_ports, derived_.running_trees},
                   {state, derived.bridge_ports, derived.tree_ports, derived.running_trees});
  if (state.settings.mode != state_.settings.mode) {
    topology_ = TopologyHistory(topology_.begin());  // trees of another kind have the same numbers
  }
  topology_.add(changes.topology, derived.running_trees, TopologyHistory::Clock::now());
  state_ = std::move(state);
  derived_ = std::move(derived);
  if (listener_) {
    listener_();
  }
  if (inconsistency_listener_ && !events.empty()) {
    inconsistency_listener_(events);
  }
  if (tree_listener_ && !changes.events.empty()) {
    tree_listener_(changes.events);
  }
}

}  // namespace stpswitch
