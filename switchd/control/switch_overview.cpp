#include "control/switch_overview.h"

#include "base/hex_octets.h"

namespace stpswitch {
namespace {

namespace view = stpoverview;

std::set<view::Flag> flags_of(const Interface &interface, SpanningTreeMode mode) {
  std::set<view::Flag> flags;
  const auto add_if = [&flags](bool is_set, view::Flag flag) {
    if (is_set) {
      flags.insert(flag);
    }
  };
  add_if(interface.edge, view::Flag::kEdge);
  add_if(interface.peer, view::Flag::kPeer);
  if (mode == SpanningTreeMode::kMst) {
    add_if(interface.boundary, view::Flag::kBoundary);
    add_if(interface.dispute, view::Flag::kDispute);
    add_if(interface.pre_standard_neighbor, view::Flag::kPreStandard);
  }
  return flags;
}

std::set<view::Guard> guards_of(const Interface &interface, const Settings &settings) {
  std::set<view::Guard> guards;
  if (interface.root_guard) {
    guards.insert(view::Guard::kRoot);
  }
  if (interface.loop_guard == Guard::kEnabled ||
      (interface.loop_guard == Guard::kDefault && settings.loop_guard_default)) {
    guards.insert(view::Guard::kLoop);
  }
  return guards;
}

view::Link link_of(const BridgePort &port) {
  if (!port.link_up) {
    return view::Link::kDown;
  }
  return port.point_to_point ? view::Link::kPointToPoint : view::Link::kShared;
}

constexpr auto kRoles =
    std::to_array<std::pair<PortRole, view::Role>>({{PortRole::kRoot, view::Role::kRoot},
                                                    {PortRole::kAlternate, view::Role::kAlternate},
                                                    {PortRole::kBackup, view::Role::kBackup}});

// Designated where nothing else is stated.
std::map<view::Role, TreeSet> roles_of(const BridgePort &port, TreeSet trees) {
  std::map<view::Role, TreeSet> roles;
  if (!port.link_up) {
    return roles;
  }
  for (const auto &[stated, role] : kRoles) {
    const auto some = port.interface->roles.find(stated);
    if (some != port.interface->roles.end() && some->second.overlaps(trees)) {
      roles[role] = some->second;
      roles[role].intersect(trees);
      trees.erase(some->second);
    }
  }
  if (!trees.is_empty()) {
    roles.emplace(view::Role::kDesignated, trees);
  }
  return roles;
}

// What the report of the kind at this place says of the port.
void add_inconsistency(const InconsistencyReport &report, size_t place, uint32_t if_index,
                       view::Inconsistency kind, std::map<view::Inconsistency, TreeSet> *inconsistent) {
  const auto &by_port = report.by_kind().at(place).by_port();
  const auto trees = by_port.find(if_index);
  if (trees != by_port.end()) {
    inconsistent->emplace(kind, trees->second);
  }
}

view::Port port_of(const Switch &the_switch, uint32_t if_index, const BridgePort &port) {
  const auto &tree_ports = the_switch.tree_ports().by_port();
  const auto trees = tree_ports.find(if_index);
  view::Port shown = {port.interface->name,
                      link_of(port),
                      flags_of(*port.interface, the_switch.state().settings.mode),
                      guards_of(*port.interface, the_switch.state().settings),
                      roles_of(port, trees != tree_ports.end() ? trees->second : TreeSet()),
                      {}};
  const Inconsistencies &reports = the_switch.inconsistencies();
  add_inconsistency(reports.root, 0, if_index, view::Inconsistency::kRoot, &shown.inconsistent);
  add_inconsistency(reports.loop, 0, if_index, view::Inconsistency::kLoop, &shown.inconsistent);
  add_inconsistency(reports.pvid_and_type, 0, if_index, view::Inconsistency::kPvid, &shown.inconsistent);
  add_inconsistency(reports.pvid_and_type, 1, if_index, view::Inconsistency::kType, &shown.inconsistent);
  return shown;
}

void add_mst(const Switch &the_switch, view::Overview *overview) {
  const SwitchState &state = the_switch.state();
  overview->region = {state.mst.name, state.mst.revision, print_hex_octets(the_switch.config_digest(), "")};
  overview->regional_root = {std::to_string(state.mst_cist.regional_root_priority) + " / " +
                                 print_mac_address(state.mst_cist.regional_root_mac),
                             state.mst_cist.internal_root_path_cost};
  for (const auto &[instance, vlans] : the_switch.mst_vlan_map()) {
    overview->trees.emplace(instance, view::Tree{vlans, the_switch.mst_remaining_hops().at(instance)});
  }
}

void add_rapid_pvst(const Switch &the_switch, view::Overview *overview) {
  for (const uint32_t vlan : the_switch.vlans_in_use()) {
    if (the_switch.running_trees().contains(vlan)) {
      overview->trees.emplace(vlan, view::Tree{});
    } else {
      overview->disabled_vlans.insert(vlan);
    }
  }
}

}  // namespace

view::Overview overview_of(const Switch &the_switch) {
  view::Overview overview;
  overview.name = the_switch.state().settings.name;
  if (the_switch.state().settings.mode == SpanningTreeMode::kMst) {
    overview.mode = view::Mode::kMst;
    add_mst(the_switch, &overview);
  } else {
    overview.mode = view::Mode::kRapidPvst;
    add_rapid_pvst(the_switch, &overview);
  }
  for (const auto &[if_index, port] : the_switch.bridge_ports()) {
    overview.ports.push_back(port_of(the_switch, if_index, port));
  }
  return overview;
}

}  // namespace stpswitch
