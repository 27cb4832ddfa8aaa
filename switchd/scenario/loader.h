// Reads scenario files (TOML) into the state of a switch.
#pragma once

#include <string>

#include "model/switch_state.h"

namespace stpswitch {

// Reads and checks a whole scenario. Throws std::runtime_error; its text names file, line, key and reason.
SwitchState load_scenario(const std::string &path);

// The same for a text; `name` stands for the file in errors.
SwitchState parse_scenario(const std::string &text, const std::string &name);

}  // namespace stpswitch
