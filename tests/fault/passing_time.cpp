#include "passing_time.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <ctime>

namespace {

constexpr uint64_t kMsPerSecond = 1000;
constexpr long kNsPerMs = 1'000'000;
constexpr long kNsPerSecond = 1'000'000'000;

// Switches in other threads read it, too.
std::atomic<uint64_t> passed_ms = 0;
std::atomic<time_t> wall_time = 1'000'000'000;

}  // namespace

void pass_ms(uint64_t ms) { passed_ms += ms; }

void pass_wall_seconds(uint32_t seconds) { wall_time += static_cast<time_t>(seconds); }

// The program's definitions win over the C library's, for all libraries.
extern "C" time_t time(time_t *told) noexcept {
  const time_t now = wall_time;
  if (told != nullptr) {
    *told = now;
  }
  return now;
}

extern "C" int clock_gettime(clockid_t clock, timespec *time) noexcept {
  const auto result = static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
  if (result == 0 && (clock == CLOCK_MONOTONIC || clock == CLOCK_MONOTONIC_COARSE)) {
    const uint64_t passed = passed_ms;
    time->tv_sec += static_cast<time_t>(passed / kMsPerSecond);
    time->tv_nsec += static_cast<long>(passed % kMsPerSecond) * kNsPerMs;
    if (time->tv_nsec >= kNsPerSecond) {
      time->tv_nsec -= kNsPerSecond;
      ++time->tv_sec;
    }
  }
  return result;
}
