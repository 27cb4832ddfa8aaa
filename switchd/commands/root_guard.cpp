// Command 117: root guard, for each bridge port.
#include "commands/command.h"
#include "commands/rows.h"

namespace stpswitch {

cmd_result answer_root_guard(const Switch &the_switch, const CommandRequest &request, ReplyBuilder *reply) {
  if (!has_keys(request, {Key::kInterface})) {
    return CMD_UNKNOWN_KEY;
  }
  const auto row =
      find_row(the_switch.bridge_ports(), request.action, asked_interface(request, Key::kInterface));
  if (row == the_switch.bridge_ports().end()) {
    return CMD_NO_ENTRY;
  }
  const auto [if_index, port] = *row;
  reply->add_number(Token::kInterface, if_index);
  reply->add_number(
      Token::kRootGuard,
      static_cast<uint32_t>(port.interface->root_guard ? GuardState::kEnabled : GuardState::kDisabled));
  return CMD_OK;
}

}  // namespace stpswitch
