#include "overview/table.h"

#include <algorithm>

#include "base/printable.h"

namespace stpoverview {
namespace {

// Where the columns before leave no room, a list still gets this much.
constexpr size_t kLeastListWidth = 20;

std::string_view sequence_of(Colour colour) {
  switch (colour) {
    case Colour::kGood:
      return "\033[32m";
    case Colour::kWaiting:
      return "\033[33m";
    case Colour::kBad:
      return "\033[1;31m";
    case Colour::kDim:
      return "\033[2m";
    case Colour::kNone:
      break;
  }
  return "";
}

// In UTF-8.
bool continues_character(char octet) {
  constexpr unsigned kKindOfOctet = 0xC0;
  constexpr unsigned kContinuation = 0x80;
  return (static_cast<unsigned char>(octet) & kKindOfOctet) == kContinuation;
}

// Takes the items of a list, commas included, that go into this width together; at least one.
std::string_view take_items(std::string_view *list, size_t width) {
  size_t end = 0;
  do {
    const size_t comma = list->find(',', end);
    const size_t next = comma == std::string_view::npos ? list->size() : comma + 1;
    if (end != 0 && width_of(list->substr(0, next)) > width) {
      break;
    }
    end = next;
  } while (end < list->size());
  const std::string_view taken = list->substr(0, end);
  list->remove_prefix(end);
  return taken;
}

}  // namespace

size_t width_of(std::string_view text) {
  return text.size() - static_cast<size_t>(std::count_if(text.begin(), text.end(), continues_character));
}

std::string padded(const Cell &cell, size_t width, const Terminal &terminal) {
  const std::string_view sequence = terminal.has_colours ? sequence_of(cell.colour) : "";
  std::string text(sequence);
  // Another agent's texts may hold anything.
  for (std::string_view left = cell.text; !left.empty();) {
    const size_t length = stpswitch::printable_length(left);
    if (length != 0) {
      text += left.substr(0, length);
    } else if (!continues_character(left.front())) {
      text += '?';
    }
    left.remove_prefix(std::max<size_t>(length, 1));
  }
  text += sequence.empty() ? "" : "\033[0m";
  return text.append(width - std::min(width, width_of(cell.text)), ' ');
}

std::vector<std::string> aligned(const std::vector<Row> &rows, const Terminal &terminal) {
  std::vector<std::string> lines(rows.size());
  for (size_t column = 0; column < rows.front().size(); ++column) {
    size_t width = 0;
    for (const Row &row : rows) {
      width = std::max(width, width_of(row[column].text));
    }
    for (size_t i = 0; i < rows.size(); ++i) {
      lines[i] += padded(rows[i][column], width + kGap, terminal);
    }
  }
  return lines;
}

std::string print_lists(const std::vector<Row> &rows, const Terminal &terminal) {
  std::vector<Row> heads = rows;
  for (Row &head : heads) {
    head.pop_back();
  }
  const size_t indent = width_of(aligned(heads, {}).front());
  const size_t room = std::max(terminal.width, indent + kLeastListWidth) - indent;
  const std::vector<std::string> lines = aligned(heads, terminal);
  std::string text;
  for (size_t i = 0; i < rows.size(); ++i) {
    text += lines[i];
    std::string_view list = rows[i].back().text;
    text += padded({std::string(take_items(&list, room)), rows[i].back().colour}, 0, terminal);
    end_line(&text);
    while (!list.empty()) {
      text.append(indent, ' ');
      text += padded({std::string(take_items(&list, room)), rows[i].back().colour}, 0, terminal);
      end_line(&text);
    }
  }
  return text;
}

void end_line(std::string *text) {
  text->erase(text->find_last_not_of(' ') + 1);
  *text += '\n';
}

}  // namespace stpoverview
