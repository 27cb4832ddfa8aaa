// Switches that a manager has something to ask in every table of both modules, in two states each: whatever
// is asked, the one does not answer what the other did.
#pragma once

#include "model/switch_state.h"

// `which` is 0 or 1.
stpswitch::SwitchState mst_switch(int which);
stpswitch::SwitchState rapid_pvst_switch(int which);
