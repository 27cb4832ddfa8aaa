// How often the ports of a bridge began to forward, asked for no more often than it may have changed.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>

#include "sources/linux_bridge/link_table.h"

namespace stpswitch {

// The kernel tells it along with what it counted of each VLAN of the port, which may be much. So a port is
// asked for when it is new, when a notification has told of it since, and when it is in another state than it
// was then. What the kernel did not tell is not asked for again sooner.
class ForwardTransitions {
 public:
  // Asks the kernel for those of a port; none where it does not tell them.
  using Ask = std::function<std::optional<uint64_t>(uint32_t if_index)>;

  // A notification told of this interface, whatever it is.
  void see_notification(uint32_t if_index) { known_.erase(if_index); }

  // Notifications were lost: any port may have changed.
  void see_loss() { known_.clear(); }

  // Puts them into the table of a bridge whose spanning tree the kernel runs: it counts them for no other.
  void add_to(LinkTable *table, const Ask &ask);

 private:
  struct Known {
    std::optional<PortState> state;  // as it was when the port was asked for
    std::optional<uint64_t> count;
  };

  std::map<uint32_t, Known> known_;  // by interface index
};

}  // namespace stpswitch
