#include "scenario/consistency.h"

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
  std::map<std::string, std::string> names;
  check_names("port", state.ports, &names);
  check_names("port_channel", state.port_channels, &names);
}

}  // namespace stpswitch
