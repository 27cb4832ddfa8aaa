// How long a switch that was found dead or silent is left alone: 100 ms at first, twice as long after every
// further failure, 5 s at most.
#pragma once

#include <algorithm>
#include <cstdint>

namespace stpplatform {

class Backoff {
 public:
  static constexpr uint64_t kFirstMs = 100;
  static constexpr uint64_t kLongestMs = 5000;

  // How long, from the latest failure on.
  uint64_t wait_ms() const { return wait_ms_; }

  bool allows(uint64_t now_ms) const { return now_ms >= retry_at_ms_; }

  void failed(uint64_t now_ms) {
    wait_ms_ = wait_ms_ == 0 ? kFirstMs : std::min(2 * wait_ms_, kLongestMs);
    retry_at_ms_ = now_ms + wait_ms_;
  }

  void reset() { *this = Backoff(); }

 private:
  uint64_t wait_ms_ = 0;
  uint64_t retry_at_ms_ = 0;
};

}  // namespace stpplatform
