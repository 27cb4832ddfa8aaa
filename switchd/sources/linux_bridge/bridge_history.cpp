#include "sources/linux_bridge/bridge_history.h"

namespace stpswitch {

void BridgeHistory::see_port(const Link &port, Time now) {
  if (!port.bridge_port) {
    return;
  }
  ports_.insert(port.if_index);
  // Where root guard is switched on at the root port, the kernel acts with the next hello.
  if (port.bridge_port->number == root_port_) {
    root_guard_.forget(port.if_index);
  } else {
    root_guard_.see(port.if_index, *port.bridge_port, now);
  }
  if (port.bridge_port->state) {
    topology_changes_.see_port(port.if_index, *port.bridge_port->state, now);
  }
}

void BridgeHistory::see_bridge(const Link &bridge, Time now) {
  const BridgeAttributes &told = *bridge.bridge;
  if (bridge_ != bridge.if_index || told.stp_state != StpState::kKernel) {
    topology_changes_.forget_flag();
    bridge_ = bridge.if_index;
  }
  root_port_ = told.root_port;
  if (told.stp_state == StpState::kKernel && told.topology_change && told.topology_change_detected) {
    topology_changes_.see_flag(*told.topology_change || *told.topology_change_detected, now);
  }
}

void BridgeHistory::see_ports(const LinkTable &table, Time now) {
  forget_ports_but(table);
  for (const auto &[if_index, port] : table.ports) {
    see_port(port, now);
  }
}

void BridgeHistory::forget_ports_but(const LinkTable &table) {
  for (auto port = ports_.begin(); port != ports_.end();) {
    if (table.ports.contains(*port)) {
      ++port;
      continue;
    }
    root_guard_.forget(*port);
    topology_changes_.forget_port(*port);
    port = ports_.erase(port);
  }
}

BridgeHistory::Facts BridgeHistory::facts(std::chrono::milliseconds max_age, Time now) const {
  return {root_guard_.inconsistent(max_age, now), topology_changes_.count(), topology_changes_.last()};
}

}  // namespace stpswitch
