#include "fake_clock.h"

#include <ctime>

namespace {

constexpr uint64_t kMsPerSecond = 1000;
constexpr uint64_t kNsPerMs = 1000000;

bool stopped = false;
uint64_t now_ms = 0;

}  // namespace

extern "C" {

int __real_clock_gettime(clockid_t clock, timespec *time);

int __wrap_clock_gettime(clockid_t clock, timespec *time) {
  if (!stopped || clock != CLOCK_MONOTONIC) {
    return __real_clock_gettime(clock, time);
  }
  time->tv_sec = static_cast<time_t>(now_ms / kMsPerSecond);
  time->tv_nsec = static_cast<long>(now_ms % kMsPerSecond * kNsPerMs);
  return 0;
}
}

StoppedClock::StoppedClock() {
  timespec now;
  __real_clock_gettime(CLOCK_MONOTONIC, &now);
  now_ms = static_cast<uint64_t>(now.tv_sec) * kMsPerSecond + static_cast<uint64_t>(now.tv_nsec) / kNsPerMs;
  stopped = true;
}

StoppedClock::~StoppedClock() { stopped = false; }

void StoppedClock::pass_ms(uint64_t ms) { now_ms += ms; }
