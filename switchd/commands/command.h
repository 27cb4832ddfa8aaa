// What a command is: a function that looks at a request's action and keys and answers from the switch. Each
// command stands in a file of its own; dispatch.cpp knows them all.
#pragma once

#include <initializer_list>
#include <vector>

#include "commands/reply_builder.h"
#include "model/switch.h"
#include "platform/cmd.h"
#include "platform/stp_protocol.h"
#include "wire/attributes.h"

namespace stpswitch {

struct CommandRequest {
  cmd_action action;
  std::vector<stpplatform::wire::Attribute> keys;
};

// True when the request's keys are exactly these, in any order.
bool has_keys(const CommandRequest &request, std::initializer_list<stp_key> expected);

// Add their attributes to the reply, unless they return another code than CMD_OK.
cmd_result answer_global_settings(const Switch &the_switch, const CommandRequest &request,
                                  ReplyBuilder *reply);
cmd_result answer_loop_guard(const Switch &the_switch, const CommandRequest &request, ReplyBuilder *reply);
cmd_result answer_loop_inconsistencies(const Switch &the_switch, const CommandRequest &request,
                                       ReplyBuilder *reply);
cmd_result answer_mst_instances(const Switch &the_switch, const CommandRequest &request, ReplyBuilder *reply);
cmd_result answer_mst_ports(const Switch &the_switch, const CommandRequest &request, ReplyBuilder *reply);
cmd_result answer_mst_region(const Switch &the_switch, const CommandRequest &request, ReplyBuilder *reply);
cmd_result answer_port_settings(const Switch &the_switch, const CommandRequest &request, ReplyBuilder *reply);
cmd_result answer_pvid_and_type_inconsistencies(const Switch &the_switch, const CommandRequest &request,
                                                ReplyBuilder *reply);
cmd_result answer_rapid_pvst_ports(const Switch &the_switch, const CommandRequest &request,
                                   ReplyBuilder *reply);
cmd_result answer_root_guard(const Switch &the_switch, const CommandRequest &request, ReplyBuilder *reply);
cmd_result answer_root_inconsistencies(const Switch &the_switch, const CommandRequest &request,
                                       ReplyBuilder *reply);
cmd_result answer_vlan_trees(const Switch &the_switch, const CommandRequest &request, ReplyBuilder *reply);

}  // namespace stpswitch
