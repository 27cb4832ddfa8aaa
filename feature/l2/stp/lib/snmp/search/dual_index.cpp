// Rows by tree and port. SNMP orders them by tree and then by port id, physical ports before port-channels;
// the spanning-tree process orders them by tree and then by interface index, port-channels before physical
// ports.
#include "call_site.h"
#include "diagnostics.h"
#include "index_search.h"
#include "platform/cmd.h"
#include "platform/stp.h"
#include "result.h"
#include "search/found_row.h"
#include "search/held_reply.h"
#include "search/key_form.h"
#include "search/next_row.h"
#include "search/port_ids.h"

using namespace stpsnmp::search;
using stpsnmp::CallSite;
using stpsnmp::kFailed;
using stpsnmp::diagnostics::kTrace;

namespace {

// No interface has so low an index: what follows it in a tree is the tree's first entry.
constexpr uint32_t kBelowInterfaces = 129;

// The process's entries that a search asks for, and the reply that it holds.
struct Entries {
  uint32_t index_token;
  uint32_t tree_token;
  uint32_t command;
  void **reply;

  bool get(uint32_t *tree, uint32_t *if_index) const { return fetch(CMD_ACTION_GET, tree, if_index); }
  bool get_next(uint32_t *tree, uint32_t *if_index) const {
    return fetch(CMD_ACTION_GET_NEXT, tree, if_index);
  }

  void release() const { release_reply(held_reply(reply)); }

  void release_and_clear() const {
    release();
    if (reply != nullptr) {
      *reply = nullptr;
    }
  }

 private:
  bool fetch(uint32_t action, uint32_t *tree, uint32_t *if_index) const {
    return get_stp_entry_from_if_index(action, kDual, index_token, if_index, tree_token, tree, reply,
                                       command) == 0;
  }
};

int32_t shown(uint32_t number) { return static_cast<int32_t>(number); }

// The end of both searches.
int finish_row(const Entries &entries, uint32_t tree, uint32_t if_index, uint32_t *tree_id, uint16_t *port_id,
               CallSite caller = CallSite::here()) {
  return finish(tree, if_index, tree_id, port_id, entries.reply, kTrace, caller);
}

// Finds the first entry of a port-channel in the tree, from the caller's port on, and moves the caller's port
// there.
bool get_next_stp_channel_entry_in_same_tree(const Entries &entries, uint32_t *tree, uint16_t *port_id) {
  STP_LOG(kTrace, "\n%s(%d): Looking up stp_channel_entry in tree %d\n", __func__, __LINE__, shown(*tree));
  if (*tree == 0 || *port_id > kMaxChannelPort) {
    STP_LOG(kTrace, "\n%s(%d): Invalid tree_id(%d) and/or port_id(%d)(%d). \n", __func__, __LINE__,
            shown(*tree), int{*port_id}, int{kMaxChannelPort});
    return false;
  }
  const uint16_t start = *port_id < kMinChannelPort ? kMinChannelPort : *port_id;
  uint32_t if_index = 0;
  const bool is_converted = stp_dot1dportnum2ifindex(start, &if_index) == 0;
  if (!is_converted) {
    STP_LOG(kTrace, "\n%s(%d): Error converting %d to if_index\n", __func__, __LINE__, int{start});
    if_index = 0;
  }
  if (!is_converted || stp_valid_if_index(if_index) == 0 || !entries.get(tree, &if_index)) {
    STP_LOG(kTrace, "\n%s(%d): Next search \n", __func__, __LINE__);
    uint32_t next_tree = *tree;
    if (!entries.get_next(&next_tree, &if_index)) {
      STP_LOG(kTrace, "\n%s(%d): Error getting next on tree (%d), if_index(%d) \n", __func__, __LINE__,
              shown(next_tree), shown(if_index));
      return false;
    }
    if (next_tree != *tree) {
      entries.release();
      STP_LOG(kTrace, "\n%s(%d): does not return on the same tree\n", __func__, __LINE__);
      return false;
    }
  }
  STP_LOG(kTrace, "\n%s(%d): Search successfull: if_index: %d\n", __func__, __LINE__, shown(if_index));
  if (type_of(if_index) != IF_TYPE_PORT_CHANNEL) {
    entries.release();
    STP_LOG(kTrace, "\n%s(%d): does not return port channel.\n", __func__, __LINE__);
    return false;
  }
  if (stp_ifindex2dot1dportnum(if_index, port_id) != 0) {
    entries.release();
    return false;
  }
  return true;
}

}  // namespace

int get_exact_stp_dual_indices_entry(uint32_t index_token, uint16_t *port_id, uint32_t tree_token,
                                     uint32_t *tree_id, void **reply, uint32_t command) {
  const Entries entries{index_token, tree_token, command, reply};
  STP_LOG(kTrace, "\n%s(%d): get stp dual indices entry.\n", __func__, __LINE__);
  uint32_t tree = *tree_id;
  uint32_t asked_if_index = 0;
  uint32_t if_index = 0;
  uint8_t type = 0;
  if (validate_port_id_for_snmp_search(CMD_ACTION_GET, &asked_if_index, &if_index, port_id, &type) != 0) {
    STP_LOG(kTrace, "\n%s(%d): GET request failed.\n", __func__, __LINE__);
    return kFailed;
  }
  STP_LOG(kTrace, "\n%s(%d): look for ifIndex(%d) in tree (%d)\n", __func__, __LINE__, shown(if_index),
          shown(tree));
  STP_LOG(kTrace, "\n%s(%d) if_index type: %d\n", __func__, __LINE__, int{type});
  if (!entries.get(&tree, &if_index)) {
    STP_LOG(kTrace, "\n%s(%d): returning FAILURE\n", __func__, __LINE__);
    return kFailed;
  }
  type = type_of(if_index);
  STP_LOG(kTrace, "\n%s(%d): ret_if_index: %d, ret_if_type: %d\n", __func__, __LINE__, shown(if_index),
          int{type});
  STP_LOG(kTrace, "\n%s(%d): ret_tree_index: %d\n", __func__, __LINE__, shown(tree));
  return finish_row(entries, tree, if_index, tree_id, port_id);
}

