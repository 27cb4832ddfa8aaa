// The sections of the bridge and of its spanning trees.
#include <limits>

#include "keys/defaults.h"
#include "keys/fields.h"

namespace stpswitch {
namespace {

constexpr int64_t kPriorityStep = 4096;  // IEEE 802.1D clause 17.14, as are the ranges of the timers
constexpr int64_t kMaxPriority = 61440;
constexpr int64_t kMinMaxAge = 600;
constexpr int64_t kMaxMaxAge = 4000;
constexpr int64_t kMinHelloTime = 100;
constexpr int64_t kMaxHelloTime = 1000;
constexpr int64_t kMinForwardDelay = 400;
constexpr int64_t kMaxForwardDelay = 3000;
constexpr int64_t kMinHoldCount = 1;
constexpr int64_t kMaxHoldCount = 10;
constexpr int64_t kAnyNumber = std::numeric_limits<uint32_t>::max();
constexpr int64_t kMaxBridgePort = 65535;  // RFC 4188
constexpr size_t kMaxTrees = kMaxTree + 1;

constexpr Timers kRecommendedTimers = {.max_age = 2000, .hello_time = 200, .forward_delay = 1500};
constexpr uint32_t kRecommendedHoldCount = 6;

// Another switch that is a better root, where a port of this one is a root port.
constexpr BridgeId kDefaultRoot = {24576, {0x00, 0x00, 0x5E, 0x00, 0x53, 0x01}};

constexpr Choices<ProtocolVersion, 3> kProtocolVersions = {
    {{"stp", ProtocolVersion::kStp}, {"rstp", ProtocolVersion::kRstp}, {"mstp", ProtocolVersion::kMstp}}};

struct Named {
  std::string_view name;
  std::string_view meaning;
};
struct NamedTimers {
  Named max_age;
  Named hello_time;
  Named forward_delay;
};
constexpr NamedTimers kOwnTimers = {
    {"max_age", "How old information may become, in hundredths of a second, where the switch is the root."},
    {"hello_time", "The time between two hellos of its own, in hundredths of a second."},
    {"forward_delay",
     "How long a port listens, and learns, in hundredths of a second, where the switch is the root."}};
constexpr NamedTimers kRootTimers = {{"root_max_age", "The root's max_age, which is in force."},
                                     {"root_hello_time", "The root's hello_time, which is in force."},
                                     {"root_forward_delay", "The root's forward_delay, which is in force."}};

// The fields of timers; `kTimers` leads to them.
template <class Owner, auto... kTimers>
constexpr auto timer_fields(const NamedTimers &named) {
  return std::to_array<Field<Owner>>(
      {number_field<Owner, kPath<kTimers..., &Timers::max_age>, kMinMaxAge, kMaxMaxAge>(
           named.max_age.name, named.max_age.meaning),
       number_field<Owner, kPath<kTimers..., &Timers::hello_time>, kMinHelloTime, kMaxHelloTime>(
           named.hello_time.name, named.hello_time.meaning),
       number_field<Owner, kPath<kTimers..., &Timers::forward_delay>, kMinForwardDelay, kMaxForwardDelay>(
           named.forward_delay.name, named.forward_delay.meaning)});
}

// What both sections have: how the switch takes part in the trees.
template <class Owner, auto settings>
constexpr auto kSettingsFields =
    joined(std::to_array<Field<Owner>>(
               {stepped_field<Owner, kPath<settings, &TreeSettings::priority>, kPriorityStep, kMaxPriority>(
                    "priority", "The priority of its bridge identifier."),
                choice_field<Owner, kPath<settings, &TreeSettings::protocol_version>, kProtocolVersions>(
                    "protocol_version", "The version of the protocol that it sends."),
                number_field<Owner, kPath<settings, &TreeSettings::hold_count>, kMinHoldCount, kMaxHoldCount>(
                    "hold_count", "How many messages a port sends within a hello time at most.")}),
           timer_fields<Owner, settings, &TreeSettings::timers>(kOwnTimers));

constexpr auto kBridgeFields = joined(
    std::to_array<Field<Bridge>>({mac_field<Bridge, &Bridge::address>("address", "The bridge's address.")}),
    kSettingsFields<Bridge, &Bridge::settings>,
    std::to_array<Field<Bridge>>({bridge_id_field<Bridge, kPath<&Bridge::root, &RootInformation::root_id>>(
        "root", "The root of the trees in which a port is the root port, without the number of the tree.")}),
    timer_fields<Bridge, &Bridge::root, &RootInformation::timers_in_force>(kRootTimers));

constexpr auto kTreeFields = joined(
    kSettingsFields<Tree, &Tree::settings>,
    std::to_array<Field<Tree>>(
        {bridge_id_field<Tree, kPath<&Tree::observed, &ObservedTree::bridge_id>>(
             "bridge_id", "The switch's own identifier; else it follows from priority, number and address."),
         bridge_id_field<Tree, kPath<&Tree::observed, &ObservedTree::root_id>>(
             "root", "The root; else the switch itself, unless it has a root port."),
         number_field<Tree, kPath<&Tree::observed, &ObservedTree::root_cost>, 0, kAnyNumber>(
             "root_cost", "The path cost to the root; else it follows from the root port."),
         number_field<Tree, kPath<&Tree::observed, &ObservedTree::root_port>, 0, kMaxBridgePort>(
             "root_port", "The bridge port number of the root port, 0 for none; else it follows from roles."),
         number_field<Tree, kPath<&Tree::observed, &ObservedTree::topology_changes>, 0, kAnyNumber>(
             "topology_changes",
             "How often the topology has changed; else it is counted while the switch runs.")}),
    timer_fields<Tree, &Tree::observed, &ObservedTree::timers_in_force>(kRootTimers));

Bridge make_bridge() {
  return {.address = kDefaultBridgeAddress,
          .settings = {.priority = kDefaultBridgePriority,
                       .timers = kRecommendedTimers,
                       .hold_count = kRecommendedHoldCount,
                       .protocol_version = ProtocolVersion::kRstp},
          .root = {.root_id = kDefaultRoot, .timers_in_force = kRecommendedTimers}};
}

Tree make_tree(uint32_t /*number*/) { return {}; }

}  // namespace

const SingleSection<Bridge> kBridgeSection = {
    "bridge", "What holds in every tree that does not say otherwise, of the switch and of its roots.",
    &SwitchState::bridge, make_bridge, kBridgeFields};
const ListSection<Tree> kTreeSection = {"tree",
                                        "One spanning tree: a VLAN's in mode rapid-pvst, an MST instance's, "
                                        "or in mode mst that of instance 0, the CIST.",
                                        &SwitchState::trees,
                                        "number",
                                        kCistId,
                                        kMaxTree,
                                        kMaxTrees,
                                        make_tree,
                                        kTreeFields};

}  // namespace stpswitch
