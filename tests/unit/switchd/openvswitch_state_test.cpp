// What the rows of Open vSwitch's database make of a switch.
#include "sources/openvswitch/bridge_state.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/ovsdb_recorded.h"
#include "support/ovsdb_rows.h"

using namespace stpswitch;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;

const std::vector<WatchedBridge> kBr0 = {{"br0", {}}};

BridgesReading reading_of(const std::string &text, const std::vector<WatchedBridge> &bridges = kBr0) {
  return read_bridges(rows_of(text), bridges);
}

// Maps as the database has them: {"a":"b"} is written a=b.
std::string map_text(const std::vector<std::pair<std::string, std::string>> &pairs) {
  std::string text;
  for (const auto &[key, value] : pairs) {
    text.append(text.empty() ? "[\"" : ",[\"").append(key).append("\",\"").append(value).append("\"]");
  }
  return "[\"map\",[" + text + "]]";
}

using Pairs = std::vector<std::pair<std::string, std::string>>;

const Pairs kRootStatus = {{"rstp_bridge_id", "1.000.00005e005301"},     {"rstp_bridge_port_id", "0000"},
                           {"rstp_designated_id", "1.000.00005e005301"}, {"rstp_designated_port_id", "0000"},
                           {"rstp_root_id", "1.000.00005e005301"},       {"rstp_root_path_cost", "0"}};

// The rows of a bridge with one port of one interface.
struct RowTexts {
  std::string bridge_name = "br0";
  std::string bridge_columns = R"("rstp_enable":true,"stp_enable":false)";
  Pairs bridge_status = kRootStatus;
  Pairs bridge_config;
  std::string port_columns = R"("tag":["set",[]])";
  std::string interfaces = R"(["uuid","i1"])";
  Pairs port_status = {
      {"rstp_port_id", "8001"}, {"rstp_port_role", "Designated"}, {"rstp_port_state", "Forwarding"}};
  Pairs port_config;
  std::string interface_columns = R"("ofport":1,"ifindex":11,"link_state":"up","duplex":"full")";

  std::string text() const {
    return R"({"Bridge":{"b":{"new":{"name":")" + bridge_name + R"(","ports":["uuid","p"],"rstp_status":)" +
           map_text(bridge_status) + R"(,"other_config":)" + map_text(bridge_config) + "," + bridge_columns +
           R"(}}},"Port":{"p":{"new":{"name":"p1","interfaces":)" + interfaces + R"(,"rstp_status":)" +
           map_text(port_status) + R"(,"other_config":)" + map_text(port_config) + "," + port_columns +
           R"(}}},"Interface":{"i1":{"new":{"name":"p1",)" + interface_columns +
           R"(}},"i2":{"new":{"name":"p2","ofport":2,"link_state":"down"}}}})";
  }

  BridgesReading read() const { return reading_of(text()); }
  Tree tree() const { return read().state.trees.at(0); }
  Port port() const { return read().state.ports.at(1); }
};

BridgeId id(uint16_t priority, uint8_t last) { return {priority, {0, 0, 0x5E, 0, 0x53, last}}; }

