// The client's end of the control socket.
#pragma once

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

namespace stpswitch {

// Nobody answers, or not in time, or not in the control socket's language.
class Unreachable : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Sends one request and returns its answer, an object. Waits a few seconds at most.
nlohmann::json ask_switch(const std::string &control_path, const nlohmann::json &request);

}  // namespace stpswitch
