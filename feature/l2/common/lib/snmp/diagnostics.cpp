#include "diagnostics.h"

#include <cstdarg>

namespace stpsnmp::diagnostics {

void keep(Level level, Format format, ...) {
  evhist_record record;
  record.level = level;
  va_list arguments;
  va_start(arguments, format);
  char *const end = write_text(format, arguments, record.text, record.text + sizeof record.text - 1);
  va_end(arguments);
  *end = '\0';
  // A record is counted up to its text's terminator.
  const auto length = static_cast<uint32_t>(end + 1 - reinterpret_cast<const char *>(&record));
  evhist_hist_event(STP_EVENT_CLASS, length, &record);
}

}  // namespace stpsnmp::diagnostics
