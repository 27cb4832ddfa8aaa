// Root, loop, and port VLAN identifier and port type inconsistencies: one row for each tree and port that the
// spanning-tree process reports. The third table is one of per-VLAN trees only.
#include <cstring>

#include "magic.h"
#include "platform/im.h"
#include "search/dual_index.h"
#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "stpsnmp/values.h"
#include "tables/lookup_handler.h"
#include "tables/spanning_tree_type.h"
#include "tables/tree_port.h"

using namespace stpsnmp;
using namespace stpsnmp::tables;

namespace {

// How a table serves the state of a port.
enum class Served { kState, kBits };

struct InconsistencyTable {
  const char *header;  // the routines as which it logs
  const char *parse_reply;
  stp_command command;
  const char *command_name;
  const char *command_label;  // of that name, where a next search fails
  bool exists_in_mst;
  Served served;
};

constexpr InconsistencyTable kLoopTable = {"header_stpxLoopInconsistencyTable",
                                           "parse_reply_stpxLoopInconsistencyTable",
                                           STP_COMMAND_LOOP_INCONSISTENCIES,
                                           "STP_CMDID_SHOW_LOOP_INCONSISTENT",
                                           "commandId",
                                           true,
                                           Served::kState};
constexpr InconsistencyTable kRootTable = {"header_stpxRootInconsistencyTable",
                                           "parse_reply_stpxRootInconsistencyTable",
                                           STP_COMMAND_ROOT_INCONSISTENCIES,
                                           "STP_CMDID_SHOW_ROOT_INCONSISTENT",
                                           "commandId",
                                           true,
                                           Served::kState};
constexpr InconsistencyTable kPortTable = {"header_stpxInconsistencyTable",
                                           "parse_reply_stpxInconsistencyTable",
                                           STP_COMMAND_PORT_INCONSISTENCIES,
                                           "STP_CMDID_SHOW_PVID_TYPE_INCONSISTENT",
                                           "command_id",
                                           false,
                                           Served::kBits};

search::EntryKind entries_of(const InconsistencyTable &table) {
  return {table.command, STP_KEY_INTERFACE, STP_KEY_VLAN_TREE};
}

bool find_exact(const InconsistencyTable &table, TreePort *index, Reply *reply) {
  const bool is_found = search::find_exact_row(entries_of(table), index, reply);
  if (!is_found) {
    STP_LOG(kTrace, "%s(%d) get_exact_stp_dual_indices_entry() failed, commandId: %s\n", table.header,
            __LINE__, table.command_name);
  }
  return is_found;
}

bool find_next(const InconsistencyTable &table, TreePort *index, Reply *reply) {
  const auto search = [&] { return search::find_next_row(entries_of(table), BASE_PORT_ALL, index, reply); };
  const bool is_found = run_next_search(search, {table.header, __LINE__});
  if (!is_found) {
    STP_LOG(kTrace, "%s(%d) get_next_stp_dual_indices_entry_from_im() failed, %s: %s\n", table.header,
            __LINE__, table.command_label, table.command_name);
  }
  return is_found;
}

// Checks that the table exists in the switch's mode; only a walk looks at modes other than MST.
bool exists_in_mode(const InconsistencyTable &table, cmd_action action) {
  if (!fetch_spanning_tree_type(kRejection, {table.header, __LINE__})) {
    return false;
  }
  const uint32_t type = spanning_tree_type();
  if (type == STP_MODE_MST && !table.exists_in_mst) {
    STP_LOG(kTrace, "%s(%d)  tree_type is stpxSpanningTreeType_MST, not supported,  return failed\n",
            table.header, __LINE__);
    return false;
  }
  if (action == CMD_ACTION_GET_NEXT && type != STP_MODE_MST && type != STP_MODE_RAPID_PVST) {
    STP_LOG(kRejection, "%s(%d) get_stpxSpanning_tree_type() retun wrong type: %d\n", table.header, __LINE__,
            static_cast<int32_t>(type));
    return false;
  }
  return true;
}

int parse_reply(const InconsistencyTable &table, const Reply &reply, InconsistencyRow *row) {
  read_index(reply, row);
  uint32_t state = 0;
  const int result = reply.read_number(STP_ATTRIBUTE_INCONSISTENCY, &state);
  if (result != 0) {
    return result;
  }
  STP_LOG(kTrace, "\n%s(%d): value %d\n", table.parse_reply, __LINE__, static_cast<int32_t>(state));
  if (table.served == Served::kBits) {
    stp_sstp_inc_to_bmp(row, &state, sizeof state);
  } else {
    row->value = static_cast<int32_t>(state);
  }
  return 0;
}

// A row without any of the bits is not served.
int check_bits(const InconsistencyTable &table, const InconsistencyRow &row) {
  uint8_t bits = 0;
  std::memcpy(&bits, &row.value, sizeof bits);
  if (bits != 0) {
    return 0;
  }
  STP_LOG(kRejection, "%s(%d) stpxInconsistentState is 0. Return FAILURE.\n", table.parse_reply, __LINE__);
  return kFailed;
}

int answer(const InconsistencyTable &table, const RowRequest &request, InconsistencyRow *row) {
  if (request.has_too_many_arcs(kTreePortArcs)) {
    return kFailed;
  }
  const TreePort asked = asked_tree_port(request, row);
  trace_tree_port(asked, {table.header, __LINE__});
  if (!exists_in_mode(table, request.action())) {
    return kFailed;
  }
  TreePort found;
  Reply reply;
  const auto search = [&](TreePort *index, Reply *to) {
    return (request.action() == CMD_ACTION_GET ? find_exact : find_next)(table, index, to);
  };
  if (!find_tree_port(request, asked, search, &found, &reply, {table.header, __LINE__})) {
    return kFailed;
  }
  int result = parse_reply(table, reply, row);
  reply.release();
  if (result == 0 && table.served == Served::kBits) {
    result = check_bits(table, *row);
  }
  if (result != 0) {
    STP_LOG(kTrace, "%s failed\n", table.parse_reply);
    return result;
  }
  row->port_id = found.port_id;
  request.answer({row->tree_id, row->port_id});
  return 0;
}

// The bits stand in the value's first octet.
Value bits_of(const InconsistencyRow &row) {
  constexpr size_t kBitsSize = 1;
  return {&row.value, kBitsSize};
}

constexpr Column<InconsistencyRow> kLoopColumns[] = {
    {kLoopInconsistencyState, field<&InconsistencyRow::value>}};
constexpr Column<InconsistencyRow> kRootColumns[] = {
    {kRootInconsistencyState, field<&InconsistencyRow::value>}};
constexpr Column<InconsistencyRow> kPortColumns[] = {{kInconsistencyState, bits_of}};

}  // namespace

int header_stpxLoopInconsistencyTable(const oid *vp_name, size_t vp_namelen, oid *name, size_t *length,
                                      int exact, InconsistencyRow *row) {
  return answer(kLoopTable, RowRequest(vp_name, vp_namelen, name, length, exact, row), row);
}

int header_stpxRootInconsistencyTable(const oid *vp_name, size_t vp_namelen, oid *name, size_t *length,
                                      int exact, InconsistencyRow *row) {
  return answer(kRootTable, RowRequest(vp_name, vp_namelen, name, length, exact, row), row);
}

int header_stpxInconsistencyTable(const oid *vp_name, size_t vp_namelen, oid *name, size_t *length, int exact,
                                  InconsistencyRow *row) {
  return answer(kPortTable, RowRequest(vp_name, vp_namelen, name, length, exact, row), row);
}

STP_LOOKUP_HANDLER(get_stpxLoopInconsistencyTable, header_stpxLoopInconsistencyTable, kLoopColumns)
STP_LOOKUP_HANDLER(get_stpxRootInconsistencyTable, header_stpxRootInconsistencyTable, kRootColumns)
STP_LOOKUP_HANDLER(get_stpxInconsistencyTable, header_stpxInconsistencyTable, kPortColumns)
