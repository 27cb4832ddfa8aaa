// The time of day as the fake platform tells it, through the linker's --wrap.
#include <sys/time.h>

#include <ctime>

#include "fake_platform.h"

extern "C" int __wrap_gettimeofday(timeval *time, void *zone);

extern "C" int __wrap_gettimeofday(timeval *time, void * /*zone*/) {
  constexpr suseconds_t kMicroseconds = 7;
  fake::trace("gettimeofday");
  *time = {static_cast<time_t>(fake::platform().seconds++), kMicroseconds};
  return 0;
}

extern "C" time_t __wrap_time(time_t *time);

extern "C" time_t __wrap_time(time_t *time) {
  fake::trace(time == nullptr ? "time(NULL)" : "time(SOMETHING)");
  std::deque<int64_t> &scripted = fake::platform().next_clocks;
  if (scripted.empty()) {
    return static_cast<time_t>(fake::platform().clock);
  }
  const int64_t clock = scripted.front();
  scripted.pop_front();
  return static_cast<time_t>(clock);
}
