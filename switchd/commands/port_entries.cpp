// Command 105: the ports of the spanning trees of single VLANs and, asked by interface alone, the bridge
// ports whatever the mode is. Command 111: the ports of the CIST and the MST instances and, asked by
// interface alone, the bridge ports in MST mode.
#include "commands/command.h"
#include "commands/ordered_entries.h"

namespace stpswitch {
namespace {

// What an entry has of its port, in groups.

void add_path_cost(const BridgePort &port, ReplyBuilder *reply) {
  reply->add_number(STP_ATTRIBUTE_PATH_COST, port.interface->path_cost);
}

// Without a link there is no type of it.
void add_link(const BridgePort &port, ReplyBuilder *reply) {
  if (port.link_up.value_or(false)) {
    reply->add_flag(STP_ATTRIBUTE_POINT_TO_POINT, port.point_to_point);
  }
}

void add_rapid_pvst_flags(const BridgePort &port, ReplyBuilder *reply) {
  reply->add_flag(STP_ATTRIBUTE_EDGE, port.interface->edge);
  reply->add_flag(STP_ATTRIBUTE_PEER, port.interface->peer);
}

void add_mst_flags(const BridgePort &port, ReplyBuilder *reply) {
  reply->add_flag(STP_ATTRIBUTE_EDGE, port.interface->edge);
  reply->add_flag(STP_ATTRIBUTE_BOUNDARY, port.interface->boundary);
  reply->add_flag(STP_ATTRIBUTE_PEER, port.interface->peer);
  reply->add_flag(STP_ATTRIBUTE_DISPUTE, port.interface->dispute);
  reply->add_flag(STP_ATTRIBUTE_PRE_STANDARD_PEER, port.interface->pre_standard_neighbor);
}

// Where an entry lacks one of them, the agent takes all of them for flags that are not set.
bool has_mst_flags(const Interface &interface) {
  return interface.edge && interface.boundary && interface.peer && interface.dispute;
}

// What the two commands differ in when they are asked for a port of a tree.
struct TreePortCommand {
  SpanningTreeMode mode;
  stp_key tree;
  stp_key interface;
  void (*add_flags)(const BridgePort &, ReplyBuilder *);
};

constexpr TreePortCommand kRapidPvst = {SpanningTreeMode::kRapidPvst, STP_KEY_VLAN_TREE, STP_KEY_INTERFACE,
                                        add_rapid_pvst_flags};
constexpr TreePortCommand kMst = {SpanningTreeMode::kMst, STP_KEY_MST_TREE, STP_KEY_MST_INTERFACE,
                                  add_mst_flags};

cmd_result answer_tree_ports(const Switch &the_switch, const TreePortCommand &command,
                             const CommandRequest &request, ReplyBuilder *reply) {
  if (!has_keys(request, {command.tree, command.interface})) {
    return CMD_UNKNOWN_KEY;
  }
  const auto asked = asked_tree_port(request, command.tree, command.interface);
  if (!asked) {
    return CMD_BAD_REQUEST;
  }
  const auto entry = find_tree_port(the_switch, the_switch.tree_ports(), request.action, *asked);
  if (the_switch.state().settings.mode != command.mode || !entry) {
    return CMD_NO_ENTRY;
  }
  const BridgePort &port = the_switch.bridge_ports().at(entry->if_index);
  reply->add_number(STP_ATTRIBUTE_PORT_TREE, entry->tree);
  reply->add_number(STP_ATTRIBUTE_INTERFACE, entry->if_index);
  add_path_cost(port, reply);
  reply->add_choice(STP_ATTRIBUTE_PORT_ROLE, role_in(entry->tree, port));
  command.add_flags(port, reply);
  return CMD_OK;
}

void add_rapid_pvst_port(const BridgePort &port, ReplyBuilder *reply) {
  add_path_cost(port, reply);
  add_link(port, reply);
  add_rapid_pvst_flags(port, reply);
}

void add_mst_port(const BridgePort &port, ReplyBuilder *reply) {
  add_path_cost(port, reply);
  add_mst_flags(port, reply);
}

}  // namespace

cmd_result answer_rapid_pvst_ports(const Switch &the_switch, const CommandRequest &request,
                                   ReplyBuilder *reply) {
  if (has_keys(request, {kRapidPvst.interface})) {
    return answer_bridge_port(the_switch, request, kRapidPvst.interface, add_rapid_pvst_port, reply);
  }
  return answer_tree_ports(the_switch, kRapidPvst, request, reply);
}

cmd_result answer_mst_ports(const Switch &the_switch, const CommandRequest &request, ReplyBuilder *reply) {
  if (!has_keys(request, {kMst.interface})) {
    return answer_tree_ports(the_switch, kMst, request, reply);
  }
  const BridgePorts &ports = the_switch.bridge_ports();
  const auto entry = find_entry(ports, request.action, asked_interface(request, kMst.interface));
  if (the_switch.state().settings.mode != SpanningTreeMode::kMst || entry == ports.end() ||
      !has_mst_flags(*entry->second.interface)) {
    return CMD_NO_ENTRY;
  }
  return answer_bridge_port(the_switch, request, kMst.interface, add_mst_port, reply);
}

}  // namespace stpswitch
