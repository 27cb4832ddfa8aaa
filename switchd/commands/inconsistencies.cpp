// Commands 116, 120 and 121: the ports of trees whose port VLAN identifier or type is not the neighbour's,
// which is for trees of single VLANs only, which root guard blocks, and which loop guard blocks.
#include "commands/command.h"
#include "commands/ordered_entries.h"

namespace stpswitch {
namespace {

cmd_result answer_report(const Switch &the_switch, const InconsistencyReport &report,
                         const CommandRequest &request, ReplyBuilder *reply) {
  if (!has_keys(request, {STP_KEY_VLAN_TREE, STP_KEY_INTERFACE})) {
    return CMD_UNKNOWN_KEY;
  }
  const auto asked = asked_tree_port(request, STP_KEY_VLAN_TREE, STP_KEY_INTERFACE);
  if (!asked) {
    return CMD_BAD_REQUEST;
  }
  const auto entry = find_tree_port(the_switch, report.tree_ports(), request.action, *asked);
  if (!entry) {
    return CMD_NO_ENTRY;
  }
  reply->add_number(STP_ATTRIBUTE_PORT_TREE, entry->tree);
  reply->add_number(STP_ATTRIBUTE_INTERFACE, entry->if_index);
  reply->add_number(STP_ATTRIBUTE_INCONSISTENCY, report.state_of(*entry));
  return CMD_OK;
}

}  // namespace

cmd_result answer_pvid_and_type_inconsistencies(const Switch &the_switch, const CommandRequest &request,
                                                ReplyBuilder *reply) {
  return answer_report(the_switch, the_switch.inconsistencies().pvid_and_type, request, reply);
}

cmd_result answer_root_inconsistencies(const Switch &the_switch, const CommandRequest &request,
                                       ReplyBuilder *reply) {
  return answer_report(the_switch, the_switch.inconsistencies().root, request, reply);
}

cmd_result answer_loop_inconsistencies(const Switch &the_switch, const CommandRequest &request,
                                       ReplyBuilder *reply) {
  return answer_report(the_switch, the_switch.inconsistencies().loop, request, reply);
}

}  // namespace stpswitch
