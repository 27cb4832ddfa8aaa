// What scenarios say, and what holds where they say nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <utility>

#include "model/switch.h"
#include "scenario/key_list.h"
#include "scenario/keys.h"
#include "scenario/loader.h"
#include "support/octets.h"
#include "support/temporary_folder.h"

using namespace stpswitch;
using testing::ElementsAre;
using testing::Pair;

namespace {

constexpr char kEverything[] = R"(
[switch]
name = "demo"
mode = "rapid-pvst"
path_cost_method = "long"
loop_guard_default = true
[mst]
region = "campus"
revision = 65535
max_hops = 40
pre_standard_digest = "0123456789abcdefABCDEF9876543210"
[mst.cist]
remaining_hops = 40
regional_root_priority = 65535
regional_root_mac = "AB:cd:EF:01:23:45"
internal_root_path_cost = 4294967295
[[mst.instance]]
id = 4094
vlans = "10-19,30"
remaining_hops = 1
[rapid_pvst]
disabled_vlans = "7-9"
[[port]]
number = 3967
name = "Uplink"
link = "down"
vlans = "1,10-19"
channel = 4095
switchport = true
root_guard = true
path_cost = 200000000
loop_guard = "enabled"
link_type = "point-to-point"
half_duplex = true
pre_standard_mst = true
edge = true
boundary = true
peer = true
dispute = true
pre_standard_neighbor = true
root_port_of = "0,10-12"
alternate_port_of = "1"
backup_port_of = "13-4094"
root_inconsistent = "0,10-12"
loop_inconsistent = "1"
pvid_inconsistent = "4094"
type_inconsistent = "0-4094"
[[port_channel]]
number = 4095
name = "Bundle"
vlans = "1-100"
root_guard = true
path_cost = 1
loop_guard = "disabled"
link_type = "shared"
pre_standard_mst = true
edge = true
boundary = true
peer = true
dispute = true
pre_standard_neighbor = true
root_port_of = "6"
alternate_port_of = "7"
backup_port_of = "8"
root_inconsistent = "2"
loop_inconsistent = "3"
pvid_inconsistent = "4"
type_inconsistent = "5"
[access]
refused_users = ["guest", "ops"]
)";

std::string inconsistent_trees(const Interface &interface) {
  std::string text;
  for (const auto &[name, kind] : {std::pair("root ", Inconsistency::kRoot),
                                   {"loop ", Inconsistency::kLoop},
                                   {"pvid ", Inconsistency::kPvid},
                                   {"type ", Inconsistency::kType}}) {
    text += name + print_trees(interface.inconsistencies.at(kind)) + "; ";
  }
  return text;
}

std::string roles(const Interface &interface) {
  std::string text;
  for (const auto &[name, role] : {std::pair("root ", PortRole::kRoot),
                                   {"alternate ", PortRole::kAlternate},
                                   {"backup ", PortRole::kBackup}}) {
    text += name + print_trees(interface.roles.at(role)) + "; ";
  }
  return text;
}

std::vector<bool> flags(const Interface &interface) {
  return {interface.pre_standard_mst, interface.edge,
          interface.boundary,         interface.peer,
          interface.dispute,          interface.pre_standard_neighbor};
}

// "[switch] name": the keys that the text of a scenario states.
std::set<std::string> stated_keys(std::istream &&text) {
  std::set<std::string> keys;
  std::string title;
  for (std::string line; std::getline(text, line);) {
    const size_t end_of_key = line.find(" = ");
    if (line.starts_with('[')) {
      title = line;
    } else if (!line.starts_with('#') && end_of_key != std::string::npos) {
      keys.insert(title + " " + line.substr(0, end_of_key));
    }
  }
  return keys;
}

// The same of those that there are.
std::set<std::string> all_keys() {
  std::istringstream list(list_keys());
  std::set<std::string> keys;
  for (std::string title, key, rest;
       std::getline(list, title, '\t') && std::getline(list, key, '\t') && std::getline(list, rest);) {
    if (!key.empty()) {
      keys.insert(title.append(" ").append(key));
    }
  }
  return keys;
}

