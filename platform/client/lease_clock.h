// Whether a lease of the image (platform/wire/image.h) holds.
//
// Every question needs to know, so it is judged by the clock that costs least: the one that the kernel's tick
// moves, a quarter of the price of the exact one. It lags, by about a tick, so what counts is the latest time
// that it can be. Where the lease does not hold then, the exact clock has the last word: a processor that its
// machine is short of misses ticks, and a lease that was just given would seem to come from the future.
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

  // For how many looks of a search one reading is good: they take less than reading it again does.
  static constexpr int kLooksOfAReading = 32;

  constexpr LeaseClock() = default;

  // Learns how long a tick is.
  void read_resolution() {
    timespec tick;
    clock_getres(CLOCK_MONOTONIC_COARSE, &tick);
    max_lag_ns_ = kMaxLagTicks * ns_of(tick);
  }

  // An SNMP request begins, or there is none any more. What was read before it says nothing about it.
  void begin_request() {
    is_in_request_ = true;
    looks_left_ = 0;
  }
  void end_request() { is_in_request_ = false; }

  // False as well for a lease that ends later than any that this machine's clock gives.
  bool is_before(uint64_t lease_end) {
    timespec coarse;
    clock_gettime(CLOCK_MONOTONIC_COARSE, &coarse);
    const bool holds =
        holds_at(ns_of(coarse) + max_lag_ns_, lease_end) || holds_at(monotonic_ns(), lease_end);
    looks_left_ = holds && is_in_request_ ? kLooksOfAReading : 0;
    latest_lease_end_ = lease_end;
    return holds;
  }

  // The same, or it was so a moment ago, in the same request.
  bool was_before(uint64_t lease_end) {
    if (looks_left_ == 0 || latest_lease_end_ != lease_end) {
      return is_before(lease_end);
    }
    --looks_left_;
    return true;
  }

 private:
  static bool holds_at(uint64_t now, uint64_t lease_end) {
    return now < lease_end && lease_end <= now + wire::kLeaseNs;
  }

  uint64_t max_lag_ns_ = 0;
  uint64_t latest_lease_end_ = 0;
  int looks_left_ = 0;
  bool is_in_request_ = false;
};

}  // namespace stpplatform