TEST(RecordedBridge, IsASwitchWithTheCistAlone) {
  const BridgesReading reading = reading_of(kMonitorReply);
  const SwitchState &state = reading.state;
  EXPECT_THAT(reading.without_tree, ElementsAre(""));
  EXPECT_EQ(state.settings.name, "br0");
  EXPECT_EQ(state.settings.mode, SpanningTreeMode::kMst);
  EXPECT_EQ(state.settings.path_cost_method, std::nullopt);
  EXPECT_EQ(state.bridge.address, MacAddress({0xEA, 0x4C, 0x78, 0xB5, 0x8A, 0x48}));
  ASSERT_THAT(state.trees, ElementsAre(Key(0)));
  const Tree &tree = state.trees.at(0);
  const BridgeId own{0x2000, {0xEA, 0x4C, 0x78, 0xB5, 0x8A, 0x48}};
  const BridgeId root{0x1000, {0xFA, 0x42, 0x3B, 0x03, 0x94, 0x4B}};
  EXPECT_EQ(tree.observed.bridge_id, own);
  EXPECT_EQ(tree.observed.root_id, root);
  EXPECT_EQ(tree.observed.root_cost, 777U);
  EXPECT_EQ(tree.observed.root_port, 130U);
  EXPECT_EQ(tree.observed.timers_in_force, Timers());
  EXPECT_EQ(tree.observed.topology_changes, std::nullopt);
  EXPECT_EQ(tree.settings.priority, 8192U);
  EXPECT_EQ(tree.settings.timers.max_age, 1800U);
  EXPECT_EQ(tree.settings.timers.forward_delay, 1200U);
  EXPECT_EQ(tree.settings.timers.hello_time, std::nullopt);
  EXPECT_EQ(tree.settings.hold_count, 4U);
  EXPECT_EQ(tree.settings.protocol_version, ProtocolVersion::kRstp);

  ASSERT_THAT(state.ports, ElementsAre(Key(1), Key(2)));
  const Port &first = state.ports.at(1);
  EXPECT_EQ(first.name, "ba");
  EXPECT_EQ(first.numbers.if_index, 0x1A000001U);
  EXPECT_EQ(first.numbers.bridge_port, 129U);
  EXPECT_EQ(first.numbers.port_id, 0x8001U);
  EXPECT_EQ(first.numbers.if_mib_index, 4U);
  EXPECT_EQ(first.role.in(0), PortRole::kAlternate);
  EXPECT_EQ(first.state.in(0), PortState::kBlocking);
  EXPECT_EQ(first.link_up, true);
  EXPECT_EQ(first.half_duplex, false);
  EXPECT_EQ(first.path_cost, std::nullopt);
  EXPECT_EQ(first.priority, 128U);
  EXPECT_EQ(first.admin_edge, std::nullopt);
  EXPECT_EQ(first.auto_edge, std::nullopt);
  EXPECT_EQ(print_vlans(first.vlans), "7");
  const Port &second = state.ports.at(2);
  EXPECT_EQ(second.name, "ba2");
  EXPECT_EQ(second.numbers.port_id, 0x4002U);
  EXPECT_EQ(second.numbers.if_mib_index, 5U);
  EXPECT_EQ(second.role.in(0), PortRole::kRoot);
  EXPECT_EQ(second.state.in(0), PortState::kForwarding);
  EXPECT_EQ(second.path_cost, 777U);
  EXPECT_EQ(second.priority, 64U);
  EXPECT_EQ(second.admin_edge, false);
  EXPECT_EQ(second.auto_edge, true);
  EXPECT_EQ(print_vlans(second.vlans), "1,5,9,30");
  EXPECT_EQ(second.designated.bridge, root);
  EXPECT_EQ(second.designated.cost, 0U);
  EXPECT_EQ(second.designated.port, 0x8002U);
  EXPECT_EQ(second.designated.root, std::nullopt);
  EXPECT_EQ(second.edge, std::nullopt);
}

TEST(RecordedBridge, HasABondWithoutRstp) {
  const BridgesReading reading = reading_of(kMonitorReply);
  EXPECT_THAT(reading.state.port_channels, IsEmpty());
  EXPECT_THAT(
      reading.left_out,
      ElementsAre(
          "bridge 'br0': port 'bond0' is left out: it is a bond, on which Open vSwitch runs no RSTP"));
}

