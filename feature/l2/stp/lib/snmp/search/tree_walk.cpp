#include "search/tree_walk.h"

#include <limits>

#include "bitmap.h"
#include "call_site.h"
#include "diagnostics.h"
#include "index_search.h"
#include "platform/cmd.h"
#include "platform/im.h"
#include "platform/stp.h"
#include "query/reply.h"
#include "result.h"
#include "search/base_port.h"
#include "search/found_row.h"
#include "search/key_form.h"
#include "search/port_ids.h"
#include "search/tree_entries.h"

namespace stpsnmp::search {
namespace {

using diagnostics::kRejection;
using diagnostics::kTrace;
using query::Reply;

// Keys before a tree's first entry and behind its last one.
constexpr uint32_t kBeforeInterfaces = 0;
constexpr uint32_t kBehindInterfaces = std::numeric_limits<uint32_t>::max();

constexpr uint32_t kFirstVlan = 1;
constexpr uint32_t kUncached = 0;

// The trees of a mode.
struct Trees {
  const char *search;  // the routine as which a search among them logs
  diagnostics::Level failure_level;
  TreeEntries entries;
  uint8_t selector;
  void (*set_vlans)(uint32_t tree, stp_vlan_bmp *vlans);  // after remove_all_vlans
};

int32_t shown(uint32_t number) { return static_cast<int32_t>(number); }

bool fetch(const Trees &trees, uint32_t action, uint32_t *tree, uint32_t *if_index, void **reply) {
  return get_stp_entry_from_if_index(action, kDual, trees.entries.port_attr, if_index,
                                     trees.entries.tree_attr, tree, reply, trees.entries.command) == 0;
}

// Asks for the entry behind a place in the tree, to learn which tree it is in.
bool find_tree(const Trees &trees, uint32_t if_index, uint32_t *tree, Reply *reply) {
  return fetch(trees, CMD_ACTION_GET_NEXT, tree, &if_index, reply->out());
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
  uint32_t spare_if_index = 0;
  return validate_port_id_for_snmp_search_new(CMD_ACTION_GET_NEXT, if_index, &spare_if_index, &port,
                                              trees.selector, &vlans, kUncached) == 0;
}

// Finds the next port behind this one in the tree, or the first one of the next tree.
bool find_port(const Trees &trees, uint16_t port, uint32_t *tree, stp_vlan_bmp *vlans, uint32_t *if_index) {
  if (find_port_behind(trees, port, *vlans, if_index)) {
    return true;
  }
  if (!step_to_next(trees, tree, vlans)) {
    return false;
  }
  if (!find_port_behind(trees, kNoPort, *vlans, if_index)) {
    STP_LOG(trees.failure_level, "validate_port_id_for_snmp_search_new failed in %d\n", __LINE__);
    return false;
  }
  return true;
}

bool fetch_row(const Trees &trees, uint32_t *tree, uint32_t *if_index, void **reply) {
  if (!fetch(trees, CMD_ACTION_GET, tree, if_index, reply)) {
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

int get_next_stp_dual_indices_entry_rpvst(uint32_t port_attr, uint16_t *port_id, uint32_t tree_attr,
                                          uint32_t *tree_id, void **resp_h, uint32_t cmd_id,
                                          uint8_t selector) {
  const Trees trees{__func__, kRejection, {port_attr, tree_attr, cmd_id}, selector, bitmap::add_vlan};
  if (*tree_id == 0) {
    *tree_id = kFirstVlan;
  }
  uint32_t tree = *tree_id;
  uint16_t port = *port_id;
  if (!probe_tree(trees, &tree)) {
    tree = *tree_id;
    if (!step_over(trees, &tree)) {
      return kFailed;
    }
    port = kNoPort;
  }
  stp_vlan_bmp vlans{STP_VLAN_BITMAP_SIZE, {}};
  bitmap::add_vlan(tree, &vlans);
  uint32_t if_index = 0;
  if (!find_port(trees, port, &tree, &vlans, &if_index) || !fetch_row(trees, &tree, &if_index, resp_h)) {
    return kFailed;
  }
  return finish(tree, if_index, tree_id, port_id, resp_h, trees.failure_level, CallSite::here());
}

int get_next_stp_dual_indices_entry_mst(uint16_t *port_id, uint32_t *tree_id, void **resp_h) {
  const Trees trees{__func__, kTrace, kMstEntries, BASE_PORT_ACTIVE, set_instance_vlans};
  stp_vlan_bmp vlans{STP_VLAN_BITMAP_SIZE, {}};
  uint32_t tree = *tree_id;
  uint16_t port = *port_id;
  set_instance_vlans(tree, &vlans);
  // The row is one of the tree that was asked for, whatever tree an answer names.
  uint32_t probed = tree;
  if (!probe_tree(trees, &probed)) {
    if (!step_over(trees, &tree)) {
      return kFailed;
    }
    set_instance_vlans(tree, &vlans);
    port = kNoPort;
  }
  uint32_t if_index = 0;
  if (!find_port(trees, port, &tree, &vlans, &if_index)) {
    return kFailed;
  }
  uint32_t answered = tree;
  if (!fetch_row(trees, &answered, &if_index, resp_h)) {
    return kFailed;
  }
  return finish(tree, if_index, tree_id, port_id, resp_h, trees.failure_level, CallSite::here());
}

}  // namespace stpsnmp::search
