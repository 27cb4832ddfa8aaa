#include "sources/scenario/consistency.h"

#include <array>
#include <map>
#include <string>
#include <utility>

#include "keys/config_error.h"
#include "keys/keys.h"

namespace stpswitch {
namespace {

std::string entry_key(const char *section, uint32_t number) {
  return std::string(section) + "." + std::to_string(number);
}

// One of two keys that contradict each other, and what is wrong with it as long as the other one stands.
struct Blame {
  std::string key;
  std::string reason;
};

// Blames the key that was asked for where that is the one that stands first, the later one otherwise.
[[noreturn]] void refuse(const std::string &asked, const Blame &first, const Blame &later) {
  const Blame &blame = first.key == asked ? first : later;
  throw ConfigError(blame.key, blame.reason);
}

void check_vlan_mapping(const SwitchState &state, const std::string &asked) {
  std::map<uint32_t, uint32_t> instance_of_vlan;
  for (const auto &[id, instance] : state.mst_instances) {
    for (uint32_t vlan = kMinVlan; vlan <= kMaxVlan; ++vlan) {
      if (!instance.vlans.contains(vlan)) {
        continue;
      }
      const auto [known, is_new] = instance_of_vlan.emplace(vlan, id);
      if (!is_new) {
        const auto blame = [vlan = vlan](uint32_t one, uint32_t other) {
          return Blame{
              entry_key("mst.instance", one) + ".vlans",
              "VLAN " + std::to_string(vlan) + " belongs to instance " + std::to_string(other) + " already"};
        };
        refuse(asked, blame(known->second, id), blame(id, known->second));
      }
    }
  }
}

void check_membership(const SwitchState &state, const std::string &asked) {
  for (const auto &[number, port] : state.ports) {
    if (port.channel == 0) {
      continue;
    }
    const std::string path = entry_key("port", number);
    const std::string channel = std::to_string(port.channel);
    if (!state.port_channels.contains(port.channel)) {
      throw ConfigError(path + ".channel", "there is no port-channel " + channel);
    }
    if (!port.switchport) {
      refuse(asked, {path + ".switchport", "a member of port-channel " + channel + " takes part in bridging"},
             {path + ".channel", "a port that takes no part in bridging cannot join a port-channel"});
    }
  }
}

// Keys that say in which trees an interface has a value of its role or state, in their order.
template <class Kind>
struct TreesKey {
  Kind kind;
  const char *name;
};
constexpr auto kRoleKeys = std::to_array<TreesKey<PortRole>>({{PortRole::kRoot, ".root_port_of"},
                                                              {PortRole::kAlternate, ".alternate_port_of"},
                                                              {PortRole::kBackup, ".backup_port_of"}});
constexpr auto kStateKeys = std::to_array<TreesKey<PortState>>({{PortState::kBlocking, ".blocking_in"},
                                                                {PortState::kListening, ".listening_in"},
                                                                {PortState::kLearning, ".learning_in"},
                                                                {PortState::kForwarding, ".forwarding_in"}});

template <class Kind>
TreeSet trees_with(const PerTree<Kind> &values, Kind kind) {
  const auto trees = values.exceptions.find(kind);
  return trees != values.exceptions.end() ? trees->second : TreeSet();
}

// A port has one role, and one state, in a tree.
template <class Kind, size_t kCount>
void check_trees(const std::string &path, const PerTree<Kind> &values,
                 const std::array<TreesKey<Kind>, kCount> &keys, const std::string &asked) {
  for (const auto &key : keys) {
    for (const auto *before = keys.data(); before != &key; ++before) {
      TreeSet both = trees_with(values, key.kind);
      both.intersect(trees_with(values, before->kind));
      if (const auto tree = both.first_from(0)) {
        const auto blame = [&path, &tree](const auto &one, const auto &other) {
          return Blame{path + one.name,
                       "tree " + std::to_string(*tree) + " stands in " + path + other.name + " already"};
        };
        refuse(asked, blame(*before, key), blame(key, *before));
      }
    }
  }
}

template <class Entries>
void check_roles_and_states(const char *section, const Entries &entries, const std::string &asked) {
  for (const auto &[number, entry] : entries) {
    if (!entry.role.exceptions.empty() || !entry.state.exceptions.empty()) {
      check_trees(entry_key(section, number), entry.role, kRoleKeys, asked);
      check_trees(entry_key(section, number), entry.state, kStateKeys, asked);
    }
  }
}

// Adds the names of one section's entries to those of the sections before.
template <class Entries>
void check_names(const char *section, const Entries &entries, const std::string &asked,
                 std::map<std::string, std::string> *taken) {
  for (const auto &[number, entry] : entries) {
    const std::string path = entry_key(section, number);
    const auto [known, is_new] = taken->emplace(entry.name, path);
    if (!is_new) {
      const auto blame = [&name = entry.name](const std::string &one, const std::string &other) {
        std::string reason = "'" + name;
        reason.append("' is the name of ").append(other).append(" already");
        return Blame{one + ".name", std::move(reason)};
      };
      refuse(asked, blame(known->second, path), blame(path, known->second));
    }
  }
}

}  // namespace

void check_consistency(const SwitchState &state, const std::string &asked) {
  check_vlan_mapping(state, asked);
  check_membership(state, asked);
  check_roles_and_states("port", state.ports, asked);
  check_roles_and_states("port_channel", state.port_channels, asked);
  std::map<std::string, std::string> names;
  check_names("port", state.ports, asked, &names);
  check_names("port_channel", state.port_channels, asked, &names);
}

SwitchState with_value(const SwitchState &state, const std::string &key, const std::string &text) {
  SwitchState changed = with_key_set(state, key, text);
  check_consistency(changed, key);
  return changed;
}

}  // namespace stpswitch