TEST(RecordedBridge, FollowsItsUpdates) {
  OvsdbRows rows = rows_of(kMonitorReply);
  const auto port_after = [&rows](const char *update) {
    update_rows(&rows, update);
    return read_bridges(rows, kBr0).state.ports.at(1);
  };
  EXPECT_EQ(port_after(kLinkDown).link_up, false);
  const Port disabled = port_after(kPortDisabled);
  EXPECT_EQ(disabled.role.in(0), PortRole::kDisabled);
  EXPECT_EQ(disabled.state.in(0), PortState::kBlocking);
  EXPECT_EQ(disabled.designated, Designated());
  EXPECT_EQ(port_after(kLinkUp).link_up, true);
  EXPECT_EQ(port_after(kPortDesignated).role.in(0), PortRole::kDesignated);
  EXPECT_EQ(port_after(kPortAlternate).role.in(0), PortRole::kAlternate);
  port_after(kBondDeleted);
  EXPECT_THAT(read_bridges(rows, kBr0).left_out, IsEmpty());
  const SwitchState before = read_bridges(rows, kBr0).state;
  for (const char *const update : {kRstpOff, kStatusCleared}) {
    update_rows(&rows, update);
    EXPECT_EQ(read_bridges(rows, kBr0).state, unknown_state(kBr0));
    EXPECT_THAT(read_bridges(rows, kBr0).without_tree,
                ElementsAre("runs no RSTP: 'ovs-vsctl set bridge br0 rstp_enable=true' begins it"));
  }
  update_rows(&rows, kRstpOn);
  EXPECT_EQ(read_bridges(rows, kBr0).state, unknown_state(kBr0));
  EXPECT_THAT(read_bridges(rows, kBr0).without_tree,
              ElementsAre("has RSTP of which ovs-vswitchd has written nothing into the database yet"));
  update_rows(&rows, kStatusBack);
  EXPECT_EQ(read_bridges(rows, kBr0).state.trees.at(0).observed.root_port, 0U);
  update_rows(&rows, kStatusConverged);
  EXPECT_EQ(read_bridges(rows, kBr0).state, before);
}

TEST(UnknownSwitches, HaveANameOnly) {
  const SwitchState state = unknown_state({{"br10", 10}, {"br20", 20}});
  SwitchState expected;
  expected.settings.name = "br10,br20";
  EXPECT_EQ(state, expected);
}

TEST(BridgesWithoutTree, SayWhatToDo) {
  RowTexts rows;
  rows.bridge_name = "br1";
  EXPECT_THAT(rows.read().without_tree, ElementsAre("does not exist: waiting for 'ovs-vsctl add-br br0'"));
  EXPECT_EQ(rows.read().state, unknown_state(kBr0));
  rows.bridge_name = "br0";
  rows.bridge_columns = R"("rstp_enable":false,"stp_enable":true)";
  EXPECT_THAT(
      rows.read().without_tree,
      ElementsAre("runs STP of IEEE 802.1D-1998, of which nothing is read here: RSTP takes its place after "
                  "'ovs-vsctl set bridge br0 rstp_enable=true'"));
  EXPECT_EQ(rows.read().state, unknown_state(kBr0));
  // RSTP runs where both are enabled, and where an old schema says nothing but what has come of it.
  for (const char *const columns : {R"("rstp_enable":true,"stp_enable":true)", R"("x":1)"}) {
    rows.bridge_columns = columns;
    EXPECT_THAT(rows.read().without_tree, ElementsAre(""));
  }
  for (const char *const text : {"", "1.000.00005e00530", "1000.00005e005301", "g.000.00005e005301",
                                 "1.000.00005e0053011", "1.0000.0005e005301"}) {
    rows.bridge_status = {{"rstp_bridge_id", text}};
    EXPECT_THAT(rows.read().without_tree,
                ElementsAre("has RSTP of which ovs-vswitchd has written nothing into the database yet"))
        << text;
  }
}

TEST(Identifiers, HavePriorityAndExtension) {
  RowTexts rows;
  rows.bridge_status = {{"rstp_bridge_id", "F.00a.00005E005301"}};
  EXPECT_EQ(rows.tree().observed.bridge_id, id(0xF00A, 1));
  EXPECT_EQ(rows.tree().settings.priority, 61440U);
}

