// A message from one of the switch's processes, as notification handlers get it.
#pragma once

#include <cstddef>

namespace stpplatform {

struct TransportMessage {
  void *payload;  // null when there is none
};

}  // namespace stpplatform
