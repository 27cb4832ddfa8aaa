#include "answers/image.h"

#include <bit>

#include "answers/search.h"

namespace stpplatform::answers {
namespace {

constexpr uint32_t kOctetBits = 8;
constexpr uint8_t kFirstBit = 0x80;

}  // namespace

template <class Record>
bool Image::find_table(const wire::ImageTable &table, size_t slot_size, uint32_t most,
                       Records<Record> *records) {
  const uint32_t offset = load_shared(table.offset);
  const uint32_t count = load_shared(table.count);
  if (offset % wire::kTableAlignment != 0 || offset > slot_size || count > most ||
      uint64_t{count} * sizeof(Record) > slot_size - offset) {
    return false;
  }
  *records = {reinterpret_cast<const Record *>(reinterpret_cast<const uint8_t *>(slot_) + offset), count};
  return true;
}

Image::Image(const wire::ImageSlot *slot, size_t slot_size) : slot_(slot) {
  constexpr uint32_t kMostTreePorts = wire::kTrees * wire::kMaxInterfaces;
  is_sound_ = slot_size >= sizeof *slot &&
              find_table(slot->interfaces, slot_size, wire::kMaxInterfaces, &interfaces_) &&
              find_table(slot->tree_ports, slot_size, kMostTreePorts, &tree_ports_) &&
              find_table(slot->pvid_or_type, slot_size, kMostTreePorts, &pvid_or_type_) &&
              find_table(slot->loop_inconsistent, slot_size, kMostTreePorts, &loop_inconsistent_) &&
              find_table(slot->root_inconsistent, slot_size, kMostTreePorts, &root_inconsistent_) &&
              find_table(slot->members, slot_size, kMostTreePorts, &members_) &&
              find_table(slot->mst_instances, slot_size, wire::kMaxMstInstances, &mst_instances_) &&
              find_table(slot->refused_users, slot_size, wire::kMaxRefusedUsers, &refused_users_) &&
              find_table(slot->bridge_ports, slot_size, wire::kMaxInterfaces, &bridge_ports_) &&
              find_table(slot->trees, slot_size, wire::kTrees, &trees_) &&
              find_table(slot->designated, slot_size, kMostTreePorts, &designated_) &&
              find_table(slot->by_number, slot_size, kMostTreePorts, &by_number_) &&
              bridge_ports_.count == interfaces_.count &&
              by_number_.count == tree_ports_.count &&  // GCOVR_EXCL_BR_LINE: an arc of the compiler's own
              members_.count == wire::kTrees * wire::member_words(interfaces_.count);
}

bool Image::holds(const uint8_t (&set)[wire::kTreeSetSize], uint32_t id) {
  return id < wire::kTrees && (load_shared(set[id / kOctetBits]) & (kFirstBit >> (id % kOctetBits))) != 0;
}

uint32_t Image::first_vlan_in_use(uint32_t vlan) const {
  while (vlan < wire::kTrees) {
    const uint32_t octet = vlan / kOctetBits;
    const auto left = static_cast<uint8_t>(load_shared(slot_->vlans_in_use[octet]) << (vlan % kOctetBits));
    if (left != 0) {
      return vlan + static_cast<uint32_t>(std::countl_zero(left));
    }
    vlan = (octet + 1) * kOctetBits;
  }
  return wire::kTrees;
}

uint32_t Image::first_interface(uint32_t if_index) const {
  return search(0, interfaces_.count, &latest_interface_, [this, if_index](uint32_t position) {
    return load_shared(interfaces_[position].if_index) < if_index;
  });
}

// Most questions are about the interface that the one before was about.
bool Image::is_latest(uint32_t if_index) const {
  return latest_interface_ < interfaces_.count &&
         load_shared(interfaces_[latest_interface_].if_index) == if_index;
}

uint32_t Image::interface_behind(uint32_t if_index) const {
  if (is_latest(if_index)) {
    const uint32_t next = latest_interface_ + 1;
    if (next == interfaces_.count || load_shared(interfaces_[next].if_index) > if_index) {
      latest_interface_ = next;
      return next;
    }
  }
  return if_index == UINT32_MAX ? interfaces_.count : first_interface(if_index + 1);
}

const wire::ImageInterface *Image::find_interface(uint32_t if_index) const {
  if (is_latest(if_index)) {
    return &interfaces_[latest_interface_];
  }
  const uint32_t position = first_interface(if_index);
  if (position == interfaces_.count || load_shared(interfaces_[position].if_index) != if_index) {
    return nullptr;
  }
  return &interfaces_[position];
}

const wire::ImageInterface *Image::find_port(uint32_t base_port) const {
  if (base_port >= wire::kPortNumbers) {
    return nullptr;
  }
  const uint32_t number = load_shared(slot_->interface_of_port[base_port]);
  return number == 0 || number > interfaces_.count ? nullptr : &interfaces_[number - 1];
}

uint32_t Image::first_mst_instance(uint32_t id) const {
  uint32_t none = 0;
  return search(0, mst_instances_.count, &none,
                [this, id](uint32_t candidate) { return load_shared(mst_instances_[candidate].id) < id; });
}

const wire::ImageMstInstance *Image::find_mst_instance(uint32_t id) const {
  const uint32_t position = first_mst_instance(id);
  if (position == mst_instances_.count || load_shared(mst_instances_[position].id) != id) {
    return nullptr;
  }
  return &mst_instances_[position];
}

const wire::ImageMstInstance *Image::mst_instance_behind(uint32_t id) const {
  const uint32_t position = id == UINT32_MAX ? mst_instances_.count : first_mst_instance(id + 1);
  return position < mst_instances_.count ? &mst_instances_[position] : nullptr;
}

bool Image::find_ports_of(uint32_t tree, uint32_t *first, uint32_t *end) const {
  *first = load_shared(slot_->first_tree_port[tree]);
  *end = load_shared(slot_->first_tree_port[tree + 1]);
  return *first <= *end && *end <= tree_ports_.count;
}

// The first place among a tree's ports, or behind them, at which the interface's position is not below
// `interface`.
uint32_t Image::first_tree_port(uint32_t first, uint32_t end, uint32_t interface) const {
  return search(first, end, &latest_tree_port_, [this, interface](uint32_t candidate) {
    return load_shared(tree_ports_[candidate].interface) < interface;
  });
}

// Where a search for the key begins: the key's own place, or for CMD_ACTION_GET_NEXT the one behind it.
cmd_result Image::find_position(const TreePortKey &key, cmd_action action, uint32_t *position) const {
  constexpr uint32_t kBeginning = 0;
  const bool wants_next = action == CMD_ACTION_GET_NEXT;
  if (key.tree >= wire::kTrees || (wants_next && key.if_index == kBeginning && !runs_tree(key.tree))) {
    return CMD_NO_ENTRY;
  }
  uint32_t first = 0;
  uint32_t end = 0;
  if (!find_ports_of(key.tree, &first, &end)) {
    return CMD_BAD_REPLY;
  }
  const uint32_t interface = wants_next ? interface_behind(key.if_index) : first_interface(key.if_index);
  *position = first_tree_port(first, end, interface);
  return CMD_OK;
}

// What stands there is read once: it may be another port a moment later.
cmd_result Image::take(uint32_t position, TreePort *found) const {
  const wire::ImageTreePort &entry = tree_ports_[position];
  const uint32_t interface = load_shared(entry.interface);
  if (interface >= interfaces_.count) {
    return CMD_BAD_REPLY;
  }
  *found = {load_shared(entry.tree), &interfaces_[interface], &entry, &bridge_ports_[interface]};
  return CMD_OK;
}

// What stands at the position that a search for the key has found.
cmd_result Image::take_result(uint32_t position, const TreePortKey &key, cmd_action action,
                              TreePort *found) const {
  const cmd_result result = take(position, found);
  if (result == CMD_OK && action == CMD_ACTION_GET &&
      (found->tree != key.tree || load_shared(found->interface->if_index) != key.if_index)) {
    return CMD_NO_ENTRY;
  }
  return result;
}

cmd_result Image::find_tree_port(const TreePortKey &key, cmd_action action, TreePort *found) const {
  uint32_t position = 0;
  const cmd_result result = find_position(key, action, &position);
  if (result != CMD_OK) {
    return result;
  }
  // Behind a tree's ports come those of the next tree.
  return position == tree_ports_.count ? CMD_NO_ENTRY : take_result(position, key, action, found);
}

cmd_result Image::find_tree_port(const TreePortKey &key, cmd_action action, const Records<uint32_t> &listed,
                                 TreePort *found) const {
  uint32_t position = 0;
  const cmd_result result = find_position(key, action, &position);
  if (result != CMD_OK) {
    return result;
  }
  uint32_t none = 0;
  const uint32_t place = search(0, listed.count, &none, [&listed, position](uint32_t candidate) {
    return load_shared(listed[candidate]) < position;
  });
  if (place == listed.count) {
    return CMD_NO_ENTRY;
  }
  const uint32_t listed_position = load_shared(listed[place]);
  return listed_position < tree_ports_.count ? take_result(listed_position, key, action, found)
                                             : CMD_BAD_REPLY;
}

const uint32_t *Image::members_of(uint32_t vlan) const {
  return members_.first + size_t{vlan} * wire::member_words(interfaces_.count);
}

bool is_bridge_port(const wire::ImageInterface &interface) {
  return load_shared(interface.switched) != 0 && load_shared(interface.base_port) != 0 &&
         load_shared(interface.pc_if_index) == 0;
}

}  // namespace stpplatform::answers
