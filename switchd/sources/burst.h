// Makes one state of a burst of changes.
#pragma once

#include <chrono>
#include <functional>

#include "base/event_loop.h"

namespace stpswitch {

class Burst {
 public:
  // How long a burst is gathered from its first change on.
  static constexpr std::chrono::milliseconds kLength{15};

  // `ended` is called on the loop, once for each burst, and may begin the next one.
  Burst(EventLoop *loop, std::function<void()> ended)
      : ended_(std::move(ended)), timer_(loop->make_event<&Burst::end>(-1, 0, this)) {}
  Burst(const Burst &) = delete;
  Burst &operator=(const Burst &) = delete;

  // Something has changed.
  void add() {
    if (!is_open_) {
      is_open_ = true;
      wait_for(timer_, kLength);
    }
  }

 private:
  void end() {
    is_open_ = false;
    ended_();
  }

  bool is_open_ = false;
  std::function<void()> ended_;
  Event timer_;
};

}  // namespace stpswitch
