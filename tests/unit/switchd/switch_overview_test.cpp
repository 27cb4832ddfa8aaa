// What the overview of a running switch tells.
#include "control/switch_overview.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "sources/scenario/loader.h"

using namespace stpswitch;
using nlohmann::json;

namespace {

json overview(const std::string &scenario) {
  return overview_of(Switch(parse_scenario(scenario, "test.toml")));
}

json ports_of(const std::string &scenario) { return overview(scenario).at("ports"); }

constexpr char kMst[] = "switch.mode = 'mst'\n";
constexpr char kRapidPvst[] = "switch.mode = 'rapid-pvst'\n";

TEST(SwitchOverviews, TellTheRegionAndItsTreesInMstMode) {
  EXPECT_EQ(overview(R"(
switch = { name = "s1", mode = "mst" }
rapid_pvst.disabled_vlans = "1"
[mst]
region = "campus"
revision = 3
cist = { remaining_hops = 18, regional_root_priority = 4096, regional_root_mac = "00:00:5e:00:53:2a", internal_root_path_cost = 7 }
[[mst.instance]]
id = 10
vlans = "10-19,30"
remaining_hops = 17
[[mst.instance]]
id = 2
)"),
            json::parse(R"({
  "name": "s1", "mode": "mst",
  "region": {"name": "campus", "revision": 3, "digest": "2c498b9c4ba6955bb7963a0d49b2737a"},
  "regional_root": {"bridge": "4096 / 00:00:5e:00:53:2a", "cost": 7},
  "trees": [{"tree": 0, "vlans": "1-9,20-29,31-4094", "hops": 18}, {"tree": 2, "vlans": "", "hops": 20},
            {"tree": 10, "vlans": "10-19,30", "hops": 17}],
  "ports": []})"));
}

TEST(SwitchOverviews, TellTheVlansInUseInRapidPvstMode) {
  EXPECT_EQ(overview(std::string("rapid_pvst.disabled_vlans = '5-9'\n") + kRapidPvst +
                     "port = [{number = 1, vlans = '1-6,4094'}]"),
            json::parse(R"({
  "name": "", "mode": "rapid-pvst", "disabled_vlans": "5-6",
  "trees": [{"tree": 1}, {"tree": 2}, {"tree": 3}, {"tree": 4}, {"tree": 4094}],
  "ports": [{"name": "Ethernet1", "link": "point-to-point", "flags": [], "guards": [],
             "roles": {"designated": "1-4,4094"}, "inconsistent": {}}]})"));
}

TEST(SwitchOverviews, HaveTheBridgePortsWithTheirLinks) {
  const json ports = ports_of(std::string(kMst) + R"(
port = [{number = 1, link = "down"}, {number = 2, half_duplex = true}, {number = 3, channel = 7},
        {number = 4, switchport = false}, {number = 5, link_type = "shared"}]
port_channel = [{number = 7}, {number = 8}])");
  std::vector<std::pair<std::string, std::string>> links;
  for (const json &port : ports) {
    links.emplace_back(port["name"], port["link"]);
  }
  EXPECT_EQ(links, (std::vector<std::pair<std::string, std::string>>{{"port-channel7", "point-to-point"},
                                                                     {"port-channel8", "down"},
                                                                     {"Ethernet1", "down"},
                                                                     {"Ethernet2", "shared"},
                                                                     {"Ethernet5", "shared"}}));
}

constexpr char kFlags[] =
    "port = [{number = 1, edge = true, boundary = true, peer = true, dispute = true, pre_standard_neighbor = "
    "true}]";

TEST(SwitchOverviews, HaveTheFlagsThatCountInTheMode) {
  EXPECT_EQ(ports_of(std::string(kMst) + kFlags)[0]["flags"],
            json({"edge", "boundary", "peer", "dispute", "pre-standard"}));
  EXPECT_EQ(ports_of(std::string(kRapidPvst) + kFlags)[0]["flags"], json({"edge", "peer"}));
}

TEST(SwitchOverviews, HaveTheGuardsInForce) {
  constexpr char kGuards[] = R"(
port = [{number = 1, root_guard = true, loop_guard = "disabled"}, {number = 2, loop_guard = "enabled"},
        {number = 3}])";
  for (const bool by_default : {false, true}) {
    const json ports = ports_of(std::string("switch = { mode = 'mst', loop_guard_default = ") +
                                (by_default ? "true" : "false") + " }\n" + kGuards);
    EXPECT_EQ(ports[0]["guards"], json({"root"}));
    EXPECT_EQ(ports[1]["guards"], json({"loop"}));
    EXPECT_EQ(ports[2]["guards"], by_default ? json({"loop"}) : json::array());
  }
}

TEST(SwitchOverviews, HaveRolesInTheTreesOfAPortWithALink) {
  constexpr char kRoles[] = R"(
mst.instance = [{id = 1, vlans = "10"}, {id = 2, vlans = "20"}, {id = 3, vlans = "30"}, {id = 4, vlans = "40"}]
port = [{number = 1, vlans = "10,20,30", root_port_of = "0,4", alternate_port_of = "1", backup_port_of = "2"},
        {number = 2, link = "down", root_port_of = "0"}])";
  const json ports = ports_of(std::string(kMst) + kRoles);
  EXPECT_EQ(ports[0]["roles"],
            json({{"root", "0"}, {"alternate", "1"}, {"backup", "2"}, {"designated", "3"}}));
  EXPECT_EQ(ports[1]["roles"], json::object());
}

TEST(SwitchOverviews, HaveInconsistenciesOfTreesThatThePortHas) {
  constexpr char kInconsistencies[] = R"(
mst.instance = [{id = 1, vlans = "1"}]
port = [{number = 1, vlans = "1-3", root_inconsistent = "1,4", loop_inconsistent = "0-2", pvid_inconsistent = "1-9", type_inconsistent = "3-4"}])";
  EXPECT_EQ(ports_of(std::string(kMst) + kInconsistencies)[0]["inconsistent"],
            json({{"root", "1"}, {"loop", "0-1"}}));
  EXPECT_EQ(ports_of(std::string(kRapidPvst) + kInconsistencies)[0]["inconsistent"],
            json({{"root", "1"}, {"loop", "1-2"}, {"pvid", "1-3"}, {"type", "3"}}));
}

}  // namespace