TEST(Roots, HaveNoRootPort) {
  RowTexts rows;
  rows.bridge_config = {{"rstp-max-age", "10"}, {"rstp-forward-delay", "7"}};
  const Tree root = rows.tree();
  EXPECT_EQ(root.observed.root_id, id(0x1000, 1));
  EXPECT_EQ(root.observed.root_cost, 0U);
  EXPECT_EQ(root.observed.root_port, 0U);
  EXPECT_EQ(root.observed.timers_in_force.max_age, 1000U);
  EXPECT_EQ(root.observed.timers_in_force.forward_delay, 700U);
  rows.bridge_status[4].second = "0.000.00005e005302";
  rows.bridge_status[1].second = "8001";
  const Tree other = rows.tree();
  EXPECT_EQ(other.observed.root_port, 129U);
  EXPECT_EQ(other.observed.timers_in_force, Timers());
  EXPECT_EQ(other.settings.timers.max_age, 1000U);
  // No port that is known has that number.
  rows.bridge_status[1].second = "8002";
  EXPECT_EQ(rows.tree().observed.root_port, std::nullopt);
  rows.bridge_status[1].second = "08001";
  EXPECT_EQ(rows.tree().observed.root_port, std::nullopt);
}

TEST(Timers, AreThoseThatTheBridgeTakes) {
  struct Case {
    const char *max_age;
    const char *forward_delay;
    std::optional<uint32_t> own_max_age;
    std::optional<uint32_t> own_forward_delay;
  };
  for (const Case &timers : std::vector<Case>{{"6", "4", 600, 400},
                                              {"40", "30", 4000, 3000},
                                              {"40", "21", 4000, 2100},
                                              {"40", "20", {}, {}},
                                              {"5", "15", {}, 1500},
                                              {"41", "15", {}, 1500},
                                              {"20", "31", 2000, {}},
                                              {"20", "x", 2000, {}},
                                              {"29", "", {}, {}},
                                              {"28", "", 2800, {}},
                                              {"", "3", {}, {}},
                                              {"", "10", {}, {}},
                                              {"", "11", {}, 1100},
                                              {"-6", "6.5", {}, {}}}) {
    RowTexts rows;
    rows.bridge_config = {{"rstp-max-age", timers.max_age}, {"rstp-forward-delay", timers.forward_delay}};
    const Timers own = rows.tree().settings.timers;
    EXPECT_EQ(own.max_age, timers.own_max_age) << timers.max_age << " " << timers.forward_delay;
    EXPECT_EQ(own.forward_delay, timers.own_forward_delay) << timers.max_age << " " << timers.forward_delay;
  }
}

TEST(Bridges, HaveSettingsWhereTheyAreConfigured) {
  RowTexts rows;
  EXPECT_EQ(rows.tree().settings.timers, Timers());
  EXPECT_EQ(rows.tree().settings.hold_count, std::nullopt);
  EXPECT_EQ(rows.tree().settings.protocol_version, ProtocolVersion::kRstp);
  rows.bridge_config = {{"rstp-force-protocol-version", "0"}, {"rstp-transmit-hold-count", "10"}};
  EXPECT_EQ(rows.tree().settings.protocol_version, ProtocolVersion::kStp);
  EXPECT_EQ(rows.tree().settings.hold_count, 10U);
  rows.bridge_config = {{"rstp-force-protocol-version", "2"}, {"rstp-transmit-hold-count", "11"}};
  EXPECT_EQ(rows.tree().settings.protocol_version, ProtocolVersion::kRstp);
  EXPECT_EQ(rows.tree().settings.hold_count, std::nullopt);
  rows.bridge_config = {{"rstp-force-protocol-version", "3"}, {"rstp-priority", "5000"}};
  EXPECT_EQ(rows.tree().settings.protocol_version, std::nullopt);
  EXPECT_EQ(rows.tree().settings.priority, 4096U);
}

