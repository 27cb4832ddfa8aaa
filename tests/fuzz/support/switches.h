// Small switches in which everything has a value here and there.
#pragma once

#include <cstdint>

#include "model/switch.h"

namespace fuzz {

// One in Rapid PVST mode, or one with MST.
const stpswitch::Switch &any_switch(uint8_t choice);

}  // namespace fuzz
