// What the kernel tells of one network interface ("link") in an rtnetlink message, of what matters to a
// bridge.
#pragma once

#include <linux/netlink.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "model/bridge_id.h"
#include "model/observed.h"
#include "model/vlan_set.h"

namespace stpswitch {

// Who runs the spanning tree of a bridge.
enum class StpState : uint32_t { kNobody = 0, kKernel = 1, kUserSpace = 2 };

// Of a bridge. Times are in ticks of the user interface (sysconf(_SC_CLK_TCK)).
struct BridgeAttributes {
  std::optional<StpState> stp_state;
  std::optional<uint16_t> priority;
  std::optional<BridgeId> bridge_id;
  std::optional<BridgeId> root_id;
  std::optional<uint32_t> root_path_cost;
  std::optional<uint16_t> root_port;
  std::optional<uint32_t> max_age;
  std::optional<uint32_t> hello_time;
  std::optional<uint32_t> forward_delay;
  std::optional<bool> topology_change;
  std::optional<bool> topology_change_detected;
  std::optional<bool> vlan_filtering;

  bool operator==(const BridgeAttributes &) const = default;
};

// What a bridge would set for all others as the root. No message tells it (link_query.h).
struct OwnTimers {
  // In the kernel's own ticks.
  uint32_t max_age;
  uint32_t hello_time;
  // In ticks of the user interface.
  uint32_t forward_delay;

  bool operator==(const OwnTimers &) const = default;
};

// Of a port of a bridge.
struct BridgePortAttributes {
  std::optional<uint16_t> number;
  std::optional<uint16_t> port_id;
  std::optional<PortState> state;
  std::optional<uint16_t> priority;  // of six bits
  std::optional<uint32_t> path_cost;
  std::optional<bool> root_block;
  std::optional<BridgeId> designated_root;
  std::optional<BridgeId> designated_bridge;
  std::optional<uint16_t> designated_cost;  // the kernel cuts it off after 16 bits
  std::optional<uint16_t> designated_port;
  std::optional<uint64_t> message_age_timer;  // ticks left; 0: it does not run, for nothing was heard

  bool operator==(const BridgePortAttributes &) const = default;
};

struct Link {
  uint32_t if_index = 0;
  bool has_link = false;  // it is switched on, and has a carrier
  std::optional<std::string> name;
  std::optional<std::string> kind;  // what it is: "bridge", "bond"
  std::optional<uint32_t> master;   // the interface that it is a port or member of
  std::optional<BridgeAttributes> bridge;
  std::optional<BridgePortAttributes> bridge_port;
  std::optional<bool> mii_link;                 // as the bond sees that it is a member of
  std::optional<VlanSet> vlans;                 // of a bridge port
  std::optional<uint64_t> forward_transitions;  // of a bridge port

  bool operator==(const Link &) const = default;
};

struct LinkMessage {
  bool is_of_bridge;  // it tells of the link as a port of a bridge: it may say nothing else, and "gone"
                      // means gone from that bridge
  bool is_gone;
  Link link;

  bool operator==(const LinkMessage &) const = default;
};

// The message in which the kernel told something about a link; none where it is about something else, or
// broken. An attribute that does not have its kind's length is left out. The message lies within memory of
// its stated length, and is aligned as netlink aligns messages.
std::optional<LinkMessage> parse_link_message(const nlmsghdr &message);

}  // namespace stpswitch
