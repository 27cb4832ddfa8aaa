// What is wrong with a scenario is told with file, line and key.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sources/scenario/loader.h"
#include "support/temporary_folder.h"

using namespace stpswitch;
using testing::StartsWith;

namespace {

std::string error_of(const std::string &text) {
  try {
    parse_scenario(text, "x.toml");
  } catch (const std::runtime_error &error) {
    return error.what();
  }
  return "no error";
}

// The error of a scenario that is right but for what follows its first line.
std::string error_after_mode(const std::string &text) { return error_of("switch.mode = 'mst'\n" + text); }

TEST(ScenarioErrors, InToml) {
  EXPECT_EQ(error_of("[switch]\nmode = mst\n"),
            "x.toml:2: 'mode = mst' is not TOML: a text stands between quotes");
  EXPECT_EQ(error_of("[switch]\nmode = \"mst"),
            "x.toml:2: 'mode = \"mst' is not TOML: a quote or a bracket is missing at its end");
  EXPECT_EQ(error_of("[switch\nmode = 'mst'\n"),
            "x.toml:1: '[switch' is not TOML: the bracket is not closed");
  EXPECT_EQ(error_of("[switch]\nmode 'mst'\n"),
            "x.toml:2: 'mode 'mst'' is not TOML: a key and its value have '=' between them");
  EXPECT_EQ(error_of("[switch]\nmode = 'mst'\n[switch]\n"),
            "x.toml:3: '[switch]' is not TOML: this stands in the file already");
  EXPECT_EQ(error_of("[switch]\nmode = 'mst'\nmode = 'mst'\n"),
            "x.toml:3: 'mode = 'mst'' is not TOML: this stands in the file already");
  EXPECT_EQ(error_after_mode("[mst]\nrevision = 03\n"),
            "x.toml:3: 'revision = 03' is not TOML: a number does not begin with 0");
  for (const std::string value : {"True", "False"}) {
    EXPECT_EQ(error_of("switch.loop_guard_default = " + value),
              "x.toml:1: 'switch.loop_guard_default = " + value +
                  "' is not TOML: it is true or false, in small letters; a text stands between quotes");
  }
  for (const std::string vlans : {"1-10", "1,10"}) {
    EXPECT_EQ(error_after_mode("[[port]]\nnumber = 1\nvlans = " + vlans + "\n"),
              "x.toml:4: 'vlans = " + vlans + "' is not TOML: " +
                  (vlans == "1,10" ? "nothing but a comment stands behind a value; " : "") +
                  "a text, as lists of VLANs are, stands between quotes");
  }
}

TEST(ScenarioErrors, InTomlAreToldInPlainWords) {
  constexpr const char *kQuotes = "a text stands between quotes";
  constexpr const char *kBehind =
      "nothing but a comment stands behind a value; a text, as lists of VLANs are, stands between quotes";
  constexpr const char *kUnclosed = "a quote is missing at its end, or a text holds a control character";
  constexpr const char *kLine =
      "a line is a section, a key and its value, or a comment, which begins with '#'";
  for (const auto &[line, meaning] : std::vector<std::pair<std::string, std::string>>{
           {"mode = \"mst", kUnclosed},
           {"mode = 'mst", kUnclosed},
           {"revision =", "there is no value behind '='"},
           {"revision = # three", "there is no value behind '='"},
           {"users = ['a' 'b']", "a comma or the closing bracket is missing"},
           {"region = 1campus", kQuotes},
           {"root_guard = yes", kQuotes},
           {"root_guard = no", kQuotes},
           {"mac = 00:00:5e:00:53:00", kQuotes},
           {"mac = 0a:00:5e:00:53:00", kQuotes},
           {"address = 10.0.0.1", kQuotes},
           {"date = 2026-13-01", kQuotes},
           {"root_guard = truex", "it is true or false, in small letters; a text stands between quotes"},
           {"revision = 99999999999999999999", "the number is too large"},
           {"revision = 1 2", kBehind},
           {"mode = 'mst' x", kBehind},
           {"vlans = '1', link = 'up'", kBehind},
           {"revision = 1 // three", kBehind},
           {"// three", kLine},
           {"= 3", kLine}}) {
    EXPECT_EQ(error_of(line + "\n"),
              std::string("x.toml:1: '").append(line).append("' is not TOML: ").append(meaning));
  }
}

TEST(ScenarioErrors, InTomlThatAreNotCommonAreTheParsersOwn) {
  EXPECT_EQ(error_of("switch.name = \"\\q\"\n"),
            "x.toml:1: 'switch.name = \"\\q\"' is not TOML: Error while parsing string: unknown escape "
            "sequence '\\q'");
}

TEST(ScenarioErrors, InTomlShowNoLineThatIsLongOrHoldsMoreThanText) {
  EXPECT_EQ(error_of("switch.name = '\xFF'"),
            "x.toml:1: the line is not TOML: Encountered invalid utf-8 sequence");
  EXPECT_EQ(error_of("\tmode = mst \r\n"),
            "x.toml:1: 'mode = mst' is not TOML: a text stands between quotes");
  EXPECT_EQ(error_of("a\tb = 1"),
            "x.toml:1: the line is not TOML: a key and its value have '=' between them");
  EXPECT_EQ(error_of("a = " + std::string(56, 'x')),
            "x.toml:1: 'a = " + std::string(56, 'x') + "' is not TOML: a text stands between quotes");
  EXPECT_EQ(error_of("a = " + std::string(57, 'x')),
            "x.toml:1: 'a = " + std::string(56, 'x') + "...' is not TOML: a text stands between quotes");
  EXPECT_EQ(error_of("a = B\xC3\xBCro"),
            "x.toml:1: 'a = B\xC3\xBCro' is not TOML: a text stands between quotes");
  EXPECT_EQ(error_of("a = x\xC2\x9B"), "x.toml:1: the line is not TOML: a text stands between quotes");
  EXPECT_EQ(
      error_of("a = " + std::string(55, 'x') + "\xC3\xBC\xC3\xBC"),
      "x.toml:1: 'a = " + std::string(55, 'x') + "\xC3\xBC...' is not TOML: a text stands between quotes");
  EXPECT_THAT(error_of(std::string(10000, '[')), StartsWith("x.toml:1: '[[["));
  EXPECT_EQ(error_of("a = [1,\n\n"),
            "x.toml:2: the line is not TOML: a quote or a bracket is missing at its end");
}

TEST(ScenarioErrors, ShowNoControlCharactersOfKeysAndValues) {
  EXPECT_EQ(error_after_mode("rapid_pvst.disabled_vlans = \"1\\u001B[31m\\n\\u009B2\""),
            "x.toml:2: rapid_pvst.disabled_vlans: '1?[31m???2' is not a list of VLANs such as 1,10-19");
  EXPECT_EQ(error_of("\"a\\nb\" = 1"), "x.toml:1: a?b: unknown section");
}

TEST(ScenarioErrors, OfUnknownKeys) {
  EXPECT_EQ(error_of("\n[ports]\n"), "x.toml:2: ports: unknown section; did you mean 'port'?");
  EXPECT_EQ(error_of("colour = 1\n"), "x.toml:1: colour: unknown section");
  EXPECT_EQ(error_of("[switch]\nmode = 'mst'\ncolour = 'red'\n"), "x.toml:3: switch.colour: unknown key");
  EXPECT_EQ(error_after_mode("[mst]\ninstances = 3\n"), "x.toml:3: mst.instances: unknown key");
  EXPECT_EQ(error_after_mode("[[mst.instance]]\nid = 1\nvlan = '1'\n"),
            "x.toml:4: mst.instance.1.vlan: unknown key; did you mean 'vlans'?");
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 3\nspeed = 10\n"), "x.toml:4: port.3.speed: unknown key");
  EXPECT_EQ(error_after_mode("[[port_channel]]\nnumber = 2\nlink = 'up'\n"),
            "x.toml:4: port_channel.2.link: unknown key");
  EXPECT_EQ(error_after_mode("[mst.cist]\nvlans = '1'\n"), "x.toml:3: mst.cist.vlans: unknown key");
  EXPECT_EQ(error_after_mode("[rapid_pvst]\nvlans = '1'\n"), "x.toml:3: rapid_pvst.vlans: unknown key");
  EXPECT_EQ(error_after_mode("[access]\nusers = []\n"), "x.toml:3: access.users: unknown key");
}

TEST(ScenarioErrors, OfMissingKeys) {
  EXPECT_EQ(error_of(""), "x.toml:1: switch.mode: the key is missing");
  EXPECT_EQ(error_of("[mst]\n\n[switch]\nname = 'x'\n"), "x.toml:3: switch.mode: the key is missing");
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 1\n[[port]]\nlink = 'up'\n"),
            "x.toml:4: port.number: the key is missing");
  EXPECT_EQ(error_after_mode("[[mst.instance]]\nvlans = '1'\n"),
            "x.toml:2: mst.instance.id: the key is missing");
}

