// Commands 117, 118 and 119: what is configured on each bridge port: root guard, loop guard, and how it deals
// with its link and its neighbour.
#include "answers/bridge_ports.h"

namespace stpplatform::answers {
namespace {

cmd_result answer_settings(const Image &image, const Question &question, AddValues add_values,
                           Answer *answer) {
  if (!question.has_key(STP_KEY_INTERFACE)) {
    return CMD_UNKNOWN_KEY;
  }
  return answer_bridge_port(image, question, STP_KEY_INTERFACE, add_values, answer);
}

}  // namespace

cmd_result answer_root_guard(const Image &image, const Question &question, Answer *answer) {
  constexpr AddValues kAddRootGuard = [](const wire::ImageInterface &port, Answer *to) {
    to->add(STP_ATTRIBUTE_GUARD, port.root_guard);
  };
  return answer_settings(image, question, kAddRootGuard, answer);
}

cmd_result answer_loop_guard(const Image &image, const Question &question, Answer *answer) {
  constexpr AddValues kAddLoopGuard = [](const wire::ImageInterface &port, Answer *to) {
    to->add(STP_ATTRIBUTE_GUARD, port.loop_guard);
  };
  return answer_settings(image, question, kAddLoopGuard, answer);
}

cmd_result answer_port_settings(const Image &image, const Question &question, Answer *answer) {
  constexpr AddValues kAddPortSettings = [](const wire::ImageInterface &port, Answer *to) {
    to->add(STP_ATTRIBUTE_LINK_TYPE, port.link_type);
    to->add(STP_ATTRIBUTE_PRE_STANDARD_MST, port.pre_standard_mst);
  };
  return answer_settings(image, question, kAddPortSettings, answer);
}

}  // namespace stpplatform::answers
