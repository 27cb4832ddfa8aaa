// A value that the switch does not take, and why. Whoever knows which key it was meant for adds that.
#pragma once

#include <stdexcept>

namespace stpswitch {

class Refusal : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace stpswitch
