// The library's monotonic clocks, stopped: time passes only when the test says so. Waiting for a socket still
// takes real time, up to the deadline that the clock tells.
#pragma once

#include <cstdint>
#include <ctime>

class StoppedClock {
 public:
  // How long a tick of the coarse clock is.
  static constexpr uint64_t kTickNs = 1'000'000;

  StoppedClock();
  ~StoppedClock();
  StoppedClock(const StoppedClock &) = delete;
  StoppedClock &operator=(const StoppedClock &) = delete;

  void pass_ns(uint64_t ns);
  void pass_ms(uint64_t ms);
  void set_ns(uint64_t ns);
  uint64_t now_ns() const;

  // From now on the coarse clock lags so far behind.
  void set_lag_ns(uint64_t ns);
};

// While one exists, the library's wall clock shows this time.
class FixedDate {
 public:
  explicit FixedDate(const timespec &date);
  ~FixedDate();
  FixedDate(const FixedDate &) = delete;
  FixedDate &operator=(const FixedDate &) = delete;
};
