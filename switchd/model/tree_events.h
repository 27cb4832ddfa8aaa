// What happens to spanning trees from one state of the switch to the next.
#pragma once

#include <vector>

#include "model/derived.h"
#include "model/events.h"
#include "model/switch_state.h"
#include "model/tree_ports.h"
#include "model/tree_set.h"

namespace stpswitch {

// A state, and what follows from it. All must outlive it.
struct TreesOfState {
  const SwitchState &state;
  const BridgePorts &ports;
  const TreePorts &tree_ports;
  const TreeSet &running_trees;
};

struct TreeChanges {
  std::vector<TreeEvent> events;  // that of all trees first, then in the order of trees
  TreeSet topology;               // the trees whose topology has changed
};

// Of trees that run before and after. A port at the edge changes no topology (IEEE 802.1D clause 17.31). A
// tree with a new root has no other event (RFC 4188: topologyChange).
TreeChanges tree_changes(const TreesOfState &before, const TreesOfState &after);

}  // namespace stpswitch
