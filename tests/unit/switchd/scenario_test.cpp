// What scenarios say, and what holds where they say nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <utility>

#include "keys/key_list.h"
#include "keys/keys.h"
#include "model/switch.h"
#include "sources/scenario/consistency.h"
#include "sources/scenario/loader.h"
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
[bridge]
address = "00:00:5E:00:53:AA"
priority = 61440
protocol_version = "mstp"
hold_count = 10
max_age = 4000
hello_time = 1000
forward_delay = 3000
root = "1000.00005e0053bb"
root_max_age = 600
root_hello_time = 100
root_forward_delay = 400
[[tree]]
number = 4094
priority = 4096
protocol_version = "stp"
hold_count = 1
max_age = 601
hello_time = 101
forward_delay = 401
bridge_id = "1FFE.00005e0053aa"
root = "0000.00005e0053CC"
root_cost = 4294967295
root_port = 65535
root_max_age = 3999
root_hello_time = 999
root_forward_delay = 2999
topology_changes = 7
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
priority = 240
if_mib_index = 2147483647
loop_guard = "enabled"
link_type = "point-to-point"
half_duplex = true
pre_standard_mst = true
admin_edge = true
auto_edge = false
edge = true
boundary = true
peer = true
dispute = true
pre_standard_neighbor = true
root_port_of = "0,10-12"
alternate_port_of = "1"
backup_port_of = "13-4094"
blocking_in = "13-4094"
listening_in = "1"
learning_in = "0"
forwarding_in = "10-12"
designated_bridge = "8000.00005e0053dd"
designated_cost = 4294967295
designated_port = 65535
forward_transitions = 4294967295
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
priority = 0
if_mib_index = 1
loop_guard = "disabled"
link_type = "shared"
pre_standard_mst = true
admin_edge = true
auto_edge = false
edge = true
boundary = true
peer = true
dispute = true
pre_standard_neighbor = true
root_port_of = "6"
alternate_port_of = "7"
backup_port_of = "8"
blocking_in = "8"
listening_in = "7"
learning_in = "6"
forwarding_in = "5"
designated_bridge = "9000.00005e0053ee"
designated_cost = 1
designated_port = 2
forward_transitions = 3
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
    text += name + print_trees(interface.role.exceptions.at(role)) + "; ";
  }
  return text;
}

std::string states(const Interface &interface) {
  std::string text;
  for (const auto &[name, state] : {std::pair("blocking ", PortState::kBlocking),
                                    {"listening ", PortState::kListening},
                                    {"learning ", PortState::kLearning},
                                    {"forwarding ", PortState::kForwarding}}) {
    text += name + print_trees(interface.state.exceptions.at(state)) + "; ";
  }
  return text;
}

std::string designated(const Interface &interface) {
  return print_bridge_id(interface.designated.bridge.value()) + " " +
         std::to_string(interface.designated.cost.value()) + " " +
         std::to_string(interface.designated.port.value());
}

// Times in hundredths of a second.
using Times = std::vector<std::optional<uint32_t>>;
Times times(const Timers &timers) { return {timers.max_age, timers.hello_time, timers.forward_delay}; }

