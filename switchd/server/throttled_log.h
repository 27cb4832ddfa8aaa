// Lines about what clients do: so many in each period get into the log, and how many were left out.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/event_loop.h"

namespace stpswitch {

class ThrottledLog {
 public:
  static constexpr uint32_t kLines = 10;
  static constexpr std::chrono::milliseconds kPeriod{60'000};

  // `subject` begins every line, and the one that tells how many were left out, at the end of a period.
  ThrottledLog(EventLoop *loop, std::string subject, std::chrono::milliseconds period = kPeriod);
  ~ThrottledLog();
  ThrottledLog(const ThrottledLog &) = delete;
  ThrottledLog &operator=(const ThrottledLog &) = delete;

  void log(std::string_view line);

 private:
  void end_period();

  std::string subject_;
  std::chrono::milliseconds period_;
  Event period_over_;
  bool is_counting_ = false;  // a period has begun
  uint32_t logged_ = 0;
  uint64_t left_out_ = 0;
};

}  // namespace stpswitch
