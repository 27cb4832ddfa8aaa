// The module's diagnostics: every text goes to the platform's event history and to its debug print.
#pragma once

#include <cstdint>

#include "platform/evhist.h"

namespace stpsnmp::diagnostics {

using Level = uint32_t;

inline constexpr Level kRejection = 100;  // refused arguments and hard failures in the index searches
inline constexpr Level kTrace = 101;      // traces and most failures

// A number as the texts show it.
constexpr int32_t shown(uint32_t number) { return static_cast<int32_t>(number); }

bool history_keeps(Level level);
bool print_shows(Level level);

// Formats a record and puts it into the event history. A text that is longer than the record is cut.
void keep(Level level, const char *format, ...) __attribute__((format(printf, 2, 3)));

}  // namespace stpsnmp::diagnostics

// Logs a text (printf format and arguments) to those sinks that take its level; nothing is formatted for the
// others. The arguments may be evaluated twice. A macro, so that the compiler checks them against the format
// and the debug print gets them as they are.
#define STP_LOG(level, ...)                             \
  do {                                                  \
    if (::stpsnmp::diagnostics::history_keeps(level)) { \
      ::stpsnmp::diagnostics::keep(level, __VA_ARGS__); \
    }                                                   \
    if (::stpsnmp::diagnostics::print_shows(level)) {   \
      dbgprint(1, evhist_dbg_modname, 0, __VA_ARGS__);  \
    }                                                   \
  } while (false)
