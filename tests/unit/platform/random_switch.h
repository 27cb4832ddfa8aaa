// Switches as no operator would set them up: any mode or none, interfaces of all kinds, and everything that
// can be unknown is so here and there.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "model/switch_state.h"

class Draw {
 public:
  explicit Draw(uint32_t seed) : engine_(seed) {}

  uint32_t below(uint32_t end) { return static_cast<uint32_t>(engine_()) % end; }
  uint32_t any() { return static_cast<uint32_t>(engine_()); }
  bool one_in(uint32_t count) { return below(count) == 0; }

  template <class T>
  const T &among(const std::vector<T> &choices) {
    return choices[below(static_cast<uint32_t>(choices.size()))];
  }

 private:
  std::mt19937 engine_;
};

// The users whom such a switch may refuse.
const std::vector<std::string> &users_to_refuse();

stpswitch::SwitchState random_switch(Draw *draw);
