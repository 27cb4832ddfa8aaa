// The plain model's bridge in its trees. All of it is told anew for each question.
#include "plain_model.h"
#include "protocol_numbers.h"

using stpswitch::BridgeId;
using stpswitch::PortRole;
using stpswitch::PortState;

namespace {

const ReplyContent kNoEntry = {CMD_NO_ENTRY};

template <class T>
std::optional<T> either(const std::optional<T> &one, const std::optional<T> &other) {
  return one.has_value() ? one : other;
}

void add_id(ReplyContent *reply, uint32_t priority, uint32_t mac, const std::optional<BridgeId> &id) {
  if (id) {
    reply->add(priority, uint32_t{id->priority});
    reply->add_octets(mac, id->address.data(), id->address.size());
  }
}

uint32_t number_of(const stpswitch::Interface &port) {
  return port.numbers.own_number ? *port.numbers.own_number : port.numbers.bridge_port;
}

std::optional<PortState> stated_state(const stpswitch::Interface &port, uint32_t tree) {
  for (const auto &[state, trees] : port.state.exceptions) {
    if (trees.contains(tree)) {
      return state;
    }
  }
  return port.state.elsewhere;
}

}  // namespace

PlainModel::Bridge PlainModel::bridge_in(uint32_t tree) const {
  Bridge bridge;
  const auto stated = state_.trees.find(tree);
  const stpswitch::Tree of_tree = stated != state_.trees.end() ? stated->second : stpswitch::Tree();
  const stpswitch::TreeSettings &own = state_.bridge.settings;
  bridge.hold_count = either(of_tree.settings.hold_count, own.hold_count);
  bridge.version = either(of_tree.settings.protocol_version, own.protocol_version);
  bridge.max_age = either(of_tree.settings.timers.max_age, own.timers.max_age);
  bridge.hello_time = either(of_tree.settings.timers.hello_time, own.timers.hello_time);
  bridge.forward_delay = either(of_tree.settings.timers.forward_delay, own.timers.forward_delay);
  bridge.observed = of_tree.observed;
  stpswitch::ObservedTree &seen = bridge.observed;
  const auto priority = either(of_tree.settings.priority, own.priority);
  if (!seen.bridge_id && priority && state_.bridge.address) {
    seen.bridge_id = BridgeId{static_cast<uint16_t>(*priority | tree), *state_.bridge.address};
  }

  const Interface *root_port = nullptr;
  bool is_unknown = false;
  for (const Row &row : rows_) {
    if (row.tree != tree) {
      continue;
    }
    is_unknown = is_unknown || !row.role;
    if (root_port == nullptr && row.role == static_cast<uint32_t>(PortRole::kRoot)) {
      root_port = row.port;
    }
  }
  if (!seen.root_port && seen.bridge_id) {
    if (root_port != nullptr) {
      seen.root_port = root_port->base_port;
    } else if (!is_unknown && (!seen.root_id || seen.root_id == seen.bridge_id)) {
      seen.root_port = 0;
    }
  }
  const stpswitch::RootInformation &root = state_.bridge.root;
  stpswitch::Timers &timers = seen.timers_in_force;
  if (seen.root_port == 0U) {
    seen.root_id = either(seen.root_id, seen.bridge_id);
    seen.root_cost = either(seen.root_cost, std::optional(0U));
    timers = {either(timers.max_age, bridge.max_age), either(timers.hello_time, bridge.hello_time),
              either(timers.forward_delay, bridge.forward_delay)};
    return bridge;
  }
  if (!seen.root_id && root.root_id) {
    seen.root_id = BridgeId{static_cast<uint16_t>(root.root_id->priority | tree), root.root_id->address};
  }
  timers = {either(timers.max_age, root.timers_in_force.max_age),
            either(timers.hello_time, root.timers_in_force.hello_time),
            either(timers.forward_delay, root.timers_in_force.forward_delay)};
  if (!seen.root_cost && root_port != nullptr && root_port->stated->designated.cost &&
      root_port->stated->path_cost) {
    seen.root_cost = *root_port->stated->designated.cost + *root_port->stated->path_cost;
  }
  return bridge;
}

