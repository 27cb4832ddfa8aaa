#include "server/throttled_log.h"

#include <utility>

#include "base/log.h"

namespace stpswitch {

ThrottledLog::ThrottledLog(EventLoop *loop, std::string subject, std::chrono::milliseconds period)
    : subject_(std::move(subject)),
      period_(period),
      period_over_(loop->make_event<&ThrottledLog::end_period>(-1, 0, this)) {}

ThrottledLog::~ThrottledLog() { end_period(); }

void ThrottledLog::log(std::string_view line) {
  if (!is_counting_) {
    is_counting_ = true;
    wait_for(period_over_, period_);
  }
  if (logged_ < kLines) {
    ++logged_;
    log_line(subject_ + ": " + std::string(line));
  } else {
    ++left_out_;
  }
}

void ThrottledLog::end_period() {
  if (left_out_ != 0) {
    log_line(subject_ + ": lines about clients that were left out: " + std::to_string(left_out_));
  }
  is_counting_ = false;
  logged_ = 0;
  left_out_ = 0;
}

}  // namespace stpswitch
