// Counts the topology changes of a bridge, which the kernel does not.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>

#include "model/observed.h"

namespace stpswitch {

// A change is a rise of the bridge's flag, or, while the flag is up, a port that begins or stops forwarding.
class TopologyChanges {
 public:
  using Time = std::chrono::steady_clock::time_point;

  // What was seen first is no change.
  void see_flag(bool is_up, Time now);
  void see_port(uint32_t if_index, PortState state, Time now);

  // What is seen next of them is seen first.
  void forget_flag() { flag_.reset(); }
  void forget_port(uint32_t if_index) { is_forwarding_.erase(if_index); }

  uint32_t count() const { return count_; }
  std::optional<Time> last() const { return last_; }

 private:
  void add(Time now);

  std::optional<bool> flag_;
  std::map<uint32_t, bool> is_forwarding_;  // by interface index
  uint32_t count_ = 0;
  std::optional<Time> last_;
};

}  // namespace stpswitch
