// Command 115: the spanning trees of single VLANs, for each VLAN in use. In MST mode there are none, whatever
// VLAN is asked for.
#include "commands/command.h"
#include "commands/ordered_entries.h"

namespace stpswitch {

cmd_result answer_vlan_trees(const Switch &the_switch, const CommandRequest &request, ReplyBuilder *reply) {
  if (!has_keys(request, {STP_KEY_VLAN_TREE})) {
    return CMD_UNKNOWN_KEY;
  }
  const auto asked = asked_tree(request, STP_KEY_VLAN_TREE);
  if (!asked) {
    return CMD_BAD_REQUEST;
  }
  const SwitchState &state = the_switch.state();
  reply->add_choice(STP_ATTRIBUTE_MODE, state.settings.mode);
  if (state.settings.mode == SpanningTreeMode::kMst) {
    return CMD_OK;
  }
  const auto vlan = find_entry(the_switch.vlans_in_use(), request.action, *asked);
  if (vlan == the_switch.vlans_in_use().end()) {
    return CMD_NO_ENTRY;
  }
  reply->add_number(STP_ATTRIBUTE_TREE, *vlan);
  reply->add_flag(STP_ATTRIBUTE_VLAN_TREE_STATE, !state.rapid_pvst.disabled_vlans.contains(*vlan));
  return CMD_OK;
}

}  // namespace stpswitch
