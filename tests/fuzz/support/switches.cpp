#include "support/switches.h"

#include "sources/scenario/loader.h"

namespace fuzz {
namespace {

// Three trees over four bridge ports, with an inconsistency of each kind.
constexpr char kRapidPvst[] = R"(
switch = { mode = "rapid-pvst", path_cost_method = "long" }
bridge = { address = "00:00:5e:00:53:10", root = "6000.00005e00532a" }
rapid_pvst.disabled_vlans = "99"
access.refused_users = ["guest"]
port = [
  { number = 1, vlans = "1,10", root_guard = true, root_inconsistent = "1" },
  { number = 2, vlans = "1,10", pvid_inconsistent = "10", type_inconsistent = "1", if_mib_index = 7 },
  { number = 3, vlans = "1,4094", loop_guard = "enabled", loop_inconsistent = "4094" },
  { number = 4, channel = 1 },
]
port_channel = [ { number = 1, vlans = "1,10,99", path_cost = 2000, root_port_of = "1,10" } ]
)";

constexpr char kMst[] = R"(
switch = { mode = "mst", loop_guard_default = true }
bridge = { address = "00:00:5e:00:53:10", root = "6000.00005e00532a" }
mst.region = "campus"
mst.revision = 3
mst.max_hops = 20
mst.cist = { remaining_hops = 19, regional_root_priority = 24576, regional_root_mac = "00:00:5e:00:53:2a" }
mst.instance = [ { id = 1, vlans = "10-19" }, { id = 64, vlans = "100-199", remaining_hops = 18 } ]
port = [
  { number = 1, vlans = "1,10", root_guard = true, root_inconsistent = "1" },
  { number = 2, vlans = "1,100", boundary = true, designated_bridge = "6000.00005e00532a", designated_port = 32769 },
  { number = 3, channel = 1 },
]
port_channel = [ { number = 1, vlans = "1,10,100", root_port_of = "0-1", forwarding_in = "0-1" } ]
)";

}  // namespace

const stpswitch::Switch &any_switch(uint8_t choice) {
  static const stpswitch::Switch rapid_pvst(stpswitch::parse_scenario(kRapidPvst, "rapid-pvst"));
  static const stpswitch::Switch mst(stpswitch::parse_scenario(kMst, "mst"));
  return choice % 2 == 0 ? rapid_pvst : mst;
}

}  // namespace fuzz
