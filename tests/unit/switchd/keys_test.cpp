// Showing and setting single keys.
#include "keys/keys.h"
#include "sources/scenario/consistency.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "keys/config_error.h"
#include "sources/scenario/loader.h"

using namespace stpswitch;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::StartsWith;

namespace {

class Keys : public testing::Test {
 protected:
  std::vector<std::string> shown(const std::string &prefix) const {
    std::vector<std::string> lines;
    for (const auto &[key, value] : values_below(state_, prefix)) {
      lines.push_back(key + " = " + print_value(value));
    }
    return lines;
  }

  // Sets and shows one key.
  std::string set(const std::string &key, const std::string &text) {
    state_ = with_value(state_, key, text);
    return print_value(values_below(state_, key).at(0).second);
  }

  // The error of setting one key, and that it leaves everything as it was.
  std::string refusal_of(const std::string &key, const std::string &text) {
    const auto before = shown("");
    std::string error = "no error";
    try {
      set(key, text);
    } catch (const ConfigError &caught) {
      error = caught.what();
    }
    EXPECT_EQ(shown(""), before);
    return error;
  }

  std::string refusal_to_show(const std::string &key) const {
    try {
      values_below(state_, key);
      return "no error";
    } catch (const ConfigError &error) {
      return error.what();
    }
  }

