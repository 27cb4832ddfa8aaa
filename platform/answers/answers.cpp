#include "answers/answers.h"

#include "answers/question.h"

namespace stpplatform::answers {
namespace {

struct Command {
  stp_command number;
  cmd_result (*answer)(const Image &, const Question &, Answer *);
};

constexpr Command kCommands[] = {{STP_COMMAND_GLOBAL_SETTINGS, answer_global_settings},
                                 {STP_COMMAND_RAPID_PVST_PORTS, answer_rapid_pvst_ports},
                                 {STP_COMMAND_MST_PORTS, answer_mst_ports},
                                 {STP_COMMAND_MST_REGION, answer_mst_region},
                                 {STP_COMMAND_VLAN_TREES, answer_vlan_trees},
                                 {STP_COMMAND_PORT_INCONSISTENCIES, answer_pvid_and_type_inconsistencies},
                                 {STP_COMMAND_ROOT_GUARD, answer_root_guard},
                                 {STP_COMMAND_LOOP_GUARD, answer_loop_guard},
                                 {STP_COMMAND_PORT_SETTINGS, answer_port_settings},
                                 {STP_COMMAND_ROOT_INCONSISTENCIES, answer_root_inconsistencies},
                                 {STP_COMMAND_LOOP_INCONSISTENCIES, answer_loop_inconsistencies},
                                 {STP_COMMAND_MST_INSTANCES, answer_mst_instances},
                                 {STP_COMMAND_BRIDGE_TREES, answer_bridge_trees},
                                 {STP_COMMAND_BRIDGE_PORTS, answer_bridge_ports_of_tree}};

bool is_addressed_here(const wire::Request &request) {
  return request.destination == STP_DESTINATION && request.service == STP_SERVICE &&
         (request.action == CMD_ACTION_GET || request.action == CMD_ACTION_GET_NEXT) && request.flags == 0;
}

bool is_name(const wire::ImageUser &user, const char *name) {
  for (size_t i = 0; i < sizeof user.name; ++i) {
    const char letter = load_shared(user.name[i]);
    if (letter != name[i]) {
      return false;
    }
    if (letter == '\0') {
      return true;
    }
  }
  return false;
}

bool is_refused(const Image &image, const char *user) {
  const Records<wire::ImageUser> &refused = image.refused_users();
  for (uint32_t i = 0; i < refused.count; ++i) {
    if (is_name(refused[i], user)) {
      return true;
    }
  }
  return false;
}

}  // namespace

cmd_result answer_request(const Image &image, const wire::Request &request, const void *attributes,
                          size_t size, Answer *answer) {
  if (!image.is_sound()) {
    return CMD_BAD_REPLY;
  }
  Question question;
  if (!is_addressed_here(request) ||
      !question.read(static_cast<cmd_action>(request.action), attributes, size, request.attribute_count)) {
    return CMD_BAD_REQUEST;
  }
  if (is_refused(image, request.user)) {
    return CMD_REFUSED;
  }
  for (const Command &command : kCommands) {
    if (command.number == request.command) {
      return command.answer(image, question, answer);
    }
  }
  return CMD_UNKNOWN_COMMAND;
}

}  // namespace stpplatform::answers
