// RSTP port role table: one row for each port of a Rapid-PVST tree or of an MST instance.
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

using namespace stpsnmp;
using stpsnmp::diagnostics::kTrace;
using stpsnmp::query::Reply;
using stpsnmp::search::kMstEntries;
using stpsnmp::search::kRapidPvstEntries;
using stpsnmp::search::TreeEntries;
using stpsnmp::tables::RowRequest;
using stpsnmp::tables::TreePort;

namespace {

constexpr char kHeader[] = "header_stpxRSTPPortRoleTable";  // as which the steps log

int find_exact_among(const TreeEntries &entries, TreePort *index, void **reply) {
  return get_exact_stp_dual_indices_entry(entries.port_attr, &index->port_id, entries.tree_attr,
                                          &index->tree_id, reply, entries.command);
}

int find_exact(TreePort *index, void **reply) {
  const uint32_t type = tables::spanning_tree_type();
  int result = kFailed;
  switch (type) {
    case STP_MODE_RAPID_PVST:
      result = find_exact_among(kRapidPvstEntries, index, reply);
      if (result != 0) {
        STP_LOG(
            kTrace,
            "%s(%d) get_exact_stp_dual_indices_entry() failed, commandId: STP_CMDID_SHOW_VLAN_INTERFACE\n",
            kHeader, __LINE__);
      }
      return result;
    case STP_MODE_MST:
      result = find_exact_among(kMstEntries, index, reply);
      if (result != 0) {
        STP_LOG(kTrace, "%s(%d) get_exact_stp_dual_indices_entry() failed\n", kHeader, __LINE__);
      }
      return result;
    default:
      STP_LOG(kTrace, "%s(%d) tree_type(%d) invalid.\n", kHeader, __LINE__, static_cast<int32_t>(type));
      return kFailed;
  }
}

int find_next(TreePort *index, void **reply) {
  const uint32_t type = tables::spanning_tree_type();
  int result = kFailed;
  switch (type) {
    case STP_MODE_RAPID_PVST:
      result = search::get_next_stp_dual_indices_entry_rpvst(
          kRapidPvstEntries.port_attr, &index->port_id, kRapidPvstEntries.tree_attr, &index->tree_id, reply,
          kRapidPvstEntries.command, BASE_PORT_ACTIVE);
      if (result != 0) {
        STP_LOG(kTrace, "%s(%d) get_next_stp_dual_indices_entry_rpvst() failed\n", kHeader, __LINE__);
      }
      return result;
    case STP_MODE_MST:
      result = tables::run_next_search(
          [&] {
            return search::get_next_stp_dual_indices_entry_mst(&index->port_id, &index->tree_id, reply);
          },
          {kHeader, __LINE__});
      if (result != 0) {
        STP_LOG(kTrace, "%s(%d) get_next_stp_dual_indices_entry_from_im() failed\n", kHeader, __LINE__);
      }
      return result;
    default:
      STP_LOG(kTrace, "%s(%d) get_stpxSpanning_tree_type() retun wrong type: %d\n", kHeader, __LINE__,
              static_cast<int32_t>(type));
      return kFailed;
  }
}

int parse_role(const Reply &reply, RstpPortRoleRow *row) {
  uint32_t role = 0;
  const int result = reply.read_number(STP_ATTRIBUTE_PORT_ROLE, &role);
  if (result == 0) {
    row->port_role = static_cast<int32_t>(role);
  }
  return result;
}

constexpr tables::TreePortValue<RstpPortRoleRow> kRole = {"stpxRSTPPortRoleTable", parse_role};

}  // namespace

int header_stpxRSTPPortRoleTable(const oid *vp_name, size_t vp_namelen, oid *name, size_t *length, int exact,
                                 RstpPortRoleRow *row) {
  const RowRequest request(vp_name, vp_namelen, name, length, exact, row);
  if (request.has_too_many_arcs(tables::kTreePortArcs)) {
    return kFailed;
  }
  const TreePort asked = tables::asked_tree_port(request, row);
  tables::trace_tree_port(asked);
  if (!tables::fetch_spanning_tree_type()) {
    return kFailed;
  }
  TreePort found;
  Reply reply;
  const auto &search = request.action() == CMD_ACTION_GET ? find_exact : find_next;
  if (tables::find_tree_port(request, asked, search, &found, &reply) != 0) {
    return kFailed;
  }
  return tables::answer_tree_port(request, kRole, found.port_id, &reply, row);
}

u_char *get_stpxRSTPPortRoleTable(struct variable *vp, oid *name, size_t *length, int exact, size_t *var_len,
                                  WriteMethod ** /*write_method*/) {
  static RstpPortRoleRow row;
  if (header_stpxRSTPPortRoleTable(vp->name, vp->namelen, name, length, exact, &row) != 0) {
    STP_LOG(kTrace, "returning NULL\n");
    return nullptr;
  }
  return vp->magic == kRstpPortRole ? tables::column_value(&row.port_role, var_len) : tables::index_column();
}
