// What the spanning-tree process tells unasked. How it is sent is the servers' business.
#pragma once

#include <cstdint>
#include <optional>
#include <variant>

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

enum class TreeEventKind {
  kNewRoot,         // the switch has become a tree's root
  kTopologyChange,  // a port of a tree has begun to forward, or blocks after it did
  kTrees            // trees have come or gone; of no tree
};

struct TreeEvent {
  TreeEventKind kind;
  uint32_t tree;
  uint32_t port;          // through which the change came, by the bridge's own number; 0: not known
  uint32_t if_mib_index;  // of that port; 0: not known
  std::optional<SpanningTreeMode> mode;

  bool operator==(const TreeEvent &) const = default;
};

using SwitchEvent = std::variant<InconsistencyEvent, TreeEvent>;

}  // namespace stpswitch
