// Lays out one generation of the image.
#pragma once

#include <cstdint>
#include <vector>

#include "model/switch.h"

namespace stpswitch {

// The octets of a slot (platform/wire/image.h), as many as its tables need and no more.
std::vector<uint8_t> image_slot(const Switch &the_switch);

}  // namespace stpswitch