TEST(Scenario, StatesEveryKey) {
  const auto stated = stated_keys(std::istringstream(kEverything));
  for (const std::string &key : all_keys()) {
    EXPECT_TRUE(stated.contains(key)) << key;
  }
  const SwitchState state = parse_scenario(kEverything, "demo.toml");
  EXPECT_EQ(state.settings.name, "demo");
  EXPECT_EQ(state.settings.mode, SpanningTreeMode::kRapidPvst);
  EXPECT_EQ(state.settings.path_cost_method, PathCostMethod::kLong);
  EXPECT_TRUE(state.settings.loop_guard_default);
  EXPECT_EQ(state.mst.name, "campus");
  EXPECT_EQ(state.mst.revision, 65535U);
  EXPECT_EQ(state.mst.max_hops, 40U);
  EXPECT_EQ(hex(state.mst.pre_standard_digest.value()), "0123456789abcdefabcdef9876543210");
  ASSERT_EQ(state.mst_instances.size(), 1U);
  EXPECT_EQ(print_vlans(state.mst_instances.at(4094).vlans), "10-19,30");
  EXPECT_EQ(state.mst_instances.at(4094).remaining_hops, 1U);
  EXPECT_EQ(state.mst_cist.remaining_hops, 40U);
  EXPECT_EQ(state.mst_cist.regional_root_priority, 65535U);
  EXPECT_EQ(hex(state.mst_cist.regional_root_mac), "abcdef012345");
  EXPECT_EQ(state.mst_cist.internal_root_path_cost, 4294967295U);
  EXPECT_EQ(print_vlans(state.rapid_pvst.disabled_vlans), "7-9");
  ASSERT_EQ(state.ports.size(), 1U);
  const Port &port = state.ports.at(3967);
  EXPECT_EQ(port.name, "Uplink");
  EXPECT_FALSE(port.link_up);
  EXPECT_EQ(print_vlans(port.vlans), "1,10-19");
  EXPECT_EQ(port.channel, 4095U);
  EXPECT_TRUE(port.switchport);
  EXPECT_TRUE(port.root_guard);
  EXPECT_EQ(port.path_cost, 200000000U);
  EXPECT_EQ(port.loop_guard, Guard::kEnabled);
  EXPECT_EQ(port.link_type, LinkType::kPointToPoint);
  EXPECT_TRUE(port.half_duplex);
  EXPECT_EQ(flags(port), std::vector<bool>(6, true));
  EXPECT_EQ(roles(port), "root 0,10-12; alternate 1; backup 13-4094; ");
  EXPECT_EQ(inconsistent_trees(port), "root 0,10-12; loop 1; pvid 4094; type 0-4094; ");
  ASSERT_EQ(state.port_channels.size(), 1U);
  EXPECT_EQ(state.port_channels.at(4095).name, "Bundle");
  EXPECT_EQ(print_vlans(state.port_channels.at(4095).vlans), "1-100");
  EXPECT_TRUE(state.port_channels.at(4095).root_guard);
  EXPECT_EQ(state.port_channels.at(4095).path_cost, 1U);
  EXPECT_EQ(state.port_channels.at(4095).loop_guard, Guard::kDisabled);
  EXPECT_EQ(state.port_channels.at(4095).link_type, LinkType::kShared);
  EXPECT_EQ(flags(state.port_channels.at(4095)), std::vector<bool>(6, true));
  EXPECT_EQ(roles(state.port_channels.at(4095)), "root 6; alternate 7; backup 8; ");
  EXPECT_EQ(inconsistent_trees(state.port_channels.at(4095)), "root 2; loop 3; pvid 4; type 5; ");
  EXPECT_EQ(state.access.refused_users, (std::vector<std::string>{"guest", "ops"}));
}

