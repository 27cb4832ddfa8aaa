// Lays out one generation of the image.
#pragma once

#include <cstdint>
#include <vector>

#include "model/switch.h"

namespace stpswitch {

// Makes `*slot` the octets of a slot (platform/wire/image.h), as many as its tables need and no more. It may
// hold those of another one: memory that is there already costs nothing.
void lay_out_slot(const Switch &the_switch, std::vector<uint8_t> *slot);

}  // namespace stpswitch
