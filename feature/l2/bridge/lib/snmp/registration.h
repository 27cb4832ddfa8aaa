// Puts the groups into the agent's registry and takes them out again.
#pragma once

namespace stpbridge {

// Registers both groups in a context; the empty one is the default. False where the agent refuses, and then
// neither is registered.
bool register_groups(const char *context);

// Takes out what register_groups has put in.
void unregister_groups(const char *context);

}  // namespace stpbridge
