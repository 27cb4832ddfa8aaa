// Command 112: the MST region that the switch is configured for. Who has a reply of it reads the VLANs of its
// instances where they lie in the image.
#include "answers/question.h"

namespace stpplatform::answers {

cmd_result answer_mst_region(const Image &image, const Question &question, Answer *answer) {
  if (!question.has_no_key() && !question.has_key(STP_KEY_MST_DIGESTS)) {
    return CMD_UNKNOWN_KEY;
  }
  if (question.action() != CMD_ACTION_GET) {
    return CMD_NO_ENTRY;
  }
  const wire::ImageSettings &settings = image.settings();
  const uint32_t name_length = load_shared(settings.region_name_length);
  if (name_length > wire::kRegionNameSize) {
    return CMD_BAD_REPLY;
  }
  answer->add(STP_ATTRIBUTE_MST_REGION_REVISION, settings.region_revision);
  if (load_shared(settings.has_region_name) != 0) {
    answer->add_octets(STP_ATTRIBUTE_MST_REGION_NAME, settings.region_name, name_length);
  }
  if (load_shared(settings.has_config_digest) != 0) {
    answer->add_octets(STP_ATTRIBUTE_MST_CONFIG_DIGEST, settings.config_digest, wire::kDigestSize);
  }
  if (load_shared(settings.has_pre_standard_digest) != 0) {
    answer->add_octets(STP_ATTRIBUTE_MST_PRE_STANDARD_DIGEST, settings.pre_standard_digest,
                       wire::kDigestSize);
  }
  return CMD_OK;
}

}  // namespace stpplatform::answers
