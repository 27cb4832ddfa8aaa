#include "server/snapshot_slot.h"

#include <algorithm>
#include <cstring>

#include "model/derived.h"
#include "wire/if_index.h"
#include "wire/snapshot.h"

namespace stpswitch {
namespace {

namespace wire = stpplatform::wire;

void copy_vlans(const VlanSet &vlans, uint8_t (&octets)[STP_VLAN_BITMAP_SIZE]) {
  std::copy(vlans.octets().begin(), vlans.octets().end(), octets);
}

uint8_t oper_status(bool is_up) { return static_cast<uint8_t>(is_up ? IF_OPER_UP : IF_OPER_DOWN); }

class SlotFiller {
 public:
  explicit SlotFiller(std::span<uint8_t> slot) : slot_(slot) { std::fill(slot.begin(), slot.end(), 0); }

  // In ascending order of if_index.
  void add(const wire::SnapshotInterface &interface) {
    const size_t position = head_.interface_count++;
    std::memcpy(slot_.data() + sizeof head_ + position * sizeof interface, &interface, sizeof interface);
    head_.interface_of_port[interface.base_port] = static_cast<uint16_t>(position + 1);
  }

  void add_mst_instance(uint32_t id, const VlanSet &vlans) {
    wire::SnapshotMstInstance &instance = head_.mst_instances[head_.mst_instance_count++];
    instance.id = static_cast<uint16_t>(id);
    copy_vlans(vlans, instance.vlans);
  }

  void finish() { std::memcpy(slot_.data(), &head_, sizeof head_); }

 private:
  std::span<uint8_t> slot_;
  wire::SnapshotSlot head_{};
};

wire::SnapshotInterface channel_interface(uint32_t number, const PortChannel &channel, bool is_up) {
  wire::SnapshotInterface interface {};
  interface.if_index = wire::if_index_of(IF_TYPE_PORT_CHANNEL, number);
  interface.base_port = static_cast<uint16_t>(wire::kChannelBasePortOffset + number);
  interface.oper_status = oper_status(is_up);
  interface.switched = 1;
  copy_vlans(channel.vlans, interface.vlans);
  return interface;
}

// A member's VLANs are its port-channel's, and a port outside bridging is a member of none.
wire::SnapshotInterface port_interface(uint32_t number, const Port &port) {
  wire::SnapshotInterface interface {};
  interface.if_index = wire::if_index_of(IF_TYPE_PHYSICAL, number);
  interface.base_port = static_cast<uint16_t>(wire::kPhysicalBasePortOffset + number);
  interface.oper_status = oper_status(port.link_up);
  interface.switched = port.switchport ? 1 : 0;
  if (port.channel != 0) {
    interface.pc_if_index = wire::if_index_of(IF_TYPE_PORT_CHANNEL, port.channel);
    interface.channel = static_cast<uint16_t>(port.channel);
  }
  if (is_bridge_port(port)) {
    copy_vlans(port.vlans, interface.vlans);
  }
  return interface;
}

}  // namespace

uint32_t interface_count(const SwitchState &state) {
  return static_cast<uint32_t>(state.ports.size() + state.port_channels.size());
}

void fill_snapshot_slot(const Switch &the_switch, std::span<uint8_t> slot) {
  const SwitchState &state = the_switch.state();
  SlotFiller filler(slot);
  const std::set<uint32_t> channels_up = port_channels_up(state);
  for (const auto &[number, channel] : state.port_channels) {
    filler.add(channel_interface(number, channel, channels_up.contains(number)));
  }
  for (const auto &[number, port] : state.ports) {
    filler.add(port_interface(number, port));
  }
  for (const auto &[id, vlans] : the_switch.mst_vlan_map()) {
    filler.add_mst_instance(id, vlans);
  }
  filler.finish();
}

}  // namespace stpswitch
