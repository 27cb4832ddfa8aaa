// What every state of a switch must be good for, wherever it comes from.
#pragma once

#include <string>

#include "model/switch.h"

namespace fuzz {

// An image can be made of it.
void require_image(const stpswitch::Switch &the_switch);

// The control socket can tell all of it.
void require_overview(stpswitch::Switch *the_switch);

// What is written to the log or to a terminal stays in its line.
void require_printable(const std::string &text);

}  // namespace fuzz
