// Where a switch stands in a spanning tree, and what its ports do there: what is stated, or else what follows
// from the rest by IEEE 802.1D clause 17. What cannot be told is unset.
#pragma once

#include <cstdint>
#include <optional>

#include "model/derived.h"
#include "model/observed.h"
#include "model/switch_state.h"

namespace stpswitch {

// What the roles of a tree's ports tell of its root. Each port is added once, in their order.
class RootSearch {
 public:
  void add(std::optional<PortRole> role, const BridgePort &port);

  // The port through which the root is reached; null where there is none, or none is known of.
  const BridgePort *port() const { return port_; }

  // Its bridge port number; 0 where the bridge is the root, none while a role is unknown that might be a root
  // port's.
  std::optional<uint32_t> number() const;

 private:
  const BridgePort *port_ = nullptr;
  bool all_are_known_ = true;
};

struct TreeValues {
  TreeSettings settings;
  ObservedTree observed;
};
TreeValues tree_values(const SwitchState &state, const RootSearch &root, uint32_t tree);

// The state of a port with this role; `stated` is what its source says, `is_blocked` whether the port is
// inconsistent in the tree.
std::optional<PortState> port_state(std::optional<PortRole> role, std::optional<PortState> stated,
                                    bool is_blocked);

// Of 16 bits: four of priority, twelve of the port's number (IEEE 802.1D clause 9.2.7).
std::optional<uint32_t> port_id(const Interface &port);

// What a port with this role knows of its segment.
Designated designated_values(const ObservedTree &tree, std::optional<PortRole> role, const Interface &port);

// A segment's designated port is heard by itself alone, and one that is disabled hears nobody: what they know
// is what the bridge itself sends there.
constexpr bool hears_nobody(std::optional<PortRole> role) {
  return role == PortRole::kDesignated || role == PortRole::kDisabled;
}
Designated sent_values(const ObservedTree &tree, const Interface &port);

// All of what is sent is known: whoever hears nobody knows nothing else.
inline bool sends_all(const ObservedTree &tree, const Interface &port) {
  return tree.root_id && tree.bridge_id && tree.root_cost && (port.numbers.port_id || port.priority);
}

}  // namespace stpswitch