TEST(ScenarioErrors, OfWrongTypes) {
  EXPECT_EQ(error_of("switch = 3"), "x.toml:1: switch: expected a [switch] table");
  EXPECT_EQ(error_after_mode("mst = 'x'"), "x.toml:2: mst: expected a [mst] table");
  EXPECT_EQ(error_after_mode("[port]\nnumber = 1\n"), "x.toml:2: port: expected [[port]] tables");
  EXPECT_EQ(error_after_mode("port = [1]\n"), "x.toml:2: port: expected [[port]] tables");
  EXPECT_EQ(error_after_mode("[mst.instance]\nid = 1\n"),
            "x.toml:2: mst.instance: expected [[mst.instance]] tables");
  EXPECT_EQ(error_after_mode("[[mst.cist]]\nremaining_hops = 1\n"),
            "x.toml:2: mst.cist: expected a [mst.cist] table");
  EXPECT_EQ(error_after_mode("rapid_pvst = '99'\n"), "x.toml:2: rapid_pvst: expected a [rapid_pvst] table");
  EXPECT_EQ(error_of("[switch]\nmode = 4\n"), "x.toml:2: switch.mode: expected a string");
  EXPECT_EQ(error_of("[switch]\nmode = 'mst'\nloop_guard_default = 1\n"),
            "x.toml:3: switch.loop_guard_default: expected true or false");
  EXPECT_EQ(error_after_mode("[mst]\nrevision = '3'\n"), "x.toml:3: mst.revision: expected an integer");
  EXPECT_EQ(error_after_mode("[mst]\nrevision = 3.0\n"), "x.toml:3: mst.revision: expected an integer");
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = '3'\n"), "x.toml:3: port.number: expected an integer");
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 3\nvlans = 1\n"),
            "x.toml:4: port.3.vlans: expected a string");
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 3\nroot_guard = 1\n"),
            "x.toml:4: port.3.root_guard: expected true or false");
  EXPECT_EQ(error_after_mode("[[port_channel]]\nnumber = 3\nroot_guard = 'true'\n"),
            "x.toml:4: port_channel.3.root_guard: expected true or false");
  EXPECT_EQ(error_after_mode("[mst.cist]\nregional_root_mac = 5\n"),
            "x.toml:3: mst.cist.regional_root_mac: expected a string");
  EXPECT_EQ(error_after_mode("[access]\nrefused_users = 'guest'\n"),
            "x.toml:3: access.refused_users: expected a list of strings");
  EXPECT_EQ(error_after_mode("[access]\nrefused_users = ['guest', 1]\n"),
            "x.toml:3: access.refused_users: expected a list of strings");
}

