#include "server/event_queue.h"

#include <utility>

#include "server/event_packet.h"

namespace stpswitch {

// Of events of trees the latest says all.
EventQueue::Key EventQueue::key_of(const SwitchEvent &event) {
  if (const auto *const inconsistency = std::get_if<InconsistencyEvent>(&event)) {
    return {class_of(event), inconsistency->tree, inconsistency->if_index};
  }
  return {class_of(event), std::get<TreeEvent>(event).tree, 0};
}

void EventQueue::push(const SwitchEvent &event) {
  const Key key = key_of(event);
  if (waiting_.size() >= kRoom) {
    const auto latest = latest_of_.find(key);
    if (latest != latest_of_.end()) {
      waiting_[static_cast<size_t>(latest->second - popped_)] = event;
      ++replaced_;
      return;
    }
  }
  waiting_.push_back(event);
  latest_of_[key] = popped_ + waiting_.size() - 1;
}

void EventQueue::pop() {
  const auto latest = latest_of_.find(key_of(waiting_.front()));
  if (latest->second == popped_) {
    latest_of_.erase(latest);
  }
  waiting_.pop_front();
  ++popped_;
}

uint64_t EventQueue::take_replaced() { return std::exchange(replaced_, 0); }

}  // namespace stpswitch
