// Commands 117, 118 and 119: what is configured on each bridge port: root guard, loop guard, and how it deals
// with its link and its neighbour.
#include "commands/command.h"
#include "commands/ordered_entries.h"

namespace stpswitch {
namespace {

using AddSettings = void (*)(const BridgePort &, ReplyBuilder *);

cmd_result answer_settings(const Switch &the_switch, const CommandRequest &request, AddSettings add_settings,
                           ReplyBuilder *reply) {
  if (!has_keys(request, {STP_KEY_INTERFACE})) {
    return CMD_UNKNOWN_KEY;
  }
  return answer_bridge_port(the_switch, request, STP_KEY_INTERFACE, add_settings, reply);
}

}  // namespace

cmd_result answer_root_guard(const Switch &the_switch, const CommandRequest &request, ReplyBuilder *reply) {
  constexpr AddSettings kAddRootGuard = [](const BridgePort &port, ReplyBuilder *to) {
    if (const auto &is_on = port.interface->root_guard) {
      to->add_choice(STP_ATTRIBUTE_GUARD, std::optional(*is_on ? Guard::kEnabled : Guard::kDisabled));
    }
  };
  return answer_settings(the_switch, request, kAddRootGuard, reply);
}

cmd_result answer_loop_guard(const Switch &the_switch, const CommandRequest &request, ReplyBuilder *reply) {
  constexpr AddSettings kAddLoopGuard = [](const BridgePort &port, ReplyBuilder *to) {
    to->add_choice(STP_ATTRIBUTE_GUARD, port.interface->loop_guard);
  };
  return answer_settings(the_switch, request, kAddLoopGuard, reply);
}

cmd_result answer_port_settings(const Switch &the_switch, const CommandRequest &request,
                                ReplyBuilder *reply) {
  constexpr AddSettings kAddPortSettings = [](const BridgePort &port, ReplyBuilder *to) {
    to->add_choice(STP_ATTRIBUTE_LINK_TYPE, port.interface->link_type);
    to->add_flag(STP_ATTRIBUTE_PRE_STANDARD_MST, port.interface->pre_standard_mst);
  };
  return answer_settings(the_switch, request, kAddPortSettings, reply);
}

}  // namespace stpswitch