std::vector<bool> flags(const Interface &interface) {
  return {interface.pre_standard_mst.value(), interface.edge.value(),
          interface.boundary.value(),         interface.peer.value(),
          interface.dispute.value(),          interface.pre_standard_neighbor.value()};
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
  EXPECT_EQ(state.settings.loop_guard_default, true);
  EXPECT_EQ(hex(state.bridge.address.value()), "00005e0053aa");
  EXPECT_EQ(state.bridge.settings.priority, 61440U);
  EXPECT_EQ(state.bridge.settings.protocol_version, ProtocolVersion::kMstp);
  EXPECT_EQ(state.bridge.settings.hold_count, 10U);
  EXPECT_EQ(times(state.bridge.settings.timers), (Times{4000, 1000, 3000}));
  EXPECT_EQ(print_bridge_id(state.bridge.root.root_id.value()), "1000.00005e0053bb");
  EXPECT_EQ(times(state.bridge.root.timers_in_force), (Times{600, 100, 400}));
  ASSERT_EQ(state.trees.size(), 1U);
  const Tree &tree = state.trees.at(4094);
  EXPECT_EQ(tree.settings.priority, 4096U);
  EXPECT_EQ(tree.settings.protocol_version, ProtocolVersion::kStp);
  EXPECT_EQ(tree.settings.hold_count, 1U);
  EXPECT_EQ(times(tree.settings.timers), (Times{601, 101, 401}));
  EXPECT_EQ(print_bridge_id(tree.observed.bridge_id.value()), "1ffe.00005e0053aa");
  EXPECT_EQ(print_bridge_id(tree.observed.root_id.value()), "0000.00005e0053cc");
  EXPECT_EQ(tree.observed.root_cost, 4294967295U);
  EXPECT_EQ(tree.observed.root_port, 65535U);
  EXPECT_EQ(times(tree.observed.timers_in_force), (Times{3999, 999, 2999}));
  EXPECT_EQ(tree.observed.topology_changes, 7U);
  EXPECT_EQ(state.mst.name, "campus");
  EXPECT_EQ(state.mst.revision, 65535U);
  EXPECT_EQ(state.mst.max_hops, 40U);
  EXPECT_EQ(hex(state.mst.pre_standard_digest.value()), "0123456789abcdefabcdef9876543210");
  ASSERT_EQ(state.mst_instances.size(), 1U);
  EXPECT_EQ(print_vlans(state.mst_instances.at(4094).vlans), "10-19,30");
  EXPECT_EQ(state.mst_instances.at(4094).remaining_hops, 1U);
  EXPECT_EQ(state.mst_cist.remaining_hops, 40U);
  EXPECT_EQ(state.mst_cist.regional_root_priority, 65535U);
  EXPECT_EQ(hex(state.mst_cist.regional_root_mac.value()), "abcdef012345");
  EXPECT_EQ(state.mst_cist.internal_root_path_cost, 4294967295U);
  EXPECT_EQ(print_vlans(state.rapid_pvst.disabled_vlans), "7-9");
  ASSERT_EQ(state.ports.size(), 1U);
  const Port &port = state.ports.at(3967);
  EXPECT_EQ(port.name, "Uplink");
  EXPECT_EQ(port.link_up, false);
  EXPECT_EQ(print_vlans(port.vlans), "1,10-19");
  EXPECT_EQ(port.channel, 4095U);
  EXPECT_TRUE(port.switchport);
  EXPECT_EQ(port.root_guard, true);
  EXPECT_EQ(port.path_cost, 200000000U);
  EXPECT_EQ(port.loop_guard, Guard::kEnabled);
  EXPECT_EQ(port.link_type, LinkType::kPointToPoint);
  EXPECT_EQ(port.half_duplex, true);
  EXPECT_EQ(flags(port), std::vector<bool>(6, true));
  EXPECT_EQ(roles(port), "root 0,10-12; alternate 1; backup 13-4094; ");
  EXPECT_EQ(states(port), "blocking 13-4094; listening 1; learning 0; forwarding 10-12; ");
  EXPECT_EQ(designated(port), "8000.00005e0053dd 4294967295 65535");
  EXPECT_EQ(port.forward_transitions, 4294967295U);
  EXPECT_EQ(port.priority, 240U);
  EXPECT_EQ(port.admin_edge, true);
  EXPECT_EQ(port.auto_edge, false);
  EXPECT_EQ(port.numbers, (InterfaceNumbers{0x1A000F7F, 4095, std::nullopt, 2147483647}));
  EXPECT_EQ(inconsistent_trees(port), "root 0,10-12; loop 1; pvid 4094; type 0-4094; ");
  ASSERT_EQ(state.port_channels.size(), 1U);
  EXPECT_EQ(state.port_channels.at(4095).name, "Bundle");
  EXPECT_EQ(print_vlans(state.port_channels.at(4095).vlans), "1-100");
  EXPECT_EQ(state.port_channels.at(4095).root_guard, true);
  EXPECT_EQ(state.port_channels.at(4095).path_cost, 1U);
  EXPECT_EQ(state.port_channels.at(4095).loop_guard, Guard::kDisabled);
  EXPECT_EQ(state.port_channels.at(4095).link_type, LinkType::kShared);
  EXPECT_EQ(flags(state.port_channels.at(4095)), std::vector<bool>(6, true));
  EXPECT_EQ(roles(state.port_channels.at(4095)), "root 6; alternate 7; backup 8; ");
  EXPECT_EQ(states(state.port_channels.at(4095)), "blocking 8; listening 7; learning 6; forwarding 5; ");
  EXPECT_EQ(designated(state.port_channels.at(4095)), "9000.00005e0053ee 1 2");
  EXPECT_EQ(state.port_channels.at(4095).forward_transitions, 3U);
  EXPECT_EQ(state.port_channels.at(4095).priority, 0U);
  EXPECT_EQ(state.port_channels.at(4095).admin_edge, true);
  EXPECT_EQ(state.port_channels.at(4095).auto_edge, false);
  EXPECT_EQ(state.port_channels.at(4095).numbers, (InterfaceNumbers{0x16000FFF, 8191, std::nullopt, 1}));
  EXPECT_EQ(inconsistent_trees(state.port_channels.at(4095)), "root 2; loop 3; pvid 4; type 5; ");
  EXPECT_EQ(state.access.refused_users, (std::vector<std::string>{"guest", "ops"}));
}