TEST(Scenario, HasDefaultsForAllButModeAndNumbers) {
  const SwitchState state = parse_scenario(R"(
[switch]
mode = "mst"
[[mst.instance]]
id = 1
[[port]]
number = 12
[[port_channel]]
number = 2
)",
                                           "demo.toml");
  EXPECT_EQ(state.settings.name, "");
  EXPECT_EQ(state.settings.mode, SpanningTreeMode::kMst);
  EXPECT_EQ(state.settings.path_cost_method, PathCostMethod::kShort);
  EXPECT_FALSE(state.settings.loop_guard_default);
  EXPECT_EQ(state.mst.name, "");
  EXPECT_EQ(state.mst.revision, 0U);
  EXPECT_EQ(state.mst.max_hops, 20U);
  EXPECT_FALSE(state.mst.pre_standard_digest.has_value());
  EXPECT_EQ(print_vlans(state.mst_instances.at(1).vlans), "");
  EXPECT_EQ(state.mst_instances.at(1).remaining_hops, 20U);
  EXPECT_EQ(state.mst_cist.remaining_hops, 20U);
  EXPECT_EQ(state.mst_cist.regional_root_priority, 32768U);
  EXPECT_EQ(hex(state.mst_cist.regional_root_mac), "00005e005300");
  EXPECT_EQ(state.mst_cist.internal_root_path_cost, 0U);
  EXPECT_EQ(print_vlans(state.rapid_pvst.disabled_vlans), "");
  const Port &port = state.ports.at(12);
  EXPECT_EQ(port.name, "Ethernet12");
  EXPECT_TRUE(port.link_up);
  EXPECT_EQ(print_vlans(port.vlans), "1");
  EXPECT_EQ(port.channel, 0U);
  EXPECT_TRUE(port.switchport);
  EXPECT_FALSE(port.root_guard);
  EXPECT_EQ(port.path_cost, 20000U);
  EXPECT_FALSE(port.half_duplex);
  for (const Interface &interface : std::initializer_list<Interface>{port, state.port_channels.at(2)}) {
    EXPECT_EQ(interface.loop_guard, Guard::kDefault);
    EXPECT_EQ(interface.link_type, LinkType::kAuto);
    EXPECT_EQ(flags(interface), std::vector<bool>(6, false));
    EXPECT_TRUE(interface.roles.empty());
  }
  EXPECT_TRUE(port.inconsistencies.empty());
  EXPECT_FALSE(state.port_channels.at(2).root_guard);
  EXPECT_EQ(state.port_channels.at(2).path_cost, 20000U);
  EXPECT_TRUE(state.port_channels.at(2).inconsistencies.empty());
  EXPECT_EQ(state.port_channels.at(2).name, "port-channel2");
  EXPECT_EQ(print_vlans(state.port_channels.at(2).vlans), "1");
  EXPECT_TRUE(state.access.refused_users.empty());
}

TEST(Scenario, MayHaveNoPortsAtAll) {
  const SwitchState state = parse_scenario("switch.mode = 'mst'", "demo.toml");
  EXPECT_TRUE(state.ports.empty());
  EXPECT_TRUE(state.port_channels.empty());
  EXPECT_TRUE(state.mst_instances.empty());
}

TEST(Scenario, MayStateTheHighestNumberOfInstances) {
  std::string text = "switch.mode = 'mst'\n";
  for (int id = 1; id <= 64; ++id) {
    text += "[[mst.instance]]\nid = " + std::to_string(id) + "\n";
  }
  EXPECT_EQ(parse_scenario(text, "demo.toml").mst_instances.size(), 64U);
}

TEST(Scenario, IsReadFromAFile) {
  const TemporaryFolder folder;
  EXPECT_EQ(load_scenario(folder.write("demo.toml", kEverything)).settings.name, "demo");
}

TEST(ShippedScenarios, UseEveryKey) {
  const auto used = stated_keys(std::ifstream(SCENARIOS "/mst-small.toml"));
  for (const std::string &key : all_keys()) {
    const std::string name = key.substr(key.find(' '));
    const bool is_of_interface = key == "[[port]]" + name || key == "[[port_channel]]" + name;
    EXPECT_TRUE(used.contains(key) || (is_of_interface && (used.contains("[[port]]" + name) ||
                                                           used.contains("[[port_channel]]" + name))))
        << key;
  }
}

