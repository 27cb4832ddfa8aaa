#include "publisher/image_interfaces.h"

#include <algorithm>
#include <optional>

#include "model/derived.h"
#include "model/tree_values.h"
#include "publisher/image_values.h"

namespace stpswitch {
namespace {

namespace wire = stpplatform::wire;

// A link that nobody knows of is none that anything may rely on.
uint8_t oper_status(const std::optional<bool> &is_up) {
  return static_cast<uint8_t>(is_up.value_or(false) ? IF_OPER_UP : IF_OPER_DOWN);
}

// Its numbers; everything else is unknown.
wire::ImageInterface numbered_interface(const InterfaceNumbers &numbers) {
  wire::ImageInterface interface {};
  interface.if_index = numbers.if_index;
  interface.base_port = static_cast<uint16_t>(numbers.bridge_port);
  for (uint8_t *const field :
       {&interface.root_guard, &interface.loop_guard, &interface.link_type, &interface.point_to_point,
        &interface.edge, &interface.boundary, &interface.peer, &interface.dispute,
        &interface.pre_standard_peer, &interface.pre_standard_mst}) {
    *field = wire::kUnknown;
  }
  return interface;
}

wire::ImageInterface channel_interface(const PortChannel &channel, const std::optional<bool> &link) {
  wire::ImageInterface interface = numbered_interface(channel.numbers);
  interface.oper_status = oper_status(link);
  interface.switched = 1;
  return interface;
}

wire::ImageInterface port_interface(const SwitchState &state, const Port &port) {
  wire::ImageInterface interface = numbered_interface(port.numbers);
  interface.oper_status = oper_status(port.link_up);
  interface.switched = port.switchport ? 1 : 0;
  if (port.channel != 0) {
    interface.pc_if_index = state.port_channels.at(port.channel).numbers.if_index;
    interface.channel = static_cast<uint16_t>(port.channel);
  }
  return interface;
}

std::optional<Guard> guard(const std::optional<bool> &is_on) {
  return is_on ? std::optional(*is_on ? Guard::kEnabled : Guard::kDisabled) : std::nullopt;
}

wire::ImageBridgePort standard_values(const Interface &port) {
  return {.if_mib_index = image_number(port.numbers.if_mib_index),
          .port_id = image_number(port_id(port)),
          .priority = image_number(port.priority),
          .forward_transitions = image_number(port.forward_transitions),
          .number = static_cast<uint16_t>(own_number(port.numbers)),
          .admin_edge = image_choice(port.admin_edge),
          .reserved = 0};
}

void add_values(const BridgePort &port, wire::ImageInterface *interface) {
  const Interface &from = *port.interface;
  interface->path_cost = image_number(from.path_cost);
  interface->root_guard = image_choice(guard(from.root_guard));
  interface->loop_guard = image_choice(from.loop_guard);
  interface->link_type = image_choice(from.link_type);
  interface->pre_standard_mst = image_choice(from.pre_standard_mst);
  if (port.link_up.value_or(false)) {  // without a link there is no type of it
    interface->point_to_point = image_choice(port.point_to_point);
  }
  interface->edge = image_choice(from.edge);
  interface->boundary = image_choice(from.boundary);
  interface->peer = image_choice(from.peer);
  interface->dispute = image_choice(from.dispute);
  interface->pre_standard_peer = image_choice(from.pre_standard_neighbor);
}

}  // namespace

ImageInterfaces::ImageInterfaces(const Switch &the_switch) {
  const SwitchState &state = the_switch.state();
  const auto links = links_of_channels(state);
  for (const auto &[number, channel] : state.port_channels) {
    add(channel_interface(channel, links.at(number)));
  }
  for (const auto &[number, port] : state.ports) {
    add(port_interface(state, port));
  }
  bridge_ports_.resize(records_.size());
  members_.resize(size_t{wire::kTrees} * wire::member_words(static_cast<uint32_t>(records_.size())));
  for (const auto &[if_index, port] : the_switch.bridge_ports()) {
    const uint16_t position = position_of(if_index);
    add_values(port, &records_[position]);
    bridge_ports_[position] = standard_values(*port.interface);
    add_memberships(position, port.interface->vlans);
  }
  if (!state.settings.mode) {
    // Where no spanning tree runs there are no bridge ports. The agent answers for one without a link
    // unasked.
    for (wire::ImageInterface &interface : records_) {
      interface.base_port = 0;
    }
  }
}

// In ascending order of if_index. Bridge ports, which have numbers, all have a place; of more members of
// port-channels than there is room for, the last have none.
void ImageInterfaces::add(const wire::ImageInterface &interface) {
  if (records_.size() < wire::kMaxInterfaces) {
    records_.push_back(interface);
  }
}

void ImageInterfaces::add_memberships(uint32_t position, const VlanSet &vlans) {
  const size_t words = wire::member_words(static_cast<uint32_t>(records_.size()));
  const uint32_t word = position / wire::kMemberWordBits;
  const uint32_t bit = 1U << (position % wire::kMemberWordBits);
  vlans.for_each([&](uint32_t vlan) { members_[vlan * words + word] |= bit; });
}

void ImageInterfaces::copy_positions_of_ports(uint16_t (&positions)[wire::kPortNumbers]) const {
  for (size_t i = 0; i < records_.size(); ++i) {
    if (records_[i].base_port != 0) {
      positions[records_[i].base_port] = static_cast<uint16_t>(i + 1);
    }
  }
}

uint16_t ImageInterfaces::position_of(uint32_t if_index) const {
  const auto found = std::lower_bound(
      records_.begin(), records_.end(), if_index,
      [](const wire::ImageInterface &interface, uint32_t wanted) { return interface.if_index < wanted; });
  return static_cast<uint16_t>(found - records_.begin());
}

}  // namespace stpswitch