TEST(Ports, HaveRolesAndStates) {
  RowTexts rows;
  const std::vector<std::pair<std::string, std::optional<PortRole>>> roles = {
      {"Root", PortRole::kRoot},
      {"Designated", PortRole::kDesignated},
      {"Alternate", PortRole::kAlternate},
      {"Backup", PortRole::kBackup},
      {"Disabled", PortRole::kDisabled},
      {"Master", {}},
      {"", {}}};
  for (const auto &[text, role] : roles) {
    rows.port_status[1].second = text;
    EXPECT_EQ(rows.port().role.in(0), role) << text;
  }
  const std::vector<std::pair<std::string, std::optional<PortState>>> states = {
      {"Disabled", PortState::kDisabled},
      {"Discarding", PortState::kBlocking},
      {"Learning", PortState::kLearning},
      {"Forwarding", PortState::kForwarding},
      {"Listening", {}},
      {"", {}}};
  for (const auto &[text, state] : states) {
    rows.port_status[2].second = text;
    EXPECT_EQ(rows.port().state.in(0), state) << text;
  }
}

TEST(Ports, HaveVlans) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {R"("tag":["set",[]])", "1-4094"},
      {R"("tag":7)", "7"},
      {R"("tag":7,"trunks":["set",[8,9]])", "7"},
      {R"("trunks":["set",[0,8,9,4095]])", "8-9"},
      {R"("trunks":8,"vlan_mode":"trunk")", "8"},
      {R"("tag":7,"vlan_mode":"trunk")", "1-4094"},
      {R"("tag":7,"trunks":8,"vlan_mode":"trunk")", "8"},
      {R"("tag":7,"trunks":8,"vlan_mode":"access")", "7"},
      {R"("tag":7,"trunks":8,"vlan_mode":"dot1q-tunnel")", "7"},
      {R"("tag":7,"trunks":8,"vlan_mode":"native-tagged")", "7-8"},
      {R"("tag":7,"trunks":8,"vlan_mode":"native-untagged")", "7-8"},
      {R"("tag":7,"vlan_mode":"native-untagged")", "1-4094"},
      {R"("tag":0)", ""},
      {R"("tag":4095)", ""},
      {R"("vlan_mode":"access")", ""}};
  for (const auto &[columns, vlans] : cases) {
    RowTexts rows;
    rows.port_columns = columns;
    EXPECT_EQ(print_vlans(rows.port().vlans), vlans) << columns;
  }
}

TEST(Ports, HaveTheLinkOfTheirInterface) {
  RowTexts rows;
  rows.interface_columns = R"("link_state":"down","duplex":"half","ifindex":2147483647)";
  EXPECT_EQ(rows.port().link_up, false);
  EXPECT_EQ(rows.port().half_duplex, true);
  EXPECT_EQ(rows.port().numbers.if_mib_index, 2147483647U);
  for (const char *const columns : {R"("ifindex":0)", R"("ifindex":2147483648,"link_state":"","duplex":"x")",
                                    R"("ifindex":-1,"link_state":["set",[]])"}) {
    rows.interface_columns = columns;
    EXPECT_EQ(rows.port().link_up, std::nullopt);
    EXPECT_EQ(rows.port().half_duplex, std::nullopt);
    EXPECT_EQ(rows.port().numbers.if_mib_index, std::nullopt);
  }
  for (const char *const interfaces : {R"(["uuid","other"])", R"(["set",[]])"}) {
    rows.interfaces = interfaces;
    EXPECT_EQ(rows.port().name, "p1");
    EXPECT_EQ(rows.port().link_up, std::nullopt);
  }
}

TEST(Ports, HaveSettingsWhereTheyAreConfigured) {
  RowTexts rows;
  rows.port_config = {{"rstp-path-cost", "200000000"},
                      {"rstp-port-admin-edge", "true"},
                      {"rstp-port-auto-edge", "false"},
                      {"rstp-port-priority", "16"}};
  EXPECT_EQ(rows.port().path_cost, 200000000U);
  EXPECT_EQ(rows.port().admin_edge, true);
  EXPECT_EQ(rows.port().auto_edge, false);
  EXPECT_EQ(rows.port().priority, 128U);
  rows.port_config = {{"rstp-path-cost", "0"}, {"rstp-port-admin-edge", "yes"}};
  EXPECT_EQ(rows.port().path_cost, std::nullopt);
  EXPECT_EQ(rows.port().admin_edge, std::nullopt);
}

