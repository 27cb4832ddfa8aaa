#include "publisher/image_slot.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>
#include <string>

#include "model/derived.h"
#include "publisher/image_interfaces.h"
#include "publisher/image_tree_ports.h"
#include "publisher/image_trees.h"
#include "publisher/image_values.h"
#include "wire/image.h"

namespace stpswitch {
namespace {

namespace wire = stpplatform::wire;

// The slot under construction: its head stays in front while tables are added behind it.
class SlotWriter {
 public:
  explicit SlotWriter(std::vector<uint8_t> *octets) : octets_(*octets) {
    octets_.assign(sizeof(wire::ImageSlot), 0);
  }

  // Makes room for a table. The room is valid until more is made.
  template <class Record>
  std::span<Record> add(size_t count, wire::ImageTable *table) {
    const size_t offset = wire::aligned_table(octets_.size());
    octets_.resize(wire::aligned_table(offset + count * sizeof(Record)));
    *table = {static_cast<uint32_t>(offset), static_cast<uint32_t>(count)};
    return {reinterpret_cast<Record *>(octets_.data() + offset), count};
  }

  template <class Record>
  void add(const std::vector<Record> &records, wire::ImageTable *table) {
    const std::span<Record> room = add<Record>(records.size(), table);
    std::copy(records.begin(), records.end(), room.begin());
  }

  void finish(const wire::ImageSlot &head) { std::memcpy(octets_.data(), &head, sizeof head); }

 private:
  std::vector<uint8_t> &octets_;
};

void copy_set(const IdSet &set, uint8_t (&octets)[wire::kTreeSetSize]) {
  std::copy(set.octets().begin(), set.octets().end(), octets);
}

// Copies what is known, and returns whether anything is.
template <class Octets, size_t kSize>
uint8_t copy_known(const std::optional<Octets> &octets, uint8_t (&to)[kSize]) {
  if (!octets) {
    return 0;
  }
  std::copy_n(octets->begin(), std::min(octets->size(), kSize), to);
  return 1;
}

wire::ImageSettings image_settings(const Switch &the_switch) {
  const SwitchState &state = the_switch.state();
  wire::ImageSettings settings{};
  settings.max_hops = image_number(state.mst.max_hops);
  settings.region_revision = image_number(state.mst.revision);
  settings.regional_root_priority = image_number(state.mst_cist.regional_root_priority);
  settings.internal_root_path_cost = image_number(state.mst_cist.internal_root_path_cost);
  settings.has_regional_root_mac = copy_known(state.mst_cist.regional_root_mac, settings.regional_root_mac);
  settings.mode = image_choice(state.settings.mode);
  settings.path_cost_method = image_choice(state.settings.path_cost_method);
  settings.path_cost_oper_method = image_choice(operational_path_cost_method(state.settings));
  settings.loop_guard_default = image_choice(state.settings.loop_guard_default);
  settings.has_region_name = copy_known(state.mst.name, settings.region_name);
  settings.region_name_length =
      static_cast<uint8_t>(std::min(state.mst.name.value_or("").size(), sizeof settings.region_name));
  settings.has_config_digest = copy_known(the_switch.config_digest(), settings.config_digest);
  settings.has_pre_standard_digest =
      copy_known(the_switch.pre_standard_digest(), settings.pre_standard_digest);
  return settings;
}

std::vector<wire::ImageMstInstance> image_mst_instances(const Switch &the_switch) {
  std::vector<wire::ImageMstInstance> instances;
  for (const auto &[id, vlans] : the_switch.mst_vlan_map()) {
    wire::ImageMstInstance &instance = instances.emplace_back();
    instance.id = id;
    instance.remaining_hops = image_number(the_switch.mst_remaining_hops().at(id));
    copy_set(vlans, instance.vlans);
  }
  return instances;
}

// Nobody has a name that is longer than a request's.
std::vector<wire::ImageUser> image_users(const std::vector<std::string> &names) {
  std::vector<wire::ImageUser> users;
  for (const std::string &name : names) {
    if (name.size() <= CMD_USER_MAX && users.size() < wire::kMaxRefusedUsers) {
      name.copy(users.emplace_back().name, CMD_USER_MAX);
    }
  }
  return users;
}

}  // namespace

void lay_out_slot(const Switch &the_switch, std::vector<uint8_t> *slot) {
  const ImageInterfaces interfaces(the_switch);
  const ImageTreePorts tree_ports(&the_switch, &interfaces);
  SlotWriter writer(slot);
  wire::ImageSlot head{};
  writer.add(interfaces.records(), &head.interfaces);
  writer.add(interfaces.bridge_ports(), &head.bridge_ports);
  writer.add(interfaces.members(), &head.members);
  writer.add(image_mst_instances(the_switch), &head.mst_instances);
  writer.add(image_users(the_switch.state().access.refused_users), &head.refused_users);
  const auto tree_port_records = writer.add<wire::ImageTreePort>(tree_ports.count(), &head.tree_ports);
  const ToldByPorts told = tree_ports.fill(tree_port_records);
  const ImageTrees trees(the_switch, told.roots);
  const auto designated = trees.designated(interfaces, tree_port_records);
  writer.add(told.pvid_or_type, &head.pvid_or_type);
  writer.add(told.loop_inconsistent, &head.loop_inconsistent);
  writer.add(told.root_inconsistent, &head.root_inconsistent);
  writer.add(trees.records(), &head.trees);
  writer.add(designated, &head.designated);
  tree_ports.fill_by_number(writer.add<uint16_t>(tree_ports.count(), &head.by_number));
  head.settings = image_settings(the_switch);
  copy_set(the_switch.running_trees(), head.running_trees);
  copy_set(the_switch.vlans_in_use(), head.vlans_in_use);
  copy_set(the_switch.state().rapid_pvst.disabled_vlans, head.disabled_vlans);
  std::copy(tree_ports.first_of_trees().begin(), tree_ports.first_of_trees().end(), head.first_tree_port);
  interfaces.copy_positions_of_ports(head.interface_of_port);
  writer.finish(head);
}

}  // namespace stpswitch