  SwitchState state_ = load_scenario(SCENARIOS "/mst-small.toml");
};

TEST_F(Keys, ShowsASection) {
  EXPECT_THAT(shown("switch"),
              ElementsAre("switch.name = campus-access-1", "switch.mode = mst",
                          "switch.path_cost_method = short", "switch.loop_guard_default = true"));
  EXPECT_THAT(shown("access"), ElementsAre("access.refused_users = guest"));
}

TEST_F(Keys, ShowsWhatLiesInsideASection) {
  EXPECT_THAT(
      shown("mst"),
      ElementsAre("mst.region = campus", "mst.revision = 3", "mst.max_hops = 20",
                  "mst.pre_standard_digest = 7d3c1b90a45e62f88c01d9b7f3a6520e",
                  "mst.cist.remaining_hops = 19", "mst.cist.regional_root_priority = 24576",
                  "mst.cist.regional_root_mac = 00:00:5e:00:53:2a", "mst.cist.internal_root_path_cost = 2000",
                  "mst.instance.1.vlans = 10-19,30", "mst.instance.1.remaining_hops = 19",
                  "mst.instance.2.vlans = 20-29", "mst.instance.2.remaining_hops = 18",
                  "mst.instance.10.vlans = 100-199", "mst.instance.10.remaining_hops = 20"));
  EXPECT_THAT(shown("mst.cist"),
              ElementsAre("mst.cist.remaining_hops = 19", "mst.cist.regional_root_priority = 24576",
                          "mst.cist.regional_root_mac = 00:00:5e:00:53:2a",
                          "mst.cist.internal_root_path_cost = 2000"));
  EXPECT_THAT(shown("rapid_pvst"), ElementsAre("rapid_pvst.disabled_vlans = "));
  EXPECT_THAT(shown("mst.instance"),
              ElementsAre("mst.instance.1.vlans = 10-19,30", "mst.instance.1.remaining_hops = 19",
                          "mst.instance.2.vlans = 20-29", "mst.instance.2.remaining_hops = 18",
                          "mst.instance.10.vlans = 100-199", "mst.instance.10.remaining_hops = 20"));
}

TEST_F(Keys, ShowsOneEntryAndNotItsNeighbours) {
  EXPECT_THAT(shown("mst.instance.1"),
              ElementsAre("mst.instance.1.vlans = 10-19,30", "mst.instance.1.remaining_hops = 19"));
  EXPECT_THAT(
      shown("port.7"),
      ElementsAre("port.7.name = Ethernet1/7", "port.7.link = down", "port.7.half_duplex = false",
                  "port.7.channel = 2", "port.7.switchport = true", "port.7.vlans = 1",
                  "port.7.path_cost = 20000", "port.7.priority = 128", "port.7.if_mib_index = 135",
                  "port.7.root_guard = false", "port.7.loop_guard = default", "port.7.link_type = auto",
                  "port.7.pre_standard_mst = false", "port.7.admin_edge = false", "port.7.auto_edge = true",
                  "port.7.edge = false", "port.7.boundary = false", "port.7.peer = false",
                  "port.7.dispute = false", "port.7.pre_standard_neighbor = false", "port.7.root_port_of = ",
                  "port.7.alternate_port_of = ", "port.7.backup_port_of = ", "port.7.designated_cost = 0",
                  "port.7.designated_port = 32769", "port.7.forward_transitions = 1",
                  "port.7.root_inconsistent = ", "port.7.loop_inconsistent = ", "port.7.pvid_inconsistent = ",
                  "port.7.type_inconsistent = "));
  EXPECT_THAT(shown("port.2"),
              IsSupersetOf({"port.2.name = Ethernet1/2", "port.2.vlans = 1,11", "port.2.root_guard = true",
                            "port.2.boundary = true", "port.2.peer = true", "port.2.root_inconsistent = 0-1",
                            "port.2.pvid_inconsistent = 1,11", "port.2.type_inconsistent = 11"}));
  EXPECT_THAT(
      shown("port_channel.2"),
      IsSupersetOf({"port_channel.2.name = port-channel2", "port_channel.2.vlans = 1,10-30,100-199",
                    "port_channel.2.root_inconsistent = 2", "port_channel.2.type_inconsistent = 20"}));
  for (const std::string &line : shown("port_channel.2")) {
    EXPECT_THAT(line, StartsWith("port_channel.2."));
  }
}

TEST_F(Keys, LeavesOutWhatNobodyKnows) {
  state_.ports.at(7).edge.reset();
  for (const std::string &line : shown("port.7")) {
    EXPECT_FALSE(line.starts_with("port.7.edge ")) << line;
  }
  EXPECT_EQ(refusal_to_show("port.7.edge"), "port.7.edge: nobody knows its value");
  EXPECT_EQ(refusal_to_show("port.7.designated_bridge"), "port.7.designated_bridge: nobody knows its value");
}

TEST_F(Keys, ShowsOneKey) { EXPECT_THAT(shown("port.7.link"), ElementsAre("port.7.link = down")); }

TEST_F(Keys, ShowsNothingForAnEmptyList) {
  state_ = {};
  EXPECT_THAT(shown("port"), ElementsAre());
  EXPECT_THAT(shown("mst.instance"), ElementsAre());
}

TEST_F(Keys, RefusesToShowWhatIsNotThere) {
  for (const char *const key :
       {"por", "port.", "port.99", "port.1.", "port.1.speed", "switch.mode.x", ".", "mst.instance.0"}) {
    EXPECT_THAT(refusal_to_show(key), StartsWith(std::string(key) + ": the switch has no such key"));
  }
}

TEST_F(Keys, SetsEachKind) {
  EXPECT_EQ(set("switch.name", "renamed"), "renamed");
  EXPECT_EQ(set("switch.mode", "rapid-pvst"), "rapid-pvst");
  EXPECT_EQ(set("switch.path_cost_method", "long"), "long");
  EXPECT_EQ(set("switch.loop_guard_default", "false"), "false");
  EXPECT_EQ(set("mst.region", ""), "");
  EXPECT_EQ(set("mst.region", "ABCDEFGHIJKLMNOPQRSTUVWXYZ012345"), "ABCDEFGHIJKLMNOPQRSTUVWXYZ012345");
  EXPECT_EQ(set("mst.revision", "65535"), "65535");
  EXPECT_EQ(set("mst.max_hops", "6"), "6");
  EXPECT_EQ(set("mst.pre_standard_digest", "00112233445566778899AABBCCDDEEFF"),
            "00112233445566778899aabbccddeeff");
  EXPECT_EQ(set("mst.pre_standard_digest", ""), "");
  EXPECT_EQ(set("mst.instance.1.vlans", "10-19,31-99"), "10-19,31-99");
  EXPECT_EQ(set("mst.instance.1.vlans", ""), "");
  EXPECT_EQ(set("mst.instance.1.remaining_hops", "1"), "1");
  EXPECT_EQ(set("mst.cist.remaining_hops", "40"), "40");
  EXPECT_EQ(set("mst.cist.regional_root_priority", "0"), "0");
  EXPECT_EQ(set("mst.cist.regional_root_priority", "65535"), "65535");
  EXPECT_EQ(set("mst.cist.regional_root_mac", "0A:bC:De:00:53:FF"), "0a:bc:de:00:53:ff");
  EXPECT_EQ(set("mst.cist.internal_root_path_cost", "0"), "0");
  EXPECT_EQ(set("mst.cist.internal_root_path_cost", "4294967295"), "4294967295");
  EXPECT_EQ(set("rapid_pvst.disabled_vlans", "99,4094,100"), "99-100,4094");
  EXPECT_EQ(set("rapid_pvst.disabled_vlans", ""), "");
  EXPECT_EQ(set("port.3.name", "Printer"), "Printer");
  EXPECT_EQ(set("port.3.link", "down"), "down");
  EXPECT_EQ(set("port.3.vlans", "2,1"), "1-2");
  EXPECT_EQ(set("port.3.channel", "2"), "2");
  EXPECT_EQ(set("port.3.channel", "0"), "0");
  EXPECT_EQ(set("port.3.switchport", "false"), "false");
  EXPECT_EQ(set("port.3.root_guard", "false"), "false");
  EXPECT_EQ(set("port_channel.2.root_guard", "false"), "false");
  EXPECT_EQ(set("port_channel.2.name", "Core"), "Core");
  EXPECT_EQ(set("port_channel.2.vlans", "5"), "5");
  EXPECT_EQ(set("port.3.path_cost", "1"), "1");
  EXPECT_EQ(set("port.3.path_cost", "200000000"), "200000000");
  EXPECT_EQ(set("port.3.root_inconsistent", "12,10,0,11"), "0,10-12");
  EXPECT_EQ(set("port.3.loop_inconsistent", "0-4094"), "0-4094");
  EXPECT_EQ(set("port.3.pvid_inconsistent", "4094"), "4094");
  EXPECT_EQ(set("port.3.type_inconsistent", "7"), "7");
  EXPECT_EQ(set("port.3.type_inconsistent", "8"), "8");
  EXPECT_EQ(set("port.3.type_inconsistent", ""), "");
  EXPECT_EQ(set("port_channel.2.path_cost", "20"), "20");
  EXPECT_EQ(set("port_channel.2.root_inconsistent", ""), "");
  EXPECT_EQ(set("port_channel.2.loop_inconsistent", "1"), "1");
  EXPECT_EQ(set("port_channel.2.pvid_inconsistent", "2"), "2");
  EXPECT_EQ(set("port_channel.2.type_inconsistent", "3"), "3");
  for (const char *const choice : {"enabled", "disabled", "default"}) {
    EXPECT_EQ(set("port.3.loop_guard", choice), choice);
    EXPECT_EQ(set("port_channel.2.loop_guard", choice), choice);
  }
  for (const char *const choice : {"point-to-point", "shared", "auto"}) {
    EXPECT_EQ(set("port.3.link_type", choice), choice);
    EXPECT_EQ(set("port_channel.2.link_type", choice), choice);
  }
  for (const std::string key :
       {"pre_standard_mst", "edge", "boundary", "peer", "dispute", "pre_standard_neighbor"}) {
    for (const char *const flag : {"true", "false"}) {
      EXPECT_EQ(set("port.3." + key, flag), flag);
      EXPECT_EQ(set("port_channel.2." + key, flag), flag);
    }
  }
  EXPECT_EQ(set("port.3.half_duplex", "true"), "true");
  EXPECT_EQ(set("bridge.address", "0A:bC:De:00:53:FF"), "0a:bc:de:00:53:ff");
  EXPECT_EQ(set("bridge.root", "F000.0abCDe0053fF"), "f000.0abcde0053ff");
  EXPECT_EQ(set("tree.0.topology_changes", "4294967295"), "4294967295");
  for (const std::string path : {"bridge", "tree.0"}) {
    EXPECT_EQ(set(path + ".priority", "61440"), "61440");
    EXPECT_EQ(set(path + ".hold_count", "1"), "1");
    EXPECT_EQ(set(path + ".max_age", "600"), "600");
    EXPECT_EQ(set(path + ".hello_time", "1000"), "1000");
    EXPECT_EQ(set(path + ".forward_delay", "400"), "400");
    EXPECT_EQ(set(path + ".root_max_age", "4000"), "4000");
    for (const char *const version : {"stp", "rstp", "mstp"}) {
      EXPECT_EQ(set(path + ".protocol_version", version), version);
    }
  }
  for (const std::string path : {"port.3", "port_channel.2"}) {
    EXPECT_EQ(set(path + ".priority", "240"), "240");
    EXPECT_EQ(set(path + ".if_mib_index", "2147483647"), "2147483647");
    EXPECT_EQ(set(path + ".designated_bridge", "8000.00005e005301"), "8000.00005e005301");
    EXPECT_EQ(set(path + ".learning_in", "2,0"), "0,2");
  }
  for (const std::string key : {"root_port_of", "alternate_port_of", "backup_port_of"}) {
    EXPECT_EQ(set("port.3." + key, "12,10,0,11"), "0,10-12");
    EXPECT_EQ(set("port.3." + key, ""), "");
    EXPECT_EQ(set("port_channel.2." + key, "0-4094"), "0-4094");
    EXPECT_EQ(set("port_channel.2." + key, ""), "");
  }
  EXPECT_EQ(set("access.refused_users", "guest,ops"), "guest,ops");
  EXPECT_EQ(set("access.refused_users", ""), "");
}

TEST_F(Keys, SetsOnlyThatKey) {
  auto expected = shown("");
  for (std::string &line : expected) {
    if (line == "port.3.link = up") {
      line = "port.3.link = down";
    }
  }
  set("port.3.link", "down");
  EXPECT_EQ(shown(""), expected);
}

TEST_F(Keys, TakesEveryValueThatItShows) {
  const auto before = shown("");
  for (const auto &[key, value] : values_below(state_, "")) {
    state_ = with_value(state_, key, print_value(value));
  }
  EXPECT_EQ(shown(""), before);
}

TEST_F(Keys, RefuseWhatTheFieldRefuses) {
  EXPECT_EQ(refusal_of("switch.mode", "pvst"), "switch.mode: 'pvst' is not mst or rapid-pvst");
  EXPECT_EQ(refusal_of("switch.loop_guard_default", "on"),
            "switch.loop_guard_default: 'on' is neither true nor false");
  EXPECT_EQ(refusal_of("mst.revision", "x"), "mst.revision: 'x' is not a number");
  EXPECT_EQ(refusal_of("mst.revision", "65536"), "mst.revision: 65536 is not in 0..65535");
  EXPECT_EQ(refusal_of("mst.instance.10.vlans", "1-"),
            "mst.instance.10.vlans: '1-' is not a list of VLANs such as 1,10-19");
  EXPECT_EQ(refusal_of("mst.instance.10.remaining_hops", "0"),
            "mst.instance.10.remaining_hops: 0 is not in 1..40");
  EXPECT_EQ(refusal_of("mst.cist.remaining_hops", "41"), "mst.cist.remaining_hops: 41 is not in 1..40");
  EXPECT_EQ(refusal_of("mst.cist.regional_root_priority", "65536"),
            "mst.cist.regional_root_priority: 65536 is not in 0..65535");
  EXPECT_EQ(refusal_of("mst.cist.regional_root_mac", ""),
            "mst.cist.regional_root_mac: '' is not a MAC address such as 00:00:5e:00:53:00");
  EXPECT_EQ(refusal_of("mst.cist.regional_root_mac", "00-00-5e-00-53-00"),
            "mst.cist.regional_root_mac: '00-00-5e-00-53-00' is not a MAC address such as 00:00:5e:00:53:00");
  EXPECT_EQ(refusal_of("mst.cist.internal_root_path_cost", "4294967296"),
            "mst.cist.internal_root_path_cost: 4294967296 is not in 0..4294967295");
  EXPECT_EQ(refusal_of("mst.cist.internal_root_path_cost", "-1"),
            "mst.cist.internal_root_path_cost: -1 is not in 0..4294967295");
  EXPECT_EQ(refusal_of("rapid_pvst.disabled_vlans", "4095"),
            "rapid_pvst.disabled_vlans: VLAN 4095 is not in 1..4094");
  EXPECT_EQ(refusal_of("port.3.root_guard", "on"), "port.3.root_guard: 'on' is neither true nor false");
  EXPECT_EQ(refusal_of("port_channel.2.root_guard", ""),
            "port_channel.2.root_guard: '' is neither true nor false");
  EXPECT_EQ(refusal_of("port.3.path_cost", "0"), "port.3.path_cost: 0 is not in 1..200000000");
  EXPECT_EQ(refusal_of("port_channel.2.path_cost", "200000001"),
            "port_channel.2.path_cost: 200000001 is not in 1..200000000");
  EXPECT_EQ(refusal_of("port.3.path_cost", "cheap"), "port.3.path_cost: 'cheap' is not a number");
  EXPECT_EQ(refusal_of("port.2.root_inconsistent", "4095"),
            "port.2.root_inconsistent: tree 4095 is not in 0..4094");
  EXPECT_EQ(refusal_of("port.2.pvid_inconsistent", "1;11"),
            "port.2.pvid_inconsistent: '1;11' is not a list of trees such as 0,10-12");
  EXPECT_EQ(refusal_of("port_channel.2.loop_inconsistent", "3-2"),
            "port_channel.2.loop_inconsistent: the range 3-2 runs backwards");
  EXPECT_EQ(refusal_of("port_channel.2.type_inconsistent", "-1"),
            "port_channel.2.type_inconsistent: '-1' is not a list of trees such as 0,10-12");
  EXPECT_EQ(refusal_of("port.3.loop_guard", "on"),
            "port.3.loop_guard: 'on' is not default, enabled or disabled");
  EXPECT_EQ(refusal_of("port_channel.2.loop_guard", ""),
            "port_channel.2.loop_guard: '' is not default, enabled or disabled");
  EXPECT_EQ(refusal_of("port.3.link_type", "p2p"),
            "port.3.link_type: 'p2p' is not auto, point-to-point or shared");
  for (const std::string key :
       {"pre_standard_mst", "edge", "boundary", "peer", "dispute", "pre_standard_neighbor"}) {
    EXPECT_EQ(refusal_of("port.3." + key, "1"), "port.3." + key + ": '1' is neither true nor false");
  }
  EXPECT_EQ(refusal_of("port.3.half_duplex", "half"), "port.3.half_duplex: 'half' is neither true nor false");
  EXPECT_EQ(refusal_of("port.3.root_port_of", "4095"), "port.3.root_port_of: tree 4095 is not in 0..4094");
  EXPECT_EQ(refusal_of("port_channel.2.alternate_port_of", "x"),
            "port_channel.2.alternate_port_of: 'x' is not a list of trees such as 0,10-12");
  EXPECT_EQ(refusal_of("port.3.backup_port_of", "2-1"),
            "port.3.backup_port_of: the range 2-1 runs backwards");
  EXPECT_EQ(refusal_of("access.refused_users", "a,,b"), "access.refused_users: a user's name is empty");
}

TEST_F(Keys, RefuseWhatContradictsOtherKeys) {
  EXPECT_EQ(refusal_of("mst.instance.1.vlans", "10-25"),
            "mst.instance.1.vlans: VLAN 20 belongs to instance 2 already");
  EXPECT_EQ(refusal_of("port.3.channel", "9"), "port.3.channel: there is no port-channel 9");
  EXPECT_EQ(refusal_of("port.9.channel", "1"),
            "port.9.channel: a port that takes no part in bridging cannot join a port-channel");
  EXPECT_EQ(refusal_of("port.5.switchport", "false"),
            "port.5.switchport: a member of port-channel 1 takes part in bridging");
  EXPECT_EQ(refusal_of("port.3.name", "Ethernet1/1"),
            "port.3.name: 'Ethernet1/1' is the name of port.1 already");
  EXPECT_EQ(refusal_of("port.1.name", "port-channel1"),
            "port.1.name: 'port-channel1' is the name of port_channel.1 already");
}

TEST_F(Keys, RefuseASecondRoleInATree) {
  set("port.3.root_port_of", "0,7");
  EXPECT_EQ(refusal_of("port.3.alternate_port_of", "1-7"),
            "port.3.alternate_port_of: tree 7 stands in port.3.root_port_of already");
  EXPECT_EQ(refusal_of("port.3.backup_port_of", "0"),
            "port.3.backup_port_of: tree 0 stands in port.3.root_port_of already");
  set("port.3.alternate_port_of", "1-6");
  EXPECT_EQ(refusal_of("port.3.backup_port_of", "6"),
            "port.3.backup_port_of: tree 6 stands in port.3.alternate_port_of already");
  EXPECT_EQ(refusal_of("port.3.root_port_of", "6"),
            "port.3.root_port_of: tree 6 stands in port.3.alternate_port_of already");
  EXPECT_EQ(set("port.3.backup_port_of", "8"), "8");
  EXPECT_EQ(set("port.10.root_port_of", "7"), "7");
  set("port_channel.2.backup_port_of", "4094");
  EXPECT_EQ(refusal_of("port_channel.2.root_port_of", "4094"),
            "port_channel.2.root_port_of: tree 4094 stands in port_channel.2.backup_port_of already");
}

TEST_F(Keys, SuggestWhatAMisspeltKeyMeant) {
  EXPECT_EQ(refusal_of("mst.regoin", "x"),
            "mst.regoin: the switch has no such key that can be set; did you mean 'mst.region'?");
  EXPECT_EQ(refusal_of("prot.3.link", "up"),
            "prot.3.link: the switch has no such key that can be set; did you mean 'port.3.link'?");
  EXPECT_EQ(refusal_of("switch..mode", "mst"),
            "switch..mode: the switch has no such key that can be set; did you mean 'switch.mode'?");
  EXPECT_EQ(refusal_of("port.99.link", "up"), "port.99.link: the switch has no such key that can be set");
  EXPECT_EQ(refusal_to_show("mst.instance.1.vlan"),
            "mst.instance.1.vlan: the switch has no such key; did you mean 'mst.instance.1.vlans'?");
  EXPECT_EQ(refusal_to_show("portchannel.2"),
            "portchannel.2: the switch has no such key; did you mean 'port_channel.2'?");
  EXPECT_EQ(refusal_to_show("rapidpvst"),
            "rapidpvst: the switch has no such key; did you mean 'rapid_pvst'?");
}

TEST_F(Keys, RefuseToSetWhatIsNotThere) {
  for (const char *const key :
       {"", "switch", "mode", "switch.colour", "port", "port.3", "port.3.number", "port.99.link",
        "port_channel.2.half_duplex", "port.03.link", "port.link", "mst.instance.5.vlans", "mst.cist",
        "mst.cist.vlans", "mst.instance.0.remaining_hops", "mst.remaining_hops", "rapid_pvst",
        "switch.mode.x", "."}) {
    EXPECT_EQ(refusal_of(key, "1"), std::string(key) + ": the switch has no such key that can be set");
  }
}

}  // namespace
