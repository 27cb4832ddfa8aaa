// Messages as hexadecimal digits, so that expectations can be literal.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "base/packet.h"

// Lower-case digits, two an octet.
std::string hex(std::span<const uint8_t> octets);

// The octets behind digits; spaces are skipped.
stpswitch::Packet octets(std::string_view digits);
