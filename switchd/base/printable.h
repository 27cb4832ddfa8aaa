// Texts reach logs and terminals, where a control character would break the line that shows them, or do
// worse.
#pragma once

#include <cstddef>
#include <string_view>

namespace stpswitch {

// The number of octets of the character with which a text begins; 0 where that is a control character, of
// ASCII or of ISO 6429's second set (U+0080 to U+009F), or is not UTF-8.
size_t printable_length(std::string_view text);

// All characters of a text are.
bool is_printable(std::string_view text);

}  // namespace stpswitch
