#include "settings.h"

#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/library/snmp_logging.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "wire/message.h"

namespace stpplatform {
namespace {

constexpr uint32_t kDefaultDeadlineMs = 2000;
constexpr uint32_t kMaxDeadlineMs = 60000;
constexpr uint32_t kDefaultHistoryLevel = 100;
constexpr int kDecimal = 10;

void reject(const char *variable, const char *value, const char *expected) {
  snmp_log(LOG_WARNING, "stpplatform: %s: '%s' is not %s; the default is used\n", variable, value, expected);
}

bool parse_number(const char *text, uint32_t min, uint32_t max, uint32_t *number) {
  // strtoull would also take blanks and signs.
  if (text[0] == '\0' || std::strspn(text, "0123456789") != std::strlen(text)) {
    return false;
  }
  errno = 0;
  const unsigned long long parsed = std::strtoull(text, nullptr, kDecimal);
  if (errno != 0 || parsed < min || parsed > max) {
    return false;
  }
  *number = static_cast<uint32_t>(parsed);
  return true;
}

uint32_t number_setting(const char *variable, uint32_t min, uint32_t max, uint32_t fallback,
                        const char *expected) {
  const char *value = std::getenv(variable);
  uint32_t number = fallback;
  if (value != nullptr && !parse_number(value, min, max, &number)) {
    reject(variable, value, expected);
  }
  return number;
}

// Absolute, because a daemon changes its working directory.
void path_setting(const char *variable, const char *fallback, char *path, size_t size) {
  const char *value = std::getenv(variable);
  if (value != nullptr && (value[0] != '/' || std::strlen(value) >= size)) {
    reject(variable, value, "an absolute path that is short enough");
    value = nullptr;
  }
  if (value == nullptr) {
    value = fallback;
  }
  std::memcpy(path, value, std::strlen(value) + 1);
}

}  // namespace

Settings current_settings;

void read_settings() {
  path_setting("STPPLATFORM_SOCKET", wire::kDefaultSocketPath, current_settings.socket_path,
               sizeof current_settings.socket_path);
  current_settings.deadline_ms =
      number_setting("STPPLATFORM_DEADLINE_MS", 1, kMaxDeadlineMs, kDefaultDeadlineMs,
                     "a number of milliseconds from 1 to 60000");
  current_settings.debug_level = number_setting("STPPLATFORM_DEBUG_LEVEL", 0, UINT32_MAX, 0, "a level");
  current_settings.history_level =
      number_setting("STPPLATFORM_HISTORY_LEVEL", 0, UINT32_MAX, kDefaultHistoryLevel, "a level");
  path_setting("STPPLATFORM_HISTORY_FILE", "", current_settings.history_file,
               sizeof current_settings.history_file);
}

}  // namespace stpplatform