TEST(ScenarioErrors, OfSwitch) {
  EXPECT_EQ(error_of("[switch]\nmode = 'pvst'\n"), "x.toml:2: switch.mode: 'pvst' is not mst or rapid-pvst");
  EXPECT_EQ(error_of("[switch]\nmode = 'mst'\npath_cost_method = 'medium'\n"),
            "x.toml:3: switch.path_cost_method: 'medium' is not short or long");
  EXPECT_EQ(error_of("[switch]\nmode = 'mst'\nname = '" + std::string(65, 'n') + "'\n"),
            "x.toml:3: switch.name: a text of 65 octets is longer than 64");
  EXPECT_EQ(error_of("[switch]\nmode = 'mst'\nname = \"two\\nlines\"\n"),
            "x.toml:3: switch.name: the text holds a control character");
  EXPECT_EQ(error_of("[switch]\nmode = 'mst'\nname = \"\\u009b3m\"\n"),
            "x.toml:3: switch.name: the text holds a control character");
}

TEST(ScenarioErrors, OfTheMstRegion) {
  EXPECT_EQ(error_after_mode("[mst]\nregion = '" + std::string(33, 'r') + "'\n"),
            "x.toml:3: mst.region: a text of 33 octets is longer than 32");
  EXPECT_EQ(error_after_mode("[mst]\nregion = \"a\\u0000b\"\n"),
            "x.toml:3: mst.region: the text holds a control character");
  EXPECT_EQ(error_after_mode("[mst]\nrevision = 65536\n"),
            "x.toml:3: mst.revision: 65536 is not in 0..65535");
  EXPECT_EQ(error_after_mode("[mst]\nrevision = -1\n"), "x.toml:3: mst.revision: -1 is not in 0..65535");
  EXPECT_EQ(error_after_mode("[mst]\nmax_hops = 5\n"), "x.toml:3: mst.max_hops: 5 is not in 6..40");
  EXPECT_EQ(error_after_mode("[mst]\nmax_hops = 41\n"), "x.toml:3: mst.max_hops: 41 is not in 6..40");
  EXPECT_EQ(error_after_mode("[mst]\npre_standard_digest = 'ab'\n"),
            "x.toml:3: mst.pre_standard_digest: 'ab' is not 32 hexadecimal digits");
  EXPECT_EQ(
      error_after_mode("[mst]\npre_standard_digest = '0123456789abcdef0123456789abcdeg'\n"),
      "x.toml:3: mst.pre_standard_digest: '0123456789abcdef0123456789abcdeg' is not 32 hexadecimal digits");
  EXPECT_EQ(
      error_after_mode("[mst]\npre_standard_digest = '0x23456789abcdef0123456789abcdef'\n"),
      "x.toml:3: mst.pre_standard_digest: '0x23456789abcdef0123456789abcdef' is not 32 hexadecimal digits");
}

