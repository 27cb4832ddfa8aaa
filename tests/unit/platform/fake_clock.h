// The library's monotonic clock, stopped: time passes only when the test says so. Waiting for a socket still
// takes real time, up to the deadline that the clock tells.
#pragma once

#include <cstdint>

class StoppedClock {
 public:
  StoppedClock();
  ~StoppedClock();
  StoppedClock(const StoppedClock &) = delete;
  StoppedClock &operator=(const StoppedClock &) = delete;

  void pass_ms(uint64_t ms);
};
