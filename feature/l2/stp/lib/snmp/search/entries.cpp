#include "search/entries.h"

#include <utility>

#include "platform/stp.h"
#include "query/request.h"

namespace stpsnmp::search {
namespace {

using diagnostics::kRejection;
using diagnostics::kTrace;
using diagnostics::shown;
using query::Reply;
using query::Request;

constexpr char kFetch[] = "get_stp_entry_from_if_index";  // as which the steps of a fetch log

// These commands have entries in tree 0, the CIST.
bool counts_trees_from_zero(stp_command command) {
  return command == STP_COMMAND_MST_PORTS || command == STP_COMMAND_ROOT_INCONSISTENCIES ||
         command == STP_COMMAND_LOOP_INCONSISTENCIES;
}

bool is_acceptable(const EntryKind &kind, cmd_action action, const uint32_t *tree, const uint32_t *if_index) {
  if (action != CMD_ACTION_GET && action != CMD_ACTION_GET_NEXT) {
    STP_LOG(kTrace, "\n%s(%d): invalid action requested\n", kFetch, __LINE__);
    return false;
  }
  if (kind.tree && tree == nullptr) {
    STP_LOG(kRejection, "\n%s(%d): invalid tree_id pointer\n", kFetch, __LINE__);
    return false;
  }
  const int32_t lowest_tree = counts_trees_from_zero(kind.command) ? 0 : 1;
  if (kind.tree && action == CMD_ACTION_GET && static_cast<int32_t>(*tree) < lowest_tree) {
    STP_LOG(kRejection, "\n%s(%d): invalid action requested or tree_id \n", kFetch, __LINE__);
    return false;
  }
  if (counts_trees_from_zero(kind.command) && tree != nullptr) {
    STP_LOG(kTrace, "\n%s(%d): for command id %d, tree_id:%d\n", kFetch, __LINE__, shown(kind.command),
            shown(*tree));
  }
  if (if_index == nullptr) {
    STP_LOG(kRejection, "\n%s(%d): invalid if_index pointer\n", kFetch, __LINE__);
    return false;
  }
  return true;
}

bool ask(const EntryKind &kind, cmd_action action, const uint32_t *tree, const uint32_t *if_index,
         Reply *answer) {
  Request request(kind.command, action, {kFetch, __LINE__});
  if (!request) {
    return false;
  }
  if (kind.tree) {
    STP_LOG(kTrace, "\n%s(%d): Searching for dual index: %d, %d\n", kFetch, __LINE__, shown(*if_index),
            shown(*tree));
    const query::TreeRange range = query::single_tree(*tree);
    request.add({*kind.tree, &range});
  }
  request.add({kind.interface, if_index});
  if (request.send(answer) != 0) {
    STP_LOG(kTrace, "\n%s(%d) cmd_req_snmp_send_recv() failed for GET\n", kFetch, __LINE__);
    return false;
  }
  return true;
}

// A part of the key keeps what it holds where the reply does not name it.
void read_part(const Reply &answer, stp_attribute attribute, uint32_t *part) {
  if (answer.read_number(attribute, part) != 0) {
    STP_LOG(kTrace, "\n%s(%d) cmd_rsp_attr_get returns error.\n", kFetch, __LINE__);
  }
}

void read_key(const EntryKind &kind, const Reply &answer, uint32_t *tree, uint32_t *if_index) {
  if (kind.tree) {
    read_part(answer, STP_ATTRIBUTE_PORT_TREE, tree);
    STP_LOG(kTrace, "\n%s(%d) dual index tree id: %d\n", kFetch, __LINE__, shown(*tree));
  }
  read_part(answer, STP_ATTRIBUTE_INTERFACE, if_index);
  STP_LOG(kTrace, "\n%s(%d) return if_index id: %d\n", kFetch, __LINE__, shown(*if_index));
}

void trace_value(const Reply &answer) {
  uint32_t value = 0;
  if (answer.read_number(STP_ATTRIBUTE_INCONSISTENCY, &value) == 0) {
    STP_LOG(kTrace, "\n%s(%d): value %d\n", kFetch, __LINE__, shown(value));
  }
}

}  // namespace

bool fetch_entry(const EntryKind &kind, cmd_action action, uint32_t *tree, uint32_t *if_index, Reply *reply) {
  Reply answer;
  if (!is_acceptable(kind, action, tree, if_index) || !ask(kind, action, tree, if_index, &answer)) {
    return false;
  }
  if (!answer) {
    STP_LOG(kTrace, "\n%s(%d): resp_h is NULL \n", kFetch, __LINE__);
    return false;
  }
  read_key(kind, answer, tree, if_index);
  trace_value(answer);
  if (reply != nullptr) {
    *reply = std::move(answer);
  }
  return true;
}

bool finish(const Place &found, TreePort *row, Reply *reply, diagnostics::Level failure_level,
            CallSite caller) {
  if (stp_ifindex2dot1dportnum(found.if_index, &row->port_id) != 0) {
    release(reply);
    STP_LOG(failure_level, "\n%s(%d): returning FAILURE\n", caller.function, caller.line);
    return false;
  }
  if (reply == nullptr) {
    STP_LOG(failure_level, "\n%s(%d) resp_h is NULL\n", caller.function, caller.line);
  }
  row->tree_id = found.tree;
  STP_LOG(kTrace, "\n%s(%d): returning tree_index: %d, port_index: %d\n", caller.function, caller.line,
          shown(row->tree_id), int{row->port_id});
  return true;
}

}  // namespace stpsnmp::search