TEST(ScenarioErrors, OfTheCist) {
  EXPECT_EQ(error_after_mode("[mst.cist]\nremaining_hops = 0\n"),
            "x.toml:3: mst.cist.remaining_hops: 0 is not in 1..40");
  EXPECT_EQ(error_after_mode("[mst.cist]\nremaining_hops = 41\n"),
            "x.toml:3: mst.cist.remaining_hops: 41 is not in 1..40");
  EXPECT_EQ(error_after_mode("[mst.cist]\nregional_root_priority = -1\n"),
            "x.toml:3: mst.cist.regional_root_priority: -1 is not in 0..65535");
  EXPECT_EQ(error_after_mode("[mst.cist]\nregional_root_priority = 65536\n"),
            "x.toml:3: mst.cist.regional_root_priority: 65536 is not in 0..65535");
  EXPECT_EQ(error_after_mode("[mst.cist]\nregional_root_mac = '00:00:5e:00:53'\n"),
            "x.toml:3: mst.cist.regional_root_mac: '00:00:5e:00:53' is not a MAC address such as "
            "00:00:5e:00:53:00");
  EXPECT_EQ(error_after_mode("[mst.cist]\ninternal_root_path_cost = 4294967296\n"),
            "x.toml:3: mst.cist.internal_root_path_cost: 4294967296 is not in 0..4294967295");
  EXPECT_EQ(error_after_mode("[mst.cist]\ninternal_root_path_cost = -1\n"),
            "x.toml:3: mst.cist.internal_root_path_cost: -1 is not in 0..4294967295");
}

TEST(ScenarioErrors, OfRapidPvst) {
  EXPECT_EQ(error_after_mode("[rapid_pvst]\ndisabled_vlans = '0'\n"),
            "x.toml:3: rapid_pvst.disabled_vlans: VLAN 0 is not in 1..4094");
}

