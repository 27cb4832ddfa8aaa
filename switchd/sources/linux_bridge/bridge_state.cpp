#include "sources/linux_bridge/bridge_state.h"

#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "base/printable.h"
#include "model/numbering.h"

namespace stpswitch {
namespace {

namespace wire = stpplatform::wire;

// The kernel's port priorities have six bits; those of IEEE 802.1D clause 9.2.7 are the first octet of the
// port identifier, in which these are the upper bits.
constexpr unsigned kPriorityShift = 2;

constexpr uint64_t kHundredthsPerSecond = 100;
constexpr uint64_t kMillisecondsPerSecond = 1000;
constexpr uint32_t kDefaultVlan = 1;  // of what knows no VLANs

std::optional<uint32_t> hundredths_of(const std::optional<uint32_t> &ticks, uint32_t per_second) {
  if (!ticks) {
    return std::nullopt;
  }
  const uint64_t hundredths = *ticks * kHundredthsPerSecond / per_second;
  return hundredths <= std::numeric_limits<uint32_t>::max() ? std::optional(static_cast<uint32_t>(hundredths))
                                                            : std::nullopt;
}

// A counter of 32 bits begins anew at 0 after the highest value (RFC 2578 clause 7.1.6).
std::optional<uint32_t> counter32_of(const std::optional<uint64_t> &count) {
  return count ? std::optional(static_cast<uint32_t>(*count)) : std::nullopt;
}

// The kernel takes almost any octets for a name, and texts of a switch can be printed.
std::string name_of(const Link &link) {
  return link.name ? made_printable(*link.name, link.name->size()) : std::string();
}

// What the kernel's port `number` is called in the switch; 0 where there can be no such.
uint32_t bridge_port_number(const LinkTable &table, uint16_t number) {
  for (const auto &[if_index, port] : table.ports) {
    if (port.bridge_port->number == number) {
      return (is_port_channel(port) ? channel_numbers(number) : port_numbers(number)).bridge_port;
    }
  }
  return 0;
}

Timers own_timers_of(const std::optional<OwnTimers> &told, const TickRates &rates) {
  if (!told) {
    return {};
  }
  return {hundredths_of(told->max_age, rates.kernel), hundredths_of(told->hello_time, rates.kernel),
          hundredths_of(told->forward_delay, rates.user)};
}

Tree tree_of(const LinkTable &table, const BridgeHistory::Facts &history, const TickRates &rates) {
  const BridgeAttributes &bridge = *table.bridge.bridge;
  Tree tree;
  tree.settings.priority = bridge.priority;
  tree.settings.protocol_version = ProtocolVersion::kStp;
  ObservedTree &observed = tree.observed;
  observed.bridge_id = bridge.bridge_id;
  observed.root_id = bridge.root_id;
  observed.root_cost = bridge.root_path_cost;
  if (bridge.root_port) {
    const uint32_t root_port = bridge_port_number(table, *bridge.root_port);
    if (root_port != 0 || *bridge.root_port == 0) {
      observed.root_port = root_port;
    }
  }
  observed.timers_in_force = {hundredths_of(bridge.max_age, rates.user),
                              hundredths_of(bridge.hello_time, rates.user),
                              hundredths_of(bridge.forward_delay, rates.user)};
  tree.settings.timers =
      is_root(table.bridge) ? observed.timers_in_force : own_timers_of(table.own_timers, rates);
  observed.topology_changes = history.topology_changes;
  observed.last_topology_change = history.last_topology_change;
  return tree;
}

// IEEE 802.1D clause 17.3.1. A port without a link is disabled, whatever this says.
std::optional<PortRole> role_of(const BridgePortAttributes &port, const BridgeAttributes &bridge) {
  if (port.state == PortState::kDisabled) {
    return PortRole::kDisabled;
  }
  if (!port.number || !port.port_id || !port.designated_bridge || !port.designated_port ||
      !bridge.bridge_id || !bridge.root_port) {
    return std::nullopt;
  }
  if (*port.number == *bridge.root_port) {
    return PortRole::kRoot;
  }
  if (port.designated_bridge != bridge.bridge_id) {
    return PortRole::kAlternate;
  }
  return port.designated_port == port.port_id ? PortRole::kDesignated : PortRole::kBackup;
}

// The kernel tells 16 bits of it. The whole is known where it follows from the bridge's own root path cost,
// and where that is too low for any of its neighbours' to have more bits.
std::optional<uint32_t> designated_cost_of(const BridgePortAttributes &port, const BridgeAttributes &bridge,
                                           const std::optional<PortRole> &role) {
  constexpr uint32_t kHighestTold = std::numeric_limits<uint16_t>::max();
  if (!bridge.root_path_cost || *bridge.root_path_cost <= kHighestTold) {
    return port.designated_cost;
  }
  if (role == PortRole::kDesignated) {
    return bridge.root_path_cost;
  }
  if (role == PortRole::kRoot && port.path_cost && *port.path_cost <= *bridge.root_path_cost) {
    return *bridge.root_path_cost - *port.path_cost;
  }
  return std::nullopt;
}

void observe_tree(const BridgePortAttributes &port, const BridgeAttributes &bridge, Interface *interface) {
  const std::optional<PortRole> role = role_of(port, bridge);
  interface->role.set(kCistId, role);
  interface->numbers.port_id = port.port_id;
  interface->path_cost = port.path_cost;
  if (port.priority) {
    interface->priority = uint32_t{*port.priority} << kPriorityShift;
  }
  interface->root_guard = port.root_block;
  interface->designated = {port.designated_root, port.designated_bridge,
                           designated_cost_of(port, bridge, role), port.designated_port};
}

// What single ports and port-channels have in common.
void fill_bridge_port(const Link &link, const LinkTable &table, const BridgeHistory::Facts &history,
                      Interface *interface) {
  interface->name = name_of(link);
  interface->numbers.if_mib_index = link.if_index;
  interface->link_up = link.has_link;
  if (has_vlan_filtering(table.bridge)) {
    interface->vlans = link.vlans.value_or(VlanSet());
  } else {
    interface->vlans.insert(kDefaultVlan);
  }
  if (table.bridge.bridge->stp_state != StpState::kNobody) {
    interface->state.set(kCistId, link.bridge_port->state);
  }
  if (runs_kernel_stp(table.bridge)) {
    observe_tree(*link.bridge_port, *table.bridge.bridge, interface);
    interface->forward_transitions = counter32_of(link.forward_transitions);
    if (history.root_inconsistent.contains(link.if_index)) {
      interface->inconsistencies[Inconsistency::kRoot].insert(kCistId);
    }
  }
}

Port member_of(uint32_t channel, const Link &link) {
  Port member;
  member.name = name_of(link);
  member.numbers = member_numbers(kFirstMember + link.if_index);
  member.numbers.if_mib_index = link.if_index;
  member.link_up = link.has_link && link.mii_link.value_or(true);
  member.channel = channel;
  return member;
}

void add_members(uint32_t channel, const std::vector<Link> &links, BridgeState *result) {
  for (const Link &link : links) {
    if (link.if_index > kLastMember - kFirstMember) {
      ++result->left_out;
    } else {
      result->state.ports.insert_or_assign(kFirstMember + link.if_index, member_of(channel, link));
    }
  }
}

void add_port(const Link &link, const LinkTable &table, const BridgeHistory::Facts &history,
              BridgeState *result) {
  const uint32_t number = link.bridge_port->number.value_or(0);
  const uint32_t highest = is_port_channel(link) ? wire::kMaxChannel : wire::kMaxPhysicalPort;
  if (number == 0 || number > highest) {
    ++result->left_out;
    return;
  }
  if (!is_port_channel(link)) {
    Port port;
    port.numbers = port_numbers(number);
    port.numbers.own_number = number;
    fill_bridge_port(link, table, history, &port);
    result->state.ports.insert_or_assign(number, std::move(port));
    return;
  }
  PortChannel channel;
  channel.numbers = channel_numbers(number);
  channel.numbers.own_number = number;
  fill_bridge_port(link, table, history, &channel);
  result->state.port_channels.insert_or_assign(number, std::move(channel));
  const auto members = table.members.find(link.if_index);
  if (members != table.members.end()) {
    add_members(number, members->second, result);
  }
}

}  // namespace

std::chrono::milliseconds duration_of(uint32_t ticks, uint32_t per_second) {
  return std::chrono::milliseconds(ticks * kMillisecondsPerSecond / per_second);
}

BridgeState bridge_state(const LinkTable &table, const BridgeHistory::Facts &history,
                         const TickRates &rates) {
  const BridgeAttributes &bridge = *table.bridge.bridge;
  BridgeState result;
  result.state.settings.name = name_of(table.bridge);
  if (bridge.bridge_id) {
    result.state.bridge.address = bridge.bridge_id->address;
  }
  if (bridge.stp_state && bridge.stp_state != StpState::kNobody) {
    result.state.settings.mode = SpanningTreeMode::kMst;
    result.state.trees[kCistId] = runs_kernel_stp(table.bridge) ? tree_of(table, history, rates) : Tree();
  }
  for (const auto &[if_index, port] : table.ports) {
    add_port(port, table, history, &result);
  }
  return result;
}

}  // namespace stpswitch
