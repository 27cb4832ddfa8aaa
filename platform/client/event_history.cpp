#include "event_history.h"

#include <net-snmp/net-snmp-config.h>
//
#include <fcntl.h>
#include <net-snmp/library/snmp_logging.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstring>

#include "export.h"
#include "platform/evhist.h"
#include "platform/stp_protocol.h"
#include "settings.h"
#include "text_line.h"
#include "wire/owned_fd.h"

namespace stpplatform {
namespace {

constinit EventHistory the_history;

constexpr long kNsPerUs = 1000;
constexpr mode_t kOwnerOnly = 0600;

void print_time(FILE *file, const timespec &time) {
  tm utc;
  char text[sizeof "YYYY-MM-DDThh:mm:ss"];
  if (gmtime_r(&time.tv_sec, &utc) == nullptr || std::strftime(text, sizeof text, "%FT%T", &utc) == 0) {
    text[0] = '\0';
  }
  std::fprintf(file, "%s.%06ldZ", text, time.tv_nsec / kNsPerUs);
}

// Opens the file for writing from its start. No link is followed and nothing but the agent's own plain file
// is touched: the agent may run as root, and the file may lie where others can write.
OwnedFd open_history_file(const char *path) {
  OwnedFd file(open(path, O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, kOwnerOnly));
  if (!file.is_open()) {
    return file;
  }
  struct stat status;
  if (fstat(file.get(), &status) != 0) {
    return OwnedFd();
  }
  if (!S_ISREG(status.st_mode) || status.st_nlink != 1 || status.st_uid != geteuid()) {
    errno = EPERM;
    return OwnedFd();
  }
  if (ftruncate(file.get(), 0) != 0) {
    return OwnedFd();
  }
  return file;
}

bool write_history(const char *path) {
  OwnedFd file = open_history_file(path);
  FILE *stream = file.is_open() ? fdopen(file.get(), "w") : nullptr;
  if (stream == nullptr) {
    return false;
  }
  static_cast<void>(file.release());
  the_history.dump(stream);
  // What did not fit into the stream's buffer is written by now, the rest when it is closed.
  const int failed_before = std::ferror(stream);
  const int failed_at_last = std::fclose(stream);
  return (failed_before | failed_at_last) == 0;
}

}  // namespace

EventHistory &event_history() { return the_history; }

void EventHistory::add(uint32_t event_class, const void *record, uint32_t length) {
  Entry &entry = entries_[count_ % kCapacity];
  // To some milliseconds: a walk leaves records by the row, and reading the clock itself would cost as much
  // as all the rest.
  clock_gettime(CLOCK_REALTIME_COARSE, &entry.time);
  entry.event_class = event_class;
  // What is behind the text is an older one's.
  std::copy_n(static_cast<const char *>(record), length, reinterpret_cast<char *>(&entry.record));
  ++count_;
}

void EventHistory::dump(FILE *file) const {
  for (uint64_t i = count_ - std::min<uint64_t>(count_, kCapacity); i < count_; ++i) {
    const Entry &entry = entries_[i % kCapacity];
    char text[EVHIST_TEXT_SIZE];
    std::memcpy(text, entry.record.text, sizeof text);
    print_time(file, entry.time);
    std::fprintf(file, " 0x%06" PRIx32 " %" PRIu32 " %s\n", entry.event_class, entry.record.level,
                 make_line(text));
  }
}

void save_event_history() {
  const char *path = settings().history_file;
  if (path[0] != '\0' && !write_history(path)) {
    snmp_log(LOG_WARNING, "stpplatform: %s: the event history cannot be written: %s\n", path,
             std::strerror(errno));
  }
}

}  // namespace stpplatform

extern "C" {

STPPLATFORM_EXPORT int evhist_hist_event_subtype_check(uint32_t event_class, uint32_t level) {
  // The only class that this history is for.
  const uint32_t highest = stpplatform::settings().history_level;
  return event_class == STP_EVENT_CLASS && highest != 0 && level <= highest ? 0 : 1;
}

STPPLATFORM_EXPORT int evhist_hist_event(uint32_t event_class, uint32_t length, const void *record) {
  constexpr auto kHeadSize = static_cast<uint32_t>(offsetof(evhist_record, text));
  if (record == nullptr || length <= kHeadSize || length > sizeof(evhist_record) ||
      static_cast<const char *>(record)[length - 1] != '\0') {
    return 1;
  }
  stpplatform::event_history().add(event_class, record, length);
  return 0;
}

}  // extern "C"
