// What standard output can show.
#pragma once

#include <cstddef>

namespace stpoverview {

inline constexpr size_t kUsualWidth = 80;

struct Terminal {
  size_t width = kUsualWidth;  // in columns
  bool has_colours = false;
};

// Colours are for terminals alone, and not where NO_COLOR says so. What is no terminal is as wide as COLUMNS
// says, or as usual.
Terminal standard_output();

}  // namespace stpoverview
