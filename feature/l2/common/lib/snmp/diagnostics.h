// The module's diagnostics: every text goes to the platform's event history and to its debug print.
#pragma once

#include <cstdint>

#include "format.h"
#include "platform/evhist.h"
#include "platform/stp_protocol.h"

namespace stpsnmp::diagnostics {

using Level = uint32_t;

inline constexpr Level kRejection = 100;  // refused arguments and hard failures in the index searches
inline constexpr Level kTrace = 101;      // traces and most failures

// A number as the texts show it.
constexpr int32_t shown(uint32_t number) { return static_cast<int32_t>(number); }

inline bool history_keeps(Level level) {
  return evhist_hist_event_subtype_check(STP_EVENT_CLASS, level) == 0;
}
inline bool print_shows(Level level) { return evhist_chk_int(level, 0, 0, 1) != 0; }

// Formats a record and puts it into the event history. A text that is longer than the record is cut.
void keep(Level level, Format format, ...);

}  // namespace stpsnmp::diagnostics

// Logs a text (format and arguments) to those sinks that take its level; nothing is formatted for the others.
// The arguments may be evaluated twice, or not at all. A macro, so that the debug print gets them as they
// are; the compiler checks them there against the format.
#define STP_LOG(level, ...)                             \
  do {                                                  \
    if (::stpsnmp::diagnostics::history_keeps(level)) { \
      ::stpsnmp::diagnostics::keep(level, __VA_ARGS__); \
    }                                                   \
    if (::stpsnmp::diagnostics::print_shows(level)) {   \
      dbgprint(1, evhist_dbg_modname, 0, __VA_ARGS__);  \
    }                                                   \
  } while (false)
