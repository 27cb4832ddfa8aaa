// How long the switch may still be waited for.
//
// All questions of one SNMP request (PDU) share one deadline: a slow switch holds the agent no longer than
// that, whatever number of variables and rows the manager asks for. A question outside any request has a
// deadline of its own.
#pragma once

#include <algorithm>
#include <cstdint>

#include "deadline.h"
#include "platform/cmd.h"
#include "settings.h"

namespace stpplatform {

class WaitingTime {
 public:
  // An SNMP request begins, with all its time left; there is none any more.
  void begin_request() {
    is_in_request_ = true;
    left_ns_ = whole_ns();
  }
  void end_request() { is_in_request_ = false; }

  // A question begins, of the request or outside any.
  void begin_question() {
    if (!is_in_request_) {
      left_ns_ = whole_ns();
    }
  }

  // Calls `wait` with the deadline until which it may wait, and takes the time that it took off what is left:
  // all of it when it returns CMD_TIMEOUT. Where nothing is left, it is not called: CMD_TIMEOUT.
  template <class Wait>
  cmd_result spend(Wait wait) {
    if (left_ns_ == 0) {
      return CMD_TIMEOUT;
    }
    const uint64_t begun_ns = monotonic_ns();
    const cmd_result result = wait(Deadline(left_ns_));
    const uint64_t ended_ns = std::max(monotonic_ns(), begun_ns);
    const uint64_t taken_ns = result == CMD_TIMEOUT ? left_ns_ : ended_ns - begun_ns;
    left_ns_ -= std::min(taken_ns, left_ns_);
    return result;
  }

 private:
  static uint64_t whole_ns() { return settings().deadline_ms * kNsPerMs; }

  bool is_in_request_ = false;
  uint64_t left_ns_ = 0;
};

WaitingTime &waiting_time();

}  // namespace stpplatform
