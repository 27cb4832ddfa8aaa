// Command 104: what holds for the spanning tree of the whole switch.
#include "commands/command.h"
#include "model/derived.h"

namespace stpswitch {

cmd_result answer_global_settings(const Switch &the_switch, const CommandRequest &request,
                                  ReplyBuilder *reply) {
  if (!has_keys(request, {STP_KEY_GLOBAL_SETTINGS})) {
    return CMD_UNKNOWN_KEY;
  }
  if (request.action != CMD_ACTION_GET) {
    return CMD_NO_ENTRY;
  }
  const Settings &settings = the_switch.state().settings;
  reply->add_choice(STP_ATTRIBUTE_MODE, settings.mode);
  reply->add_choice(STP_ATTRIBUTE_PATH_COST_METHOD, settings.path_cost_method);
  reply->add_choice(STP_ATTRIBUTE_PATH_COST_OPER_METHOD, operational_path_cost_method(settings));
  reply->add_flag(STP_ATTRIBUTE_LOOP_GUARD_DEFAULT, settings.loop_guard_default);
  reply->add_number(STP_ATTRIBUTE_HOPS, the_switch.state().mst.max_hops);
  return CMD_OK;
}

}  // namespace stpswitch
