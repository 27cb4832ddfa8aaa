// Lays out one generation of the snapshot.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "model/switch.h"

namespace stpswitch {

// Fills the beginning of a slot (platform/wire/snapshot.h) that has room for every interface, and returns how
// much of it that is. Nothing of the rest is read.
size_t fill_snapshot_slot(const Switch &the_switch, std::span<uint8_t> slot);

}  // namespace stpswitch
