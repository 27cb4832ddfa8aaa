// Reads scenario files (TOML) into the state of a switch.
#pragma once

#include <stdexcept>
#include <string>

#include "model/switch_state.h"

namespace stpswitch {

// What is wrong with a scenario, in one line that names file, line, key and reason.
class ScenarioError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Reads and checks a whole scenario. Throws ScenarioError.
SwitchState load_scenario(const std::string &path);

// The same for a text; `name` stands for the file in errors.
SwitchState parse_scenario(const std::string &text, const std::string &name);

}  // namespace stpswitch
