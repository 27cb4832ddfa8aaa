#include "sources/scenario/toml_error.h"

#include <algorithm>
#include <array>

#include "base/printable.h"

namespace stpswitch {
namespace {

constexpr size_t kMostShown = 60;

// The parser's words, and what they mean for somebody who has made one of the common mistakes.
struct Explanation {
  std::string_view complaint;
  std::string_view meaning;
};
constexpr auto kExplanations = std::to_array<Explanation>(
    {{"cannot redefine existing", "this stands in the file already"},
     {"encountered end-of-file", "a quote or a bracket is missing at its end"},
     {"control characters", "a quote is missing at its end, or a text holds a control character"},
     {"expected comma or closing", "a comma or the closing bracket is missing"},
     {"expected ']'", "the bracket is not closed"},
     {"expected keys, tables",
      "a line is a section, a key and its value, or a comment, which begins with '#'"},
     {"expected '='", "a key and its value have '=' between them"},
     {"expected value, saw", "there is no value behind '='"},
     {"leading zeroes", "a number does not begin with 0"},
     {"not representable", "the number is too large"},
     {"parsing boolean", "it is true or false, in small letters; a text stands between quotes"},
     {"4-digit year", "a text, as lists of VLANs are, stands between quotes"},
     {"parsing date", "a text stands between quotes"},
     {"parsing time", "a text stands between quotes"},
     {"parsing decimal integer", "a text stands between quotes"},
     {"parsing floating-point", "a text stands between quotes"},
     {"could not determine value type", "a text stands between quotes"},
     {"expected a comment or whitespace",
      "nothing but a comment stands behind a value; a text, as lists of VLANs are, stands between quotes"}});

std::string_view line_of(std::string_view text, uint32_t number) {
  for (uint32_t i = 1; i < number && !text.empty(); ++i) {
    const size_t end = text.find('\n');
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  const std::string_view line = text.substr(0, text.find('\n'));
  constexpr std::string_view kBlanks = " \t\r";
  const size_t begin = std::min(line.find_first_not_of(kBlanks), line.size());
  return line.substr(begin, line.find_last_not_of(kBlanks) + 1 - begin);
}

// Between quotes, where it can be shown on one line.
std::string shown(std::string_view line) {
  size_t end = 0;
  for (size_t characters = 0; end < line.size() && characters < kMostShown; ++characters) {
    const size_t length = printable_length(line.substr(end));
    if (length == 0) {
      return "the line";
    }
    end += length;
  }
  return line.empty() ? "the line"
                      : "'" + std::string(line.substr(0, end)) + (end < line.size() ? "...'" : "'");
}

}  // namespace

std::string explain_toml_error(std::string_view complaint, std::string_view text, uint32_t line_number) {
  const auto *const known =
      std::find_if(kExplanations.begin(), kExplanations.end(), [complaint](const Explanation &explanation) {
        return complaint.find(explanation.complaint) != std::string_view::npos;
      });
  return shown(line_of(text, line_number)) +
         " is not TOML: " + std::string(known != kExplanations.end() ? known->meaning : complaint);
}

}  // namespace stpswitch