TEST(PortsWithoutRstp, AreNoPortsOfTheTree) {
  RowTexts rows;
  for (const Pairs &status :
       std::vector<Pairs>{{}, {{"rstp_port_id", "8000"}}, {{"rstp_port_id", "80001"}}}) {
    rows.port_status = status;
    EXPECT_THAT(rows.read().state.ports, IsEmpty());
    EXPECT_THAT(rows.read().left_out, IsEmpty());
    EXPECT_EQ(rows.read().state.settings.mode, SpanningTreeMode::kMst);
  }
}

TEST(Names, CanBePrinted) {
  RowTexts rows;
  std::string text = rows.text();
  const std::string before = R"("Port":{"p":{"new":{"name":"p1")";
  text.replace(text.find(before), before.size(), R"("Port":{"p":{"new":{"name":"p\u001b1\u0085")");
  EXPECT_EQ(reading_of(text).state.ports.at(1).name, "p?1??");
}

TEST(PortsOfSeveralInterfaces, ArePortChannels) {
  RowTexts rows;
  rows.interfaces = R"(["set",[["uuid","i1"],["uuid","i2"]]])";
  rows.bridge_status[4].second = "0.000.00005e005302";
  rows.bridge_status[1].second = "8001";
  const SwitchState state = rows.read().state;
  ASSERT_THAT(state.port_channels, ElementsAre(Key(1)));
  const PortChannel &channel = state.port_channels.at(1);
  EXPECT_EQ(channel.name, "p1");
  EXPECT_EQ(channel.numbers.bridge_port, 4097U);
  EXPECT_EQ(channel.numbers.if_index, 0x16000001U);
  EXPECT_EQ(channel.numbers.port_id, 0x8001U);
  EXPECT_EQ(channel.link_up, std::nullopt);
  EXPECT_EQ(channel.role.in(0), PortRole::kDesignated);
  EXPECT_EQ(state.trees.at(0).observed.root_port, 4097U);
  ASSERT_THAT(state.ports, ElementsAre(Key(3969), Key(3970)));
  EXPECT_EQ(state.ports.at(3969).name, "p1");
  EXPECT_EQ(state.ports.at(3969).channel, 1U);
  EXPECT_EQ(state.ports.at(3969).link_up, true);
  EXPECT_EQ(state.ports.at(3969).numbers.if_mib_index, 11U);
  EXPECT_EQ(state.ports.at(3969).numbers.bridge_port, 0U);
  EXPECT_EQ(state.ports.at(3970).name, "p2");
  EXPECT_EQ(state.ports.at(3970).link_up, false);
  EXPECT_EQ(state.ports.at(3970).role.in(0), std::nullopt);
  // One that could not be opened has no number.
  rows.interface_columns = R"("ofport":-1)";
  EXPECT_THAT(rows.read().state.ports, ElementsAre(Key(3970)));
}

TEST(PortNumbers, FitTheSwitch) {
  RowTexts rows;
  rows.port_status[0].second = "8f7f";
  EXPECT_THAT(rows.read().state.ports, ElementsAre(Key(3967)));
  rows.port_status[0].second = "8f80";
  EXPECT_THAT(rows.read().state.ports, IsEmpty());
  EXPECT_THAT(
      rows.read().left_out,
      ElementsAre("bridge 'br0': port 'p1' is left out: it has RSTP port number 3968, which is above 3967; "
                  "'ovs-vsctl set port p1 other_config:rstp-port-num=N' gives it another one"));
  rows.interfaces = R"(["set",[["uuid","i1"],["uuid","i2"]]])";
  EXPECT_THAT(rows.read().state.port_channels, ElementsAre(Key(3968)));
}

