// The switch that a Linux bridge is: what its kernel tells, in the terms of the model. What the kernel does
// not tell is left unset.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

#include "model/switch_state.h"
#include "sources/linux_bridge/bridge_history.h"
#include "sources/linux_bridge/link_table.h"

namespace stpswitch {

// How many ticks a second has.
struct TickRates {
  uint32_t user;    // of the user interface, sysconf(_SC_CLK_TCK)
  uint32_t kernel;  // its own
};

// How long these ticks are, of which there are `per_second`.
std::chrono::milliseconds duration_of(uint32_t ticks, uint32_t per_second);

struct BridgeState {
  SwitchState state;
  size_t left_out = 0;  // interfaces that have no number in the switch
};

// Without a spanning tree, the mode is unset. With one of a program outside the kernel, only the states of
// ports are the kernel's to tell.
BridgeState bridge_state(const LinkTable &table, const BridgeHistory::Facts &history, const TickRates &rates);

}  // namespace stpswitch
