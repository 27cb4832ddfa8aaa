// Texts reach logs and terminals, where a control character would break the line that shows them, or do
// worse.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace stpswitch {

// The number of octets of the character with which a text begins; 0 where that is a control character, of
// ASCII or of ISO 6429's second set (U+0080 to U+009F), or is not UTF-8.
size_t printable_length(std::string_view text);

// All characters of a text are.
bool is_printable(std::string_view text);

// Its first `max` octets at most, in whole characters, with a question mark for each octet that is part of
// none: texts of others, which must reach a log or a name as they are or not at all.
std::string made_printable(std::string_view text, size_t max);

}  // namespace stpswitch
