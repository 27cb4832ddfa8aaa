#include "server/tree_event_limiter.h"

#include <algorithm>

namespace stpswitch {

TreeEventLimiter::TreeEventLimiter(EventLoop *loop,
                                   std::function<void(const std::vector<SwitchEvent> &)> tell)
    : tell_(std::move(tell)), due_(loop->make_event<&TreeEventLimiter::tell_waiting>(-1, 0, this)) {}

void TreeEventLimiter::take(const std::vector<TreeEvent> &events) {
  const Clock::time_point now = Clock::now();
  std::erase_if(limits_,
                [now](const auto &limit) { return !limit.second.waiting && limit.second.until <= now; });
  std::vector<SwitchEvent> told;
  for (const TreeEvent &event : events) {
    if (event.kind == TreeEventKind::kTrees) {
      told.emplace_back(event);
      continue;
    }
    const auto [limit, is_first] = limits_.try_emplace({event.tree, event.kind}, Limit{now + kPause});
    if (is_first) {
      told.emplace_back(event);
    } else {
      limit->second.waiting = event;
    }
  }
  wait_for_first(now);
  if (!told.empty()) {
    tell_(told);
  }
}

void TreeEventLimiter::tell_waiting() {
  const Clock::time_point now = Clock::now();
  std::vector<SwitchEvent> told;
  for (auto &[key, limit] : limits_) {
    if (limit.waiting && limit.until <= now) {
      told.emplace_back(*limit.waiting);
      limit = {now + kPause};
    }
  }
  wait_for_first(now);
  if (!told.empty()) {
    tell_(told);
  }
}

void TreeEventLimiter::wait_for_first(Clock::time_point now) {
  std::optional<Clock::time_point> first;
  for (const auto &[key, limit] : limits_) {
    if (limit.waiting) {
      first = std::min(first.value_or(limit.until), limit.until);
    }
  }
  if (first) {
    wait_for(due_,
             std::chrono::ceil<std::chrono::milliseconds>(std::max(*first - now, Clock::duration::zero())));
  }
}

}  // namespace stpswitch
