#include "sources/linux_bridge/topology_changes.h"

namespace stpswitch {

void TopologyChanges::see_flag(bool is_up, Time now) {
  if (flag_ == false && is_up) {
    add(now);
  }
  flag_ = is_up;
}

void TopologyChanges::see_port(uint32_t if_index, PortState state, Time now) {
  const bool is_forwarding = state == PortState::kForwarding;
  const auto [known, is_new] = is_forwarding_.emplace(if_index, is_forwarding);
  if (!is_new && known->second != is_forwarding) {
    known->second = is_forwarding;
    if (flag_ == true) {
      add(now);
    }
  }
}

void TopologyChanges::add(Time now) {
  ++count_;
  last_ = now;
}

}  // namespace stpswitch