// Two bridges, each with ports p and q that have the numbers 1 and 255, and two members.
std::string two_bridges(const std::string &status_of_second, const std::string &last_id = "80ff") {
  const auto port = [](const std::string &name, const std::string &port_id, const std::string &interfaces) {
    return R"({"new":{"name":")" + name + R"(","interfaces":["set",[)" + interfaces +
           R"(]],"tag":["set",[]],"rstp_status":["map",[["rstp_port_id",")" + port_id +
           R"("],["rstp_port_role","Root"],["rstp_port_state","Forwarding"]]]}})";
  };
  return R"({"Bridge":{"b1":{"new":{"name":"br1","ports":["set",[["uuid","p1"],["uuid","q1"]]],"rstp_enable":true,
             "rstp_status":["map",[["rstp_bridge_id","8.000.00005e005301"],["rstp_root_id","8.000.00005e005301"]]]}},
             "b2":{"new":{"name":"br2","ports":["set",[["uuid","p2"],["uuid","q2"]]],)" +
         status_of_second + R"(}}},"Port":{"p1":)" + port("p1", "8001", R"(["uuid","i"])") + R"(,"q1":)" +
         port("q1", "80ff", R"(["uuid","i"])") + R"(,"p2":)" +
         port("p2", "8001", R"(["uuid","i"],["uuid","j"])") + R"(,"q2":)" +
         port("q2", last_id, R"(["uuid","i"])") +
         R"(},"Interface":{"i":{"new":{"name":"i","ofport":1}},"j":{"new":{"name":"j","ofport":65535}}}})";
}

const std::vector<WatchedBridge> kTwo = {{"br1", 10}, {"br2", 20}};
constexpr const char *kSecondRuns =
    R"("rstp_enable":true,"rstp_status":["map",[["rstp_bridge_id","4.000.00005e005302"],
       ["rstp_root_id","0.000.00005e005309"],["rstp_root_path_cost","2000"],["rstp_bridge_port_id","80ff"]]])";

TEST(SeveralBridges, AreTheTreesOfTheirVlans) {
  const BridgesReading reading = reading_of(two_bridges(kSecondRuns), kTwo);
  const SwitchState &state = reading.state;
  EXPECT_THAT(reading.without_tree, ElementsAre("", ""));
  EXPECT_EQ(state.settings.name, "br1,br2");
  EXPECT_EQ(state.settings.mode, SpanningTreeMode::kRapidPvst);
  EXPECT_EQ(print_vlans(state.rapid_pvst.disabled_vlans), "");
  EXPECT_EQ(state.bridge.address, std::nullopt);
  ASSERT_THAT(state.trees, ElementsAre(Key(10), Key(20)));
  EXPECT_EQ(state.trees.at(10).observed.bridge_id, id(0x8000, 1));
  EXPECT_EQ(state.trees.at(10).observed.root_port, 0U);
  EXPECT_EQ(state.trees.at(20).observed.bridge_id, id(0x4000, 2));
  EXPECT_EQ(state.trees.at(20).observed.root_id, id(0x0000, 9));
  EXPECT_EQ(state.trees.at(20).observed.root_port, 128U + 256 + 255);
  ASSERT_THAT(state.ports, ElementsAre(Key(1), Key(255), Key(511), Key(69505), Key(135039)));
  EXPECT_EQ(print_vlans(state.ports.at(255).vlans), "10");
  EXPECT_EQ(print_vlans(state.ports.at(511).vlans), "20");
  EXPECT_EQ(state.ports.at(511).numbers.bridge_port, 639U);
  EXPECT_EQ(state.ports.at(511).numbers.port_id, 0x80FFU);
  EXPECT_EQ(state.ports.at(511).name, "q2");
  EXPECT_EQ(state.ports.at(69505).name, "i");
  EXPECT_EQ(state.ports.at(69505).channel, 257U);
  EXPECT_EQ(state.ports.at(135039).name, "j");
  ASSERT_THAT(state.port_channels, ElementsAre(Key(257)));
  EXPECT_EQ(state.port_channels.at(257).numbers.bridge_port, 4353U);
  EXPECT_EQ(print_vlans(state.port_channels.at(257).vlans), "20");
}