ReplyContent PlainModel::bridge_trees(const PlainQuestion &question) const {
  const bool wants_next = question.action == CMD_ACTION_GET_NEXT;
  std::optional<uint32_t> found;
  if (question.keys.empty()) {
    if (wants_next) {
      return {CMD_UNKNOWN_KEY};
    }
    found = running_trees_.empty() ? std::nullopt : std::optional(*running_trees_.begin());
  } else {
    const PlainQuestion::Key &key = question.keys.front();
    const bool is_of_mst = key.token == protocol::kMstTreeKey;
    if (question.keys.size() != 1 || (!is_of_mst && key.token != protocol::kVlanTreeKey)) {
      return {CMD_UNKNOWN_KEY};
    }
    if (key.ranges.size() != 1 || key.ranges[0].first != key.ranges[0].last) {
      return {CMD_BAD_REQUEST};
    }
    for (const uint32_t tree : running_trees_) {
      const bool is_it =
          wants_next ? tree > key.ranges[0].first : tree == key.ranges[0].first && is_of_mst == is_mst();
      if (is_it && !found) {
        found = tree;
      }
    }
  }
  if (!found) {
    return kNoEntry;
  }
  const Bridge bridge = bridge_in(*found);
  const stpswitch::ObservedTree &seen = bridge.observed;
  uint32_t count = 0;
  std::optional<uint32_t> root_port = seen.root_port == 0U ? seen.root_port : std::nullopt;
  for (const Row &row : rows_) {
    count += row.tree == *found ? 1U : 0U;
  }
  for (const Interface &port : interfaces_) {
    if (seen.root_port && *seen.root_port != 0 && port.is_bridge_port && port.base_port == *seen.root_port) {
      root_port = number_of(*port.stated);
    }
  }
  ReplyContent reply;
  reply.add(protocol::kTree, *found);
  reply.add(protocol::kMode, state_.settings.mode);
  reply.add(protocol::kBridgePortCount, count);
  add_id(&reply, protocol::kBridgePriority, protocol::kBridgeMac, seen.bridge_id);
  add_id(&reply, protocol::kRootPriority, protocol::kRootMac, seen.root_id);
  reply.add(protocol::kRootCost, seen.root_cost);
  reply.add(protocol::kRootPort, root_port);
  reply.add(protocol::kMaxAge, seen.timers_in_force.max_age);
  reply.add(protocol::kHelloTime, seen.timers_in_force.hello_time);
  reply.add(protocol::kForwardDelay, seen.timers_in_force.forward_delay);
  reply.add(protocol::kBridgeMaxAge, bridge.max_age);
  reply.add(protocol::kBridgeHelloTime, bridge.hello_time);
  reply.add(protocol::kBridgeForwardDelay, bridge.forward_delay);
  reply.add(protocol::kTxHoldCount, bridge.hold_count);
  reply.add(protocol::kProtocolVersion, bridge.version);
  reply.add(protocol::kTopologyChanges, seen.topology_changes);
  return reply;
}

