// PVST VLAN table: one row for each VLAN, telling whether a spanning tree runs on it; none in MST mode.
#include "magic.h"
#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "tables/asked_row.h"
#include "tables/lookup_handler.h"

using namespace stpsnmp;
using namespace stpsnmp::tables;

namespace {

constexpr uint32_t kStateRuns = 1;

// TruthValue (RFC 2579).
constexpr int32_t kTrue = 1;
constexpr int32_t kFalse = 2;

// Its lines in the log carry its name.
int parse_reply_stpxPVSTVlanTable(const Reply &reply, PvstVlanRow *row) {
  uint32_t mode = 0;
  if (reply.read_number(STP_ATTRIBUTE_MODE, &mode) != 0) {
    STP_LOG(kTrace, "%s(%d) cmd_rsp_attr_get failed for STP_GBL_MODE\n", __func__, __LINE__);
    return kFailed;
  }
  if (mode == STP_MODE_MST) {
    STP_LOG(kTrace, "%s(%d) STP mode is MST. Not Supported.\n", __func__, __LINE__);
    return kFailed;
  }
  // Where the reply does not name its row, the row is the one that was asked for.
  reply.read_number(STP_ATTRIBUTE_TREE, &row->index);
  uint32_t state = 0;
  const int result = reply.read_number(STP_ATTRIBUTE_VLAN_TREE_STATE, &state);
  if (result == 0) {
    STP_LOG(kTrace, "value %d\n", static_cast<int32_t>(state));
    row->value = state == kStateRuns ? kTrue : kFalse;
  }
  return result;
}

constexpr Column<PvstVlanRow> kColumns[] = {{kPvstVlanState, field<&PvstVlanRow::value>}};

}  // namespace

int header_stpxPVSTVlanTable(const oid *vp_name, size_t vp_namelen, oid *name, size_t *length, int exact,
                             PvstVlanRow *row) {
  const RowRequest request(vp_name, vp_namelen, name, length, exact, row);
  if (request.has_too_many_arcs(kAskedRowArcs)) {
    return kFailed;
  }
  row->index = request.index_arc(0);
  const query::TreeRange vlan = query::single_tree(row->index);
  return answer_asked_row<PvstVlanRow>(request,
                                       {"stpxPVSTVlanTable",
                                        STP_COMMAND_VLAN_TREES,
                                        {STP_KEY_VLAN_TREE, &vlan},
                                        parse_reply_stpxPVSTVlanTable},
                                       row);
}

STP_LOOKUP_HANDLER(get_stpxPVSTVlanTable, header_stpxPVSTVlanTable, kColumns)
