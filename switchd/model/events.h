// What the spanning-tree process tells unasked. How it is sent is the servers' business.
#pragma once

#include <cstdint>

#include "model/switch_state.h"

namespace stpswitch {

// Which report an event comes from.
enum class InconsistencyEventKind { kPvidAndType, kLoop, kRoot };

// An inconsistency that appeared, changed or vanished.
struct InconsistencyEvent {
  InconsistencyEventKind kind;
  uint32_t tree;
  uint32_t if_index;
  uint32_t state;         // what the report says now (InconsistencyReport::state_of)
  SpanningTreeMode mode;  // after the change

  bool operator==(const InconsistencyEvent &) const = default;
};

}  // namespace stpswitch
