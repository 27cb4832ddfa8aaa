// One generation of the switch's image (wire/image.h), as whoever answers from it looks at it.
//
// The memory may be changing, and may hold anything: positions and counts found in it are checked before they
// are used. Whether what was found is of one generation is for the caller to see to.
#pragma once

#include <cstddef>
#include <cstdint>

#include "answers/shared_memory.h"
#include "platform/cmd.h"
#include "wire/image.h"

namespace stpplatform::answers {

// A table of the image. Not all positions that its records name need be in it.
template <class Record>
struct Records {
  const Record *first = nullptr;
  uint32_t count = 0;

  const Record &operator[](uint32_t position) const { return first[position]; }
};

// A place among the ports of trees.
struct TreePortKey {
  uint32_t tree;
  uint32_t if_index;
};

// A port of a tree that was found.
struct TreePort {
  uint32_t tree;
  const wire::ImageInterface *interface;
  const wire::ImageTreePort *entry;
  const wire::ImageBridgePort *bridge_port;
};

class Image {
 public:
  constexpr Image() = default;
  Image(const wire::ImageSlot *slot, size_t slot_size);

  // False when one of its tables does not lie in the slot, or is larger than that of any switch. Then nothing
  // else may be asked.
  bool is_sound() const { return is_sound_; }

  const wire::ImageSettings &settings() const { return slot_->settings; }
  const Records<wire::ImageInterface> &interfaces() const { return interfaces_; }
  const Records<wire::ImageTreePort> &tree_ports() const { return tree_ports_; }
  const Records<wire::ImageMstInstance> &mst_instances() const { return mst_instances_; }
  const Records<wire::ImageUser> &refused_users() const { return refused_users_; }

  // Ports of trees that are inconsistent, as positions among them in ascending order.
  const Records<uint32_t> &pvid_or_type() const { return pvid_or_type_; }
  const Records<uint32_t> &loop_inconsistent() const { return loop_inconsistent_; }
  const Records<uint32_t> &root_inconsistent() const { return root_inconsistent_; }

  bool runs_tree(uint32_t tree) const { return holds(slot_->running_trees, tree); }
  bool is_disabled(uint32_t vlan) const { return holds(slot_->disabled_vlans, vlan); }

  // The first VLAN in use that is not below `vlan`; kTrees when there is none.
  uint32_t first_vlan_in_use(uint32_t vlan) const;

  // The position of the first interface whose index is not below `if_index`; the count when there is none.
  // Fast where one question follows the other in order.
  uint32_t first_interface(uint32_t if_index) const;

  // The same for the one behind `if_index`.
  uint32_t interface_behind(uint32_t if_index) const;

  // Null when there is none.
  const wire::ImageInterface *find_interface(uint32_t if_index) const;
  const wire::ImageInterface *find_port(uint32_t base_port) const;
  const wire::ImageMstInstance *find_mst_instance(uint32_t id) const;
  const wire::ImageMstInstance *mst_instance_behind(uint32_t id) const;

  // The port of a tree that has exactly the key, or for CMD_ACTION_GET_NEXT the one that follows it; among
  // all, or among `listed` ones. CMD_NO_ENTRY when there is none, CMD_BAD_REPLY when the image contradicts
  // itself. Who asks for what follows interface 0 means that tree: it must run.
  cmd_result find_tree_port(const TreePortKey &key, cmd_action action, TreePort *found) const;
  cmd_result find_tree_port(const TreePortKey &key, cmd_action action, const Records<uint32_t> &listed,
                            TreePort *found) const;

  // A running tree; the first one, or the one behind `tree`. Null when there is none.
  const wire::ImageTree *find_tree(uint32_t tree) const;
  const wire::ImageTree *first_tree_from(uint32_t tree) const;

  // The number of ports of a tree, which is one that there could be. False when the image contradicts itself.
  bool count_ports(uint32_t tree, uint32_t *count) const;

  // The port of a tree with this number (wire::ImageBridgePort) or, for CMD_ACTION_GET_NEXT, with the next
  // larger one. As find_tree_port.
  cmd_result find_port_by_number(uint32_t tree, uint32_t number, cmd_action action, TreePort *found) const;

  // What a port knows of its segment. CMD_NO_ENTRY: what the bridge itself sends there.
  cmd_result find_designated(const wire::ImageTreePort &port, const wire::ImageDesignated **found) const;

  // The members of a VLAN: words as the image keeps them, member_words(interfaces().count) of them.
  const uint32_t *members_of(uint32_t vlan) const;

 private:
  template <class Record>
  bool find_table(const wire::ImageTable &table, size_t slot_size, uint32_t most, Records<Record> *records);

  uint32_t first_mst_instance(uint32_t id) const;
  bool is_latest(uint32_t if_index) const;
  static bool holds(const uint8_t (&set)[wire::kTreeSetSize], uint32_t id);
  bool find_ports_of(uint32_t tree, uint32_t *first, uint32_t *end) const;
  uint32_t first_tree_port(uint32_t first, uint32_t end, uint32_t interface) const;
  cmd_result find_position(const TreePortKey &key, cmd_action action, uint32_t *position) const;
  cmd_result take(uint32_t position, TreePort *found) const;
  cmd_result take_result(uint32_t position, const TreePortKey &key, cmd_action action, TreePort *found) const;

  const wire::ImageSlot *slot_ = nullptr;
  Records<wire::ImageInterface> interfaces_;
  Records<wire::ImageTreePort> tree_ports_;
  Records<uint32_t> pvid_or_type_;
  Records<uint32_t> loop_inconsistent_;
  Records<uint32_t> root_inconsistent_;
  Records<uint32_t> members_;
  Records<wire::ImageMstInstance> mst_instances_;
  Records<wire::ImageUser> refused_users_;
  Records<wire::ImageBridgePort> bridge_ports_;
  Records<wire::ImageTree> trees_;
  Records<wire::ImageDesignated> designated_;
  Records<uint16_t> by_number_;
  bool is_sound_ = false;
  // Where the latest searches ended: walks go on from there.
  mutable uint32_t latest_interface_ = 0;
  mutable uint32_t latest_tree_port_ = 0;
  mutable uint32_t latest_number_ = 0;
  mutable uint32_t latest_tree_ = 0;
};

// True for what has a bridge port number of its own; members of a port-channel have none that counts.
bool is_bridge_port(const wire::ImageInterface &interface);

}  // namespace stpplatform::answers
