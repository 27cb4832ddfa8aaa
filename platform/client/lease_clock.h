// Whether a lease of the image (platform/wire/image.h) holds.
//
// Every question needs to know, so it is judged by the clock that costs least: the one that the kernel's tick
// moves, a quarter of the price of the exact one. It lags, by about a tick, so what counts is the latest time
// that it can be.
#pragma once

#include <cstdint>
#include <ctime>

#include "deadline.h"
#include "wire/image.h"

namespace stpplatform {

class LeaseClock {
 public:
  // The most ticks by which the clock may lag: one, and what a late tick adds to it.
  static constexpr uint64_t kMaxLagTicks = 4;

  constexpr LeaseClock() = default;

  // Learns how long a tick is.
  void read_resolution() {
    timespec tick;
    clock_getres(CLOCK_MONOTONIC_COARSE, &tick);
    max_lag_ns_ = kMaxLagTicks * ns_of(tick);
  }

  // False as well for a lease that ends later than any that this machine's clock gives.
  bool is_before(uint64_t lease_end) const {
    timespec coarse;
    clock_gettime(CLOCK_MONOTONIC_COARSE, &coarse);
    const uint64_t now = ns_of(coarse) + max_lag_ns_;
    return now < lease_end && lease_end <= now + wire::kLeaseNs;
  }

 private:
  uint64_t max_lag_ns_ = 0;
};

}  // namespace stpplatform
