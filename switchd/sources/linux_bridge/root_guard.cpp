#include "sources/linux_bridge/root_guard.h"

namespace stpswitch {
namespace {

bool has_ended(const BridgePortAttributes &port) {
  return port.root_block == false || port.state == PortState::kDisabled ||
         port.state == PortState::kLearning || port.state == PortState::kForwarding;
}

bool falls_back(const BridgePortAttributes &port) {
  return port.root_block == true && port.state == PortState::kListening &&
         port.message_age_timer.value_or(0) > 0;
}

}  // namespace

void RootGuardWatch::see(uint32_t if_index, const BridgePortAttributes &port, Time now) {
  if (has_ended(port)) {
    last_fall_.erase(if_index);
  } else if (falls_back(port)) {
    last_fall_.insert_or_assign(if_index, now);
  }
}

std::set<uint32_t> RootGuardWatch::inconsistent(std::chrono::milliseconds max_age, Time now) const {
  std::set<uint32_t> ports;
  for (const auto &[if_index, time] : last_fall_) {
    if (now - time <= max_age) {
      ports.insert(if_index);
    }
  }
  return ports;
}

}  // namespace stpswitch
