// The event history: the latest records, in memory until the library is unloaded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ctime>

#include "platform/evhist.h"

namespace stpplatform {

class EventHistory {
 public:
  static constexpr size_t kCapacity = 256;

  constexpr EventHistory() = default;

  // Copies the first `length` octets of a record: its level and its text with the terminating zero. They take
  // the place of the oldest record when the history is full.
  void add(uint32_t event_class, const void *record, uint32_t length);

  // Writes one line a record, the oldest first: UTC time, class, level, text.
  void dump(FILE *file) const;

  void clear() { count_ = 0; }

 private:
  struct Entry {
    timespec time;
    uint32_t event_class;
    evhist_record record;
  };

  Entry entries_[kCapacity] = {};
  uint64_t count_ = 0;  // of the records ever added
};

EventHistory &event_history();

// Writes the history to the file that the operator has named, if any. A file that cannot be written is named
// in the agent's log.
void save_event_history();

}  // namespace stpplatform
