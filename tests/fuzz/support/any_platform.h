// The fake platform, with a switch and a spanning-tree process of the input's. It keeps what the platform's
// headers promise: values are as long as their token's type says.
#pragma once

#include <net-snmp/library/oid.h>

#include <vector>

#include "platform/agent_ext.h"
#include "support/input.h"

namespace fuzz {

// Sets it up anew, with some interfaces. What the process answers is taken from the input as it is asked for;
// behind the end of the input there is no entry.
void set_up_platform(Input *input);

// The SNMP context of the requests that follow.
void set_context(Input *input);

// Lets a handler make the notification of a message that the input has.
void notify(Input *input, notification_handler handler);

// Some arcs of an object's name.
std::vector<oid> any_arcs(Input *input);

}  // namespace fuzz
