#include "commands/ordered_entries.h"

#include <algorithm>
#include <cstring>

namespace stpswitch {
namespace {

namespace wire = stpplatform::wire;

const wire::Attribute &attribute_of(const CommandRequest &request, stp_key key) {
  return *std::find_if(request.keys.begin(), request.keys.end(),
                       [key](const wire::Attribute &attribute) { return attribute.token == key; });
}

}  // namespace

uint32_t asked_interface(const CommandRequest &request, stp_key key) {
  uint32_t if_index = 0;
  std::memcpy(&if_index, attribute_of(request, key).value, sizeof if_index);
  return if_index;
}

std::optional<uint32_t> asked_tree(const CommandRequest &request, stp_key key) {
  const wire::Attribute &attribute = attribute_of(request, key);
  if (attribute.length != wire::range_list_length(1)) {
    return std::nullopt;
  }
  cmd_range range;
  std::memcpy(&range, static_cast<const uint8_t *>(attribute.value) + sizeof(cmd_range_list), sizeof range);
  if (range.first != range.last) {
    return std::nullopt;
  }
  return range.first;
}

std::optional<TreePort> asked_tree_port(const CommandRequest &request, stp_key tree_key,
                                        stp_key interface_key) {
  const auto tree = asked_tree(request, tree_key);
  if (!tree) {
    return std::nullopt;
  }
  return TreePort{*tree, asked_interface(request, interface_key)};
}

cmd_result answer_bridge_port(const Switch &the_switch, const CommandRequest &request, stp_key key,
                              void (*add_values)(const BridgePort &, ReplyBuilder *), ReplyBuilder *reply) {
  const auto entry = find_entry(the_switch.bridge_ports(), request.action, asked_interface(request, key));
  if (entry == the_switch.bridge_ports().end()) {
    return CMD_NO_ENTRY;
  }
  const auto &[if_index, port] = *entry;
  reply->add_number(STP_ATTRIBUTE_INTERFACE, if_index);
  add_values(port, reply);
  return CMD_OK;
}

std::optional<TreePort> find_tree_port(const Switch &the_switch, const TreePorts &entries, cmd_action action,
                                       const TreePort &asked) {
  if (action == CMD_ACTION_GET) {
    return entries.contains(asked) ? std::optional(asked) : std::nullopt;
  }
  // Who asks for the beginning of a tree means that tree, and is told when it is not there.
  constexpr uint32_t kBeginning = 0;
  if (asked.if_index == kBeginning && !the_switch.running_trees().contains(asked.tree)) {
    return std::nullopt;
  }
  return entries.first_after(asked);
}

}  // namespace stpswitch
