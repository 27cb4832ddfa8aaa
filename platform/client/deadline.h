// The point in time at which a request gives up, and the clock that it is measured on.
#pragma once

#include <climits>
#include <cstdint>
#include <ctime>

namespace stpplatform {

inline constexpr uint64_t kNsPerMs = 1'000'000;
inline constexpr uint64_t kNsPerSecond = 1'000'000'000;

inline uint64_t ns_of(const timespec &time) {
  return static_cast<uint64_t>(time.tv_sec) * kNsPerSecond + static_cast<uint64_t>(time.tv_nsec);
}

inline uint64_t monotonic_ns() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return ns_of(now);
}

inline uint64_t monotonic_ms() { return monotonic_ns() / kNsPerMs; }

class Deadline {
 public:
  explicit Deadline(uint64_t ns) : end_(monotonic_ns() + ns) {}

  // What is left of it, as poll wants it; 0 when it has passed.
  int remaining_ms() const {
    const uint64_t now = monotonic_ns();
    const uint64_t ms = now >= end_ ? 0 : (end_ - now + kNsPerMs - 1) / kNsPerMs;
    return static_cast<int>(ms < INT_MAX ? ms : INT_MAX);
  }

 private:
  uint64_t end_;
};

}  // namespace stpplatform