ReplyContent PlainModel::bridge_ports_of_tree(const PlainQuestion &question) const {
  std::optional<uint32_t> tree;
  const PlainQuestion::Key *number = nullptr;
  const PlainQuestion::Key *tree_key = nullptr;
  for (const PlainQuestion::Key &key : question.keys) {
    const bool is_number = key.token == protocol::kBridgePortKey;
    const bool is_tree = key.token == protocol::kVlanTreeKey || key.token == protocol::kMstTreeKey;
    if ((!is_number && !is_tree) || (is_number ? number : tree_key) != nullptr) {
      return {CMD_UNKNOWN_KEY};
    }
    (is_number ? number : tree_key) = &key;
  }
  if (number == nullptr) {
    return {CMD_UNKNOWN_KEY};
  }
  if (tree_key == nullptr) {
    tree = running_trees_.empty() ? std::nullopt : std::optional(*running_trees_.begin());
  } else {
    if (tree_key->ranges.size() != 1 || tree_key->ranges[0].first != tree_key->ranges[0].last) {
      return {CMD_BAD_REQUEST};
    }
    if ((tree_key->token == protocol::kMstTreeKey) == is_mst()) {
      tree = tree_key->ranges[0].first;
    }
  }
  const Row *found = nullptr;
  for (const Row &row : rows_) {
    const uint32_t of_row = number_of(*row.port->stated);
    const bool fits =
        question.action == CMD_ACTION_GET_NEXT ? of_row > number->interface : of_row == number->interface;
    if (row.tree == tree && fits && (found == nullptr || of_row < number_of(*found->port->stated))) {
      found = &row;
    }
  }
  return found != nullptr ? bridge_port(*found) : kNoEntry;
}

ReplyContent PlainModel::bridge_port(const Row &row) const {
  const stpswitch::Interface &port = *row.port->stated;
  std::optional<PortRole> role;
  if (row.role) {
    role = static_cast<PortRole>(*row.role);
  }
  std::optional<PortState> state = stated_state(port, row.tree);
  if (role == PortRole::kDisabled) {
    state = PortState::kDisabled;
  } else if (!state && role) {
    bool is_inconsistent = false;
    for (const auto &[kind, trees] : port.inconsistencies) {
      is_inconsistent = is_inconsistent || trees.contains(row.tree);
    }
    const bool forwards = !is_inconsistent && (role == PortRole::kRoot || role == PortRole::kDesignated);
    state = forwards ? PortState::kForwarding : PortState::kBlocking;
  }
  std::optional<uint32_t> port_id = port.numbers.port_id;
  if (!port_id && port.priority) {
    port_id = *port.priority * 256 | (port.numbers.bridge_port & 0xFFF);
  }
  const stpswitch::ObservedTree bridge = bridge_in(row.tree).observed;
  stpswitch::Designated segment = port.designated;
  if (role == PortRole::kDesignated || role == PortRole::kDisabled) {
    segment = {either(bridge.root_id, segment.root), either(bridge.bridge_id, segment.bridge),
               either(bridge.root_cost, segment.cost), either(port_id, segment.port)};
  } else {
    segment.root = either(segment.root, bridge.root_id);
    if (segment.cost == 0U) {
      segment.bridge = either(segment.bridge, segment.root);
    }
  }
  ReplyContent reply;
  reply.add(protocol::kBridgePort, number_of(port));
  reply.add(protocol::kIfMibIndex, port.numbers.if_mib_index);
  reply.add(protocol::kPortPriority, port.priority);
  reply.add(protocol::kPortRole, row.role);
  reply.add(protocol::kPortState, state ? std::optional(static_cast<uint32_t>(*state) - 1) : std::nullopt);
  reply.add(protocol::kPathCost, port.path_cost);
  reply.add(protocol::kForwardTransitions, port.forward_transitions);
  reply.add(protocol::kAdminEdge, port.admin_edge);
  reply.add(protocol::kEdge, port.edge);
  reply.add(protocol::kLinkType, port.link_type);
  reply.add(protocol::kPointToPoint, row.port->link == true ? row.port->point_to_point : std::nullopt);
  add_id(&reply, protocol::kDesignatedRootPriority, protocol::kDesignatedRootMac, segment.root);
  reply.add(protocol::kDesignatedCost, segment.cost);
  add_id(&reply, protocol::kDesignatedBridgePriority, protocol::kDesignatedBridgeMac, segment.bridge);
  reply.add(protocol::kDesignatedPort, segment.port);
  return reply;
}
