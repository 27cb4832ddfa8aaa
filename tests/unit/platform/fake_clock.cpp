#include "fake_clock.h"

#include <atomic>
#include <ctime>
#include <optional>

namespace {

constexpr uint64_t kNsPerSecond = 1'000'000'000;
constexpr uint64_t kNsPerMs = 1'000'000;

// The switch's thread reads them, too.
std::atomic<bool> stopped = false;
std::atomic<uint64_t> stopped_at_ns = 0;
std::atomic<uint64_t> coarse_lag_ns = 0;

std::optional<timespec> fixed_date;

timespec time_of(uint64_t ns) {
  return {static_cast<time_t>(ns / kNsPerSecond), static_cast<long>(ns % kNsPerSecond)};
}

}  // namespace

extern "C" {

int __real_clock_gettime(clockid_t clock, timespec *time);
int __real_clock_getres(clockid_t clock, timespec *resolution);

int __wrap_clock_gettime(clockid_t clock, timespec *time) {
  if (clock == CLOCK_REALTIME_COARSE && fixed_date) {
    *time = *fixed_date;
    return 0;
  }
  if (!stopped || (clock != CLOCK_MONOTONIC && clock != CLOCK_MONOTONIC_COARSE)) {
    return __real_clock_gettime(clock, time);
  }
  *time = time_of(stopped_at_ns - (clock == CLOCK_MONOTONIC_COARSE ? coarse_lag_ns.load() : 0));
  return 0;
}

int __wrap_clock_getres(clockid_t clock, timespec *resolution) {
  if (!stopped || clock != CLOCK_MONOTONIC_COARSE) {
    return __real_clock_getres(clock, resolution);
  }
  *resolution = time_of(StoppedClock::kTickNs);
  return 0;
}
}

StoppedClock::StoppedClock() {
  timespec now;
  __real_clock_gettime(CLOCK_MONOTONIC, &now);
  stopped_at_ns = static_cast<uint64_t>(now.tv_sec) * kNsPerSecond + static_cast<uint64_t>(now.tv_nsec);
  coarse_lag_ns = 0;
  stopped = true;
}

StoppedClock::~StoppedClock() { stopped = false; }

void StoppedClock::pass_ns(uint64_t ns) { stopped_at_ns += ns; }

void StoppedClock::pass_ms(uint64_t ms) { pass_ns(ms * kNsPerMs); }

void StoppedClock::set_ns(uint64_t ns) { stopped_at_ns = ns; }

uint64_t StoppedClock::now_ns() const { return stopped_at_ns; }

void StoppedClock::set_lag_ns(uint64_t ns) { coarse_lag_ns = ns; }

FixedDate::FixedDate(const timespec &date) { fixed_date = date; }

FixedDate::~FixedDate() { fixed_date.reset(); }
