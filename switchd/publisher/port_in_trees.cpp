#include "publisher/port_in_trees.h"

#include "model/tree_values.h"
#include "publisher/image_values.h"

namespace stpswitch {
namespace {

namespace wire = stpplatform::wire;

// The first exception that has a tree counts: it is written last.
template <class Value, class Octets>
void fill_octets(const PerTree<Value> &stated, Octets *octets) {
  octets->fill(image_choice(stated.elsewhere));
  for (auto exception = stated.exceptions.rbegin(); exception != stated.exceptions.rend(); ++exception) {
    exception->second.for_each(
        [octets, value = static_cast<uint8_t>(exception->first)](uint32_t tree) { (*octets)[tree] = value; });
  }
}

template <class Value>
std::optional<Value> value_of(uint8_t octet) {
  return octet != wire::kUnknown ? std::optional(static_cast<Value>(octet)) : std::nullopt;
}

static_assert(static_cast<uint32_t>(PortState::kDisabled) == STP_PORT_STATE_DISABLED + 1 &&
              static_cast<uint32_t>(PortState::kForwarding) == STP_PORT_STATE_FORWARDING + 1);

}  // namespace

PortInTrees::PortInTrees(const Switch &the_switch, uint32_t if_index) {
  const BridgePort &port = the_switch.bridge_ports().at(if_index);
  fill_octets(port.interface->role, &roles_);
  if (port.link_up == false) {
    for (uint8_t &role : roles_) {
      role = role != wire::kUnknown ? static_cast<uint8_t>(PortRole::kDisabled) : role;
    }
  }
  fill_octets(port.interface->state, &stated_states_);
  for (const auto &[kind, trees] : port.interface->inconsistencies) {
    blocked_.insert(trees);
  }
  const Inconsistencies &reported = the_switch.inconsistencies();
  add_inconsistencies(reported.pvid_and_type.by_kind()[0], if_index, wire::kPvidInconsistent);
  add_inconsistencies(reported.pvid_and_type.by_kind()[1], if_index, wire::kTypeInconsistent);
  add_inconsistencies(reported.loop.tree_ports(), if_index, wire::kLoopInconsistent);
  add_inconsistencies(reported.root.tree_ports(), if_index, wire::kRootInconsistent);
}

void PortInTrees::add_inconsistencies(const TreePorts &ports, uint32_t if_index, uint8_t kind) {
  const auto found = ports.by_port().find(if_index);
  if (found != ports.by_port().end()) {
    found->second.for_each([this, kind](uint32_t tree) { inconsistencies_[tree] |= kind; });
  }
}

std::optional<PortRole> PortInTrees::role(uint32_t tree) const { return value_of<PortRole>(roles_[tree]); }

// The standard's objects count from 1, the spanning-tree process from 0.
uint8_t PortInTrees::state_octet(uint32_t tree) const {
  const std::optional<PortState> state =
      port_state(role(tree), value_of<PortState>(stated_states_[tree]), blocked_.contains(tree));
  return state ? static_cast<uint8_t>(static_cast<uint32_t>(*state) - 1) : wire::kUnknown;
}

}  // namespace stpswitch
