// RPVST port table: one row for each port of a Rapid-PVST tree. A walk needs that mode.
#include "diagnostics.h"
#include "header_routines.h"
#include "index_search.h"
#include "lookup_handlers.h"
#include "magic.h"
#include "platform/im.h"
#include "query/reply.h"
#include "search/tree_entries.h"
#include "search/tree_walk.h"
#include "tables/spanning_tree_type.h"
#include "tables/tree_port.h"
#include "values.h"

using namespace stpsnmp;
using stpsnmp::diagnostics::kTrace;
using stpsnmp::query::Reply;
using stpsnmp::search::kRapidPvstEntries;
using stpsnmp::tables::RowRequest;
using stpsnmp::tables::TreePort;

namespace {

constexpr char kHeader[] = "header_stpxRPVSTPortTable";  // as which the steps log

int find_exact(TreePort *index, void **reply) {
  const int result = get_exact_stp_dual_indices_entry(kRapidPvstEntries.port_attr, &index->port_id,
                                                      kRapidPvstEntries.tree_attr, &index->tree_id, reply,
                                                      kRapidPvstEntries.command);
  if (result != 0) {
    STP_LOG(kTrace, "%s(%d) get_exact_stp_dual_indices_entry() failed\n", kHeader, __LINE__);
  }
  return result;
}

// In MST mode the index stays where it is, and the check for loops ends the walk.
int find_next(TreePort *index, void **reply) {
  if (!tables::fetch_spanning_tree_type(kTrace, {kHeader, __LINE__})) {
    return kFailed;
  }
  const uint32_t type = tables::spanning_tree_type();
  if (type == STP_MODE_MST) {
    STP_LOG(kTrace, "%s(%d)  tree_type is stpxSpanningTreeType_MST, not supported,  return failed\n", kHeader,
            __LINE__);
    return 0;
  }
  if (type != STP_MODE_RAPID_PVST) {
    STP_LOG(kTrace, "%s(%d) get_stpxSpanning_tree_type() retun wrong type: %d\n", kHeader, __LINE__,
            static_cast<int32_t>(type));
    return kFailed;
  }
  const int result = search::get_next_stp_dual_indices_entry_rpvst(
      kRapidPvstEntries.port_attr, &index->port_id, kRapidPvstEntries.tree_attr, &index->tree_id, reply,
      kRapidPvstEntries.command, BASE_PORT_ACTIVE);
  if (result != 0) {
    STP_LOG(kTrace, "%s(%d) get_next_stp_dual_indices_entry_rpvst() failed\n", kHeader, __LINE__);
  }
  return result;
}

int parse_flags(const Reply &reply, RpvstPortRow *row) {
  const void *value = nullptr;
  if (reply.find(STP_ATTRIBUTE_EDGE, &value) == 0) {
    stp_oper_edge_to_bit(row, value);
  }
  const int result = reply.find(STP_ATTRIBUTE_PEER, &value);
  if (result == 0) {
    stp_peer_to_bit(row, value);
  }
  return result;
}

constexpr tables::TreePortValue<RpvstPortRow> kFlags = {"stpxRPVSTPortTable", parse_flags};

}  // namespace

int header_stpxRPVSTPortTable(const oid *vp_name, size_t vp_namelen, oid *name, size_t *length, int exact,
                              RpvstPortRow *row) {
  const RowRequest request(vp_name, vp_namelen, name, length, exact, row);
  if (request.has_too_many_arcs(tables::kTreePortArcs)) {
    return kFailed;
  }
  const TreePort asked = tables::asked_tree_port(request, row);
  TreePort found;
  Reply reply;
  const auto &search = request.action() == CMD_ACTION_GET ? find_exact : find_next;
  if (tables::find_tree_port(request, asked, search, &found, &reply) != 0) {
    return kFailed;
  }
  return tables::answer_tree_port(request, kFlags, found.port_id, &reply, row);
}

u_char *get_stpxRPVSTPortTable(struct variable *vp, oid *name, size_t *length, int exact, size_t *var_len,
                               WriteMethod ** /*write_method*/) {
  static RpvstPortRow row;
  if (header_stpxRPVSTPortTable(vp->name, vp->namelen, name, length, exact, &row) != 0) {
    return nullptr;
  }
  return vp->magic == kRpvstPortFlags ? tables::column_value(&row.port_flags, var_len)
                                      : tables::index_column();
}
