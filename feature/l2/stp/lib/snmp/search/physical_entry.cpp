// Physical ports come before port-channels in SNMP order, and behind them in the spanning-tree process's.
#include "diagnostics.h"
#include "index_search.h"
#include "platform/cmd.h"
#include "platform/stp.h"
#include "result.h"
#include "search/held_reply.h"
#include "search/key_form.h"
#include "search/port_ids.h"

using namespace stpsnmp::search;
using stpsnmp::kFailed;
using stpsnmp::diagnostics::kTrace;

namespace {

// Where a walk stands: the caller's four variables, to be put back as they were.
class Position {
 public:
  Position(uint32_t *tree_id, uint16_t *port_id, uint32_t *if_index, void **reply)
      : tree_id_(tree_id),
        port_id_(port_id),
        if_index_(if_index),
        reply_(reply),
        saved_tree_id_(*tree_id),
        saved_port_id_(*port_id),
        saved_if_index_(*if_index),
        saved_reply_(held_reply(reply)) {}

  uint32_t saved_tree_id() const { return saved_tree_id_; }
  void *saved_reply() const { return saved_reply_; }

  void restore_index() const {
    *if_index_ = saved_if_index_;
    *port_id_ = saved_port_id_;
    *tree_id_ = saved_tree_id_;
  }

  void restore_reply() const {
    if (reply_ != nullptr) {
      *reply_ = saved_reply_;
    }
  }

 private:
  uint32_t *tree_id_;
  uint16_t *port_id_;
  uint32_t *if_index_;
  void **reply_;
  uint32_t saved_tree_id_;
  uint16_t saved_port_id_;
  uint32_t saved_if_index_;
  void *saved_reply_;
};

}  // namespace

int check_and_get_next_stp_physical_entry_for_logical(uint32_t tree_token, uint32_t *tree_id,
                                                      uint32_t index_token, uint16_t *port_id,
                                                      uint32_t *if_index, void **reply, uint32_t command) {
  const Position saved(tree_id, port_id, if_index, reply);
  STP_LOG(kTrace, "\n%s(%d): if_index: %d, port_index: %d, tree_index: %d\n", __func__, __LINE__,
          static_cast<int32_t>(*if_index), int{*port_id}, static_cast<int32_t>(*tree_id));
  *port_id = kBeforePhysicalPorts;
  uint32_t physical_if_index = 0;
  uint8_t if_type = 0;
  if (validate_port_id_for_snmp_search(CMD_ACTION_GET_NEXT, if_index, &physical_if_index, port_id,
                                       &if_type) != 0) {
    STP_LOG(kTrace, "\n%s(%d): returning FAILURE\n", __func__, __LINE__);
    return kFailed;
  }
  *if_index = physical_if_index;
  STP_LOG(kTrace, "\n%s(%d): Valid if_index: %d", __func__, __LINE__, static_cast<int32_t>(*if_index));
  if (get_stp_entry_from_if_index(CMD_ACTION_GET, kDual, index_token, if_index, tree_token, tree_id, reply,
                                  command) != 0) {
    STP_LOG(kTrace, "\n%s(%d): returning FAILURE for GET\n", __func__, __LINE__);
    if (get_stp_entry_from_if_index(CMD_ACTION_GET_NEXT, kDual, index_token, if_index, tree_token, tree_id,
                                    reply, command) != 0) {
      STP_LOG(kTrace, "\n%s(%d): returning FAILURE for GET_NEXT\n", __func__, __LINE__);
      saved.restore_index();
      saved.restore_reply();
      return kFailed;
    }
  }
  const auto answered_tree = static_cast<int32_t>(*tree_id);
  if (saved.saved_tree_id() < *tree_id) {
    STP_LOG(kTrace, "\n%s(%d): Returned tree_index: %d. Returning saved\n", __func__, __LINE__,
            answered_tree);
    saved.restore_index();
    release_reply(held_reply(reply));
    saved.restore_reply();
  } else {
    STP_LOG(kTrace, "\n%s(%d): Returned tree_index: %d. Returning backend got values\n", __func__, __LINE__,
            answered_tree);
    if (stp_ifindex2dot1dportnum(*if_index, port_id) != 0) {
      release_reply(held_reply(reply));
      saved.restore_index();
      saved.restore_reply();
      STP_LOG(kTrace, "\n%s(%d): returning FAILURE\n", __func__, __LINE__);
      return kFailed;
    }
    release_reply(saved.saved_reply());
  }
  STP_LOG(kTrace, "\n%s(%d): Returning if_index: %d, port_index: %d, tree_index: %d\n", __func__, __LINE__,
          static_cast<int32_t>(*if_index), int{*port_id}, static_cast<int32_t>(*tree_id));
  return 0;
}
