// Commands 130 and 131: the bridge in a spanning tree, and its ports there, as the standard's objects have
// them (RFC 4188, RFC 4318).
#include <ctime>

#include "answers/question.h"

namespace stpplatform::answers {
namespace {

constexpr stp_key kTreeKeys[] = {STP_KEY_VLAN_TREE, STP_KEY_MST_TREE};

// Trees of the mode's kind; those of the other kind do not run.
const wire::ImageTree *find_tree(const Image &image, stp_key kind, uint32_t tree) {
  const bool has_mst_trees = load_shared(image.settings().mode) == STP_MODE_MST;
  return has_mst_trees == (kind == STP_KEY_MST_TREE) ? image.find_tree(tree) : nullptr;
}

// The first tree that runs is the CIST, or that of the lowest VLAN.
const wire::ImageTree *find_default_tree(const Image &image) { return image.first_tree_from(0); }

void add_id(stp_attribute priority, stp_attribute mac, const uint8_t &is_known, const wire::ImageBridgeId &id,
            Answer *answer) {
  if (load_shared(is_known) != 0) {
    answer->add_number(priority, load_shared(id.priority));
    answer->add_octets(mac, id.mac, wire::kMacAddressSize);
  }
}

// In hundredths of a second.
void add_topology_age(uint64_t changed_at_ns, Answer *answer) {
  constexpr uint64_t kHundredthNs = 10'000'000;
  constexpr uint64_t kSecondNs = 1'000'000'000;
  if (changed_at_ns == 0) {
    return;
  }
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  const uint64_t now_ns = static_cast<uint64_t>(now.tv_sec) * kSecondNs + static_cast<uint64_t>(now.tv_nsec);
  const uint64_t age_ns = now_ns > changed_at_ns ? now_ns - changed_at_ns : 0;
  answer->add_number(STP_ATTRIBUTE_TOPOLOGY_AGE, static_cast<uint32_t>(age_ns / kHundredthNs));
}

cmd_result add_tree(const Image &image, const wire::ImageTree *tree, Answer *answer) {
  if (tree == nullptr) {
    return CMD_NO_ENTRY;
  }
  const uint32_t id = load_shared(tree->tree);
  uint32_t ports = 0;
  if (id >= wire::kTrees || !image.count_ports(id, &ports)) {
    return CMD_BAD_REPLY;
  }
  answer->add_number(STP_ATTRIBUTE_TREE, id);
  answer->add(STP_ATTRIBUTE_MODE, image.settings().mode);
  answer->add_number(STP_ATTRIBUTE_BRIDGE_PORT_COUNT, ports);
  add_id(STP_ATTRIBUTE_BRIDGE_PRIORITY, STP_ATTRIBUTE_BRIDGE_MAC, tree->has_bridge_id, tree->bridge_id,
         answer);
  add_id(STP_ATTRIBUTE_ROOT_PRIORITY, STP_ATTRIBUTE_ROOT_MAC, tree->has_root_id, tree->root_id, answer);
  answer->add(STP_ATTRIBUTE_ROOT_COST, tree->root_cost);
  answer->add(STP_ATTRIBUTE_ROOT_PORT, tree->root_port);
  answer->add(STP_ATTRIBUTE_MAX_AGE, tree->max_age);
  answer->add(STP_ATTRIBUTE_HELLO_TIME, tree->hello_time);
  answer->add(STP_ATTRIBUTE_FORWARD_DELAY, tree->forward_delay);
  answer->add(STP_ATTRIBUTE_BRIDGE_MAX_AGE, tree->bridge_max_age);
  answer->add(STP_ATTRIBUTE_BRIDGE_HELLO_TIME, tree->bridge_hello_time);
  answer->add(STP_ATTRIBUTE_BRIDGE_FORWARD_DELAY, tree->bridge_forward_delay);
  answer->add(STP_ATTRIBUTE_TX_HOLD_COUNT, tree->tx_hold_count);
  answer->add(STP_ATTRIBUTE_PROTOCOL_VERSION, tree->protocol_version);
  answer->add(STP_ATTRIBUTE_TOPOLOGY_CHANGES, tree->topology_changes);
  add_topology_age(load_shared(tree->last_topology_change), answer);
  return CMD_OK;
}

// What a port knows of its segment is, of most ports, what the bridge itself sends there.
cmd_result add_segment(const Image &image, const wire::ImageTree &tree, const TreePort &port,
                       Answer *answer) {
  const wire::ImageDesignated *heard = nullptr;
  const cmd_result result = image.find_designated(*port.entry, &heard);
  if (result == CMD_BAD_REPLY) {
    return result;
  }
  const bool is_own = heard == nullptr;
  add_id(STP_ATTRIBUTE_DESIGNATED_ROOT_PRIORITY, STP_ATTRIBUTE_DESIGNATED_ROOT_MAC,
         is_own ? tree.has_root_id : heard->has_root, is_own ? tree.root_id : heard->root, answer);
  answer->add(STP_ATTRIBUTE_DESIGNATED_COST, is_own ? tree.root_cost : heard->cost);
  add_id(STP_ATTRIBUTE_DESIGNATED_BRIDGE_PRIORITY, STP_ATTRIBUTE_DESIGNATED_BRIDGE_MAC,
         is_own ? tree.has_bridge_id : heard->has_bridge, is_own ? tree.bridge_id : heard->bridge, answer);
  answer->add(STP_ATTRIBUTE_DESIGNATED_PORT, is_own ? port.bridge_port->port_id : heard->port);
  return CMD_OK;
}

cmd_result add_port(const Image &image, const wire::ImageTree &tree, const TreePort &port, Answer *answer) {
  answer->add_number(STP_ATTRIBUTE_BRIDGE_PORT, load_shared(port.bridge_port->number));
  answer->add(STP_ATTRIBUTE_IF_MIB_INDEX, port.bridge_port->if_mib_index);
  answer->add(STP_ATTRIBUTE_PORT_PRIORITY, port.bridge_port->priority);
  answer->add(STP_ATTRIBUTE_PORT_ROLE, port.entry->role);
  answer->add(STP_ATTRIBUTE_PORT_STATE, port.entry->state);
  answer->add(STP_ATTRIBUTE_PATH_COST, port.interface->path_cost);
  answer->add(STP_ATTRIBUTE_FORWARD_TRANSITIONS, port.bridge_port->forward_transitions);
  answer->add(STP_ATTRIBUTE_ADMIN_EDGE, port.bridge_port->admin_edge);
  answer->add(STP_ATTRIBUTE_EDGE, port.interface->edge);
  answer->add(STP_ATTRIBUTE_LINK_TYPE, port.interface->link_type);
  answer->add(STP_ATTRIBUTE_POINT_TO_POINT, port.interface->point_to_point);
  return add_segment(image, tree, port, answer);
}

}  // namespace

cmd_result answer_bridge_trees(const Image &image, const Question &question, Answer *answer) {
  const bool wants_next = question.action() == CMD_ACTION_GET_NEXT;
  if (question.has_no_key()) {
    return wants_next ? CMD_UNKNOWN_KEY : add_tree(image, find_default_tree(image), answer);
  }
  for (const stp_key key : kTreeKeys) {
    uint32_t tree = 0;
    if (!question.has_key(key)) {
      continue;
    }
    if (!question.tree(key, &tree)) {
      return CMD_BAD_REQUEST;
    }
    if (!wants_next) {
      return add_tree(image, find_tree(image, key, tree), answer);
    }
    return add_tree(image, tree < wire::kTrees ? image.first_tree_from(tree + 1) : nullptr, answer);
  }
  return CMD_UNKNOWN_KEY;
}

cmd_result answer_bridge_ports_of_tree(const Image &image, const Question &question, Answer *answer) {
  const wire::ImageTree *tree = nullptr;
  bool is_known_key = question.has_key(STP_KEY_BRIDGE_PORT);
  if (is_known_key) {
    tree = find_default_tree(image);
  }
  for (const stp_key key : kTreeKeys) {
    if (question.has_keys(key, STP_KEY_BRIDGE_PORT)) {
      uint32_t asked = 0;
      if (!question.tree(key, &asked)) {
        return CMD_BAD_REQUEST;
      }
      is_known_key = true;
      tree = find_tree(image, key, asked);
    }
  }
  if (!is_known_key) {
    return CMD_UNKNOWN_KEY;
  }
  if (tree == nullptr) {
    return CMD_NO_ENTRY;
  }
  TreePort port;
  const cmd_result result = image.find_port_by_number(
      load_shared(tree->tree), question.number(STP_KEY_BRIDGE_PORT), question.action(), &port);
  return result == CMD_OK ? add_port(image, *tree, port, answer) : result;
}

}  // namespace stpplatform::answers
