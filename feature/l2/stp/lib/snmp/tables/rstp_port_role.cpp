// RSTP port role table: one row for each port of a Rapid-PVST tree or of an MST instance.
#include "magic.h"
#include "platform/im.h"
#include "search/dual_index.h"
#include "search/tree_walk.h"
#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "tables/lookup_handler.h"
#include "tables/spanning_tree_type.h"
#include "tables/tree_port.h"

using namespace stpsnmp;
using namespace stpsnmp::tables;

namespace {

constexpr char kHeader[] = "header_stpxRSTPPortRoleTable";  // as which the steps log

bool exact_in_vlan(TreePort *index, Reply *reply) {
  return search::find_exact_row(search::kRapidPvstPorts, index, reply);
}

bool exact_in_instance(TreePort *index, Reply *reply) {
  return search::find_exact_row(search::kMstPorts, index, reply);
}

bool next_in_vlans(TreePort *index, Reply *reply) {
  return search::find_next_vlan_port(search::kRapidPvstPorts, BASE_PORT_ACTIVE, index, reply);
}

bool next_in_instances(TreePort *index, Reply *reply) {
  return run_next_search([&] { return search::find_next_mst_port(index, reply); }, {kHeader, __LINE__});
}

// How a row is found, and what the log says where it is not.
struct Mode {
  uint32_t type;
  cmd_action action;
  bool (*find)(TreePort *index, Reply *reply);
  void (*report_failure)();
};

constexpr Mode kModes[] = {
    {STP_MODE_RAPID_PVST, CMD_ACTION_GET, exact_in_vlan,
     [] {
       STP_LOG(kTrace,
               "%s(%d) get_exact_stp_dual_indices_entry() failed, commandId: STP_CMDID_SHOW_VLAN_INTERFACE\n",
               kHeader, __LINE__);
     }},
    {STP_MODE_RAPID_PVST, CMD_ACTION_GET_NEXT, next_in_vlans,
     [] { STP_LOG(kTrace, "%s(%d) get_next_stp_dual_indices_entry_rpvst() failed\n", kHeader, __LINE__); }},
    {STP_MODE_MST, CMD_ACTION_GET, exact_in_instance,
     [] { STP_LOG(kTrace, "%s(%d) get_exact_stp_dual_indices_entry() failed\n", kHeader, __LINE__); }},
    {STP_MODE_MST, CMD_ACTION_GET_NEXT, next_in_instances,
     [] { STP_LOG(kTrace, "%s(%d) get_next_stp_dual_indices_entry_from_im() failed\n", kHeader, __LINE__); }},
};

void report_unknown_type(cmd_action action, uint32_t type) {
  const auto shown = static_cast<int32_t>(type);
  if (action == CMD_ACTION_GET) {
    STP_LOG(kTrace, "%s(%d) tree_type(%d) invalid.\n", kHeader, __LINE__, shown);
  } else {
    STP_LOG(kTrace, "%s(%d) get_stpxSpanning_tree_type() retun wrong type: %d\n", kHeader, __LINE__, shown);
  }
}

bool find(cmd_action action, TreePort *index, Reply *reply) {
  const uint32_t type = spanning_tree_type();
  for (const Mode &mode : kModes) {
    if (mode.type == type && mode.action == action) {
      const bool is_found = mode.find(index, reply);
      if (!is_found) {
        mode.report_failure();
      }
      return is_found;
    }
  }
  report_unknown_type(action, type);
  return false;
}

int parse_role(const Reply &reply, RstpPortRoleRow *row) {
  uint32_t role = 0;
  const int result = reply.read_number(STP_ATTRIBUTE_PORT_ROLE, &role);
  if (result == 0) {
    row->port_role = static_cast<int32_t>(role);
  }
  return result;
}

constexpr TreePortValue<RstpPortRoleRow> kRole = {"stpxRSTPPortRoleTable", parse_role};

int find_row(const oid *column, size_t column_length, oid *name, size_t *length, int exact,
             RstpPortRoleRow *row) {
  const int result = header_stpxRSTPPortRoleTable(column, column_length, name, length, exact, row);
  if (result != 0) {
    STP_LOG(kTrace, "returning NULL\n");
  }
  return result;
}

constexpr Column<RstpPortRoleRow> kColumns[] = {{kRstpPortRole, field<&RstpPortRoleRow::port_role>}};

}  // namespace

int header_stpxRSTPPortRoleTable(const oid *vp_name, size_t vp_namelen, oid *name, size_t *length, int exact,
                                 RstpPortRoleRow *row) {
  const RowRequest request(vp_name, vp_namelen, name, length, exact, row);
  if (request.has_too_many_arcs(kTreePortArcs)) {
    return kFailed;
  }
  const TreePort asked = asked_tree_port(request, row);
  trace_tree_port(asked);
  if (!fetch_spanning_tree_type()) {
    return kFailed;
  }
  TreePort found;
  Reply reply;
  const auto search = [&](TreePort *index, Reply *to) { return find(request.action(), index, to); };
  if (!find_tree_port(request, asked, search, &found, &reply)) {
    return kFailed;
  }
  return answer_tree_port(request, kRole, found.port_id, &reply, row);
}

STP_LOOKUP_HANDLER(get_stpxRSTPPortRoleTable, find_row, kColumns)
