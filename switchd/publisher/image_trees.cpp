#include "publisher/image_trees.h"

#include <algorithm>
#include <chrono>
#include <optional>

#include "model/tree_values.h"
#include "publisher/image_values.h"

namespace stpswitch {
namespace {

namespace wire = stpplatform::wire;

uint8_t copy_known(const std::optional<BridgeId> &id, wire::ImageBridgeId *to) {
  if (!id) {
    return 0;
  }
  to->priority = id->priority;
  std::copy(id->address.begin(), id->address.end(), to->mac);
  return 1;
}

uint64_t image_time(const std::optional<std::chrono::steady_clock::time_point> &time) {
  using Nanoseconds = std::chrono::nanoseconds;
  return time ? static_cast<uint64_t>(
                    std::chrono::duration_cast<Nanoseconds>(time->time_since_epoch()).count())
              : 0;
}

// Where its source does not tell of a bridge's topology changes, those count that were seen in its states.
// Who counts tells the time as well. Without one, nothing has changed since somebody looks.
void add_topology(const TopologyHistory &history, uint32_t tree, ObservedTree *observed) {
  if (!observed->bridge_id) {
    return;
  }
  if (!observed->topology_changes) {
    const TopologyHistory::Changes seen = history.of(tree);
    observed->topology_changes = seen.count;
    observed->last_topology_change = observed->last_topology_change.value_or(seen.last);
  } else {
    observed->last_topology_change = observed->last_topology_change.value_or(history.begin());
  }
}

wire::ImageTree image_tree(uint32_t tree, const TreeValues &values, std::optional<uint32_t> root_port) {
  const ObservedTree &observed = values.observed;
  wire::ImageTree record{};
  record.last_topology_change = image_time(observed.last_topology_change);
  record.tree = tree;
  record.has_bridge_id = copy_known(observed.bridge_id, &record.bridge_id);
  record.has_root_id = copy_known(observed.root_id, &record.root_id);
  record.protocol_version = image_choice(values.settings.protocol_version);
  record.root_cost = image_number(observed.root_cost);
  record.root_port = image_number(root_port);
  record.max_age = image_number(observed.timers_in_force.max_age);
  record.hello_time = image_number(observed.timers_in_force.hello_time);
  record.forward_delay = image_number(observed.timers_in_force.forward_delay);
  record.bridge_max_age = image_number(values.settings.timers.max_age);
  record.bridge_hello_time = image_number(values.settings.timers.hello_time);
  record.bridge_forward_delay = image_number(values.settings.timers.forward_delay);
  record.tx_hold_count = image_number(values.settings.hold_count);
  record.topology_changes = image_number(observed.topology_changes);
  return record;
}

wire::ImageDesignated image_designated(const Designated &designated) {
  wire::ImageDesignated record{};
  record.has_root = copy_known(designated.root, &record.root);
  record.has_bridge = copy_known(designated.bridge, &record.bridge);
  record.cost = image_number(designated.cost);
  record.port = image_number(designated.port);
  return record;
}

// The root port by its bridge's own number.
std::optional<uint32_t> root_port(const Switch &the_switch, const TreeValues &values,
                                  const RootSearch &root) {
  const std::optional<uint32_t> &bridge_port = values.observed.root_port;
  if (!bridge_port || bridge_port == 0U) {
    return bridge_port;
  }
  if (root.number() == bridge_port) {
    return own_number(root.port()->interface->numbers);
  }
  for (const auto &[if_index, port] : the_switch.bridge_ports()) {
    if (port.interface->numbers.bridge_port == bridge_port) {
      return own_number(port.interface->numbers);
    }
  }
  return std::nullopt;
}

std::optional<PortRole> role_of(const wire::ImageTreePort &port) {
  return port.role != wire::kUnknown ? std::optional(static_cast<PortRole>(port.role)) : std::nullopt;
}

}  // namespace

ImageTrees::ImageTrees(const Switch &the_switch, const std::vector<RootSearch> &roots)
    : switch_(the_switch), observed_(wire::kTrees) {
  the_switch.running_trees().for_each([&](uint32_t tree) {
    TreeValues values = tree_values(the_switch.state(), roots[tree], tree);
    add_topology(the_switch.topology(), tree, &values.observed);
    records_.push_back(image_tree(tree, values, root_port(the_switch, values, roots[tree])));
    observed_[tree] = values.observed;
  });
}

std::vector<wire::ImageDesignated> ImageTrees::designated(const ImageInterfaces &interfaces,
                                                          std::span<wire::ImageTreePort> ports) const {
  std::vector<const Interface *> by_position(interfaces.records().size());
  for (const auto &[if_index, port] : switch_.bridge_ports()) {
    by_position[interfaces.position_of(if_index)] = port.interface;
  }
  std::vector<wire::ImageDesignated> records;
  for (wire::ImageTreePort &port : ports) {
    const ObservedTree &tree = observed_[port.tree];
    const Interface &interface = *by_position[port.interface];
    // Of most ports nothing has to be looked at.
    if (hears_nobody(role_of(port)) && (sends_all(tree, interface) || interface.designated == Designated())) {
      continue;
    }
    const Designated designated = designated_values(tree, role_of(port), interface);
    if (designated != sent_values(tree, interface)) {
      records.push_back(image_designated(designated));
      port.designated = static_cast<uint32_t>(records.size());
    }
  }
  return records;
}

}  // namespace stpswitch
