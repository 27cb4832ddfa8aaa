// What the keys of a scenario must satisfy together.
#pragma once

#include <string>

#include "model/switch_state.h"

namespace stpswitch {

// Throws ConfigError for the first key that contradicts another one. Of the two, it names the one that
// somebody has asked for, or else the one that stands later.
void check_consistency(const SwitchState &state, const std::string &asked);

// The state with one key (keys/keys.h) set and everything checked. Throws ConfigError.
SwitchState with_value(const SwitchState &state, const std::string &key, const std::string &text);

}  // namespace stpswitch
