// What the keys of a switch must satisfy together.
#pragma once

#include "model/switch_state.h"

namespace stpswitch {

// Throws ConfigError for the first key that contradicts another one.
void check_consistency(const SwitchState &state);

}  // namespace stpswitch
