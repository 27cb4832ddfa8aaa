// What must hold whatever the input is. An input for which it does not is a finding.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzz {

inline void require(bool holds, const char *what) {
  if (!holds) {
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
  }
}

}  // namespace fuzz
