// How often a tree's events are told.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "base/event_loop.h"
#include "model/events.h"

namespace stpswitch {

// Of each kind and tree one a second at most (RFC 4188 leaves it to whoever tells). What comes sooner waits
// for its second, and only the latest of it: a storm ends with what it has come to. That there are other
// trees is told at once.
class TreeEventLimiter {
 public:
  static constexpr std::chrono::milliseconds kPause{1000};

  // The loop must outlive it.
  TreeEventLimiter(EventLoop *loop, std::function<void(const std::vector<SwitchEvent> &)> tell);
  TreeEventLimiter(const TreeEventLimiter &) = delete;
  TreeEventLimiter &operator=(const TreeEventLimiter &) = delete;

  void take(const std::vector<TreeEvent> &events);

 private:
  using Clock = std::chrono::steady_clock;
  struct Limit {
    Clock::time_point until;
    std::optional<TreeEvent> waiting = std::nullopt;
  };

  void tell_waiting();
  void wait_for_first(Clock::time_point now);

  std::function<void(const std::vector<SwitchEvent> &)> tell_;
  std::map<std::pair<uint32_t, TreeEventKind>, Limit> limits_;
  Event due_;
};

}  // namespace stpswitch
