// evhist.h: the debug print, into the agent's own log.
#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/library/snmp_logging.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "export.h"
#include "platform/evhist.h"
#include "settings.h"
#include "text_line.h"

extern "C" {

STPPLATFORM_EXPORT char evhist_dbg_modname[] = "STPSNMP";

STPPLATFORM_EXPORT int evhist_chk_int(uint32_t level, uint32_t, uint32_t, uint32_t) {
  const uint32_t highest = stpplatform::settings().debug_level;
  return highest != 0 && level <= highest ? 1 : 0;
}

STPPLATFORM_EXPORT void dbgprint(int, const char *module, int, const char *format, ...) {
  if (module == nullptr || format == nullptr) {
    return;
  }
  char *text = nullptr;
  va_list arguments;
  va_start(arguments, format);
  const int length = vasprintf(&text, format, arguments);
  va_end(arguments);
  if (length < 0) {
    snmp_log(LOG_WARNING, "%s: a text is lost: '%s'\n", module, format);
    return;
  }
  snmp_log(LOG_DEBUG, "%s: %s\n", module, stpplatform::make_line(text));
  std::free(text);
}

}  // extern "C"
