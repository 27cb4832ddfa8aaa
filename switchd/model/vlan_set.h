// Sets of VLAN identifiers.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "model/id_set.h"

namespace stpswitch {

// VLAN identifiers (IEEE 802.1Q clause 9.6): 0 and 4095 are reserved, and never in a set.
inline constexpr uint32_t kMinVlan = 1;
inline constexpr uint32_t kMaxVlan = 4094;

using VlanSet = IdSet;

// Throws Refusal.
inline VlanSet parse_vlans(std::string_view text) {
  return parse_ids(text, {"VLAN", "1,10-19", kMinVlan, kMaxVlan});
}
inline std::string print_vlans(const VlanSet &vlans) { return print_ids(vlans); }

}  // namespace stpswitch
