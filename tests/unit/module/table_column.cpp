#include "table_column.h"

#include <cstring>

#include "protocol_numbers.h"
#include "search_test.h"
#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"

namespace {

constexpr uint32_t kMst = 4;
constexpr uint32_t kRapidPvst = 5;

constexpr char kReleased[] = "cmd_snmp_free_rx_hndl";
constexpr char kFreed[] = "free(16000)";
constexpr char kModeQuery[] = "GET 104 0x01020227=00000000";

// Rows as text: their fields in the order in which they lie there.

std::string text(std::initializer_list<int64_t> fields) {
  std::string result;
  for (const int64_t field : fields) {
    result += (result.empty() ? "" : " ") + std::to_string(field);
  }
  return result;
}

std::string text_of(const RootGuardConfigRow &row) { return text({row.index, row.value}); }
std::string text_of(const PvstVlanRow &row) { return text({row.index, row.value}); }
std::string text_of(const LoopGuardConfigRow &row) { return text({row.index, row.reserved, row.value}); }
std::string text_of(const RstpPortRow &row) {
  return text({row.index, row.setting, row.oper_link_type, row.reserved});
}
std::string text_of(const SmstPortRow &row) {
  return text({row.index, row.port_flags, row.admin_mst_mode, row.prestd_status});
}
std::string text_of(const RstpPortRoleRow &row) { return text({row.tree_id, row.port_id, row.port_role}); }
std::string text_of(const RpvstPortRow &row) { return text({row.tree_id, row.port_id, row.port_flags}); }
std::string text_of(const InconsistencyRow &row) { return text({row.tree_id, row.port_id, row.value}); }

std::string text_of(const SmstInstanceRow &row) {
  return text({row.index}) + " " + fake::hex(row.vlans_mapped_low, 2) + ".." +
         fake::hex(row.vlans_mapped_low + 255, 2) + " " + fake::hex(row.vlans_mapped_high, 2) + ".." +
         fake::hex(row.vlans_mapped_high + 255, 2) + " " + text({row.instance_value}) + " " +
         fake::hex(row.bridge_id, sizeof row.bridge_id) + " " + text({row.counter_value});
}

template <class Row, class Header>
HeaderAnswer ask_header(const std::vector<oid> &arcs, const Header &header) {
  const std::vector<oid> column{1, 3, 9};
  std::vector<oid> name = column;
  name.insert(name.end(), arcs.begin(), arcs.end());
  size_t length = name.size();
  name.resize(MAX_OID_LEN);
  Row row;
  std::memset(&row, 0xFF, sizeof row);
  const int result = header(column.data(), column.size(), name.data(), &length, &row);
  name.resize(length);
  return {result, text_of(row), text_of(row) == text_of(Row{}), name};
}

template <class Row, int (*kHeader)(const oid *, size_t, oid *, size_t *, int, Row *)>
HeaderAnswer ask_for_row(const std::vector<oid> &arcs, int exact, int /*magic*/) {
  return ask_header<Row>(
      arcs, [exact](const oid *column, size_t column_length, oid *name, size_t *length, Row *row) {
        return kHeader(column, column_length, name, length, exact, row);
      });
}

template <class Row, int (*kHeader)(const oid *, size_t, oid *, size_t *, int, Row *, int)>
HeaderAnswer ask_for_column(const std::vector<oid> &arcs, int exact, int magic) {
  return ask_header<Row>(
      arcs, [exact, magic](const oid *column, size_t column_length, oid *name, size_t *length, Row *row) {
        return kHeader(column, column_length, name, length, exact, row, magic);
      });
}

// Lines of the log.

std::string from(const std::string &routine, const std::string &text) {
  return logged(routine + "(LINE)" + text + "\\n");
}

std::string parse_failure(const std::string &object) {
  return logged("parse_reply_" + object + " failed\\n");
}

// The reading of the mode for `routine`, and the lines with which its answer ends.
QueryFailures mode_failures(const std::string &routine, const Trace &end = {}, const char *level = "101") {
  const auto told = [&](const std::string &code) {
    return Trace{std::string("log(0x00730000, ") + level + ") \"" + routine +
                 "(LINE) get_stpxSpanningTreeType() failed rc: " + code + "\\n\""} +
           end;
  };
  return {.no_memory = Trace{from("get_stpxSpanningTreeType", " malloc failed ")} + told("-1"),
          .failed_send =
              Trace{from("get_stpxSpanningTreeType", " cmd_req_snmp_send_recv() failed"), kFreed} + told("5"),
          .no_reply = Trace{kFreed, parse_failure("stpxSpanningTreeType")} + told("-1")};
}

// The question for a row that the process finds itself.
QueryFailures row_failures(const std::string &routine, const std::string &object) {
  return {.no_memory = {from(routine, " malloc failed ")},
          .failed_send = {from(routine, " cmd_req_snmp_send_recv() failed"), kFreed},
          .no_reply = {kFreed, parse_failure(object)}};
}

// The question for an MST instance's VLANs or values.
QueryFailures instance_failures() {
  const std::string routine = "header_stpxSMSTInstanceTable";
  return {.no_memory = {from(routine, " malloc failed ")},
          .failed_send = {from(routine, " cmd_req_snmp_send_recv() failed, ret:5"), kFreed},
          .no_reply = {from(routine, " cmd_req_snmp_send_recv() failed, ret:0"), kFreed}};
}

// The question for the entry of a port, or of a port in a tree.
QueryFailures entry_failures(const Trace &end) {
  const std::string routine = "get_stp_entry_from_if_index";
  const auto told = [&routine](const std::string &text) { return from("\\n" + routine, text); };
  return {.no_memory = Trace{from(routine, " malloc failed ")} + end,
          .failed_send = Trace{told(" cmd_req_snmp_send_recv() failed for GET"), kFreed} + end,
          .no_reply = Trace{kFreed, told(": resp_h is NULL ")} + end};
}

QueryFailures port_failures(const Trace &end = {}) {
  return entry_failures(Trace{logged_rejection("get_stp_entry_from_if_index failed\\n")} + end);
}

QueryFailures tree_port_failures(const Trace &end) {
  return entry_failures(Trace{from("\\nget_exact_stp_dual_indices_entry", ": returning FAILURE")} + end);
}

// What a search for the entry of a port, and of a port in a tree, says of a reply before its table reads it.
Trace port_read(const Trace &table) {
  return Trace{kFreed, "cmd_rsp_attr_get(0x0C02A001)",
               from("\\nget_stp_entry_from_if_index", " return if_index id: 436207617"),
               "cmd_rsp_attr_get(0x1402A015)", "stp_ifindex2dot1dportnum(0x1A000001)"} +
         table;
}

Trace tree_port_read(const Trace &value_line, const Trace &table) {
  const std::string exact = "\\nget_exact_stp_dual_indices_entry";
  return Trace{kFreed,
               "cmd_rsp_attr_get(0x1402A006)",
               from("\\nget_stp_entry_from_if_index", " dual index tree id: 10"),
               "cmd_rsp_attr_get(0x0C02A001)",
               from("\\nget_stp_entry_from_if_index", " return if_index id: 436207617"),
               "cmd_rsp_attr_get(0x1402A015)"} +
         value_line +
         Trace{"if_index_get_type(0x1A000001)",
               from(exact, ": ret_if_index: 436207617, ret_if_type: 26"),
               from(exact, ": ret_tree_index: 10"),
               "stp_ifindex2dot1dportnum(0x1A000001)",
               from(exact, ": returning tree_index: 10, port_index: 129"),
               "cmd_rsp_attr_get(0x1402A006)",
               "cmd_rsp_attr_get(0x0C02A001)"} +
         table;
}

std::string number_octets(uint32_t value) {
  const fake::Bytes octets = fake::number(value);
  return {octets.begin(), octets.end()};
}

// Tables whose rows the process finds.

TableColumn root_guard() {
  return {.name = "RootGuard",
          .handler = get_stpxRootGuardConfigTable,
          .magic = 63,
          .column = {1, 5, 1, 1, 2},
          .header = ask_for_row<RootGuardConfigRow, header_stpxRootGuardConfigTable>,
          .mode = kMst,
          .value = {{protocol::kGuard, fake::number(2)}},
          .index = {436207617},
          .served = number_octets(2),
          .row = "436207617 2",
          .queries = {"GET 117 0x0C020105=0100001a"},
          .before = {},
          .read = {kFreed, "cmd_rsp_attr_get(0x0C02A001)", "cmd_rsp_attr_get(0x0202A01A)",
                   logged("value 2\\n"), kReleased},
          .next = "436207618",
          .next_queries = {"GETNEXT 117 0x0C020105=0100001a"},
          .walk = {"436207617", "436207618"},
          .failures = {row_failures("header_stpxRootGuardConfigTable", "stpxRootGuardConfigTable")},
          .needed = protocol::kGuard,
          .without_needed = {kReleased, parse_failure("stpxRootGuardConfigTable")},
          .is_served_unchanged = true};
}

TableColumn pvst_vlan() {
  return {.name = "PvstVlan",
          .handler = get_stpxPVSTVlanTable,
          .magic = 100,
          .column = {1, 2, 2, 1, 2},
          .header = ask_for_row<PvstVlanRow, header_stpxPVSTVlanTable>,
          .mode = kRapidPvst,
          .value = {{protocol::kMode, fake::number(kRapidPvst)}, {protocol::kVlanTreeState, fake::number(1)}},
          .index = {10},
          .served = number_octets(1),
          .row = "10 1",
          .queries = {"GET 115 0x130200B4=00000000010000000a0000000a000000"},
          .before = {},
          .read = {kFreed, "cmd_rsp_attr_get(0x0202B001)", "cmd_rsp_attr_get(0x14029001)",
                   "cmd_rsp_attr_get(0x0000102C)", logged("value 1\\n"), kReleased},
          .next = "20",
          .next_queries = {"GETNEXT 115 0x130200B4=00000000010000000a0000000a000000"},
          .walk = {"10", "20"},
          .failures = {row_failures("header_stpxPVSTVlanTable", "stpxPVSTVlanTable")},
          .needed = protocol::kVlanTreeState,
          .without_needed = {kReleased, parse_failure("stpxPVSTVlanTable")}};
}

// Tables that bridge ports number.

TableColumn loop_guard() {
  return {.name = "LoopGuard",
          .handler = get_stpxLoopGuardConfigTable,
          .magic = 117,
          .column = {1, 8, 1, 1, 3},
          .header = ask_for_row<LoopGuardConfigRow, header_stpxLoopGuardConfigTable>,
          .mode = kMst,
          .value = {{protocol::kGuard, fake::number(2)}},
          .index = {129},
          .served = number_octets(2),
          .row = "129 0 2",
          .queries = {"GET 118 0x0C020105=0100001a"},
          .before = {},
          .read = port_read({"cmd_rsp_attr_get(0x0C02A001)", "cmd_rsp_attr_get(0x0202A01A)",
                             logged("value 2\\n"), kReleased}),
          .next = "130",
          .next_queries = {"GET 118 0x0C020105=0200001a"},
          .walk = {"129", "130"},
          .failures = {port_failures()},
          .needed = protocol::kGuard,
          .without_needed = {kReleased, parse_failure("stpxLoopGuardConfigTable")},
          .is_served_unchanged = true};
}

TableColumn rstp_setting() {
  return {.name = "RstpSetting",
          .handler = get_stpxRSTPPortTable,
          .magic = 55,
          .column = {1, 12, 1, 1, 2},
          .header = ask_for_column<RstpPortRow, header_stpxRSTPPortTable>,
          .mode = kMst,
          .value = {{protocol::kLinkType, fake::number(3)}},
          .index = {129},
          .served = number_octets(3),
          .row = "129 3 0 0",
          .queries = {"GET 119 0x0C020105=0100001a"},
          .before = {},
          .read = port_read({"cmd_rsp_attr_get(0x0C02A001)", "cmd_rsp_attr_get(0x0202A019)", kReleased}),
          .next = "130",
          .next_queries = {"GET 119 0x0C020105=0200001a"},
          .walk = {"129", "130"},
          .failures = {port_failures()},
          .needed = protocol::kLinkType,
          .without_needed = {kReleased, parse_failure("stpxRSTPPortTable")},
          .is_served_unchanged = true};
}

TableColumn link_type() {
  const std::string value_line =
      from("parse_reply_stpxRSTPPortOperLinkType", ": cmd_rsp_attr_get success, val = 1");
  const std::string failure =
      logged_rejection("header_stpxRSTPPortTable(LINE): get_stp_entry_with_port_id_from_vlan_mgr failed\\n");
  return {.name = "RstpLinkType",
          .handler = get_stpxRSTPPortTable,
          .magic = 56,
          .column = {1, 12, 1, 1, 3},
          .header = ask_for_column<RstpPortRow, header_stpxRSTPPortTable>,
          .mode = kMst,
          .value = {{protocol::kPointToPoint, fake::number(1)}},
          .index = {129},
          .served = number_octets(1),
          .row = "129 0 1 0",
          .queries = {"GET 105 0x0C020105=0100001a"},
          .before = {},
          .read = port_read({"cmd_rsp_attr_get(0x0202A01E)", value_line, kReleased}),
          .next = "130",
          .next_queries = {"GET 105 0x0C020105=0200001a"},
          .walk = {"129", "130"},
          .failures = {port_failures({failure})},
          .not_found = {failure},
          .served_down = number_octets(3)};
}

// The columns of the MST ports' flags and status are served by one query.
TableColumn smst_state(const char *name, uint8_t magic, oid column, const std::string &served,
                       const std::string &served_down) {
  return {.name = name,
          .handler = get_stpxSMSTPortTable,
          .magic = magic,
          .column = {1, 14, 7, 1, column},
          .header = ask_for_column<SmstPortRow, header_stpxSMSTPortTable>,
          .mode = kMst,
          .value = {{protocol::kEdge, fake::number(1)},
                    {protocol::kBoundary, fake::number(1)},
                    {protocol::kPeer, fake::number(1)},
                    {protocol::kDispute, fake::number(1)},
                    {protocol::kPreStandardPeer, fake::number(1)}},
          .index = {129},
          .served = served,
          .row = "129 216 0 2",
          .queries = {kModeQuery, "GET 111 0x0C02018B=0100001a"},
          .before = {},
          .read = port_read({"cmd_rsp_attr_get(0x0C02A001)", "cmd_rsp_attr_get(0x0202A01D)",
                             "cmd_rsp_attr_get(0x0202A028)", "cmd_rsp_attr_get(0x0202A027)",
                             "cmd_rsp_attr_get(0x0202A02D)", "cmd_rsp_attr_get(0x0202A02E)", kReleased}),
          .next = "130",
          .next_queries = {kModeQuery, "GET 111 0x0C02018B=0200001a"},
          .walk = {"129", "130"},
          .failures = {mode_failures("header_stpxSMSTPortTable"), port_failures()},
          .served_down = served_down};
}

TableColumn admin_mode() {
  return {.name = "SmstAdminMode",
          .handler = get_stpxSMSTPortTable,
          .magic = 91,
          .column = {1, 14, 7, 1, 6},
          .header = ask_for_column<SmstPortRow, header_stpxSMSTPortTable>,
          .mode = kMst,
          .value = {{protocol::kPreStandardMst, fake::number(1)}},
          .index = {129},
          .served = number_octets(1),
          .row = "129 0 1 0",
          .queries = {kModeQuery, "GET 119 0x0C020105=0100001a"},
          .before = {},
          .read = port_read({"cmd_rsp_attr_get(0x010200AA)", kReleased}),
          .next = "130",
          .next_queries = {kModeQuery, "GET 119 0x0C020105=0200001a"},
          .walk = {"129", "130"},
          .failures = {mode_failures("header_stpxSMSTPortTable"), port_failures()},
          .needed = protocol::kPreStandardMst,
          .without_needed = {kReleased, parse_failure("stpxSMSTPortAdminMSTMode")}};
}

// Tables that trees and ports number.

constexpr char kVlanTree10[] = " 0x0C020105=0100001a 0x130200B4=00000000010000000a0000000a000000";
constexpr char kMstTree10[] = " 0x0C02018B=0100001a 0x13020131=00000000010000000a0000000a000000";
constexpr char kVlanTree10Port2[] = " 0x0C020105=0200001a 0x130200B4=00000000010000000a0000000a000000";
constexpr char kMstTree10Port2[] = " 0x0C02018B=0200001a 0x13020131=00000000010000000a0000000a000000";
constexpr char kVlanTree10Start[] = " 0x0C020105=00000000 0x130200B4=00000000010000000a0000000a000000";
constexpr char kMstTree10Start[] = " 0x0C02018B=00000000 0x13020131=00000000010000000a0000000a000000";

const std::vector<std::string> kTreeWalk{"10.129", "10.130", "20.129", "20.130"};

TableColumn rpvst_flags() {
  return {
      .name = "RpvstFlags",
      .handler = get_stpxRPVSTPortTable,
      .magic = 109,
      .column = {1, 13, 1, 1, 3},
      .header = ask_for_row<RpvstPortRow, header_stpxRPVSTPortTable>,
      .mode = kRapidPvst,
      .value = {{protocol::kEdge, fake::number(1)}, {protocol::kPeer, fake::number(1)}},
      .index = {10, 129},
      .served = "\x90",
      .row = "10 129 144",
      .queries = {std::string("GET 105") + kVlanTree10},
      .before = {},
      .read = tree_port_read({}, {"cmd_rsp_attr_get(0x0202A01D)", "cmd_rsp_attr_get(0x0202A027)", kReleased}),
      .next = "10.130",
      .next_queries = {kModeQuery, std::string("GETNEXT 105") + kVlanTree10Start,
                       std::string("GET 105") + kVlanTree10Port2},
      .walk = kTreeWalk,
      .failures = {tree_port_failures(
          {from("header_stpxRPVSTPortTable", " get_exact_stp_dual_indices_entry() failed")})},
      .needed = protocol::kPeer,
      .without_needed = {kReleased, parse_failure("stpxRPVSTPortTable")}};
}

TableColumn port_role(uint32_t mode) {
  const bool is_mst = mode == kMst;
  const std::string command = is_mst ? "111" : "105";
  const std::string header = "header_stpxRSTPPortRoleTable";
  const std::string null = logged("returning NULL\\n");
  const std::string failure =
      from(header,
           is_mst ? " get_exact_stp_dual_indices_entry() failed"
                  : " get_exact_stp_dual_indices_entry() failed, commandId: STP_CMDID_SHOW_VLAN_INTERFACE");
  return {.name = is_mst ? "RoleInMst" : "RoleInRapidPvst",
          .handler = get_stpxRSTPPortRoleTable,
          .magic = 60,
          .column = {1, 12, 2, 1, 3},
          .header = ask_for_row<RstpPortRoleRow, header_stpxRSTPPortRoleTable>,
          .mode = mode,
          .value = {{protocol::kPortRole, fake::number(3)}},
          .index = {10, 129},
          .served = number_octets(3),
          .row = "10 129 3",
          .queries = {kModeQuery, "GET " + command + (is_mst ? kMstTree10 : kVlanTree10)},
          .before = {},
          .read = tree_port_read({}, {"cmd_rsp_attr_get(0x0202A003)", kReleased}),
          .next = "10.130",
          .next_queries = {kModeQuery, "GETNEXT " + command + (is_mst ? kMstTree10Start : kVlanTree10Start),
                           "GET " + command + (is_mst ? kMstTree10Port2 : kVlanTree10Port2)},
          .walk = kTreeWalk,
          .failures = {mode_failures(header, {null}), tree_port_failures({failure, null})},
          .refused = {null},
          .needed = protocol::kPortRole,
          .without_needed = {kReleased, parse_failure("stpxRSTPPortRoleTable"), null},
          .is_served_unchanged = true};
}

struct Inconsistency {
  const char *name;
  FindVarMethod *handler;
  HeaderAnswer (*header)(const std::vector<oid> &arcs, int exact, int magic);
  uint8_t magic;
  std::vector<oid> column;
  const char *table;
  std::string command;
  const char *command_name;
  std::string served;
};

TableColumn inconsistency(const Inconsistency &table) {
  const std::string header = std::string("header_") + table.table;
  const std::string parse = std::string("parse_reply_") + table.table;
  const bool is_bits = table.served.size() == 1;
  return {
      .name = table.name,
      .handler = table.handler,
      .magic = table.magic,
      .column = table.column,
      .header = table.header,
      .mode = kRapidPvst,
      .value = {{protocol::kInconsistency, fake::number(3)}},
      .index = {10, 129},
      .served = table.served,
      .row = is_bits ? "10 129 192" : "10 129 3",
      .queries = {kModeQuery, "GET " + table.command + kVlanTree10},
      .before = {},
      .read = tree_port_read({from("\\nget_stp_entry_from_if_index", ": value 3")},
                             {"cmd_rsp_attr_get(0x1402A015)", from("\\n" + parse, ": value 3"), kReleased}),
      .next = "10.130",
      .next_queries = {kModeQuery, "GET " + table.command + kVlanTree10Port2},
      .walk = kTreeWalk,
      .failures = {mode_failures(header, {}, "100"),
                   tree_port_failures({from(header, std::string(" get_exact_stp_dual_indices_entry() "
                                                                "failed, commandId: ") +
                                                        table.command_name)})},
      .needed = protocol::kInconsistency,
      .without_needed = {kReleased, logged(parse + " failed\\n")},
      .is_served_unchanged = !is_bits};
}

// The MST instances.

Trace instance_table_entered() {
  return sent(104, 1, "0x01020227", "00000000") +
         Trace{kFreed, "cmd_rsp_attr_get(0x0202B001)", logged("value 4\\n"), kReleased,
               from("get_stpxSMSTInstanceTable", " get_stpxSpanningTreeType() returns 4 ")};
}

std::vector<QueryFailures> instance_table_failures() {
  return {mode_failures("get_stpxSMSTInstanceTable"), mode_failures("header_stpxSMSTInstanceTable"),
          instance_failures()};
}

TableColumn instance_vlans(const char *name, uint8_t magic, oid column, const std::string &served) {
  const std::string header = "header_stpxSMSTInstanceTable";
  return {.name = name,
          .handler = get_stpxSMSTInstanceTable,
          .magic = magic,
          .column = {1, 14, 5, 1, column},
          .header = ask_for_column<SmstInstanceRow, header_stpxSMSTInstanceTable>,
          .mode = kMst,
          .value = {},
          .index = {10},
          .served = served,
          .row = "10 40e0..0000 4000..0000 0 0000000000000000 0",
          .queries = {kModeQuery, kModeQuery, "GET 112"},
          .before = instance_table_entered(),
          .read = {kFreed, "stp_get_mst_vlan_bmp(1, 10, empty 512)", from(header, " mstid:10, size:512 "),
                   logged(header + "(LINE):mst_id=10: size=512, vlan_bmp2=1,8-10,2049"), kReleased,
                   "dot1d_stringNonZeroLength(256)"},
          .next = "10",
          .next_queries = {kModeQuery, kModeQuery, "GET 112"},
          .walk = {},
          .failures = instance_table_failures()};
}

TableColumn instance_value() {
  return {.name = "InstanceValue",
          .handler = get_stpxSMSTInstanceTable,
          .magic = 104,
          .column = {1, 14, 5, 1, 4},
          .header = ask_for_column<SmstInstanceRow, header_stpxSMSTInstanceTable>,
          .mode = kMst,
          .value = {{protocol::kHops, fake::number(19)},
                    {protocol::kRegionalRootMac, fake::octets("\x02\x11\x22\x33\x44\x55")},
                    {protocol::kRegionalRootPriority, fake::number(0x6123)},
                    {protocol::kInternalRootPathCost, fake::number(2000)}},
          .index = {10},
          .served = number_octets(19),
          .row = "10 0000..0000 0000..0000 19 6123021122334455 2000",
          .queries = {kModeQuery, kModeQuery, "GET 122 0x13020131=00000000010000000a0000000a000000"},
          .before = instance_table_entered(),
          .read = {kFreed, "cmd_rsp_attr_get(0x14029027)", "cmd_rsp_attr_get(0x0F029023)",
                   "cmd_rsp_attr_get(0x14029024)", "cmd_rsp_attr_get(0x14029025)",
                   "cmd_rsp_attr_get(0x14029001)", kReleased},
          .next = "20",
          .next_queries = {kModeQuery, kModeQuery, "GETNEXT 122 0x13020131=00000000010000000a0000000a000000"},
          .walk = {"0", "10", "20"},
          .failures = instance_table_failures(),
          .needed = protocol::kTree,
          .without_needed = {kReleased, parse_failure("stpxSMSTInstanceTable")}};
}

}  // namespace