TEST(Scenario, HasDefaultsForAllButModeAndNumbers) {
  const SwitchState state = parse_scenario(R"(
[switch]
mode = "mst"
[[tree]]
number = 7
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
  EXPECT_EQ(state.settings.loop_guard_default, false);
  EXPECT_EQ(hex(state.bridge.address.value()), "00005e005300");
  EXPECT_EQ(state.bridge.settings.priority, 32768U);
  EXPECT_EQ(state.bridge.settings.protocol_version, ProtocolVersion::kRstp);
  EXPECT_EQ(state.bridge.settings.hold_count, 6U);
  EXPECT_EQ(times(state.bridge.settings.timers), (Times{2000, 200, 1500}));
  EXPECT_EQ(print_bridge_id(state.bridge.root.root_id.value()), "6000.00005e005301");
  EXPECT_EQ(times(state.bridge.root.timers_in_force), (Times{2000, 200, 1500}));
  const Tree &tree = state.trees.at(7);
  EXPECT_EQ(tree.settings.priority, std::nullopt);
  EXPECT_EQ(tree.settings.protocol_version, std::nullopt);
  EXPECT_EQ(tree.settings.hold_count, std::nullopt);
  EXPECT_EQ(times(tree.settings.timers), Times(3));
  EXPECT_EQ(tree.observed.bridge_id, std::nullopt);
  EXPECT_EQ(tree.observed.root_id, std::nullopt);
  EXPECT_EQ(tree.observed.root_cost, std::nullopt);
  EXPECT_EQ(tree.observed.root_port, std::nullopt);
  EXPECT_EQ(times(tree.observed.timers_in_force), Times(3));
  EXPECT_EQ(tree.observed.topology_changes, std::nullopt);
  EXPECT_EQ(state.mst.name, "");
  EXPECT_EQ(state.mst.revision, 0U);
  EXPECT_EQ(state.mst.max_hops, 20U);
  EXPECT_FALSE(state.mst.pre_standard_digest.has_value());
  EXPECT_EQ(print_vlans(state.mst_instances.at(1).vlans), "");
  EXPECT_EQ(state.mst_instances.at(1).remaining_hops, 20U);
  EXPECT_EQ(state.mst_cist.remaining_hops, 20U);
  EXPECT_EQ(state.mst_cist.regional_root_priority, 32768U);
  EXPECT_EQ(hex(state.mst_cist.regional_root_mac.value()), "00005e005300");
  EXPECT_EQ(state.mst_cist.internal_root_path_cost, 0U);
  EXPECT_EQ(print_vlans(state.rapid_pvst.disabled_vlans), "");
  const Port &port = state.ports.at(12);
  EXPECT_EQ(port.name, "Ethernet12");
  EXPECT_EQ(port.link_up, true);
  EXPECT_EQ(print_vlans(port.vlans), "1");
  EXPECT_EQ(port.channel, 0U);
  EXPECT_TRUE(port.switchport);
  EXPECT_EQ(port.root_guard, false);
  EXPECT_EQ(port.path_cost, 20000U);
  EXPECT_EQ(port.half_duplex, false);
  for (const Interface &interface : std::initializer_list<Interface>{port, state.port_channels.at(2)}) {
    EXPECT_EQ(interface.loop_guard, Guard::kDefault);
    EXPECT_EQ(interface.link_type, LinkType::kAuto);
    EXPECT_EQ(flags(interface), std::vector<bool>(6, false));
    EXPECT_TRUE(interface.role.exceptions.empty());
    EXPECT_EQ(interface.role.elsewhere, PortRole::kDesignated);
    EXPECT_EQ(interface.state, PerTree<PortState>());
    EXPECT_EQ(interface.priority, 128U);
    EXPECT_EQ(interface.admin_edge, false);
    EXPECT_EQ(interface.auto_edge, true);
    EXPECT_EQ(interface.designated, (Designated{std::nullopt, std::nullopt, 0, 0x8001}));
    EXPECT_EQ(interface.forward_transitions, 1U);
  }
  EXPECT_TRUE(port.inconsistencies.empty());
  EXPECT_EQ(state.port_channels.at(2).root_guard, false);
  EXPECT_EQ(state.port_channels.at(2).path_cost, 20000U);
  EXPECT_TRUE(state.port_channels.at(2).inconsistencies.empty());
  EXPECT_EQ(state.port_channels.at(2).name, "port-channel2");
  EXPECT_EQ(print_vlans(state.port_channels.at(2).vlans), "1");
  EXPECT_EQ(port.numbers, (InterfaceNumbers{0x1A00000C, 140, std::nullopt, 140}));
  EXPECT_EQ(state.port_channels.at(2).numbers, (InterfaceNumbers{0x16000002, 4098, std::nullopt, 4098}));
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
  EXPECT_EQ(mst.ports.at(1).root_guard, true);
  EXPECT_EQ(mst.port_channels.at(1).root_guard, false);
  EXPECT_EQ(mst.port_channels.at(2).root_guard, true);
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
      const PortRole role = role_in(*tree, the_switch.bridge_ports().at(if_index)).value();
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
    if (port.link_up == true && condition(port)) {
      ports.push_back(if_index);
    }
  }
  return ports;
}

template <class Part>
std::vector<uint32_t> ports_with(const Switch &the_switch, std::optional<bool> Part::*flag) {
  return ports_with(the_switch,
                    [flag](const BridgePort &port) { return (port.interface->*flag).value_or(false); });
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
    EXPECT_FALSE(is_empty([](const BridgePort &port) { return port.point_to_point == true; })) << scenario;
    EXPECT_FALSE(is_empty([](const BridgePort &port) { return port.point_to_point == false; })) << scenario;
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
