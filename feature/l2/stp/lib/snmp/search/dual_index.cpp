#include "search/dual_index.h"

#include "platform/im.h"
#include "platform/stp.h"
#include "search/next_row.h"
#include "search/port_ids.h"

namespace stpsnmp::search {
namespace {

using diagnostics::kTrace;
using diagnostics::shown;
using query::Reply;

// As which the steps log.
constexpr char kExact[] = "get_exact_stp_dual_indices_entry";
constexpr char kNext[] = "get_next_stp_dual_indices_entry_from_im";

// No interface has so low an index: what follows it in a tree is the tree's first entry.
constexpr uint32_t kBelowInterfaces = 129;

// What a next search works on.
struct NextSearch {
  const EntryKind &kind;
  uint8_t selector;
  TreePort *row;
  Reply *reply;
  Place place;       // of the candidate, and then of the entry that answers
  uint32_t in_tree;  // the tree that the search stands in
  uint8_t candidate_type;
};

// The candidate: the next port in the tree, or where there is none what comes first in the next tree.
void choose_candidate(NextSearch *search) {
  search->candidate_type = IF_TYPE_PHYSICAL;
  uint32_t if_index = 0;
  if (validate_by_interface_manager(CMD_ACTION_GET_NEXT, search->selector, &search->row->port_id,
                                    &if_index)) {
    search->place.if_index = if_index;
    search->candidate_type = type_of(if_index);
  } else {
    STP_LOG(kTrace, "\n%s(%d): validate_port_id_for_snmp_search FAILED: %d", kNext, __LINE__,
            int{search->row->port_id});
    search->place.if_index = kBelowInterfaces;
    ++search->place.tree;
  }
  STP_LOG(kTrace, "\n%s(%d): get_next look for ifIndex(%d) in tree (%d)\n", kNext, __LINE__,
          shown(search->place.if_index), shown(search->place.tree));
  STP_LOG(kTrace, "\n%s(%d) if_index type: %d\n", kNext, __LINE__, int{search->candidate_type});
}

bool get(NextSearch *search) {
  if (!fetch_entry(search->kind, CMD_ACTION_GET, &search->place, search->reply)) {
    return false;
  }
  STP_LOG(kTrace, "\n%s(%d) Get Successful\n", kNext, __LINE__);
  return true;
}

bool get_next(NextSearch *search) {
  STP_LOG(kTrace, "\n%s(%d): NEXT on ifIndex(%d) in tree (%d), in_if_type (%d)\n", kNext, __LINE__,
          shown(search->place.if_index), shown(search->place.tree), int{search->candidate_type});
  return fetch_entry(search->kind, CMD_ACTION_GET_NEXT, &search->place, search->reply);
}

bool went_back(const NextSearch &search, uint32_t asked_tree) { return search.place.tree < asked_tree; }

NextRow decide_on(const NextSearch &search) {
  const uint8_t type = type_of(search.place.if_index);
  STP_LOG(kTrace, "\n%s(%d): ret_if_index: %d, ret_if_type: %d\n", kNext, __LINE__,
          shown(search.place.if_index), int{type});
  STP_LOG(kTrace, "\n%s(%d): in_tree_index: %d, ret_tree_index: %d\n", kNext, __LINE__, shown(search.in_tree),
          shown(search.place.tree));
  return decide(search.candidate_type, search.in_tree, search.place.tree, type);
}

void move_to_next_tree(NextSearch *search) {
  STP_LOG(kTrace, "\n%s(%d): Incrementing in_tree_index, port_index to search again\n", kNext, __LINE__);
  search->place.tree = ++search->in_tree;
  search->row->port_id = kBeforePhysicalPorts;
  STP_LOG(kTrace, "\n%s(%d): in_tree_index: %d, port_index: %d\n", kNext, __LINE__, shown(search->in_tree),
          int{search->row->port_id});
}

// Behind a tree's physical ports come its port-channels, and then there are no more.
bool finish_without_next(NextSearch *search) {
  if (search->candidate_type == IF_TYPE_PORT_CHANNEL) {
    STP_LOG(kTrace, "\n%s(%d): returning FAILURE, ret_if_index(%d), ret_tree_index (%d), in_if_type (%d)\n",
            kNext, __LINE__, shown(search->place.if_index), shown(search->place.tree),
            int{search->candidate_type});
    return false;
  }
  STP_LOG(kTrace,
          "\n%s(%d): getting next channel in same tree, ret_if_index(%d), in_if_type(%d), ret_tree_index "
          "(%d), in_tree_index(%d)\n",
          kNext, __LINE__, shown(search->place.if_index), int{search->candidate_type},
          shown(search->place.tree), shown(search->in_tree));
  if (!find_channel(search->kind, &search->place.tree, &search->row->port_id, search->reply)) {
    STP_LOG(kTrace, "\n%s(%d): Lookup port channel range failed. No more to search.\n", kNext, __LINE__);
    return false;
  }
  if (stp_dot1dportnum2ifindex(search->row->port_id, &search->place.if_index) != 0) {
    release(search->reply);
    STP_LOG(kTrace, "\n%s(%d): Lookup if_index failed. \n", kNext, __LINE__);
    return false;
  }
  return finish(search->place, search->row, search->reply, kTrace, {kNext, __LINE__});
}

bool finish_with_physical_entry(NextSearch *search) {
  if (!offer_physical_entry(search->kind, &search->place, &search->row->port_id, search->reply)) {
    STP_LOG(kTrace, "\n%s(%d): check_and_get_next_stp_physical_entry_for_logical FAILED\n", kNext, __LINE__);
    release(search->reply);
    return false;
  }
  return finish(search->place, search->row, search->reply, kTrace, {kNext, __LINE__});
}

}  // namespace

bool find_exact_row(const EntryKind &kind, TreePort *row, Reply *reply) {
  STP_LOG(kTrace, "\n%s(%d): get stp dual indices entry.\n", kExact, __LINE__);
  Place place{row->tree_id, 0};
  uint32_t asked_if_index = 0;
  uint8_t type = 0;
  if (!validate_by_counting(CMD_ACTION_GET, &asked_if_index, &place.if_index, &row->port_id, &type)) {
    STP_LOG(kTrace, "\n%s(%d): GET request failed.\n", kExact, __LINE__);
    return false;
  }
  STP_LOG(kTrace, "\n%s(%d): look for ifIndex(%d) in tree (%d)\n", kExact, __LINE__, shown(place.if_index),
          shown(place.tree));
  STP_LOG(kTrace, "\n%s(%d) if_index type: %d\n", kExact, __LINE__, int{type});
  if (!fetch_entry(kind, CMD_ACTION_GET, &place, reply)) {
    STP_LOG(kTrace, "\n%s(%d): returning FAILURE\n", kExact, __LINE__);
    return false;
  }
  type = type_of(place.if_index);
  STP_LOG(kTrace, "\n%s(%d): ret_if_index: %d, ret_if_type: %d\n", kExact, __LINE__, shown(place.if_index),
          int{type});
  STP_LOG(kTrace, "\n%s(%d): ret_tree_index: %d\n", kExact, __LINE__, shown(place.tree));
  return finish(place, row, reply, kTrace, {kExact, __LINE__});
}

bool find_next_row(const EntryKind &kind, uint8_t selector, TreePort *row, Reply *reply) {
  STP_LOG(kTrace, "\n%s(%d): get stp dual indices entry.\n", kNext, __LINE__);
  NextSearch search{kind, selector, row, reply, {row->tree_id, 0}, row->tree_id, IF_TYPE_PHYSICAL};
  for (;;) {
    choose_candidate(&search);
    if (get(&search)) {
      return finish(search.place, row, reply, kTrace, {kNext, __LINE__});
    }
    const uint32_t asked_tree = search.place.tree;
    if (!get_next(&search)) {
      return finish_without_next(&search);
    }
    if (went_back(search, asked_tree)) {
      STP_LOG(kTrace, "\n%s(%d): saved_tree_index: %d, ret_tree_index: %d\n", kNext, __LINE__,
              shown(asked_tree), shown(search.place.tree));
      release(reply);
      return false;
    }
    switch (decide_on(search)) {  // GCOVR_EXCL_BR_LINE: gcov has a branch for values that there are not
      case NextRow::kFinish:
        return finish(search.place, row, reply, kTrace, {kNext, __LINE__});
      case NextRow::kFail:
        release(reply);
        return false;
      case NextRow::kPhysicalEntry:
        return finish_with_physical_entry(&search);
      case NextRow::kNextTree:
        move_to_next_tree(&search);
        release(reply);
    }
  }
}

}  // namespace stpsnmp::search
