// MAC addresses, and the text such as "00:00:5e:00:53:00" that people write for them.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace stpswitch {

using MacAddress = std::array<uint8_t, 6>;

// Reads six pairs of hexadecimal digits of any case, joined by colons. Throws Refusal.
MacAddress parse_mac_address(std::string_view text);

// In lower case.
std::string print_mac_address(const MacAddress &address);

}  // namespace stpswitch
