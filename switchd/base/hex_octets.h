// Octets as pairs of hexadecimal digits, with or without a separator between the pairs.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace stpswitch {

// Fills all octets. False, with the octets in no particular state, for a text of another length or form;
// digits may have any case.
bool parse_hex_octets(std::string_view text, std::string_view separator, std::span<uint8_t> octets);

// In lower case.
std::string print_hex_octets(std::span<const uint8_t> octets, std::string_view separator);

}  // namespace stpswitch
