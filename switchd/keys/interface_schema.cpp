// The sections of ports and port-channels.
#include <limits>
#include <type_traits>

#include "keys/fields.h"
#include "model/numbering.h"
#include "wire/if_index.h"

namespace stpswitch {
namespace {

namespace wire = stpplatform::wire;

constexpr int64_t kMinPathCost = 1;
constexpr int64_t kMaxPathCost = 200'000'000;     // IEEE 802.1Q clause 13
constexpr uint32_t kRecommendedPathCost = 20000;  // of 1 Gb/s
constexpr int64_t kPriorityStep = 16;             // IEEE 802.1D clause 17.14
constexpr int64_t kMaxPriority = 240;
constexpr uint32_t kRecommendedPriority = 128;
constexpr int64_t kMaxCost = std::numeric_limits<uint32_t>::max();
constexpr int64_t kMaxPortId = 65535;  // two octets, IEEE 802.1D clause 9.2.7
constexpr int64_t kMaxTransitions = std::numeric_limits<uint32_t>::max();
constexpr int64_t kMaxIfMibIndex = std::numeric_limits<int32_t>::max();  // RFC 2863
constexpr uint32_t kDefaultVlan = 1;
constexpr uint32_t kDefaultDesignatedPort = 0x8001;  // priority 128, the first port

constexpr Choices<bool, 2> kLinkStates = {{{"up", true}, {"down", false}}};
constexpr Choices<Guard, 3> kGuards = {
    {{"default", Guard::kDefault}, {"enabled", Guard::kEnabled}, {"disabled", Guard::kDisabled}}};
constexpr Choices<LinkType, 3> kLinkTypes = {
    {{"auto", LinkType::kAuto}, {"point-to-point", LinkType::kPointToPoint}, {"shared", LinkType::kShared}}};

std::string domain_of_name() { return "text, 1 to " + std::to_string(kMaxNameLength) + " octets"; }

const std::string &name_in(const Value &value) {
  const std::string &name = text_of(value, kMaxNameLength);
  if (name.empty()) {
    throw Refusal("the name is empty");
  }
  return name;
}

// Roles and states. Where none is stated, nobody knows in which trees an interface has one.
template <class Owner, auto member, auto kind>
constexpr Field<Owner> exceptions_field(std::string_view name, std::string_view meaning) {
  using Values = std::remove_cvref_t<decltype(std::declval<Owner>().*member)>;
  Field<Owner> field = trees_field<Owner, kPath<member, &Values::exceptions>, kind>(name, meaning);
  field.read = [](const Owner &owner) -> std::optional<Value> {
    const Values &values = owner.*member;
    if (values == Values()) {
      return std::nullopt;
    }
    const auto trees = values.exceptions.find(kind);
    return trees != values.exceptions.end() ? print_trees(trees->second) : "";
  };
  return field;
}

template <class Owner>
constexpr auto kNameField = std::to_array<Field<Owner>>(
    {{"name", "Its name, which no other interface has.", ValueType::kText, domain_of_name, false,
      [](Owner &owner, const Value &value) { owner.name = name_in(value); },
      [](const Owner &owner) -> std::optional<Value> { return owner.name; }}});

constexpr auto kPortsOwnFields = std::to_array<Field<Port>>(
    {choice_field<Port, &Port::link_up, kLinkStates>("link", "The state of the link."),
     flag_field<Port, &Port::half_duplex>("half_duplex",
                                          "The link is half duplex, and shared where its type is auto."),
     number_field<Port, &Port::channel, 0, wire::kMaxChannel>(
         "channel", "The port-channel that it is a member of; 0 is none."),
     flag_field<Port, &Port::switchport>(
         "switchport", "It takes part in bridging. No other port can be a member of a port-channel.")});

// What both sections have.
template <class Owner>
constexpr auto kInterfaceFields = std::to_array<Field<Owner>>(
    {vlans_field<Owner, &Interface::vlans>("vlans", "The VLANs that it is a member of."),
     number_field<Owner, &Interface::path_cost, kMinPathCost, kMaxPathCost>("path_cost",
                                                                            "Its path cost, in every tree."),
     stepped_field<Owner, &Interface::priority, kPriorityStep, kMaxPriority>(
         "priority", "The priority of its port identifier, in every tree."),
     number_field<Owner, kPath<&Interface::numbers, &InterfaceNumbers::if_mib_index>, 1, kMaxIfMibIndex>(
         "if_mib_index", "The index that the agent's IF-MIB has for it."),
     flag_field<Owner, &Interface::root_guard>("root_guard", "It must not become a root port."),
     choice_field<Owner, &Interface::loop_guard, kGuards>(
         "loop_guard", "Whether loop guard watches it; default leaves that to the switch."),
     choice_field<Owner, &Interface::link_type, kLinkTypes>(
         "link_type", "What the link is taken for; auto goes by the duplex mode."),
     flag_field<Owner, &Interface::pre_standard_mst>(
         "pre_standard_mst", "It always sends what equipment from before the standard understands."),
     flag_field<Owner, &Interface::admin_edge>("admin_edge", "It begins as an edge port."),
     flag_field<Owner, &Interface::auto_edge>("auto_edge",
                                              "It becomes an edge port where it hears no spanning tree."),
     flag_field<Owner, &Interface::edge>("edge", "An edge port: nobody there takes part in spanning tree."),
     flag_field<Owner, &Interface::boundary>("boundary", "The neighbour is outside the MST region."),
     flag_field<Owner, &Interface::peer>("peer", "The neighbour takes part in spanning tree."),
     flag_field<Owner, &Interface::dispute>("dispute",
                                            "The neighbour takes itself for the designated bridge as well."),
     flag_field<Owner, &Interface::pre_standard_neighbor>("pre_standard_neighbor",
                                                          "Equipment from before the standard was heard."),
     exceptions_field<Owner, &Interface::role, PortRole::kRoot>("root_port_of",
                                                                "Trees in which it is the root port."),
     exceptions_field<Owner, &Interface::role, PortRole::kAlternate>(
         "alternate_port_of", "Trees in which it is an alternate port."),
     exceptions_field<Owner, &Interface::role, PortRole::kBackup>("backup_port_of",
                                                                  "Trees in which it is a backup port."),
     exceptions_field<Owner, &Interface::state, PortState::kBlocking>(
         "blocking_in", "Trees in which it is blocking, whatever follows from its role."),
     exceptions_field<Owner, &Interface::state, PortState::kListening>("listening_in",
                                                                       "Trees in which it is listening."),
     exceptions_field<Owner, &Interface::state, PortState::kLearning>("learning_in",
                                                                      "Trees in which it is learning."),
     exceptions_field<Owner, &Interface::state, PortState::kForwarding>("forwarding_in",
                                                                        "Trees in which it is forwarding."),
     bridge_id_field<Owner, kPath<&Interface::designated, &Designated::bridge>>(
         "designated_bridge",
         "The designated bridge of its trees in which it is not designated; else the root, where the "
         "designated "
         "cost is 0."),
     number_field<Owner, kPath<&Interface::designated, &Designated::cost>, 0, kMaxCost>(
         "designated_cost", "The path cost to the root that the designated bridge has there."),
     number_field<Owner, kPath<&Interface::designated, &Designated::port>, 0, kMaxPortId>(
         "designated_port", "The port identifier, priority and number, of the designated port there."),
     number_field<Owner, &Interface::forward_transitions, 0, kMaxTransitions>(
         "forward_transitions", "How often it began to forward."),
     trees_field<Owner, &Interface::inconsistencies, Inconsistency::kRoot>(
         "root_inconsistent", "Trees in which root guard blocks it."),
     trees_field<Owner, &Interface::inconsistencies, Inconsistency::kLoop>(
         "loop_inconsistent", "Trees in which loop guard blocks it."),
     trees_field<Owner, &Interface::inconsistencies, Inconsistency::kPvid>(
         "pvid_inconsistent",
         "Trees in which the neighbour has another port VLAN identifier. Counts in mode rapid-pvst."),
     trees_field<Owner, &Interface::inconsistencies, Inconsistency::kType>(
         "type_inconsistent",
         "Trees in which the neighbour's port is of another type. Counts in mode rapid-pvst.")});

constexpr auto kPortFields = joined(kNameField<Port>, kPortsOwnFields, kInterfaceFields<Port>);
constexpr auto kPortChannelFields = joined(kNameField<PortChannel>, kInterfaceFields<PortChannel>);

template <class Owner>
Owner make_interface(const char *kind, uint32_t number, const InterfaceNumbers &numbers) {
  Owner interface;
  interface.name = kind + std::to_string(number);
  interface.vlans.insert(kDefaultVlan);
  interface.path_cost = kRecommendedPathCost;
  interface.priority = kRecommendedPriority;
  interface.root_guard = false;
  interface.loop_guard = Guard::kDefault;
  interface.link_type = LinkType::kAuto;
  interface.pre_standard_mst = false;
  interface.admin_edge = false;
  interface.auto_edge = true;
  interface.edge = false;
  interface.boundary = false;
  interface.peer = false;
  interface.dispute = false;
  interface.pre_standard_neighbor = false;
  interface.role.elsewhere = PortRole::kDesignated;
  interface.designated.cost = 0;
  interface.designated.port = kDefaultDesignatedPort;
  interface.forward_transitions = 1;
  interface.numbers = numbers;
  interface.numbers.if_mib_index = numbers.bridge_port;
  return interface;
}

Port make_port(uint32_t number) {
  Port port = make_interface<Port>("Ethernet", number, port_numbers(number));
  port.link_up = true;
  port.half_duplex = false;
  return port;
}

PortChannel make_port_channel(uint32_t number) {
  return make_interface<PortChannel>("port-channel", number, channel_numbers(number));
}

}  // namespace

const ListSection<Port> kPortSection = {
    "port",
    "A physical port. Managers know port N by the interface index 436207616 + N and the bridge port 128 + N.",
    &SwitchState::ports,
    "number",
    1,
    wire::kMaxPhysicalPort,
    wire::kMaxPhysicalPort,
    make_port,
    kPortFields};
const ListSection<PortChannel> kPortChannelSection = {
    "port_channel",
    "A port-channel, which is up while one of its members is. Managers know port-channel N by the interface "
    "index 369098752 + N and the bridge port 4096 + N.",
    &SwitchState::port_channels,
    "number",
    1,
    wire::kMaxChannel,
    wire::kMaxChannel,
    make_port_channel,
    kPortChannelFields};

}  // namespace stpswitch
