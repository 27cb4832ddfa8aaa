#include "sources/linux_bridge/bridge_reader.h"

#include <utility>
#include <vector>

namespace stpswitch {
namespace {

// False where something did not settle.
bool read_members(LinkQuery *query, LinkTable *table) {
  for (const auto &[if_index, port] : table->ports) {
    if (is_port_channel(port)) {
      auto members = query->links_of(if_index);
      if (!members) {
        return false;
      }
      table->members.emplace(if_index, std::move(*members));
    }
  }
  return true;
}

bool read_vlans(LinkQuery *query, LinkTable *table) {
  if (!has_vlan_filtering(table->bridge)) {
    return true;
  }
  const auto ports = query->bridge_ports();
  if (ports) {
    add_vlans(*ports, table);
  }
  return ports.has_value();
}

}  // namespace

BridgeReading read_bridge(const std::string &name, ForwardTransitions *forward_transitions,
                          LinkQuery *query) {
  using Result = BridgeReading::Result;
  auto bridge = query->link(name);
  if (!bridge) {
    return {Result::kNoInterface, {}};
  }
  if (!is_bridge(*bridge)) {
    return {Result::kNoBridge, {}};
  }
  auto ports = query->links_of(bridge->if_index);
  if (!ports) {
    return {Result::kUnsettled, {}};
  }
  LinkTable table = make_table(std::move(*bridge), std::move(*ports));
  if (!read_members(query, &table) || !read_vlans(query, &table)) {
    return {Result::kUnsettled, {}};
  }
  if (runs_kernel_stp(table.bridge) && !is_root(table.bridge)) {
    table.own_timers = query->own_timers(name);
  }
  forward_transitions->add_to(&table, [query](uint32_t port) { return query->forward_transitions(port); });
  return {Result::kTable, std::move(table)};
}

}  // namespace stpswitch
