// SMST port table: one row for each bridge port, in MST mode only.
#include "magic.h"
#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "stpsnmp/values.h"
#include "tables/base_port_row.h"
#include "tables/lookup_handler.h"
#include "tables/spanning_tree_type.h"

using namespace stpsnmp;
using namespace stpsnmp::tables;

namespace {

// How the port speaks MST.
constexpr int32_t kPreStandardMode = 1;
constexpr int32_t kStandardMode = 2;

// Where nothing is known of the neighbour; the other values are stp_mst_prestd_status's.
constexpr int32_t kNoPreStandardStatus = 1;

struct Flag {
  stp_attribute attribute;
  void (*set)(SmstPortRow *row, const void *value);
};

constexpr Flag kFlags[] = {{STP_ATTRIBUTE_EDGE, stp_mst_oper_edge_to_bit},
                           {STP_ATTRIBUTE_BOUNDARY, stp_mst_boundary_to_bit},
                           {STP_ATTRIBUTE_PEER, stp_mst_peer_to_bit},
                           {STP_ATTRIBUTE_DISPUTE, stp_mst_dispute_to_bit}};

// All of them, or none.
void read_flags(const Reply &reply, SmstPortRow *row) {
  bool is_complete = true;
  for (const Flag &flag : kFlags) {
    const void *value = nullptr;
    if (reply.find(flag.attribute, &value) == 0) {
      flag.set(row, value);
    } else {
      is_complete = false;
    }
  }
  if (!is_complete) {
    row->port_flags = 0;
  }
}

void parse_state(const Reply &reply, SmstPortRow *row) {
  reply.read_number(STP_ATTRIBUTE_INTERFACE, &row->index);
  read_flags(reply, row);
  const void *flag = nullptr;
  if (reply.find(STP_ATTRIBUTE_PRE_STANDARD_PEER, &flag) == 0) {
    stp_mst_prestd_status(&row->prestd_status, flag);
  } else {
    row->prestd_status = kNoPreStandardStatus;
  }
}

int answer_state(const RowRequest &request, SmstPortRow *row) {
  Reply reply;
  uint16_t port_id = 0;
  bool is_down = false;
  if (!find_base_port_row(request, STP_COMMAND_MST_PORTS, STP_KEY_MST_INTERFACE, &reply, &port_id,
                          &is_down)) {
    return kFailed;
  }
  if (is_down) {
    row->prestd_status = kNoPreStandardStatus;
  } else if (!reply) {  // GCOVR_EXCL_START: a port that is found and not down has a reply
    STP_LOG(kTrace, "parse_reply_stpxSMSTPortTable failed\n");
    return kFailed;
  } else {  // GCOVR_EXCL_STOP
    parse_state(reply, row);
    reply.release();
  }
  return answer_base_port(request, port_id, row);
}

int parse_admin_mode(const Reply &reply, SmstPortRow *row) {
  uint32_t is_pre_standard = 0;
  const int result = reply.read_number(STP_ATTRIBUTE_PRE_STANDARD_MST, &is_pre_standard);
  if (result == 0) {
    row->admin_mst_mode = is_pre_standard != 0 ? kPreStandardMode : kStandardMode;
  }
  return result;
}

constexpr PortSetting<SmstPortRow> kAdminMode = {"stpxSMSTPortAdminMSTMode", STP_COMMAND_PORT_SETTINGS,
                                                 parse_admin_mode};

constexpr Column<SmstPortRow> kColumns[] = {{kSmstPortFlags, field<&SmstPortRow::port_flags>},
                                            {kSmstPortAdminMode, field<&SmstPortRow::admin_mst_mode>},
                                            {kSmstPortPreStandardStatus, field<&SmstPortRow::prestd_status>}};

}  // namespace

int header_stpxSMSTPortTable(const oid *vp_name, size_t vp_namelen, oid *name, size_t *length, int exact,
                             SmstPortRow *row, int magic) {
  const RowRequest request(vp_name, vp_namelen, name, length, exact, row);
  if (request.has_too_many_arcs(kBasePortArcs) || !fetch_spanning_tree_type()) {
    return kFailed;
  }
  if (spanning_tree_type() != STP_MODE_MST) {
    STP_LOG(kTrace, "%s(%d) Spanning Tree type is not MST, return\n", __func__, __LINE__);
    return kFailed;
  }
  switch (magic) {
    case kSmstPortAdminMode:
      return answer_setting(request, kAdminMode, row);
    case kSmstPortFlags:
    case kSmstPortPreStandardStatus:
      return answer_state(request, row);
    default:
      STP_LOG(kTrace, "%s(%d): wrong object, magic=%d\n", __func__, __LINE__, magic);
      return answer_base_port(request, request.index_arc(0), row);
  }
}

STP_LOOKUP_HANDLER(get_stpxSMSTPortTable, header_stpxSMSTPortTable, kColumns)
