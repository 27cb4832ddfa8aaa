// The search of sorted tables.
#pragma once

#include <cstdint>

namespace stpplatform::answers {

// Finds the first of the positions from `first` to `end` at which `is_below` is no longer true; it is true
// for those up to some position and for none behind it. Begins with `hint` and the one behind it, and
// remembers in it where the search ended.
template <class IsBelow>
uint32_t search(uint32_t first, uint32_t end, uint32_t *hint, IsBelow is_below) {
  for (uint32_t guess = *hint; guess - *hint < 2; ++guess) {
    if (guess >= first && guess <= end && (guess == first || is_below(guess - 1)) &&
        (guess == end || !is_below(guess))) {
      *hint = guess;
      return guess;
    }
  }
  uint32_t count = end - first;
  while (count > 0) {
    const uint32_t half = count / 2;
    if (is_below(first + half)) {
      first += half + 1;
      count -= half + 1;
    } else {
      count = half;
    }
  }
  *hint = first;
  return first;
}

}  // namespace stpplatform::answers
