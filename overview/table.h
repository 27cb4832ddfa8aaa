// Text in columns, with colours where the terminal has them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "overview/terminal.h"

namespace stpoverview {

enum class Colour { kNone, kGood, kWaiting, kBad, kDim };

struct Cell {
  std::string text;
  Colour colour = Colour::kNone;
};

using Row = std::vector<Cell>;

inline constexpr size_t kGap = 2;  // between columns

// In terminal columns; one for each character of UTF-8.
size_t width_of(std::string_view text);

// The cell with blanks behind it up to this width.
std::string padded(const Cell &cell, size_t width, const Terminal &terminal);

// One line of equal width for each row, with the gap to what may follow on its right. The rows have as many
// cells as the first.
std::vector<std::string> aligned(const std::vector<Row> &rows, const Terminal &terminal);

// Aligned rows whose last cells are lists with commas: one too long for the terminal goes on below itself.
std::string print_lists(const std::vector<Row> &rows, const Terminal &terminal);

// Ends the text's last line, which has no blanks at its end then.
void end_line(std::string *text);

}  // namespace stpoverview
