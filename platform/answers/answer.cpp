#include "answers/answer.h"

namespace stpplatform::answers {

void Answer::add_octets(stp_attribute attribute, const uint8_t *octets, uint32_t length) {
  uint8_t copy[kMaxSize];
  if (length <= sizeof copy) {
    copy_octets(copy, octets, length);
    add(attribute, copy, length);
  }
}

}  // namespace stpplatform::answers