TEST(ScenarioErrors, OfMstInstances) {
  EXPECT_EQ(error_after_mode("[[mst.instance]]\nid = 0\n"), "x.toml:3: mst.instance.id: 0 is not in 1..4094");
  EXPECT_EQ(error_after_mode("[[mst.instance]]\nid = 4095\n"),
            "x.toml:3: mst.instance.id: 4095 is not in 1..4094");
  EXPECT_EQ(error_after_mode("[[mst.instance]]\nid = 1\n[[mst.instance]]\nid = 1\n"),
            "x.toml:5: mst.instance.id: 1 stands on line 2 already");
  EXPECT_EQ(error_after_mode("[[mst.instance]]\nid = 1\nvlans = '0'\n"),
            "x.toml:4: mst.instance.1.vlans: VLAN 0 is not in 1..4094");
  EXPECT_EQ(error_after_mode("[[mst.instance]]\nid = 1\nremaining_hops = 41\n"),
            "x.toml:4: mst.instance.1.remaining_hops: 41 is not in 1..40");
  EXPECT_EQ(
      error_after_mode("[[mst.instance]]\nid = 2\nvlans = '5-9'\n[[mst.instance]]\nid = 1\nvlans = '9'\n"),
      "x.toml:4: mst.instance.2.vlans: VLAN 9 belongs to instance 1 already");
}

TEST(ScenarioErrors, OfTooManyMstInstances) {
  std::string text;
  for (int id = 1; id <= 65; ++id) {
    text += "[[mst.instance]]\nid = " + std::to_string(id) + "\n";
  }
  EXPECT_EQ(error_after_mode(text), "x.toml:131: mst.instance.id: there are more than 64 entries");
}

TEST(ScenarioErrors, OfPorts) {
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 70000\n"), "x.toml:3: port.number: 70000 is not in 1..3967");
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 0\n"), "x.toml:3: port.number: 0 is not in 1..3967");
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 3968\n"), "x.toml:3: port.number: 3968 is not in 1..3967");
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 4294967297\n"),
            "x.toml:3: port.number: 4294967297 is not in 1..3967");
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 7\n\n[[port]]\nnumber = 7\n"),
            "x.toml:6: port.number: 7 stands on line 2 already");
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 7\nname = ''\n"),
            "x.toml:4: port.7.name: the name is empty");
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 7\nlink = 'off'\n"),
            "x.toml:4: port.7.link: 'off' is not up or down");
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 7\nvlans = '1-'\n"),
            "x.toml:4: port.7.vlans: '1-' is not a list of VLANs such as 1,10-19");
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 7\nchannel = 4096\n"),
            "x.toml:4: port.7.channel: 4096 is not in 0..4095");
}

TEST(ScenarioErrors, OfPathCosts) {
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 7\npath_cost = 0\n"),
            "x.toml:4: port.7.path_cost: 0 is not in 1..200000000");
  EXPECT_EQ(error_after_mode("[[port_channel]]\nnumber = 7\npath_cost = 200000001\n"),
            "x.toml:4: port_channel.7.path_cost: 200000001 is not in 1..200000000");
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 7\npath_cost = '1'\n"),
            "x.toml:4: port.7.path_cost: expected an integer");
}

TEST(ScenarioErrors, OfGuardsAndLinks) {
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 7\nloop_guard = 'on'\n"),
            "x.toml:4: port.7.loop_guard: 'on' is not default, enabled or disabled");
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 7\nloop_guard = true\n"),
            "x.toml:4: port.7.loop_guard: expected a string");
  EXPECT_EQ(error_after_mode("[[port_channel]]\nnumber = 7\nlink_type = 'Auto'\n"),
            "x.toml:4: port_channel.7.link_type: 'Auto' is not auto, point-to-point or shared");
  EXPECT_EQ(error_after_mode("[[port_channel]]\nnumber = 7\nhalf_duplex = true\n"),
            "x.toml:4: port_channel.7.half_duplex: unknown key");
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 7\nedge = 1\n"),
            "x.toml:4: port.7.edge: expected true or false");
}

TEST(ScenarioErrors, OfRoles) {
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 7\nbackup_port_of = '2'\nroot_port_of = '1-2'\n"),
            "x.toml:4: port.7.backup_port_of: tree 2 stands in port.7.root_port_of already");
  EXPECT_EQ(
      error_after_mode("[[port_channel]]\nnumber = 7\nalternate_port_of = '0'\nbackup_port_of = '0'\n"),
      "x.toml:5: port_channel.7.backup_port_of: tree 0 stands in port_channel.7.alternate_port_of already");
}

