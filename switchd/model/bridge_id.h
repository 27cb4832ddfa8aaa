// Identifiers of bridges (IEEE 802.1D clause 9.2.5), and the text such as "8000.00005e005300" for them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "model/mac_address.h"

namespace stpswitch {

struct BridgeId {
  uint16_t priority;  // with the system identifier extension in its low twelve bits
  MacAddress address;

  bool operator==(const BridgeId &) const = default;
};

// Reads four hexadecimal digits, a dot, and twelve more of any case. Throws Refusal.
BridgeId parse_bridge_id(std::string_view text);

// In lower case.
std::string print_bridge_id(const BridgeId &id);

}  // namespace stpswitch
