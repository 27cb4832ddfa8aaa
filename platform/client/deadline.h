// The point in time at which a request gives up, and the clock that it is measured on.
#pragma once

#include <climits>
#include <cstdint>
#include <ctime>

namespace stpplatform {

inline uint64_t monotonic_ms() {
  constexpr uint64_t kMsPerSecond = 1000;
  constexpr uint64_t kNsPerMs = 1000000;
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<uint64_t>(now.tv_sec) * kMsPerSecond + static_cast<uint64_t>(now.tv_nsec) / kNsPerMs;
}

class Deadline {
 public:
  explicit Deadline(uint32_t ms) : end_(monotonic_ms() + ms) {}

  // What is left of it, as poll wants it; 0 when it has passed.
  int remaining_ms() const {
    const uint64_t now = monotonic_ms();
    return now >= end_ ? 0 : static_cast<int>(end_ - now < INT_MAX ? end_ - now : INT_MAX);
  }

 private:
  uint64_t end_;
};

}  // namespace stpplatform
