// Defaults of scenarios that several sections have in common: a switch that is the root of its trees.
#pragma once

#include <cstdint>

#include "model/mac_address.h"

namespace stpswitch {

// IEEE 802.1D clause 17.14 recommends it. The address is one for documentation (RFC 7042).
inline constexpr uint32_t kDefaultBridgePriority = 32768;
inline constexpr MacAddress kDefaultBridgeAddress = {0x00, 0x00, 0x5E, 0x00, 0x53, 0x00};

}  // namespace stpswitch