TEST(ScenarioErrors, OfTreeLists) {
  for (const std::string key : {"root_port_of", "alternate_port_of", "backup_port_of", "root_inconsistent",
                                "loop_inconsistent", "pvid_inconsistent", "type_inconsistent"}) {
    EXPECT_EQ(error_after_mode("[[port]]\nnumber = 7\n" + key + " = '1,4095'\n"),
              "x.toml:4: port.7." + key + ": tree 4095 is not in 0..4094");
    EXPECT_EQ(error_after_mode("[[port_channel]]\nnumber = 7\n" + key + " = '1,'\n"),
              "x.toml:4: port_channel.7." + key + ": '1,' is not a list of trees such as 0,10-12");
    EXPECT_EQ(error_after_mode("[[port]]\nnumber = 7\n" + key + " = 1\n"),
              "x.toml:4: port.7." + key + ": expected a string");
  }
}

TEST(ScenarioErrors, OfMembership) {
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 7\nchannel = 2\n"),
            "x.toml:4: port.7.channel: there is no port-channel 2");
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 7\nswitchport = false\nchannel = 2\n"
                             "[[port_channel]]\nnumber = 2\n"),
            "x.toml:5: port.7.channel: a port that takes no part in bridging cannot join a port-channel");
}

TEST(ScenarioErrors, OfPortChannels) {
  EXPECT_EQ(error_after_mode("[[port_channel]]\nnumber = 4096\n"),
            "x.toml:3: port_channel.number: 4096 is not in 1..4095");
  EXPECT_EQ(error_after_mode("[[port_channel]]\nnumber = 1\n[[port_channel]]\nnumber = 1\n"),
            "x.toml:5: port_channel.number: 1 stands on line 2 already");
}

TEST(ScenarioErrors, OfNamesThatTwoInterfacesHave) {
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 1\nname = 'a'\n[[port]]\nnumber = 2\nname = 'a'\n"),
            "x.toml:7: port.2.name: 'a' is the name of port.1 already");
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 1\nname = 'Ethernet2'\n[[port]]\nnumber = 2\n"),
            "x.toml:5: port.2.name: 'Ethernet2' is the name of port.1 already");
  EXPECT_EQ(error_after_mode("[[port]]\nnumber = 1\nname = 'a'\n[[port_channel]]\nnumber = 1\nname = 'a'\n"),
            "x.toml:7: port_channel.1.name: 'a' is the name of port.1 already");
}

TEST(ScenarioErrors, OfRefusedUsers) {
  EXPECT_EQ(error_after_mode("[access]\nrefused_users = ['']\n"),
            "x.toml:3: access.refused_users: a user's name is empty");
  EXPECT_EQ(error_after_mode("[access]\nrefused_users = ['" + std::string(64, 'u') + "']\n"),
            "x.toml:3: access.refused_users: a text of 64 octets is longer than 63");
  EXPECT_EQ(error_after_mode("[access]\nrefused_users = ['a,b']\n"),
            "x.toml:3: access.refused_users: 'a,b' holds a comma");
  EXPECT_EQ(error_after_mode("[access]\nrefused_users = [\"a\\tb\"]\n"),
            "x.toml:3: access.refused_users: the text holds a control character");
  std::string users;
  for (int i = 0; i <= 65536; ++i) {
    users += "'u',";
  }
  EXPECT_EQ(error_after_mode("[access]\nrefused_users = [" + users + "]\n"),
            "x.toml:3: access.refused_users: it names 65537 users; at most 65536 can be refused");
}

TEST(ScenarioErrors, OfFiles) {
  const TemporaryFolder folder;
  const auto error_of_file = [](const std::string &path) -> std::string {
    try {
      load_scenario(path);
    } catch (const std::runtime_error &error) {
      return error.what();
    }
    return "no error";
  };
  EXPECT_EQ(error_of_file(folder.path("none")), folder.path("none") + ": No such file or directory");
  EXPECT_EQ(error_of_file("/"), "/: Is a directory");
  EXPECT_EQ(error_of_file("/dev/zero"), "/dev/zero: larger than 16777216 octets");
  const std::string wrong = folder.write("wrong.toml", "\n\n[switch]\nmode = 'none'\n");
  EXPECT_EQ(error_of_file(wrong), wrong + ":4: switch.mode: 'none' is not mst or rapid-pvst");
}

}  // namespace
