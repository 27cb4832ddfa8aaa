#include "small_switches.h"

#include <string>

#include "sources/scenario/loader.h"

namespace {

// Names, VLANs and links are those of both states, so that the same rows are there at the same time.
constexpr char kMst[][1500] = {R"(
switch.mode = 'mst'
switch.path_cost_method = 'short'
switch.loop_guard_default = true
bridge.address = '00:00:5e:00:53:01'
bridge.max_age = 2000
mst.region = 'one'
mst.revision = 1
mst.max_hops = 20
[[tree]]
number = 0
max_age = 2000
[[tree]]
number = 10
max_age = 2000
[[mst.instance]]
id = 10
vlans = '10'
remaining_hops = 11
[[port]]
number = 1
vlans = '1,10'
root_guard = true
loop_guard = 'enabled'
link_type = 'point-to-point'
pre_standard_mst = true
edge = true
path_cost = 1000
root_port_of = '10'
root_inconsistent = '0'
loop_inconsistent = '0'
pvid_inconsistent = '1'
if_mib_index = 101
[[port]]
number = 2
vlans = '1,10'
)",
                               R"(
switch.mode = 'mst'
switch.path_cost_method = 'long'
switch.loop_guard_default = false
bridge.address = '00:00:5e:00:53:02'
bridge.max_age = 3000
mst.region = 'two'
mst.revision = 2
mst.max_hops = 30
[[tree]]
number = 0
max_age = 3000
[[tree]]
number = 10
max_age = 3000
[[mst.instance]]
id = 10
vlans = '10'
remaining_hops = 12
[[port]]
number = 1
vlans = '1,10'
root_guard = false
loop_guard = 'disabled'
link_type = 'shared'
path_cost = 2000
alternate_port_of = '10'
pvid_inconsistent = '10'
type_inconsistent = '1'
if_mib_index = 201
[[port]]
number = 2
vlans = '1,10'
root_inconsistent = '10'
loop_inconsistent = '10'
)"};

constexpr char kRapidPvst[][1000] = {R"(
switch.mode = 'rapid-pvst'
mst.region = 'one'
bridge.address = '00:00:5e:00:53:01'
bridge.max_age = 2000
[[tree]]
number = 10
max_age = 2000
[[port]]
number = 1
vlans = '1,10,20'
edge = true
root_port_of = '10'
root_inconsistent = '1'
loop_inconsistent = '1'
pvid_inconsistent = '1'
[[port]]
number = 2
vlans = '1,10'
)",
                                     R"(
switch.mode = 'rapid-pvst'
mst.region = 'two'
bridge.address = '00:00:5e:00:53:02'
bridge.max_age = 3000
rapid_pvst.disabled_vlans = '20'
[[tree]]
number = 10
max_age = 3000
[[port]]
number = 1
vlans = '1,10,20'
peer = true
alternate_port_of = '1'
pvid_inconsistent = '1'
type_inconsistent = '1'
[[port]]
number = 2
vlans = '1,10'
root_inconsistent = '1'
loop_inconsistent = '1'
)"};

stpswitch::SwitchState switch_of(const char *text) { return stpswitch::parse_scenario(text, "small.toml"); }

}  // namespace

stpswitch::SwitchState mst_switch(int which) { return switch_of(kMst[which]); }

stpswitch::SwitchState rapid_pvst_switch(int which) { return switch_of(kRapidPvst[which]); }
