#include "model/tree_values.h"

namespace stpswitch {
namespace {

template <class T>
std::optional<T> first_of(const std::optional<T> &stated, const std::optional<T> &otherwise) {
  return stated ? stated : otherwise;
}

Timers first_of(const Timers &stated, const Timers &otherwise) {
  return {first_of(stated.max_age, otherwise.max_age), first_of(stated.hello_time, otherwise.hello_time),
          first_of(stated.forward_delay, otherwise.forward_delay)};
}

TreeSettings first_of(const TreeSettings &stated, const TreeSettings &otherwise) {
  return {first_of(stated.priority, otherwise.priority), first_of(stated.timers, otherwise.timers),
          first_of(stated.hold_count, otherwise.hold_count),
          first_of(stated.protocol_version, otherwise.protocol_version)};
}

Designated first_of(const Designated &stated, const Designated &otherwise) {
  return {first_of(stated.root, otherwise.root), first_of(stated.bridge, otherwise.bridge),
          first_of(stated.cost, otherwise.cost), first_of(stated.port, otherwise.port)};
}

// The system identifier extension is the number of the tree (IEEE 802.1Q clause 13.24).
BridgeId in_tree(BridgeId id, uint32_t tree) {
  id.priority = static_cast<uint16_t>(id.priority | tree);
  return id;
}

std::optional<BridgeId> own_id(const TreeSettings &settings, const std::optional<MacAddress> &address,
                               uint32_t tree) {
  if (!settings.priority || !address) {
    return std::nullopt;
  }
  return in_tree({static_cast<uint16_t>(*settings.priority), *address}, tree);
}

std::optional<uint32_t> cost_through(const BridgePort &port) {
  const std::optional<uint32_t> &designated = port.interface->designated.cost;
  const std::optional<uint32_t> &path = port.interface->path_cost;
  return designated && path ? std::optional(*designated + *path) : std::nullopt;
}

// What nobody else says of a tree whose root the switch is.
void add_own_root(const TreeSettings &settings, ObservedTree *tree) {
  tree->root_id = first_of(tree->root_id, tree->bridge_id);
  tree->root_cost = first_of(tree->root_cost, std::optional(0U));
  tree->timers_in_force = first_of(tree->timers_in_force, settings.timers);
}

}  // namespace

void RootSearch::add(std::optional<PortRole> role, const BridgePort &port) {
  if (role == PortRole::kRoot && port_ == nullptr) {
    port_ = &port;
  }
  all_are_known_ = all_are_known_ && role.has_value();
}

std::optional<uint32_t> RootSearch::number() const {
  if (port_ != nullptr) {
    return port_->interface->numbers.bridge_port;
  }
  return all_are_known_ ? std::optional(0U) : std::nullopt;
}

TreeValues tree_values(const SwitchState &state, const RootSearch &root, uint32_t tree) {
  static const Tree kNothingStated;
  const auto entry = state.trees.find(tree);
  const Tree &stated = entry != state.trees.end() ? entry->second : kNothingStated;

  TreeValues values{first_of(stated.settings, state.bridge.settings), stated.observed};
  ObservedTree &observed = values.observed;
  observed.bridge_id = first_of(observed.bridge_id, own_id(values.settings, state.bridge.address, tree));
  // A switch that is no bridge with an identifier is nobody's root, and neither is one that knows another
  // root.
  const bool may_be_root = !observed.root_id || observed.root_id == observed.bridge_id;
  if (observed.bridge_id && (may_be_root || root.number() != 0U)) {
    observed.root_port = first_of(observed.root_port, root.number());
  }
  if (observed.root_port == 0U) {
    add_own_root(values.settings, &observed);
    return values;
  }
  if (!observed.root_id && state.bridge.root.root_id) {
    observed.root_id = in_tree(*state.bridge.root.root_id, tree);
  }
  observed.timers_in_force = first_of(observed.timers_in_force, state.bridge.root.timers_in_force);
  if (root.port() != nullptr) {
    observed.root_cost = first_of(observed.root_cost, cost_through(*root.port()));
  }
  return values;
}

std::optional<PortState> port_state(std::optional<PortRole> role, std::optional<PortState> stated,
                                    bool is_blocked) {
  if (role == PortRole::kDisabled) {
    return PortState::kDisabled;
  }
  if (stated || !role) {
    return stated;
  }
  const bool may_forward = role == PortRole::kRoot || role == PortRole::kDesignated;
  return may_forward && !is_blocked ? PortState::kForwarding : PortState::kBlocking;
}

std::optional<uint32_t> port_id(const Interface &port) {
  constexpr unsigned kPriorityShift = 8;
  constexpr uint32_t kNumberMask = 0xFFF;
  if (port.numbers.port_id || !port.priority) {
    return port.numbers.port_id;
  }
  return *port.priority << kPriorityShift | (port.numbers.bridge_port & kNumberMask);
}

Designated sent_values(const ObservedTree &tree, const Interface &port) {
  return {tree.root_id, tree.bridge_id, tree.root_cost, port_id(port)};
}

Designated designated_values(const ObservedTree &tree, std::optional<PortRole> role, const Interface &port) {
  if (hears_nobody(role)) {
    return first_of(sent_values(tree, port), port.designated);
  }
  Designated heard = port.designated;
  heard.root = first_of(heard.root, tree.root_id);
  if (heard.cost == 0U) {
    heard.bridge = first_of(heard.bridge, heard.root);
  }
  return heard;
}

}  // namespace stpswitch
