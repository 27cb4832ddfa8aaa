// Command 104: what holds for the spanning tree of the whole switch.
#include "answers/question.h"

namespace stpplatform::answers {

cmd_result answer_global_settings(const Image &image, const Question &question, Answer *answer) {
  if (!question.has_key(STP_KEY_GLOBAL_SETTINGS)) {
    return CMD_UNKNOWN_KEY;
  }
  if (question.action() != CMD_ACTION_GET) {
    return CMD_NO_ENTRY;
  }
  const wire::ImageSettings &settings = image.settings();
  answer->add(STP_ATTRIBUTE_MODE, settings.mode);
  answer->add(STP_ATTRIBUTE_PATH_COST_METHOD, settings.path_cost_method);
  answer->add(STP_ATTRIBUTE_PATH_COST_OPER_METHOD, settings.path_cost_oper_method);
  answer->add(STP_ATTRIBUTE_LOOP_GUARD_DEFAULT, settings.loop_guard_default);
  answer->add(STP_ATTRIBUTE_HOPS, settings.max_hops);
  return CMD_OK;
}

}  // namespace stpplatform::answers