TEST(ShippedScenarios, AreRight) {
  const SwitchState mst = load_scenario(SCENARIOS "/mst-small.toml");
  EXPECT_EQ(mst.mst.name, "campus");
  EXPECT_EQ(mst.mst_instances.size(), 3U);
  EXPECT_EQ(mst.port_channels.size(), 2U);
  EXPECT_EQ(mst.mst_cist.regional_root_priority, 24576U);
  EXPECT_TRUE(mst.ports.at(1).root_guard);
  EXPECT_FALSE(mst.port_channels.at(1).root_guard);
  EXPECT_TRUE(mst.port_channels.at(2).root_guard);
  EXPECT_EQ(mst.port_channels.at(1).path_cost, 10000U);
  const SwitchState rapid_pvst = load_scenario(SCENARIOS "/rapid-pvst-small.toml");
  EXPECT_EQ(rapid_pvst.settings.mode, SpanningTreeMode::kRapidPvst);
  EXPECT_EQ(print_vlans(rapid_pvst.rapid_pvst.disabled_vlans), "99");
}

std::set<std::pair<uint32_t, uint32_t>> rows_of(const InconsistencyReport &report) {
  std::set<std::pair<uint32_t, uint32_t>> rows;
  for (const auto &[if_index, trees] : report.tree_ports().by_port()) {
    for (auto tree = trees.first_from(0); tree; tree = trees.first_from(*tree + 1)) {
      rows.emplace(*tree, if_index);
    }
  }
  return rows;
}

constexpr uint32_t kPort = 0x1A000000;
constexpr uint32_t kChannel = 0x16000000;

TEST(ShippedScenarios, HaveInconsistenciesInEveryTable) {
  const Switch mst(load_scenario(SCENARIOS "/mst-small.toml"));
  EXPECT_THAT(rows_of(mst.inconsistencies().root),
              ElementsAre(Pair(0, kPort + 2), Pair(1, kPort + 2), Pair(2, kChannel + 2), Pair(2, kPort + 3)));
  EXPECT_THAT(rows_of(mst.inconsistencies().loop), ElementsAre(Pair(1, kChannel + 1), Pair(2, kPort + 10)));
  const Switch rapid_pvst(load_scenario(SCENARIOS "/rapid-pvst-small.toml"));
  EXPECT_THAT(rows_of(rapid_pvst.inconsistencies().pvid_and_type),
              ElementsAre(Pair(10, kChannel + 1), Pair(20, kChannel + 1), Pair(20, kPort + 2)));
  EXPECT_THAT(rows_of(rapid_pvst.inconsistencies().root),
              ElementsAre(Pair(1, kPort + 1), Pair(10, kChannel + 2), Pair(10, kPort + 1)));
  EXPECT_THAT(rows_of(rapid_pvst.inconsistencies().loop),
              ElementsAre(Pair(1, kChannel + 1), Pair(10, kChannel + 1), Pair(20, kPort + 7)));
}

// Those that are stated for trees of single VLANs show when the mode is changed.
TEST(ShippedScenarios, HaveInconsistenciesForTheOtherMode) {
  Switch the_switch(load_scenario(SCENARIOS "/mst-small.toml"));
  the_switch.replace(with_value(the_switch.state(), "switch.mode", "rapid-pvst"));
  EXPECT_THAT(rows_of(the_switch.inconsistencies().pvid_and_type),
              ElementsAre(Pair(1, kPort + 2), Pair(11, kPort + 2), Pair(20, kChannel + 2)));
}

// Role by port, of those that are not designated.
std::map<std::pair<uint32_t, uint32_t>, PortRole> roles_of(const Switch &the_switch) {
  std::map<std::pair<uint32_t, uint32_t>, PortRole> roles;
  for (const auto &[if_index, trees] : the_switch.tree_ports().by_port()) {
    for (auto tree = trees.first_from(0); tree; tree = trees.first_from(*tree + 1)) {
      const PortRole role = role_in(*tree, the_switch.bridge_ports().at(if_index));
      if (role != PortRole::kDesignated) {
        roles.emplace(std::pair(*tree, if_index), role);
      }
    }
  }
  return roles;
}

