// Where a switch stands in a spanning tree, and what its ports do there: what is stated, or else what follows
// from the rest by IEEE 802.1D clause 17. What cannot be told is unset.
#pragma once

#include <cstdint>
#include <optional>

#include "model/derived.h"
#include "model/observed.h"
#include "model/switch_state.h"

namespace stpswitch {

struct TreeValues {
  TreeSettings settings;
  ObservedTree observed;
};
TreeValues tree_values(const SwitchState &state, const BridgePorts &ports, uint32_t tree);

struct TreePortValues {
  std::optional<PortRole> role;
  std::optional<PortState> state;
  std::optional<uint32_t> port_id;  // of 16 bits, IEEE 802.1D clause 9.2.7
  Designated designated;
};
TreePortValues tree_port_values(const TreeValues &in_tree, uint32_t tree, const BridgePort &port);

}  // namespace stpswitch