TEST(SeveralBridges, HaveNoTreeWhereRstpIsOff) {
  const BridgesReading reading = reading_of(two_bridges(R"("rstp_enable":false)"), kTwo);
  EXPECT_THAT(reading.without_tree,
              ElementsAre("", "runs no RSTP: 'ovs-vsctl set bridge br2 rstp_enable=true' begins it"));
  EXPECT_EQ(reading.state.settings.mode, SpanningTreeMode::kRapidPvst);
  EXPECT_EQ(print_vlans(reading.state.rapid_pvst.disabled_vlans), "20");
  EXPECT_THAT(reading.state.trees, ElementsAre(Key(10)));
  EXPECT_THAT(reading.state.ports, ElementsAre(Key(1), Key(255)));
  const std::vector<WatchedBridge> others = {{"br3", 10}, {"br2", 20}};
  EXPECT_EQ(reading_of(two_bridges(R"("rstp_enable":false)"), others).state, unknown_state(others));
}

TEST(SeveralBridges, HaveRoomForPortsUpTo255) {
  const BridgesReading reading = reading_of(two_bridges(kSecondRuns, "8100"), kTwo);
  EXPECT_THAT(reading.state.ports, ElementsAre(Key(1), Key(255), Key(69505), Key(135039)));
  EXPECT_EQ(reading.state.trees.at(20).observed.root_port, std::nullopt);
  EXPECT_THAT(
      reading.left_out,
      ElementsAre("bridge 'br2': port 'q2' is left out: it has RSTP port number 256, which is above 255; "
                  "'ovs-vsctl set port q2 other_config:rstp-port-num=N' gives it another one"));
}

TEST(PortNumbers, AreOfOnePortEach) {
  const BridgesReading reading = reading_of(two_bridges(kSecondRuns, "4001"), kTwo);
  EXPECT_THAT(reading.state.ports, ElementsAre(Key(1), Key(255), Key(69505), Key(135039)));
  EXPECT_THAT(
      reading.left_out,
      ElementsAre("bridge 'br2': port 'q2' is left out: it has the RSTP port number 1 of another port"));
}

TEST(OneBridge, CanBeTheTreeOfAVlan) {
  const std::vector<WatchedBridge> bridges = {{"br1", 7}};
  const BridgesReading reading = reading_of(two_bridges(kSecondRuns), bridges);
  EXPECT_EQ(reading.state.settings.mode, SpanningTreeMode::kRapidPvst);
  EXPECT_THAT(reading.state.trees, ElementsAre(Key(7)));
  EXPECT_EQ(print_vlans(reading.state.ports.at(255).vlans), "7");
}

TEST(Intervals, AreThoseOfTheStatistics) {
  EXPECT_EQ(status_interval(rows_of(kMonitorReply)), 5000U);
  EXPECT_EQ(status_interval(rows_of("{}")), 0U);
  OvsdbRows rows = rows_of(kMonitorReply);
  const std::vector<std::pair<std::string, uint64_t>> cases = {{"60000", 60000}, {"1", 5000}, {"x", 5000}};
  for (const auto &[text, interval] : cases) {
    update_rows(&rows, R"({"Open_vSwitch":{"o":{"new":{"other_config":)" +
                           map_text({{"stats-update-interval", text}}) + "}}}}");
    EXPECT_EQ(status_interval(rows), interval) << text;
  }
  // The statistics of RSTP that was turned off are written no more.
  update_rows(&rows, kStatusCleared);
  EXPECT_EQ(status_interval(rows), 0U);
}

}  // namespace
