// Reads and changes the state of a switch by keys such as "port.3.link".
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/switch_state.h"
#include "scenario/value.h"

namespace stpswitch {

using KeyAndValue = std::pair<std::string, Value>;

// Every key that is, or lies below, `prefix`; all keys when it is empty. Throws ConfigError when there is
// none.
std::vector<KeyAndValue> values_below(const SwitchState &state, const std::string &prefix);

// The state with one key changed and everything checked. Throws ConfigError.
SwitchState with_value(const SwitchState &state, const std::string &key, const std::string &text);

}  // namespace stpswitch
