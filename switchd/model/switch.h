// The running switch: its state, what is computed from it once a change, and who is told of changes.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "model/derived.h"
#include "model/events.h"
#include "model/inconsistencies.h"
#include "model/switch_state.h"
#include "model/topology_history.h"

namespace stpswitch {

class Switch {
 public:
  explicit Switch(SwitchState state);
  Switch(const Switch &) = delete;
  Switch &operator=(const Switch &) = delete;

  const SwitchState &state() const { return state_; }
  const std::optional<MstDigest> &config_digest() const { return derived_.config_digest; }
  const std::optional<MstDigest> &pre_standard_digest() const;
  // By instance, the CIST included.
  const std::map<uint32_t, VlanSet> &mst_vlan_map() const { return derived_.mst_vlan_map; }
  const std::map<uint32_t, std::optional<uint32_t>> &mst_remaining_hops() const {
    return derived_.mst_remaining_hops;
  }
  const BridgePorts &bridge_ports() const { return derived_.bridge_ports; }
  const VlanSet &vlans_in_use() const { return derived_.vlans_in_use; }
  const TreeSet &running_trees() const { return derived_.running_trees; }
  const TreePorts &tree_ports() const { return derived_.tree_ports; }
  const Inconsistencies &inconsistencies() const { return derived_.inconsistencies; }
  // As the states show it that came one after the other.
  const TopologyHistory &topology() const { return topology_; }

  // Called after each change; there is one listener.
  void on_change(std::function<void()> listener) { listener_ = std::move(listener); }

  // Called after that with the events of the change, if there are any; there is one listener.
  void on_inconsistencies(std::function<void(const std::vector<InconsistencyEvent> &)> listener) {
    inconsistency_listener_ = std::move(listener);
  }

  // The same for events of trees.
  void on_tree_events(std::function<void(const std::vector<TreeEvent> &)> listener) {
    tree_listener_ = std::move(listener);
  }

  // Takes over a state that has been checked.
  void replace(SwitchState state);

 private:
  struct Derived {
    explicit Derived(const SwitchState &state);

    std::optional<MstDigest> config_digest;
    std::map<uint32_t, VlanSet> mst_vlan_map;
    std::map<uint32_t, std::optional<uint32_t>> mst_remaining_hops;
    BridgePorts bridge_ports;
    VlanSet vlans_in_use;
    TreeSet running_trees;
    TreePorts tree_ports;
    Inconsistencies inconsistencies;
  };

  SwitchState state_;
  Derived derived_;
  TopologyHistory topology_{TopologyHistory::Clock::now()};
  std::function<void()> listener_;
  std::function<void(const std::vector<InconsistencyEvent> &)> inconsistency_listener_;
  std::function<void(const std::vector<TreeEvent> &)> tree_listener_;
};

}  // namespace stpswitch
