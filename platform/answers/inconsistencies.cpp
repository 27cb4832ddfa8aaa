// Commands 116, 120 and 121: the ports of trees whose port VLAN identifier or type is not the neighbour's,
// which is for trees of single VLANs only, which root guard blocks, and which loop guard blocks.
#include "answers/question.h"

namespace stpplatform::answers {
namespace {

// The image's bits of the first kind are the states of the report.
static_assert(wire::kPvidInconsistent == STP_INCONSISTENT_PVID &&
              wire::kTypeInconsistent == STP_INCONSISTENT_TYPE);
constexpr uint8_t kPvidOrType = wire::kPvidInconsistent | wire::kTypeInconsistent;

// The state of a port that root guard or loop guard blocks.
constexpr uint32_t kBlocked = 1;

cmd_result find_listed(const Image &image, const Records<uint32_t> &listed, const Question &question,
                       TreePort *found) {
  if (!question.has_keys(STP_KEY_VLAN_TREE, STP_KEY_INTERFACE)) {
    return CMD_UNKNOWN_KEY;
  }
  TreePortKey asked{0, question.number(STP_KEY_INTERFACE)};
  if (!question.tree(STP_KEY_VLAN_TREE, &asked.tree)) {
    return CMD_BAD_REQUEST;
  }
  return image.find_tree_port(asked, question.action(), listed, found);
}

void add_entry(const TreePort &port, uint32_t state, Answer *answer) {
  answer->add_number(STP_ATTRIBUTE_PORT_TREE, port.tree);
  answer->add_number(STP_ATTRIBUTE_INTERFACE, load_shared(port.interface->if_index));
  answer->add_number(STP_ATTRIBUTE_INCONSISTENCY, state);
}

cmd_result answer_blocked(const Image &image, const Records<uint32_t> &listed, const Question &question,
                          Answer *answer) {
  TreePort port;
  const cmd_result result = find_listed(image, listed, question, &port);
  if (result == CMD_OK) {
    add_entry(port, kBlocked, answer);
  }
  return result;
}

}  // namespace

cmd_result answer_pvid_and_type_inconsistencies(const Image &image, const Question &question,
                                                Answer *answer) {
  TreePort port;
  const cmd_result result = find_listed(image, image.pvid_or_type(), question, &port);
  if (result == CMD_OK) {
    add_entry(port, load_shared(port.entry->inconsistencies) & kPvidOrType, answer);
  }
  return result;
}

cmd_result answer_root_inconsistencies(const Image &image, const Question &question, Answer *answer) {
  return answer_blocked(image, image.root_inconsistent(), question, answer);
}

cmd_result answer_loop_inconsistencies(const Image &image, const Question &question, Answer *answer) {
  return answer_blocked(image, image.loop_inconsistent(), question, answer);
}

}  // namespace stpplatform::answers
