// RPVST port table: one row for each port of a Rapid-PVST tree. A walk needs that mode.
#include "magic.h"
#include "platform/im.h"
#include "search/dual_index.h"
#include "search/tree_walk.h"
#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "stpsnmp/values.h"
#include "tables/lookup_handler.h"
#include "tables/spanning_tree_type.h"
#include "tables/tree_port.h"

using namespace stpsnmp;
using namespace stpsnmp::tables;

namespace {

constexpr char kHeader[] = "header_stpxRPVSTPortTable";  // as which the steps log

bool find_exact(TreePort *index, Reply *reply) {
  const bool is_found = search::find_exact_row(search::kRapidPvstPorts, index, reply);
  if (!is_found) {
    STP_LOG(kTrace, "%s(%d) get_exact_stp_dual_indices_entry() failed\n", kHeader, __LINE__);
  }
  return is_found;
}

// In MST mode the index stays where it is, and the check for loops ends the walk.
bool find_next(TreePort *index, Reply *reply) {
  if (!fetch_spanning_tree_type(kTrace, {kHeader, __LINE__})) {
    return false;
  }
  const uint32_t type = spanning_tree_type();
  if (type == STP_MODE_MST) {
    STP_LOG(kTrace, "%s(%d)  tree_type is stpxSpanningTreeType_MST, not supported,  return failed\n", kHeader,
            __LINE__);
    return true;
  }
  if (type != STP_MODE_RAPID_PVST) {
    STP_LOG(kTrace, "%s(%d) get_stpxSpanning_tree_type() retun wrong type: %d\n", kHeader, __LINE__,
            static_cast<int32_t>(type));
    return false;
  }
  const bool is_found = search::find_next_vlan_port(search::kRapidPvstPorts, BASE_PORT_ACTIVE, index, reply);
  if (!is_found) {
    STP_LOG(kTrace, "%s(%d) get_next_stp_dual_indices_entry_rpvst() failed\n", kHeader, __LINE__);
  }
  return is_found;
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

constexpr TreePortValue<RpvstPortRow> kFlags = {"stpxRPVSTPortTable", parse_flags};

constexpr Column<RpvstPortRow> kColumns[] = {{kRpvstPortFlags, field<&RpvstPortRow::port_flags>}};

}  // namespace

int header_stpxRPVSTPortTable(const oid *vp_name, size_t vp_namelen, oid *name, size_t *length, int exact,
                              RpvstPortRow *row) {
  const RowRequest request(vp_name, vp_namelen, name, length, exact, row);
  if (request.has_too_many_arcs(kTreePortArcs)) {
    return kFailed;
  }
  const TreePort asked = asked_tree_port(request, row);
  TreePort found;
  Reply reply;
  const auto &search = request.action() == CMD_ACTION_GET ? find_exact : find_next;
  if (!find_tree_port(request, asked, search, &found, &reply)) {
    return kFailed;
  }
  return answer_tree_port(request, kFlags, found.port_id, &reply, row);
}

STP_LOOKUP_HANDLER(get_stpxRPVSTPortTable, header_stpxRPVSTPortTable, kColumns)
