// Puts the object table into the agent's registry and takes it out again.
#pragma once

namespace stpsnmp {

inline constexpr char kModuleName[] = "vantrelStpExtensionsMIB";

// Returns what the agent's register_mib returns: 0 on success. After a failure, the entries before the one
// that failed may be registered all the same.
int register_objects();

// Takes out what is registered under the root itself, and every entry of this module; other modules' entries
// below the root stay.
void unregister_objects();

}  // namespace stpsnmp
