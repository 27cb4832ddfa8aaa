// Command 115: the spanning trees of single VLANs, for each VLAN in use. In MST mode there are none, whatever
// VLAN is asked for.
#include "answers/question.h"

namespace stpplatform::answers {

cmd_result answer_vlan_trees(const Image &image, const Question &question, Answer *answer) {
  if (!question.has_key(STP_KEY_VLAN_TREE)) {
    return CMD_UNKNOWN_KEY;
  }
  uint32_t asked = 0;
  if (!question.tree(STP_KEY_VLAN_TREE, &asked)) {
    return CMD_BAD_REQUEST;
  }
  const uint8_t mode = load_shared(image.settings().mode);
  answer->add(STP_ATTRIBUTE_MODE, image.settings().mode);
  if (mode == STP_MODE_MST) {
    return CMD_OK;
  }
  const bool wants_next = question.action() == CMD_ACTION_GET_NEXT;
  if (asked >= wire::kTrees) {
    return CMD_NO_ENTRY;
  }
  const uint32_t vlan = image.first_vlan_in_use(wants_next ? asked + 1 : asked);
  if (vlan == wire::kTrees || (!wants_next && vlan != asked)) {
    return CMD_NO_ENTRY;
  }
  answer->add_number(STP_ATTRIBUTE_TREE, vlan);
  answer->add_number(STP_ATTRIBUTE_VLAN_TREE_STATE, image.is_disabled(vlan) ? 0 : 1);
  return CMD_OK;
}

}  // namespace stpplatform::answers
