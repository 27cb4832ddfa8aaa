// What only the order of the kernel's messages tells about a bridge.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <set>

#include "sources/linux_bridge/link_table.h"
#include "sources/linux_bridge/root_guard.h"
#include "sources/linux_bridge/topology_changes.h"

namespace stpswitch {

class BridgeHistory {
 public:
  using Time = std::chrono::steady_clock::time_point;

  struct Facts {
    std::set<uint32_t> root_inconsistent;  // by interface index
    uint32_t topology_changes = 0;
    std::optional<Time> last_topology_change;
  };

  // A port, as a notification tells of it. They are to be seen one by one, and in their order.
  void see_port(const Link &port, Time now);

  // The bridge itself, of whose own changes there are no notifications.
  void see_bridge(const Link &bridge, Time now);

  // All ports, when no notification tells anything newer. What was missed shows here.
  void see_ports(const LinkTable &table, Time now);

  // `max_age` is the bridge's, of information from others.
  Facts facts(std::chrono::milliseconds max_age, Time now) const;

 private:
  void forget_ports_but(const LinkTable &table);

  uint32_t bridge_ = 0;                // the interface index
  std::optional<uint16_t> root_port_;  // the kernel's number
  std::set<uint32_t> ports_;           // the interface indexes
  RootGuardWatch root_guard_;
  TopologyChanges topology_changes_;
};

}  // namespace stpswitch
