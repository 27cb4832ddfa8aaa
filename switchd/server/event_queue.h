// Events that wait until a subscriber takes them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <tuple>

#include "model/events.h"

namespace stpswitch {

// First in, first out, as long as there is room. Where there is none, an event takes the place of the latest
// waiting one of its key, which is its class, tree and interface: what is lost is how a key came to its
// state, never the state that it came to. Only keys that do not wait yet make the queue longer then.
class EventQueue {
 public:
  static constexpr size_t kRoom = 1024;

  void push(const SwitchEvent &event);

  bool is_empty() const { return waiting_.empty(); }
  size_t size() const { return waiting_.size(); }
  const SwitchEvent &front() const { return waiting_.front(); }
  void pop();

  // How many events were replaced since the last call.
  uint64_t take_replaced();

 private:
  using Key = std::tuple<uint32_t, uint32_t, uint32_t>;
  static Key key_of(const SwitchEvent &event);

  std::deque<SwitchEvent> waiting_;
  uint64_t popped_ = 0;                // since ever
  std::map<Key, uint64_t> latest_of_;  // for each key that waits, how many events came before its latest
  uint64_t replaced_ = 0;
};

}  // namespace stpswitch
