// Finds the ports that the kernel's root guard ("root_block") keeps from forwarding.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <set>

#include "sources/linux_bridge/link_message.h"

namespace stpswitch {

// The kernel has no word for it. What it does is this: each time such a port hears of a better root, it goes
// back to listening, which is notified while the message age timer of what was heard runs; then the port
// stays listening, or blocks. A port that listens because it is on its way to forwarding has no such timer:
// it is a designated port, which has heard of nothing better.
//
// So it lasts while that comes again and again. It ends when the port gets as far as learning, is disabled or
// not guarded any more, or hears nothing for the maximum age of information.
class RootGuardWatch {
 public:
  using Time = std::chrono::steady_clock::time_point;

  // What the kernel told of a port.
  void see(uint32_t if_index, const BridgePortAttributes &port, Time now);

  void forget(uint32_t if_index) { last_fall_.erase(if_index); }

  // The interface indexes of the ports that are root-inconsistent.
  std::set<uint32_t> inconsistent(std::chrono::milliseconds max_age, Time now) const;

 private:
  std::map<uint32_t, Time> last_fall_;  // back to listening
};

}  // namespace stpswitch
