// The overview of a running switch.
#pragma once

#include "model/switch.h"
#include "overview/overview.h"

namespace stpswitch {

stpoverview::Overview overview_of(const Switch &the_switch);

}  // namespace stpswitch
