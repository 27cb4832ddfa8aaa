// What the spanning tree of a switch, and its links, have come to: plain data. All of it may be unknown, and
// what is unknown is nobody's to tell.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>

#include "model/bridge_id.h"
#include "model/configured.h"
#include "model/per_tree.h"
#include "model/tree_set.h"
#include "platform/stp_protocol.h"

namespace stpswitch {

enum class PortRole : uint32_t {
  kDisabled = STP_ROLE_DISABLED,
  kRoot = STP_ROLE_ROOT,
  kDesignated = STP_ROLE_DESIGNATED,
  kAlternate = STP_ROLE_ALTERNATE,
  kBackup = STP_ROLE_BACKUP
};

// The numbers of dot1dStpPortState (RFC 4188). What IEEE 802.1D-2004 calls discarding is blocking here.
enum class PortState : uint32_t { kDisabled = 1, kBlocking, kListening, kLearning, kForwarding };

// Why spanning tree keeps a port of a tree from forwarding although the tree would have it forward.
enum class Inconsistency {
  kRoot,  // a better root was heard of, against root guard
  kLoop,  // nothing was heard any more, against loop guard
  kPvid,  // the neighbour's port VLAN identifier is another one
  kType   // the neighbour's port is not of the same type
};

// Where the switch stands in the CIST (IEEE 802.1Q clause 13).
struct MstCist {
  std::optional<uint32_t> remaining_hops;
  std::optional<uint32_t> regional_root_priority;  // with the address, the Regional Root Identifier
  std::optional<MacAddress> regional_root_mac;
  std::optional<uint32_t> internal_root_path_cost;

  bool operator==(const MstCist &) const = default;
};

// What a tree's root says of itself.
struct RootInformation {
  std::optional<BridgeId> root_id;
  Timers timers_in_force;

  bool operator==(const RootInformation &) const = default;
};

// Where the switch stands in one spanning tree. Much of it follows from the rest where it is not stated:
// tree_values.h.
struct ObservedTree : RootInformation {
  std::optional<BridgeId> bridge_id;  // the switch's own
  std::optional<uint32_t> root_cost;
  std::optional<uint32_t> root_port;         // its bridge port number, 0 at the root
  std::optional<uint32_t> topology_changes;  // since the switch, or whoever counts them, began
  std::optional<std::chrono::steady_clock::time_point> last_topology_change;

  bool operator==(const ObservedTree &) const = default;
};

// The best that is known of the segment that a port attaches to (IEEE 802.1D clause 17.19.21).
struct Designated {
  std::optional<BridgeId> root;
  std::optional<BridgeId> bridge;
  std::optional<uint32_t> cost;
  std::optional<uint32_t> port;  // a port identifier of 16 bits

  bool operator==(const Designated &) const = default;
};

// What ports and port-channels have in common.
struct ObservedInterface {
  std::optional<bool> link_up;  // none, for a port-channel: up while a member of it has a link
  std::optional<bool> edge;
  std::optional<bool> boundary;               // of the MST region
  std::optional<bool> peer;                   // the neighbour takes part in spanning tree
  std::optional<bool> dispute;                // the neighbour does not hear what is sent to it
  std::optional<bool> pre_standard_neighbor;  // equipment from before the standard was heard
  // Whether or not such trees run here.
  PerTree<PortRole> role;  // while there is a link
  PerTree<PortState> state;
  std::map<Inconsistency, TreeSet> inconsistencies;
  Designated designated;  // in its trees in which it is neither designated nor disabled
  std::optional<uint32_t> forward_transitions;

  bool operator==(const ObservedInterface &) const = default;
};

}  // namespace stpswitch
