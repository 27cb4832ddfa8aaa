#include "publisher/port_in_trees.h"

#include <optional>

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

// Roles and states have the same range of numbers.
constexpr uint8_t kSmallest = 1;
constexpr uint8_t kLargest = 5;
static_assert(static_cast<uint32_t>(PortRole::kBackup) == kLargest &&
              static_cast<uint32_t>(PortState::kForwarding) == kLargest);

template <class Value>
std::optional<Value> value_of(uint8_t number) {
  return number >= kSmallest && number <= kLargest ? std::optional(static_cast<Value>(number)) : std::nullopt;
}

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

// The standard's objects count states from 1, the spanning-tree process from 0.
PortInTrees::States::States() {
  for (uint8_t role = 0; role < kValues; ++role) {
    for (uint8_t stated = 0; stated < kValues; ++stated) {
      for (const bool is_blocked : {false, true}) {
        const auto state = port_state(value_of<PortRole>(role), value_of<PortState>(stated), is_blocked);
        states_[place_of(role, stated, is_blocked)] =
            state ? static_cast<uint8_t>(static_cast<uint32_t>(*state) - 1) : wire::kUnknown;
      }
    }
  }
}

const PortInTrees::States PortInTrees::states_;

}  // namespace stpswitch
