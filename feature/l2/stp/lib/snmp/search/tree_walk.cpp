#include "search/tree_walk.h"

#include <limits>

#include "bitmap.h"
#include "platform/im.h"
#include "platform/stp.h"
#include "search/base_port.h"
#include "search/port_ids.h"

namespace stpsnmp::search {
namespace {

using diagnostics::kRejection;
using diagnostics::kTrace;
using diagnostics::shown;
using query::Reply;

// Keys before a tree's first entry and behind its last one.
constexpr uint32_t kBeforeInterfaces = 0;
constexpr uint32_t kBehindInterfaces = std::numeric_limits<uint32_t>::max();

constexpr uint32_t kFirstVlan = 1;
constexpr bool kUncached = false;

// The trees of a mode.
struct Trees {
  const char *search;  // as which a search among them logs
  diagnostics::Level failure_level;
  EntryKind kind;
  uint8_t selector;
  void (*set_vlans)(uint32_t tree, stp_vlan_bmp *vlans);  // after remove_all_vlans
};

// Asks for the entry behind a place in the tree, to learn which tree it is in.
bool find_tree(const Trees &trees, uint32_t if_index, uint32_t *tree, Reply *reply) {
  return fetch_entry(trees.kind, CMD_ACTION_GET_NEXT, tree, &if_index, reply);
}

// Tells whether there is such a tree. `*tree` becomes that of its first entry, which may be a later one.
bool probe_tree(const Trees &trees, uint32_t *tree) {
  Reply reply;
  return find_tree(trees, kBeforeInterfaces, tree, &reply);
}

// Moves from a tree that does not exist to the next one that does.
bool step_over(const Trees &trees, uint32_t *tree) {
  STP_LOG(kTrace, "\n%s(%d): invalid tree id\n", trees.search, __LINE__);
  Reply reply;
  if (!find_tree(trees, kBehindInterfaces, tree, &reply)) {
    STP_LOG(trees.failure_level, "\n%s(%d) Exhausted all instances of stp trees\n", trees.search, __LINE__);
    return false;
  }
  reply.release();
  STP_LOG(kTrace, "\n%s(%d): Found next tree id %d\n", trees.search, __LINE__, shown(*tree));
  return true;
}

// Moves to the tree behind one whose ports are done.
bool step_to_next(const Trees &trees, uint32_t *tree, stp_vlan_bmp *vlans) {
  bitmap::remove_all_vlans(vlans);
  Reply reply;
  if (!find_tree(trees, kBehindInterfaces, tree, &reply)) {
    STP_LOG(trees.failure_level, "\n%s(%d): Exhausted all instances of stp trees\n", trees.search, __LINE__);
    return false;
  }
  STP_LOG(trees.failure_level, "Found next tree id %d\n", shown(*tree));
  trees.set_vlans(*tree, vlans);
  return true;
}

bool find_port_behind(const Trees &trees, uint16_t port, const stp_vlan_bmp &vlans, uint32_t *if_index) {
  return find_base_port(CMD_ACTION_GET_NEXT, trees.selector, &vlans, kUncached, &port, if_index);
}

// Finds the next port behind this one in the tree, or the first one of the next tree.
bool find_port(const Trees &trees, uint16_t port, stp_vlan_bmp *vlans, Place *place) {
  if (find_port_behind(trees, port, *vlans, &place->if_index)) {
    return true;
  }
  if (!step_to_next(trees, &place->tree, vlans)) {
    return false;
  }
  if (!find_port_behind(trees, kNoPort, *vlans, &place->if_index)) {
    STP_LOG(trees.failure_level, "validate_port_id_for_snmp_search_new failed in %d\n", __LINE__);
    return false;
  }
  return true;
}

bool fetch_row(const Trees &trees, Place *place, Reply *reply) {
  if (!fetch_entry(trees.kind, CMD_ACTION_GET, place, reply)) {
    STP_LOG(trees.failure_level, "get_stp_entry_from_if_index failed at %d\n", __LINE__);
    return false;
  }
  STP_LOG(kTrace, "\n%s(%d) Get Successful\n", trees.search, __LINE__);
  return true;
}

// An instance that the switch does not know has no VLANs.
void set_instance_vlans(uint32_t tree, stp_vlan_bmp *vlans) {
  if (stp_dot1d_bridgemib_get_mst_ctx(static_cast<uint16_t>(tree), vlans) != 0) {
    bitmap::remove_all_vlans(vlans);
  }
}

}  // namespace

bool find_next_vlan_port(const EntryKind &kind, uint8_t selector, TreePort *row, Reply *reply) {
  const Trees trees{"get_next_stp_dual_indices_entry_rpvst", kRejection, kind, selector, bitmap::add_vlan};
  if (row->tree_id == 0) {
    row->tree_id = kFirstVlan;
  }
  Place place{row->tree_id, 0};
  uint16_t port = row->port_id;
  if (!probe_tree(trees, &place.tree)) {
    place.tree = row->tree_id;
    if (!step_over(trees, &place.tree)) {
      return false;
    }
    port = kNoPort;
  }
  stp_vlan_bmp vlans{STP_VLAN_BITMAP_SIZE, {}};
  bitmap::add_vlan(place.tree, &vlans);
  return find_port(trees, port, &vlans, &place) && fetch_row(trees, &place, reply) &&
         finish(place, row, reply, trees.failure_level, {trees.search, __LINE__});
}

bool find_next_mst_port(TreePort *row, Reply *reply) {
  const Trees trees{"get_next_stp_dual_indices_entry_mst", kTrace, kMstPorts, BASE_PORT_ACTIVE,
                    set_instance_vlans};
  stp_vlan_bmp vlans{STP_VLAN_BITMAP_SIZE, {}};
  Place place{row->tree_id, 0};
  uint16_t port = row->port_id;
  set_instance_vlans(place.tree, &vlans);
  // The row is one of the tree that was asked for, whatever tree an answer names.
  uint32_t probed = place.tree;
  if (!probe_tree(trees, &probed)) {
    if (!step_over(trees, &place.tree)) {
      return false;
    }
    set_instance_vlans(place.tree, &vlans);
    port = kNoPort;
  }
  if (!find_port(trees, port, &vlans, &place)) {
    return false;
  }
  Place answered = place;
  return fetch_row(trees, &answered, reply) &&
         finish({place.tree, answered.if_index}, row, reply, trees.failure_level, {trees.search, __LINE__});
}

}  // namespace stpsnmp::search
