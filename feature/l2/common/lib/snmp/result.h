// Results of routines: 0, a code of the command library, or this one.
#pragma once

namespace stpsnmp {

// A failure of the module's own.
inline constexpr int kFailed = -1;

}  // namespace stpsnmp