TEST(ShippedScenarios, HaveEveryRole) {
  const Switch mst(load_scenario(SCENARIOS "/mst-small.toml"));
  EXPECT_THAT(
      roles_of(mst),
      ElementsAre(Pair(Pair(0, kChannel + 1), PortRole::kAlternate),
                  Pair(Pair(0, kPort + 4), PortRole::kDisabled), Pair(Pair(0, kPort + 11), PortRole::kRoot),
                  Pair(Pair(0, kPort + 13), PortRole::kBackup), Pair(Pair(1, kPort + 11), PortRole::kRoot),
                  Pair(Pair(2, kChannel + 1), PortRole::kRoot), Pair(Pair(2, kPort + 4), PortRole::kDisabled),
                  Pair(Pair(2, kPort + 13), PortRole::kBackup)));
  const Switch rapid_pvst(load_scenario(SCENARIOS "/rapid-pvst-small.toml"));
  EXPECT_THAT(
      roles_of(rapid_pvst),
      ElementsAre(
          Pair(Pair(1, kPort + 3), PortRole::kDisabled), Pair(Pair(1, kPort + 7), PortRole::kRoot),
          Pair(Pair(1, kPort + 9), PortRole::kAlternate), Pair(Pair(1, kPort + 11), PortRole::kBackup),
          Pair(Pair(20, kChannel + 1), PortRole::kRoot), Pair(Pair(20, kPort + 3), PortRole::kDisabled),
          Pair(Pair(20, kPort + 9), PortRole::kAlternate), Pair(Pair(20, kPort + 11), PortRole::kBackup)));
}

// The bridge ports with a link for which something holds.
template <class Condition>
std::vector<uint32_t> ports_with(const Switch &the_switch, Condition condition) {
  std::vector<uint32_t> ports;
  for (const auto &[if_index, port] : the_switch.bridge_ports()) {
    if (port.link_up && condition(port)) {
      ports.push_back(if_index);
    }
  }
  return ports;
}

std::vector<uint32_t> ports_with(const Switch &the_switch, bool Interface::*flag) {
  return ports_with(the_switch, [flag](const BridgePort &port) { return port.interface->*flag; });
}

TEST(ShippedScenarios, HaveEveryFlagLinkTypeAndLoopGuard) {
  const Switch mst(load_scenario(SCENARIOS "/mst-small.toml"));
  EXPECT_THAT(ports_with(mst, &Interface::edge), ElementsAre(kPort + 1));
  EXPECT_THAT(ports_with(mst, &Interface::boundary), ElementsAre(kPort + 2));
  EXPECT_THAT(ports_with(mst, &Interface::peer),
              ElementsAre(kChannel + 1, kChannel + 2, kPort + 2, kPort + 11, kPort + 14, kPort + 15));
  EXPECT_THAT(ports_with(mst, &Interface::dispute), ElementsAre(kPort + 15));
  EXPECT_THAT(ports_with(mst, &Interface::pre_standard_mst), ElementsAre(kPort + 14));
  EXPECT_THAT(ports_with(mst, &Interface::pre_standard_neighbor), ElementsAre(kPort + 14));
  for (const char *const scenario : {SCENARIOS "/mst-small.toml", SCENARIOS "/rapid-pvst-small.toml"}) {
    const Switch the_switch(load_scenario(scenario));
    const auto is_empty = [&the_switch](auto condition) { return ports_with(the_switch, condition).empty(); };
    EXPECT_FALSE(is_empty(&Interface::edge)) << scenario;
    EXPECT_FALSE(is_empty(&Interface::peer)) << scenario;
    EXPECT_FALSE(is_empty([](const BridgePort &port) { return port.point_to_point; })) << scenario;
    EXPECT_FALSE(is_empty([](const BridgePort &port) { return !port.point_to_point; })) << scenario;
    for (const LinkType type : {LinkType::kAuto, LinkType::kShared}) {
      EXPECT_FALSE(is_empty([type](const BridgePort &port) { return port.interface->link_type == type; }))
          << scenario;
    }
    for (const Guard guard : {Guard::kDefault, Guard::kEnabled, Guard::kDisabled}) {
      EXPECT_FALSE(is_empty([guard](const BridgePort &port) { return port.interface->loop_guard == guard; }))
          << scenario;
    }
  }
}

}  // namespace
