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

const std::string &name_in(const Value &value) {
  const std::string &name = text_of(value, kMaxNameLength);
  if (name.empty()) {
    throw Refusal("the name is empty");
  }
  return name;
}

template <class Owner>
constexpr std::array<Field<Owner>, 1> kNameField = {
    {{"name", ValueType::kText, false, [](Owner &owner, const Value &value) { owner.name = name_in(value); },
      [](const Owner &owner) -> Value { return owner.name; }}}};

constexpr std::array<Field<Port>, 4> kPortsOwnFields = {
    {choice_field<Port, &Port::link_up, kLinkStates>("link"),
     flag_field<Port, &Port::half_duplex>("half_duplex"),
     number_field<Port, &Port::channel, 0, wire::kMaxChannel>("channel"),
     flag_field<Port, &Port::switchport>("switchport")}};

// What both sections have.
template <class Owner>
constexpr std::array<Field<Owner>, 18> kInterfaceFields = {
    {vlans_field<Owner, &Interface::vlans>("vlans"),
     number_field<Owner, &Interface::path_cost, kMinPathCost, kMaxPathCost>("path_cost"),
     flag_field<Owner, &Interface::root_guard>("root_guard"),
     choice_field<Owner, &Interface::loop_guard, kGuards>("loop_guard"),
     choice_field<Owner, &Interface::link_type, kLinkTypes>("link_type"),
     flag_field<Owner, &Interface::pre_standard_mst>("pre_standard_mst"),
     flag_field<Owner, &Interface::edge>("edge"), flag_field<Owner, &Interface::boundary>("boundary"),
     flag_field<Owner, &Interface::peer>("peer"), flag_field<Owner, &Interface::dispute>("dispute"),
     flag_field<Owner, &Interface::pre_standard_neighbor>("pre_standard_neighbor"),
     trees_field<Owner, &Interface::roles, PortRole::kRoot>("root_port_of"),
     trees_field<Owner, &Interface::roles, PortRole::kAlternate>("alternate_port_of"),
     trees_field<Owner, &Interface::roles, PortRole::kBackup>("backup_port_of"),
     trees_field<Owner, &Interface::inconsistencies, Inconsistency::kRoot>("root_inconsistent"),
     trees_field<Owner, &Interface::inconsistencies, Inconsistency::kLoop>("loop_inconsistent"),
     trees_field<Owner, &Interface::inconsistencies, Inconsistency::kPvid>("pvid_inconsistent"),
     trees_field<Owner, &Interface::inconsistencies, Inconsistency::kType>("type_inconsistent")}};

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
    "port",    &SwitchState::ports, "number", 1, wire::kMaxPhysicalPort, wire::kMaxPhysicalPort,
    make_port, kPortFields};
const ListSection<PortChannel> kPortChannelSection = {
    "port_channel",    &SwitchState::port_channels, "number",          1,
    wire::kMaxChannel, wire::kMaxChannel,           make_port_channel, kPortChannelFields};

}  // namespace stpswitch
