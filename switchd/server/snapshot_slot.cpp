#include "server/snapshot_slot.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "model/derived.h"
#include "wire/snapshot.h"

namespace stpswitch {
namespace {

namespace wire = stpplatform::wire;

void copy_vlans(const VlanSet &vlans, uint8_t (&octets)[STP_VLAN_BITMAP_SIZE]) {
  std::copy(vlans.octets().begin(), vlans.octets().end(), octets);
}

// A link that nobody knows of is none that anything may rely on.
uint8_t oper_status(const std::optional<bool> &is_up) {
  return static_cast<uint8_t>(is_up.value_or(false) ? IF_OPER_UP : IF_OPER_DOWN);
}

class SlotFiller {
 public:
  // In ascending order of if_index. Bridge ports, which have numbers, all have a place; of more members of
  // port-channels than a slot holds, the last have none.
  void add(const wire::SnapshotInterface &interface) {
    if (head_.interface_count == wire::kMaxInterfaces) {
      return;
    }
    ++head_.interface_count;
    const auto *const octets = reinterpret_cast<const uint8_t *>(&interface);
    slot_.insert(slot_.end(), octets, octets + sizeof interface);
    if (interface.base_port != 0) {
      head_.interface_of_port[interface.base_port] = static_cast<uint16_t>(head_.interface_count);
    }
  }

  void add_mst_instance(uint32_t id, const VlanSet &vlans) {
    wire::SnapshotMstInstance &instance = head_.mst_instances[head_.mst_instance_count++];
    instance.id = static_cast<uint16_t>(id);
    copy_vlans(vlans, instance.vlans);
  }

  std::vector<uint8_t> finish() && {
    std::memcpy(slot_.data(), &head_, sizeof head_);
    return std::move(slot_);
  }

 private:
  wire::SnapshotSlot head_{};
  std::vector<uint8_t> slot_ = std::vector<uint8_t>(sizeof head_);
};

wire::SnapshotInterface numbered_interface(const Interface &from) {
  wire::SnapshotInterface interface {};
  interface.if_index = from.numbers.if_index;
  interface.base_port = static_cast<uint16_t>(from.numbers.bridge_port);
  return interface;
}

wire::SnapshotInterface channel_interface(const PortChannel &channel, const std::optional<bool> &link) {
  wire::SnapshotInterface interface = numbered_interface(channel);
  interface.oper_status = oper_status(link);
  interface.switched = 1;
  copy_vlans(channel.vlans, interface.vlans);
  return interface;
}

// A member's VLANs are its port-channel's, and a port outside bridging is a member of none.
wire::SnapshotInterface port_interface(const SwitchState &state, const Port &port) {
  wire::SnapshotInterface interface = numbered_interface(port);
  interface.oper_status = oper_status(port.link_up);
  interface.switched = port.switchport ? 1 : 0;
  if (port.channel != 0) {
    interface.pc_if_index = state.port_channels.at(port.channel).numbers.if_index;
    interface.channel = static_cast<uint16_t>(port.channel);
  }
  if (is_bridge_port(port)) {
    copy_vlans(port.vlans, interface.vlans);
  }
  return interface;
}

// Where no spanning tree runs there are no bridge ports. The agent answers for one without a link unasked.
wire::SnapshotInterface outside_bridging(wire::SnapshotInterface interface) {
  interface.base_port = 0;
  std::fill(std::begin(interface.vlans), std::end(interface.vlans), uint8_t{0});
  return interface;
}

}  // namespace

std::vector<uint8_t> snapshot_slot(const Switch &the_switch) {
  const SwitchState &state = the_switch.state();
  SlotFiller filler;
  const auto links = links_of_channels(state);
  const auto add = [&](const wire::SnapshotInterface &interface) {
    filler.add(state.settings.mode ? interface : outside_bridging(interface));
  };
  for (const auto &[number, channel] : state.port_channels) {
    add(channel_interface(channel, links.at(number)));
  }
  for (const auto &[number, port] : state.ports) {
    add(port_interface(state, port));
  }
  for (const auto &[id, vlans] : the_switch.mst_vlan_map()) {
    filler.add_mst_instance(id, vlans);
  }
  return std::move(filler).finish();
}

}  // namespace stpswitch
