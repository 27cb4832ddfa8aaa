// RSTP port table: one row for each bridge port.
#include "magic.h"
#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "tables/base_port_row.h"
#include "tables/lookup_handler.h"

using namespace stpsnmp;
using namespace stpsnmp::tables;

namespace {

constexpr int32_t kPointToPoint = 1;
constexpr int32_t kShared = 2;
constexpr int32_t kNoLinkType = 3;

int parse_setting(const Reply &reply, RstpPortRow *row) {
  reply.read_number(STP_ATTRIBUTE_INTERFACE, &row->index);
  uint32_t setting = 0;
  const int result = reply.read_number(STP_ATTRIBUTE_LINK_TYPE, &setting);
  if (result == 0) {
    row->setting = static_cast<int32_t>(setting);
  }
  return result;
}

constexpr PortSetting<RstpPortRow> kSetting = {"stpxRSTPPortTable", STP_COMMAND_PORT_SETTINGS, parse_setting};

// Its lines in the log carry its name.
int parse_reply_stpxRSTPPortOperLinkType(bool is_down, const Reply &reply, RstpPortRow *row) {
  row->oper_link_type = kNoLinkType;
  if (is_down) {
    return 0;
  }
  if (!reply) {  // GCOVR_EXCL_START: a port that is found and not down has a reply
    STP_LOG(kRejection, "%s(%d): rx handle is NULL\n", __func__, __LINE__);
    return kFailed;
  }  // GCOVR_EXCL_STOP
  uint32_t is_point_to_point = 0;
  if (reply.read_number(STP_ATTRIBUTE_POINT_TO_POINT, &is_point_to_point) == 0) {
    STP_LOG(kTrace, "%s(%d): cmd_rsp_attr_get success, val = %d\n", __func__, __LINE__,
            static_cast<int32_t>(is_point_to_point));
    row->oper_link_type = is_point_to_point != 0 ? kPointToPoint : kShared;
  }
  return 0;
}

int answer_oper_link_type(const RowRequest &request, RstpPortRow *row, CallSite caller = CallSite::here()) {
  Reply reply;
  uint16_t port_id = 0;
  bool is_down = false;
  if (!find_base_port_row(request, STP_COMMAND_RAPID_PVST_PORTS, STP_KEY_INTERFACE, &reply, &port_id,
                          &is_down)) {
    STP_LOG(kRejection, "%s(%d): get_stp_entry_with_port_id_from_vlan_mgr failed\n", caller.function,
            caller.line);
    return kFailed;
  }
  const int result = parse_reply_stpxRSTPPortOperLinkType(is_down, reply, row);
  reply.release();
  if (result != 0) {  // GCOVR_EXCL_START: it fails without a reply alone
    STP_LOG(kRejection, "parse_reply_stpxRSTPPortOperLinkType failed\n");
    return result;
  }  // GCOVR_EXCL_STOP
  return answer_base_port(request, port_id, row);
}

constexpr Column<RstpPortRow> kColumns[] = {{kRstpPortSetting, field<&RstpPortRow::setting>},
                                            {kRstpPortOperLinkType, field<&RstpPortRow::oper_link_type>}};

}  // namespace

int header_stpxRSTPPortTable(const oid *vp_name, size_t vp_namelen, oid *name, size_t *length, int exact,
                             RstpPortRow *row, int magic) {
  const RowRequest request(vp_name, vp_namelen, name, length, exact, row);
  if (request.has_too_many_arcs(kBasePortArcs)) {
    return kFailed;
  }
  switch (magic) {
    case kRstpPortSetting:
      return answer_setting(request, kSetting, row);
    case kRstpPortOperLinkType:
      return answer_oper_link_type(request, row);
    default:
      STP_LOG(kRejection, "%s(%d): Wrong object, magic %d\n", __func__, __LINE__, magic);
      return answer_base_port(request, request.index_arc(0), row);
  }
}

STP_LOOKUP_HANDLER(get_stpxRSTPPortTable, header_stpxRSTPPortTable, kColumns)