int get_next_stp_dual_indices_entry_from_im(uint32_t index_token, uint16_t *port_id, uint32_t tree_token,
                                            uint32_t *tree_id, void **reply, uint32_t command,
                                            uint8_t stp_flag) {
  const Entries entries{index_token, tree_token, command, reply};
  STP_LOG(kTrace, "\n%s(%d): get stp dual indices entry.\n", __func__, __LINE__);
  uint32_t tree = *tree_id;
  uint32_t in_tree = *tree_id;
  for (;;) {
    uint32_t asked_if_index = 0;
    uint32_t if_index = 0;
    uint8_t candidate_type = IF_TYPE_PHYSICAL;
    if (validate_port_id_for_snmp_search_from_im(CMD_ACTION_GET_NEXT, &asked_if_index, &if_index, port_id,
                                                 stp_flag) == 0) {
      candidate_type = type_of(if_index);
    } else {
      STP_LOG(kTrace, "\n%s(%d): validate_port_id_for_snmp_search FAILED: %d", __func__, __LINE__,
              int{*port_id});
      if_index = kBelowInterfaces;
      ++tree;
    }
    STP_LOG(kTrace, "\n%s(%d): get_next look for ifIndex(%d) in tree (%d)\n", __func__, __LINE__,
            shown(if_index), shown(tree));
    STP_LOG(kTrace, "\n%s(%d) if_index type: %d\n", __func__, __LINE__, int{candidate_type});
    if (entries.get(&tree, &if_index)) {
      STP_LOG(kTrace, "\n%s(%d) Get Successful\n", __func__, __LINE__);
      return finish_row(entries, tree, if_index, tree_id, port_id);
    }
    STP_LOG(kTrace, "\n%s(%d): NEXT on ifIndex(%d) in tree (%d), in_if_type (%d)\n", __func__, __LINE__,
            shown(if_index), shown(tree), int{candidate_type});
    const uint32_t saved_tree = tree;
    if (!entries.get_next(&tree, &if_index)) {
      if (candidate_type == IF_TYPE_PORT_CHANNEL) {
        STP_LOG(kTrace,
                "\n%s(%d): returning FAILURE, ret_if_index(%d), ret_tree_index (%d), in_if_type (%d)\n",
                __func__, __LINE__, shown(if_index), shown(tree), int{candidate_type});
        return kFailed;
      }
      STP_LOG(kTrace,
              "\n%s(%d): getting next channel in same tree, ret_if_index(%d), in_if_type(%d), ret_tree_index "
              "(%d), in_tree_index(%d)\n",
              __func__, __LINE__, shown(if_index), int{candidate_type}, shown(tree), shown(in_tree));
      if (!get_next_stp_channel_entry_in_same_tree(entries, &tree, port_id)) {
        STP_LOG(kTrace, "\n%s(%d): Lookup port channel range failed. No more to search.\n", __func__,
                __LINE__);
        return kFailed;
      }
      if (stp_dot1dportnum2ifindex(*port_id, &if_index) != 0) {
        entries.release();
        STP_LOG(kTrace, "\n%s(%d): Lookup if_index failed. \n", __func__, __LINE__);
        return kFailed;
      }
      return finish_row(entries, tree, if_index, tree_id, port_id);
    }
    if (saved_tree > tree) {
      STP_LOG(kTrace, "\n%s(%d): saved_tree_index: %d, ret_tree_index: %d\n", __func__, __LINE__,
              shown(saved_tree), shown(tree));
      entries.release_and_clear();
      return kFailed;
    }
    const uint8_t type = type_of(if_index);
    STP_LOG(kTrace, "\n%s(%d): ret_if_index: %d, ret_if_type: %d\n", __func__, __LINE__, shown(if_index),
            int{type});
    STP_LOG(kTrace, "\n%s(%d): in_tree_index: %d, ret_tree_index: %d\n", __func__, __LINE__, shown(in_tree),
            shown(tree));
    switch (decide(candidate_type, in_tree, tree, type)) {
      case NextRow::kFinish:
        return finish_row(entries, tree, if_index, tree_id, port_id);
      case NextRow::kFail:
        entries.release();
        return kFailed;
      case NextRow::kPhysicalEntry:
        if (check_and_get_next_stp_physical_entry_for_logical(tree_token, &tree, index_token, port_id,
                                                              &if_index, reply, command) != 0) {
          STP_LOG(kTrace, "\n%s(%d): check_and_get_next_stp_physical_entry_for_logical FAILED\n", __func__,
                  __LINE__);
          entries.release();
          return kFailed;
        }
        return finish_row(entries, tree, if_index, tree_id, port_id);
      case NextRow::kNextTree:
        STP_LOG(kTrace, "\n%s(%d): Incrementing in_tree_index, port_index to search again\n", __func__,
                __LINE__);
        ++in_tree;
        tree = in_tree;
        *port_id = kBeforePhysicalPorts;
        STP_LOG(kTrace, "\n%s(%d): in_tree_index: %d, port_index: %d\n", __func__, __LINE__, shown(in_tree),
                int{*port_id});
        entries.release_and_clear();
    }
  }
}
