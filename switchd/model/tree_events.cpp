#include "model/tree_events.h"

#include <algorithm>
#include <map>
#include <optional>
#include <vector>

#include "model/tree_values.h"

namespace stpswitch {
namespace {

bool is_blocked(const Interface &port, uint32_t tree) {
  return std::any_of(port.inconsistencies.begin(), port.inconsistencies.end(),
                     [tree](const auto &kind) { return kind.second.contains(tree); });
}

std::optional<PortState> state_in(uint32_t tree, std::optional<PortRole> role, const BridgePort &port) {
  return port_state(role, port.interface->state.in(tree), is_blocked(*port.interface, tree));
}

// Nothing that a role or a state depends on is different.
bool are_alike(const BridgePort &one, const BridgePort &other) {
  return one.link_up == other.link_up && one.interface->role == other.interface->role &&
         one.interface->state == other.interface->state &&
         one.interface->inconsistencies == other.interface->inconsistencies;
}

// From learning to forwarding, or from forwarding to blocking (RFC 4188: topologyChange). What came in
// between may not have been seen.
bool changes_topology(std::optional<PortState> before, std::optional<PortState> after) {
  if (!before || !after || before == after) {
    return false;
  }
  return after == PortState::kForwarding ||
         (before == PortState::kForwarding && after == PortState::kBlocking);
}

// A bridge becomes its tree's root only where one of its ports led to another one, or might have.
bool may_lead_to_root(std::optional<PortRole> role) { return !role || role == PortRole::kRoot; }

TreeSet trees_of(const TreePorts &ports, uint32_t if_index) {
  const auto found = ports.by_port().find(if_index);
  return found != ports.by_port().end() ? found->second : TreeSet();
}

// What the ports of these trees tell of their roots, by tree.
std::vector<RootSearch> roots_of(const TreesOfState &in, const TreeSet &wanted) {
  std::vector<RootSearch> roots(wanted.is_empty() ? 0 : kMaxTree + 1);
  for (const auto &[if_index, trees_of_port] : in.tree_ports.by_port()) {
    TreeSet trees = trees_of_port;
    trees.intersect(wanted);
    const BridgePort &port = in.ports.at(if_index);
    trees.for_each([&](uint32_t tree) { roots[tree].add(role_in(tree, port), port); });
  }
  return roots;
}

class Comparison {
 public:
  Comparison(const TreesOfState &before, const TreesOfState &after)
      : before_(before), after_(after), common_(before.running_trees) {
    common_.intersect(after.running_trees);
    if (before.state.settings.mode != after.state.settings.mode) {
      common_ = {};  // trees of another kind have the same numbers
    }
    if (before.state.bridge != after.state.bridge || before.state.trees != after.state.trees) {
      may_have_new_root_ = common_;
    }
    for (const auto &[if_index, port] : before.ports) {
      compare_port(if_index, port);
    }
    may_have_new_root_.intersect(common_);
    roots_before_ = roots_of(before, may_have_new_root_);
    roots_after_ = roots_of(after, may_have_new_root_);
  }

  TreeChanges changes() const {
    TreeChanges changes;
    if (before_.running_trees != after_.running_trees ||
        before_.state.settings.mode != after_.state.settings.mode) {
      changes.events.push_back({TreeEventKind::kTrees, 0, 0, 0, std::nullopt});
    }
    common_.for_each([&](uint32_t tree) { add_events_of(tree, &changes); });
    return changes;
  }

 private:
  void compare_port(uint32_t if_index, const BridgePort &before) {
    TreeSet left = trees_of(before_.tree_ports, if_index);
    TreeSet trees = left;
    const TreeSet trees_later = trees_of(after_.tree_ports, if_index);
    left.erase(trees_later);
    may_have_new_root_.insert(left);
    const auto after = after_.ports.find(if_index);
    if (after == after_.ports.end() || are_alike(before, after->second)) {
      return;
    }
    trees.intersect(trees_later);
    trees.intersect(common_);
    trees.for_each([&](uint32_t tree) { compare_port_in(tree, before, after->second); });
  }

  void compare_port_in(uint32_t tree, const BridgePort &before, const BridgePort &after) {
    const auto role_before = role_in(tree, before);
    const auto role_after = role_in(tree, after);
    if (may_lead_to_root(role_before) && role_after != role_before) {
      may_have_new_root_.insert(tree);
    }
    if (after.interface->edge != true &&
        changes_topology(state_in(tree, role_before, before), state_in(tree, role_after, after))) {
      changed_by_.try_emplace(tree, after.interface->numbers);
    }
  }

  bool has_become_root(uint32_t tree) const {
    const ObservedTree now = tree_values(after_.state, roots_after_[tree], tree).observed;
    if (now.root_port != 0U || !now.bridge_id || now.root_id != now.bridge_id) {
      return false;
    }
    const ObservedTree then = tree_values(before_.state, roots_before_[tree], tree).observed;
    return then.root_id && then.root_id != then.bridge_id;
  }

  void add_events_of(uint32_t tree, TreeChanges *changes) const {
    const auto mode = after_.state.settings.mode;
    const auto changed = changed_by_.find(tree);
    if (changed != changed_by_.end()) {
      changes->topology.insert(tree);
    }
    if (may_have_new_root_.contains(tree) && has_become_root(tree)) {
      changes->events.push_back({TreeEventKind::kNewRoot, tree, 0, 0, mode});
    } else if (changed != changed_by_.end()) {
      const InterfaceNumbers &port = changed->second;
      changes->events.push_back(
          {TreeEventKind::kTopologyChange, tree, own_number(port), port.if_mib_index.value_or(0), mode});
    }
  }

  const TreesOfState &before_;
  const TreesOfState &after_;
  TreeSet common_;  // trees that run before and after
  TreeSet may_have_new_root_;
  std::vector<RootSearch> roots_before_;  // of those
  std::vector<RootSearch> roots_after_;
  std::map<uint32_t, InterfaceNumbers> changed_by_;  // by tree, the first port that has changed its topology
};

}  // namespace

TreeChanges tree_changes(const TreesOfState &before, const TreesOfState &after) {
  return Comparison(before, after).changes();
}

}  // namespace stpswitch
