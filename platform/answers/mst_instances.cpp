// Command 122: the trees of the MST region, for the CIST and each MST instance. Outside MST mode there are
// none.
#include "answers/question.h"

namespace stpplatform::answers {
namespace {

constexpr uint32_t kCist = 0;

bool is_known(const wire::ImageNumber &number) { return load_shared(number.is_known) != 0; }

// Whether all is known of the tree within a region. The agent takes what an entry lacks for zero.
bool is_known(const wire::ImageMstInstance &instance, uint32_t id, const wire::ImageSettings &settings) {
  return is_known(instance.remaining_hops) &&
         (id != kCist ||
          (load_shared(settings.has_regional_root_mac) != 0 && is_known(settings.regional_root_priority) &&
           is_known(settings.internal_root_path_cost)));
}

}  // namespace

cmd_result answer_mst_instances(const Image &image, const Question &question, Answer *answer) {
  if (!question.has_key(STP_KEY_MST_TREE)) {
    return CMD_UNKNOWN_KEY;
  }
  uint32_t asked = 0;
  if (!question.tree(STP_KEY_MST_TREE, &asked)) {
    return CMD_BAD_REQUEST;
  }
  const wire::ImageSettings &settings = image.settings();
  const wire::ImageMstInstance *instance =
      question.action() == CMD_ACTION_GET ? image.find_mst_instance(asked) : image.mst_instance_behind(asked);
  if (load_shared(settings.mode) != STP_MODE_MST || instance == nullptr) {
    return CMD_NO_ENTRY;
  }
  const uint32_t id = load_shared(instance->id);
  if (!is_known(*instance, id, settings)) {
    return CMD_NO_ENTRY;
  }
  answer->add_number(STP_ATTRIBUTE_TREE, id);
  answer->add(STP_ATTRIBUTE_HOPS, instance->remaining_hops);
  if (id == kCist) {
    answer->add_octets(STP_ATTRIBUTE_REGIONAL_ROOT_MAC, settings.regional_root_mac, wire::kMacAddressSize);
    answer->add(STP_ATTRIBUTE_REGIONAL_ROOT_PRIORITY, settings.regional_root_priority);
    answer->add(STP_ATTRIBUTE_INTERNAL_ROOT_PATH_COST, settings.internal_root_path_cost);
  }
  return CMD_OK;
}

}  // namespace stpplatform::answers
