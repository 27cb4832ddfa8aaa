// The switches of the scenarios that come with the product.
#pragma once

#include <cstdint>

#include "model/switch.h"

namespace fuzz {

// One of them, in Rapid PVST mode or with MST.
const stpswitch::Switch &any_switch(uint8_t choice);

}  // namespace fuzz
