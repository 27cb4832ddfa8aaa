#include "sources/linux_bridge/link_table.h"

#include <algorithm>
#include <utility>

namespace stpswitch {

bool is_bridge(const Link &link) { return link.bridge.has_value(); }

bool is_port_channel(const Link &link) { return link.kind == "bond" || link.kind == "team"; }

bool has_vlan_filtering(const Link &bridge) {
  return bridge.bridge && bridge.bridge->vlan_filtering.value_or(false);
}

bool is_root(const Link &bridge) {
  return bridge.bridge && bridge.bridge->bridge_id && bridge.bridge->bridge_id == bridge.bridge->root_id;
}

bool runs_kernel_stp(const Link &bridge) {
  return bridge.bridge && bridge.bridge->stp_state == StpState::kKernel;
}

LinkTable make_table(Link bridge, std::vector<Link> ports) {
  LinkTable table{std::move(bridge), std::nullopt, {}, {}};
  for (Link &port : ports) {
    // One that joins or leaves at this moment has no port's attributes.
    if (port.bridge_port && port.master == table.bridge.if_index) {
      const uint32_t if_index = port.if_index;
      table.ports.insert_or_assign(if_index, std::move(port));
    }
  }
  return table;
}

void add_vlans(const std::vector<Link> &bridge_ports, LinkTable *table) {
  for (auto &[if_index, port] : table->ports) {
    port.vlans.emplace();
  }
  for (const Link &told : bridge_ports) {
    const auto port = table->ports.find(told.if_index);
    if (port != table->ports.end() && told.vlans) {
      port->second.vlans = told.vlans;
    }
  }
}

bool concerns(const LinkMessage &message, const LinkTable &table) {
  const Link &link = message.link;
  const auto is_in_table = [&table](uint32_t if_index) {
    return if_index == table.bridge.if_index || table.ports.contains(if_index);
  };
  return is_in_table(link.if_index) || (link.master && is_in_table(*link.master)) ||
         std::any_of(table.members.begin(), table.members.end(), [&link](const auto &entry) {
           return std::any_of(entry.second.begin(), entry.second.end(),
                              [&link](const Link &member) { return member.if_index == link.if_index; });
         });
}

}  // namespace stpswitch
