// The sections of ports and port-channels.
#include "scenario/fields.h"
#include "wire/if_index.h"

namespace stpswitch {
namespace {

namespace wire = stpplatform::wire;

constexpr int64_t kMinPathCost = 1;
constexpr int64_t kMaxPathCost = 200'000'000;  // IEEE 802.1Q clause 13
constexpr uint32_t kDefaultVlan = 1;

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

template <class Owner>
constexpr auto kNameField = std::to_array<Field<Owner>>(
    {{"name", "Its name, which no other interface has.", ValueType::kText, domain_of_name, false,
      [](Owner &owner, const Value &value) { owner.name = name_in(value); },
      [](const Owner &owner) -> Value { return owner.name; }}});

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
     flag_field<Owner, &Interface::root_guard>("root_guard", "It must not become a root port."),
     choice_field<Owner, &Interface::loop_guard, kGuards>(
         "loop_guard", "Whether loop guard watches it; default leaves that to the switch."),
     choice_field<Owner, &Interface::link_type, kLinkTypes>(
         "link_type", "What the link is taken for; auto goes by the duplex mode."),
     flag_field<Owner, &Interface::pre_standard_mst>(
         "pre_standard_mst", "It always sends what equipment from before the standard understands."),
     flag_field<Owner, &Interface::edge>("edge", "An edge port: nobody there takes part in spanning tree."),
     flag_field<Owner, &Interface::boundary>("boundary", "The neighbour is outside the MST region."),
     flag_field<Owner, &Interface::peer>("peer", "The neighbour takes part in spanning tree."),
     flag_field<Owner, &Interface::dispute>("dispute",
                                            "The neighbour takes itself for the designated bridge as well."),
     flag_field<Owner, &Interface::pre_standard_neighbor>("pre_standard_neighbor",
                                                          "Equipment from before the standard was heard."),
     trees_field<Owner, &Interface::roles, PortRole::kRoot>("root_port_of",
                                                            "Trees in which it is the root port."),
     trees_field<Owner, &Interface::roles, PortRole::kAlternate>("alternate_port_of",
                                                                 "Trees in which it is an alternate port."),
     trees_field<Owner, &Interface::roles, PortRole::kBackup>("backup_port_of",
                                                              "Trees in which it is a backup port."),
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

// The fields of several arrays, one after the other.
template <class Owner, size_t... kCounts>
constexpr auto joined(const std::array<Field<Owner>, kCounts> &...parts) {
  std::array<Field<Owner>, (kCounts + ...)> all{};
  auto at = all.begin();
  ((at = std::copy(parts.begin(), parts.end(), at)), ...);
  return all;
}

constexpr auto kPortFields = joined(kNameField<Port>, kPortsOwnFields, kInterfaceFields<Port>);
constexpr auto kPortChannelFields = joined(kNameField<PortChannel>, kInterfaceFields<PortChannel>);

template <class Owner>
Owner make_interface(const char *kind, uint32_t number) {
  Owner interface;
  interface.name = kind + std::to_string(number);
  interface.vlans.insert(kDefaultVlan);
  return interface;
}

Port make_port(uint32_t number) { return make_interface<Port>("Ethernet", number); }

PortChannel make_port_channel(uint32_t number) { return make_interface<PortChannel>("port-channel", number); }

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
