#include "sources/linux_bridge/forward_transitions.h"

namespace stpswitch {

void ForwardTransitions::add_to(LinkTable *table, const Ask &ask) {
  if (!runs_kernel_stp(table->bridge)) {
    known_.clear();
    return;
  }
  std::erase_if(known_, [table](const auto &entry) { return !table->ports.contains(entry.first); });
  for (auto &[if_index, port] : table->ports) {
    const std::optional<PortState> state = port.bridge_port->state;
    auto known = known_.find(if_index);
    if (known == known_.end() || known->second.state != state) {
      known = known_.insert_or_assign(if_index, Known{state, ask(if_index)}).first;
    }
    port.forward_transitions = known->second.count;
  }
}

}  // namespace stpswitch
