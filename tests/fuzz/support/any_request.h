// A request of the input's, as a caller's buffer has it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "support/input.h"
#include "wire/message.h"

namespace fuzz {

struct AnyRequest {
  static constexpr size_t kRoom = 128;

  stpplatform::wire::Request head;
  uint8_t attributes[kRoom];
  size_t size;  // of the attributes
};

// Any command and action, for any or no tree and any or no interface, or for a bridge port.
AnyRequest any_request(Input *input);

}  // namespace fuzz
