#include "diagnostics.h"

#include <cstdarg>
#include <cstdio>

#include "platform/stp_protocol.h"

namespace stpsnmp::diagnostics {
namespace {

// A record's text is counted with the level word before it and the zero after it.
constexpr uint32_t kRecordOverhead = sizeof(uint32_t) + 1;

}  // namespace

bool history_keeps(Level level) { return evhist_hist_event_subtype_check(STP_EVENT_CLASS, level) == 0; }

bool print_shows(Level level) { return evhist_chk_int(level, 0, 0, 1) != 0; }

void keep(Level level, const char *format, ...) {
  evhist_record record;
  record.level = level;
  va_list arguments;
  va_start(arguments, format);
  const int wanted = vsnprintf(record.text, sizeof record.text, format, arguments);
  va_end(arguments);
  if (wanted < 0) {
    return;  // no text to keep
  }
  const uint32_t room = sizeof record.text - 1;
  const auto length = static_cast<uint32_t>(wanted) < room ? static_cast<uint32_t>(wanted) : room;
  evhist_hist_event(STP_EVENT_CLASS, length + kRecordOverhead, &record);
}

}  // namespace stpsnmp::diagnostics
