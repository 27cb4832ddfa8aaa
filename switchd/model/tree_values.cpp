#include "model/tree_values.h"

#include <algorithm>

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

// The port through which the root is reached; none while the roles of the others are unknown.
struct RootPort {
  std::optional<uint32_t> number;    // 0: the switch is the root
  const BridgePort *port = nullptr;  // that has the number
};

RootPort root_port_of(const BridgePorts &ports, uint32_t tree) {
  bool all_are_known = true;
  for (const auto &[if_index, port] : ports) {
    const std::optional<PortRole> role = role_in(tree, port);
    if (role == PortRole::kRoot) {
      return {port.interface->numbers.bridge_port, &port};
    }
    all_are_known = all_are_known && role.has_value();
  }
  return {all_are_known ? std::optional(0U) : std::nullopt, nullptr};
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

bool is_inconsistent(const Interface &interface, uint32_t tree) {
  return std::any_of(interface.inconsistencies.begin(), interface.inconsistencies.end(),
                     [tree](const auto &kind) { return kind.second.contains(tree); });
}

std::optional<PortState> state_of(const BridgePort &port, std::optional<PortRole> role, uint32_t tree) {
  if (role == PortRole::kDisabled) {
    return PortState::kDisabled;
  }
  const std::optional<PortState> stated = port.interface->state.in(tree);
  if (stated || !role) {
    return stated;
  }
  const bool may_forward = role == PortRole::kRoot || role == PortRole::kDesignated;
  return may_forward && !is_inconsistent(*port.interface, tree) ? PortState::kForwarding
                                                                : PortState::kBlocking;
}

// Four bits of priority, twelve of the port's number.
std::optional<uint32_t> port_id_of(const Interface &interface) {
  constexpr unsigned kPriorityShift = 8;
  constexpr uint32_t kNumberMask = 0xFFF;
  if (interface.numbers.port_id || !interface.priority) {
    return interface.numbers.port_id;
  }
  return *interface.priority << kPriorityShift | (interface.numbers.bridge_port & kNumberMask);
}

}  // namespace

TreeValues tree_values(const SwitchState &state, const BridgePorts &ports, uint32_t tree) {
  static const Tree kNothingStated;
  const auto entry = state.trees.find(tree);
  const Tree &stated = entry != state.trees.end() ? entry->second : kNothingStated;

  TreeValues values{first_of(stated.settings, state.bridge.settings), stated.observed};
  ObservedTree &observed = values.observed;
  observed.bridge_id = first_of(observed.bridge_id, own_id(values.settings, state.bridge.address, tree));
  const RootPort root_port = root_port_of(ports, tree);
  // A switch that is no bridge with an identifier is nobody's root, and neither is one that knows another
  // root.
  const bool may_be_root = !observed.root_id || observed.root_id == observed.bridge_id;
  if (observed.bridge_id && (may_be_root || root_port.number != 0U)) {
    observed.root_port = first_of(observed.root_port, root_port.number);
  }
  if (observed.root_port == 0U) {
    add_own_root(values.settings, &observed);
    return values;
  }
  if (!observed.root_id && state.bridge.root.root_id) {
    observed.root_id = in_tree(*state.bridge.root.root_id, tree);
  }
  observed.timers_in_force = first_of(observed.timers_in_force, state.bridge.root.timers_in_force);
  if (root_port.port != nullptr) {
    observed.root_cost = first_of(observed.root_cost, cost_through(*root_port.port));
  }
  return values;
}

TreePortValues tree_port_values(const TreeValues &in_tree, uint32_t tree, const BridgePort &port) {
  const ObservedTree &observed = in_tree.observed;
  TreePortValues values{role_in(tree, port), {}, port_id_of(*port.interface), port.interface->designated};
  values.state = state_of(port, values.role, tree);
  // A segment's designated port is heard by itself alone, and one that is disabled hears nobody.
  if (values.role == PortRole::kDesignated || values.role == PortRole::kDisabled) {
    values.designated =
        first_of(Designated{observed.root_id, observed.bridge_id, observed.root_cost, values.port_id},
                 port.interface->designated);
    return values;
  }
  values.designated.root = first_of(values.designated.root, observed.root_id);
  if (values.designated.cost == 0U) {
    values.designated.bridge = first_of(values.designated.bridge, values.designated.root);
  }
  return values;
}

}  // namespace stpswitch
