#include "scenario/consistency.h"

#include <array>
#include <map>
#include <string>

#include "scenario/config_error.h"

namespace stpswitch {
namespace {

std::string entry_key(const char *section, uint32_t number) {
  return std::string(section) + "." + std::to_string(number);
}

void check_vlan_mapping(const SwitchState &state) {
  std::map<uint32_t, uint32_t> instance_of_vlan;
  for (const auto &[id, instance] : state.mst_instances) {
    for (uint32_t vlan = kMinVlan; vlan <= kMaxVlan; ++vlan) {
      if (!instance.vlans.contains(vlan)) {
        continue;
      }
      const auto [known, is_new] = instance_of_vlan.emplace(vlan, id);
      if (!is_new) {
        throw ConfigError(entry_key("mst.instance", id) + ".vlans",
                          "VLAN " + std::to_string(vlan) + " belongs to instance " +
                              std::to_string(known->second) + " already");
      }
    }
  }
}

void check_membership(const SwitchState &state) {
  for (const auto &[number, port] : state.ports) {
    if (port.channel == 0) {
      continue;
    }
    const std::string key = entry_key("port", number) + ".channel";
    if (!state.port_channels.contains(port.channel)) {
      throw ConfigError(key, "there is no port-channel " + std::to_string(port.channel));
    }
    if (!port.switchport) {
      throw ConfigError(key, "a port that takes no part in bridging cannot join a port-channel");
    }
  }
}

// The keys that state roles, in their order.
struct RoleKey {
  PortRole role;
  const char *name;
};
constexpr auto kRoleKeys = std::to_array<RoleKey>({{PortRole::kRoot, ".root_port_of"},
                                                   {PortRole::kAlternate, ".alternate_port_of"},
                                                   {PortRole::kBackup, ".backup_port_of"}});

TreeSet trees_with_role(const Interface &interface, PortRole role) {
  const auto trees = interface.roles.find(role);
  return trees != interface.roles.end() ? trees->second : TreeSet();
}

// A port has one role in a tree.
void check_roles(const std::string &path, const Interface &interface) {
  for (const RoleKey &key : kRoleKeys) {
    for (const RoleKey *before = kRoleKeys.data(); before != &key; ++before) {
      TreeSet both = trees_with_role(interface, key.role);
      both.intersect(trees_with_role(interface, before->role));
      if (const auto tree = both.first_from(0)) {
        throw ConfigError(path + key.name,
                          "tree " + std::to_string(*tree) + " stands in " + path + before->name + " already");
      }
    }
  }
}

template <class Entries>
void check_roles(const char *section, const Entries &entries) {
  for (const auto &[number, entry] : entries) {
    if (!entry.roles.empty()) {
      check_roles(entry_key(section, number), entry);
    }
  }
}

// Adds the names of one section's entries to those of the sections before.
template <class Entries>
void check_names(const char *section, const Entries &entries, std::map<std::string, std::string> *taken) {
  for (const auto &[number, entry] : entries) {
    const std::string key = entry_key(section, number);
    const auto [known, is_new] = taken->emplace(entry.name, key);
    if (!is_new) {
      throw ConfigError(key + ".name", "'" + entry.name + "' is the name of " + known->second + " already");
    }
  }
}

}  // namespace

void check_consistency(const SwitchState &state) {
  check_vlan_mapping(state);
  check_membership(state);
  check_roles("port", state.ports);
  check_roles("port_channel", state.port_channels);
  std::map<std::string, std::string> names;
  check_names("port", state.ports, &names);
  check_names("port_channel", state.port_channels, &names);
}

}  // namespace stpswitch
