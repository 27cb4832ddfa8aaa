// Reads and changes the state of a switch by keys such as "port.3.link".
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "keys/value.h"
#include "model/switch_state.h"

namespace stpswitch {

using KeyAndValue = std::pair<std::string, Value>;

// Every key that is, or lies below, `prefix`, and whose value is known; all of them when it is empty. Throws
// ConfigError when there is no such key, or one alone whose value nobody knows.
std::vector<KeyAndValue> values_below(const SwitchState &state, const std::string &prefix);

// The state with one key changed, which by itself may be so. Throws ConfigError.
SwitchState with_key_set(const SwitchState &state, const std::string &key, const std::string &text);

}  // namespace stpswitch
