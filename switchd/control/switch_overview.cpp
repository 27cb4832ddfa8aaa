#include "control/switch_overview.h"

#include <optional>

#include "base/hex_octets.h"

namespace stpswitch {
namespace {

namespace view = stpoverview;

std::set<view::Flag> flags_of(const Interface &interface, std::optional<SpanningTreeMode> mode) {
  std::set<view::Flag> flags;
  const auto add_if = [&flags](const std::optional<bool> &is_set, view::Flag flag) {
    if (is_set.value_or(false)) {
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
  if (interface.root_guard.value_or(false)) {
    guards.insert(view::Guard::kRoot);
  }
  if (interface.loop_guard == Guard::kEnabled ||
      (interface.loop_guard == Guard::kDefault && settings.loop_guard_default.value_or(false))) {
    guards.insert(view::Guard::kLoop);
  }
  return guards;
}

std::optional<view::Link> link_of(const BridgePort &port) {
  if (port.link_up == false) {
    return view::Link::kDown;
  }
  if (!port.link_up || !port.point_to_point) {
    return std::nullopt;
  }
  return *port.point_to_point ? view::Link::kPointToPoint : view::Link::kShared;
}

std::optional<view::Role> shown_role(PortRole role) {
  switch (role) {
    case PortRole::kRoot:
      return view::Role::kRoot;
    case PortRole::kDesignated:
      return view::Role::kDesignated;
    case PortRole::kAlternate:
      return view::Role::kAlternate;
    case PortRole::kBackup:
      return view::Role::kBackup;
    case PortRole::kDisabled:
      break;
  }
  return std::nullopt;
}

void add_role(PortRole role, TreeSet trees, const TreeSet &among, std::map<view::Role, TreeSet> *roles) {
  trees.intersect(among);
  const auto shown = shown_role(role);
  if (shown && !trees.is_empty()) {
    roles->emplace(*shown, trees);
  }
}

std::map<view::Role, TreeSet> roles_of(const BridgePort &port, const TreeSet &trees) {
  std::map<view::Role, TreeSet> roles;
  if (port.link_up == false) {
    return roles;
  }
  const PerTree<PortRole> &stated = port.interface->role;
  TreeSet elsewhere = trees;
  for (const auto &[role, some] : stated.exceptions) {
    add_role(role, some, elsewhere, &roles);
    elsewhere.erase(some);
  }
  if (stated.elsewhere) {
    add_role(*stated.elsewhere, elsewhere, elsewhere, &roles);
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
  if (const auto &digest = the_switch.config_digest()) {
    overview->region = {state.mst.name.value_or(""), state.mst.revision.value_or(0),
                        print_hex_octets(*digest, "")};
  }
  const MstCist &cist = state.mst_cist;
  if (cist.regional_root_priority && cist.regional_root_mac && cist.internal_root_path_cost) {
    overview->regional_root = {
        std::to_string(*cist.regional_root_priority) + " / " + print_mac_address(*cist.regional_root_mac),
        *cist.internal_root_path_cost};
  }
  for (const auto &[instance, vlans] : the_switch.mst_vlan_map()) {
    overview->trees.emplace(instance, view::Tree{vlans, the_switch.mst_remaining_hops().at(instance)});
  }
}

void add_rapid_pvst(const Switch &the_switch, view::Overview *overview) {
  the_switch.vlans_in_use().for_each([&](uint32_t vlan) {
    if (the_switch.running_trees().contains(vlan)) {
      overview->trees.emplace(vlan, view::Tree{});
    } else {
      overview->disabled_vlans.insert(vlan);
    }
  });
}

}  // namespace

view::Overview overview_of(const Switch &the_switch) {
  view::Overview overview;
  overview.name = the_switch.state().settings.name;
  if (const auto mode = the_switch.state().settings.mode; mode == SpanningTreeMode::kMst) {
    overview.mode = view::Mode::kMst;
    add_mst(the_switch, &overview);
  } else if (mode == SpanningTreeMode::kRapidPvst) {
    overview.mode = view::Mode::kRapidPvst;
    add_rapid_pvst(the_switch, &overview);
  }
  for (const auto &[if_index, port] : the_switch.bridge_ports()) {
    overview.ports.push_back(port_of(the_switch, if_index, port));
  }
  return overview;
}

}  // namespace stpswitch
