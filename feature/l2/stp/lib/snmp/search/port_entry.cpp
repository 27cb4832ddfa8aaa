// The spanning-tree process's entry of a port, or of a port in a tree.
#include "diagnostics.h"
#include "index_search.h"
#include "query/request.h"
#include "result.h"
#include "search/key_form.h"

using namespace stpsnmp;
using stpsnmp::diagnostics::kRejection;
using stpsnmp::diagnostics::kTrace;
using stpsnmp::query::Reply;
using stpsnmp::query::Request;

namespace {

bool is_known(cmd_action action) { return action == CMD_ACTION_GET || action == CMD_ACTION_GET_NEXT; }

// These commands have entries in tree 0, the CIST.
bool counts_trees_from_zero(stp_command command) {
  return command == STP_COMMAND_MST_PORTS || command == STP_COMMAND_ROOT_INCONSISTENCIES ||
         command == STP_COMMAND_LOOP_INCONSISTENCIES;
}

// Reads a part of the entry's key, which keeps what it holds where the reply lacks it.
void read_key(const Reply &reply, stp_attribute attribute, uint32_t *part, CallSite caller) {
  if (reply.read_number(attribute, part) != 0) {
    STP_LOG(kTrace, "\n%s(%d) cmd_rsp_attr_get returns error.\n", caller.function, caller.line);
  }
}

}  // namespace

int get_stp_entry_from_if_index(uint32_t action, uint8_t dual, uint32_t index_token, uint32_t *if_index,
                                uint32_t tree_token, uint32_t *tree_id, void **reply, uint32_t command) {
  const auto asked_action = static_cast<cmd_action>(action);
  const auto asked_command = static_cast<stp_command>(command);
  const bool is_dual = dual == search::kDual;
  if (!is_known(asked_action)) {
    STP_LOG(kTrace, "\n%s(%d): invalid action requested\n", __func__, __LINE__);
    return kFailed;
  }
  if (is_dual && tree_id == nullptr) {
    STP_LOG(kRejection, "\n%s(%d): invalid tree_id pointer\n", __func__, __LINE__);
    return kFailed;
  }
  const int32_t lowest_tree = counts_trees_from_zero(asked_command) ? 0 : 1;
  if (is_dual && asked_action == CMD_ACTION_GET && static_cast<int32_t>(*tree_id) < lowest_tree) {
    STP_LOG(kRejection, "\n%s(%d): invalid action requested or tree_id \n", __func__, __LINE__);
    return kFailed;
  }
  if (counts_trees_from_zero(asked_command) && tree_id != nullptr) {
    STP_LOG(kTrace, "\n%s(%d): for command id %d, tree_id:%d\n", __func__, __LINE__,
            static_cast<int32_t>(command), static_cast<int32_t>(*tree_id));
  }
  if (if_index == nullptr) {
    STP_LOG(kRejection, "\n%s(%d): invalid if_index pointer\n", __func__, __LINE__);
    return kFailed;
  }

  Reply answer;
  {
    Request request(asked_command, asked_action, CallSite::here());
    if (!request) {
      return kFailed;
    }
    if (is_dual) {
      STP_LOG(kTrace, "\n%s(%d): Searching for dual index: %d, %d\n", __func__, __LINE__,
              static_cast<int32_t>(*if_index), static_cast<int32_t>(*tree_id));
      const query::TreeRange tree = query::single_tree(*tree_id);
      request.add({static_cast<stp_key>(tree_token), &tree});
    }
    request.add({static_cast<stp_key>(index_token), if_index});
    if (request.send(&answer) != 0) {
      STP_LOG(kTrace, "\n%s(%d) cmd_req_snmp_send_recv() failed for GET\n", __func__, __LINE__);
      return kFailed;
    }
  }
  if (!answer) {
    STP_LOG(kTrace, "\n%s(%d): resp_h is NULL \n", __func__, __LINE__);
    return kFailed;
  }

  if (is_dual) {
    read_key(answer, STP_ATTRIBUTE_PORT_TREE, tree_id, CallSite::here());
    STP_LOG(kTrace, "\n%s(%d) dual index tree id: %d\n", __func__, __LINE__, static_cast<int32_t>(*tree_id));
  }
  read_key(answer, STP_ATTRIBUTE_INTERFACE, if_index, CallSite::here());
  STP_LOG(kTrace, "\n%s(%d) return if_index id: %d\n", __func__, __LINE__, static_cast<int32_t>(*if_index));
  uint32_t value = 0;
  if (answer.read_number(STP_ATTRIBUTE_INCONSISTENCY, &value) == 0) {
    STP_LOG(kTrace, "\n%s(%d): value %d\n", __func__, __LINE__, static_cast<int32_t>(value));
  }
  if (reply != nullptr) {
    *reply = answer.detach();
  }
  return 0;
}
