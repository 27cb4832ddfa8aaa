// Lays out one generation of the snapshot.
#pragma once

#include <cstdint>
#include <vector>

#include "model/switch.h"

namespace stpswitch {

// The octets of a slot (platform/wire/snapshot.h) that are in use: its head, and the interfaces that there
// are.
std::vector<uint8_t> snapshot_slot(const Switch &the_switch);

}  // namespace stpswitch
