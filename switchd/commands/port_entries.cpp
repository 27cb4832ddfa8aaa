// Command 105: the ports of the spanning trees of single VLANs and, asked by interface alone, the bridge
// ports whatever the mode is. Command 111: the ports of the CIST and the MST instances.
#include "commands/command.h"
#include "commands/rows.h"

namespace stpswitch {
namespace {

// Every port with a link is taken to be the one by which its segment reaches the root.
PortRole role_of(const BridgePort &port) {
  return port.link_up ? PortRole::kDesignated : PortRole::kDisabled;
}

cmd_result answer_bridge_ports(const Switch &the_switch, const CommandRequest &request, ReplyBuilder *reply) {
  const BridgePorts &ports = the_switch.bridge_ports();
  const auto row = find_row(ports, request.action, asked_interface(request, Key::kInterface));
  if (row == ports.end()) {
    return CMD_NO_ENTRY;
  }
  const auto &[if_index, port] = *row;
  reply->add_number(Token::kInterface, if_index);
  reply->add_number(Token::kPathCost, port.interface->path_cost);
  return CMD_OK;
}

struct TreePortKeys {
  Key tree;
  Key interface;
};

cmd_result answer_tree_ports(const Switch &the_switch, SpanningTreeMode mode, const TreePortKeys &keys,
                             const CommandRequest &request, ReplyBuilder *reply) {
  const auto asked = asked_tree_port(request, keys.tree, keys.interface);
  if (!asked) {
    return CMD_BAD_REQUEST;
  }
  const auto row = find_tree_port(the_switch, the_switch.tree_ports(), request.action, *asked);
  if (the_switch.state().settings.mode != mode || !row) {
    return CMD_NO_ENTRY;
  }
  const BridgePort &port = the_switch.bridge_ports().at(row->if_index);
  reply->add_number(Token::kPortTree, row->tree);
  reply->add_number(Token::kInterface, row->if_index);
  reply->add_number(Token::kPathCost, port.interface->path_cost);
  reply->add_number(Token::kPortRole, static_cast<uint32_t>(role_of(port)));
  return CMD_OK;
}

}  // namespace

cmd_result answer_rapid_pvst_ports(const Switch &the_switch, const CommandRequest &request,
                                   ReplyBuilder *reply) {
  if (has_keys(request, {Key::kInterface})) {
    return answer_bridge_ports(the_switch, request, reply);
  }
  constexpr TreePortKeys kKeys{Key::kVlanTree, Key::kInterface};
  if (!has_keys(request, {kKeys.tree, kKeys.interface})) {
    return CMD_UNKNOWN_KEY;
  }
  return answer_tree_ports(the_switch, SpanningTreeMode::kRapidPvst, kKeys, request, reply);
}

cmd_result answer_mst_ports(const Switch &the_switch, const CommandRequest &request, ReplyBuilder *reply) {
  constexpr TreePortKeys kKeys{Key::kMstInstance, Key::kMstInterface};
  if (!has_keys(request, {kKeys.tree, kKeys.interface})) {
    return CMD_UNKNOWN_KEY;
  }
  return answer_tree_ports(the_switch, SpanningTreeMode::kMst, kKeys, request, reply);
}

}  // namespace stpswitch
