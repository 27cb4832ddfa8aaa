// What of the agent's registry is this module's.
#pragma once

namespace stpbridge {

// The default context: dot1dBase and dot1dStp, so that whoever serves what else dot1dBridge has is free to.
// False where the agent refuses one of them; none is registered then.
bool register_default_context();
void unregister_default_context();

// The context of a tree: dot1dBridge, because each entry of the registry costs the agent memory, and time
// with each context that there is. False where the agent refuses it.
bool register_context(const char *name);
void unregister_context(const char *name);

}  // namespace stpbridge
