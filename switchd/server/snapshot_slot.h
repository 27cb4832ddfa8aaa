// Lays out one generation of the snapshot.
#pragma once

#include <cstdint>
#include <span>

#include "model/switch.h"

namespace stpswitch {

// Interfaces that the switch has; a snapshot must have room for them.
uint32_t interface_count(const SwitchState &state);

// Fills a slot (platform/wire/snapshot.h) of the right size for interface_count().
void fill_snapshot_slot(const Switch &the_switch, std::span<uint8_t> slot);

}  // namespace stpswitch
