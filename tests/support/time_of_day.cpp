// The time of day as the fake platform tells it, through the linker's --wrap.
#include <sys/time.h>

#include "fake_platform.h"

extern "C" int __wrap_gettimeofday(timeval *time, void *zone);

extern "C" int __wrap_gettimeofday(timeval *time, void * /*zone*/) {
  constexpr suseconds_t kMicroseconds = 7;
  fake::trace("gettimeofday");
  *time = {static_cast<time_t>(fake::platform().seconds++), kMicroseconds};
  return 0;
}