std::vector<TableColumn> all_columns() {
  return {root_guard(),
          pvst_vlan(),
          loop_guard(),
          rstp_setting(),
          link_type(),
          smst_state("SmstFlags", 87, 2, "\xD8", std::string(1, '\0')),
          admin_mode(),
          smst_state("SmstStatus", 92, 7, number_octets(2), number_octets(1)),
          rpvst_flags(),
          port_role(kRapidPvst),
          port_role(kMst),
          inconsistency({"LoopInconsistency",
                         get_stpxLoopInconsistencyTable,
                         ask_for_row<InconsistencyRow, header_stpxLoopInconsistencyTable>,
                         52,
                         {1, 8, 2, 1, 3},
                         "stpxLoopInconsistencyTable",
                         "121",
                         "STP_CMDID_SHOW_LOOP_INCONSISTENT",
                         number_octets(3)}),
          inconsistency({"RootInconsistency",
                         get_stpxRootInconsistencyTable,
                         ask_for_row<InconsistencyRow, header_stpxRootInconsistencyTable>,
                         70,
                         {1, 5, 2, 1, 3},
                         "stpxRootInconsistencyTable",
                         "120",
                         "STP_CMDID_SHOW_ROOT_INCONSISTENT",
                         number_octets(3)}),
          inconsistency({"PortInconsistency",
                         get_stpxInconsistencyTable,
                         ask_for_row<InconsistencyRow, header_stpxInconsistencyTable>,
                         120,
                         {1, 3, 1, 1, 3},
                         "stpxInconsistencyTable",
                         "116",
                         "STP_CMDID_SHOW_PVID_TYPE_INCONSISTENT",
                         "\xC0"}),
          instance_vlans("InstanceVlansLow", 102, 2, "\x40\xE0"),
          instance_vlans("InstanceVlansHigh", 103, 3, "\x40"),
          instance_value()};
}
