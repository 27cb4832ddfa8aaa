// What the spanning-tree process tells the agent unasked.
#pragma once

#include <cstdint>

#include "model/switch_state.h"

namespace stpswitch {

// An inconsistency that appeared, changed or vanished, as the agent is told of it.
struct InconsistencyEvent {
  uint32_t notification_class;  // 17421, 17422 or 17423
  uint32_t tree;
  uint32_t if_index;
  uint32_t state;         // the payload's word, host byte order (17421: bits in the top octet)
  SpanningTreeMode mode;  // after the change

  bool operator==(const InconsistencyEvent &) const = default;
};

}  // namespace stpswitch
