// MST instance table: the VLANs of each MST instance in any mode, and in MST mode further values, some of
// them for the CIST (instance 0) only. Each group of columns has a query of its own.
#include <algorithm>

#include "bitmap.h"
#include "magic.h"
#include "platform/bridge_mib.h"
#include "query/ask.h"
#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "stpsnmp/values.h"
#include "tables/lookup_handler.h"
#include "tables/spanning_tree_type.h"
#include "tables/table.h"

using namespace stpsnmp;
using namespace stpsnmp::tables;
using stpsnmp::query::Key;
using stpsnmp::query::TreeRange;

namespace {

constexpr size_t kIndexArcs = 1;
constexpr uint32_t kNoIndex = 0xFFFF'FFFF;
constexpr uint32_t kCist = 0;

bool is_vlan_column(int magic) { return magic == kSmstInstanceVlansLow || magic == kSmstInstanceVlansHigh; }

bool is_mst_column(int magic) {
  return magic == kSmstInstanceValue || magic == kSmstInstanceBridgeId || magic == kSmstInstanceCounter;
}

void copy_half(const uint8_t *octets, uint8_t (&column)[STP_VLANS_MAPPED_SIZE + 1]) {
  *std::copy_n(octets, STP_VLANS_MAPPED_SIZE, column) = 0;
}

void split_vlans(const stp_vlan_bmp &vlans, SmstInstanceRow *row) {
  copy_half(vlans.bits, row->vlans_mapped_low);
  copy_half(vlans.bits + STP_VLANS_MAPPED_SIZE, row->vlans_mapped_high);
}

// The platform picks the row's VLANs out of the whole MST configuration. Its result is the routine's; the
// request's OID is rewritten whatever it is.
int answer_vlans(const RowRequest &request, cmd_action action, SmstInstanceRow *row,
                 CallSite caller = CallSite::here()) {
  Reply reply;
  if (query::ask_for_reply(STP_COMMAND_MST_REGION, CMD_ACTION_GET, {}, &reply, caller) != 0) {
    return kFailed;
  }
  auto instance = static_cast<uint16_t>(row->index);
  stp_vlan_bmp vlans{STP_VLAN_BITMAP_SIZE, {}};
  const int result = stp_get_mst_vlan_bmp(reply.handle(), action, &instance, &vlans);
  const auto size = static_cast<int32_t>(vlans.size);
  STP_LOG(kTrace, "%s(%d) mstid:%d, size:%d \n", caller.function, caller.line, int{instance}, size);
  if (size != STP_VLAN_BITMAP_SIZE) {
    STP_LOG(kTrace, "%s(%d) size %d\n", caller.function, caller.line, size);
    // The reply is not released here, deliberately.
    reply.detach();
    return kFailed;
  }
  char list[bitmap::kVlanListSize];
  STP_LOG(kTrace, "%s(%d):mst_id=%d: size=%d, vlan_bmp2=%s", caller.function, caller.line, int{instance},
          size, bitmap::write_vlan_list(vlans, list));
  split_vlans(vlans, row);
  row->index = instance;
  reply.release();
  request.answer({row->index});
  return result;
}

// Every value is optional but the instance identifier.
int parse_reply(const Reply &reply, SmstInstanceRow *row) {
  uint32_t number = 0;
  if (reply.read_number(STP_ATTRIBUTE_HOPS, &number) == 0) {
    row->instance_value = static_cast<int32_t>(number);
  }
  const void *mac_address = nullptr;
  if (reply.find(STP_ATTRIBUTE_REGIONAL_ROOT_MAC, &mac_address) == 0) {
    stp_mac_to_bridge_id(row, mac_address);
  }
  if (reply.read_number(STP_ATTRIBUTE_REGIONAL_ROOT_PRIORITY, &number) == 0) {
    const auto priority = static_cast<uint16_t>(number);
    stp_prio_to_bridge_id(row, &priority);
  }
  reply.read_number(STP_ATTRIBUTE_INTERNAL_ROOT_PATH_COST, &row->counter_value);
  return reply.read_number(STP_ATTRIBUTE_TREE, &row->index);
}

int answer_mst_values(const RowRequest &request, cmd_action action, SmstInstanceRow *row,
                      CallSite caller = CallSite::here()) {
  const TreeRange instance = query::single_tree(row->index);
  const Key key{STP_KEY_MST_TREE, &instance};
  Reply reply;
  if (query::ask_for_reply(STP_COMMAND_MST_INSTANCES, action, {&key, 1}, &reply, caller) != 0) {
    return kFailed;
  }
  const int result = parse_reply(reply, row);
  reply.release();
  if (result != 0) {
    STP_LOG(kTrace, "parse_reply_stpxSMSTInstanceTable failed\n");
    return result;
  }
  request.answer({row->index});
  return 0;
}

int find_row(const oid *column, size_t column_length, oid *name, size_t *length, int exact,
             SmstInstanceRow *row, int magic) {
  if (!fetch_spanning_tree_type(kTrace, {"get_stpxSMSTInstanceTable", __LINE__})) {
    return kFailed;
  }
  return header_stpxSMSTInstanceTable(column, column_length, name, length, exact, row, magic);
}

// The header routine has fetched the type anew: that is the one under which it filled the row.
bool is_mst() { return spanning_tree_type() == STP_MODE_MST; }

template <auto kVlans>
Value mapped_vlans(const SmstInstanceRow &row) {
  const uint8_t *const octets = row.*kVlans;
  return {octets, static_cast<size_t>(dot1d_stringNonZeroLength(octets, STP_VLANS_MAPPED_SIZE))};
}

template <auto kField>
Value in_mst(const SmstInstanceRow &row) {
  return is_mst() ? field<kField>(row) : Value{};
}

template <auto kField>
Value of_cist(const SmstInstanceRow &row) {
  return row.index == kCist ? in_mst<kField>(row) : Value{};
}

constexpr Column<SmstInstanceRow> kColumns[] = {
    {kSmstInstanceVlansLow, mapped_vlans<&SmstInstanceRow::vlans_mapped_low>},
    {kSmstInstanceVlansHigh, mapped_vlans<&SmstInstanceRow::vlans_mapped_high>},
    {kSmstInstanceValue, in_mst<&SmstInstanceRow::instance_value>},
    {kSmstInstanceBridgeId, of_cist<&SmstInstanceRow::bridge_id>},
    {kSmstInstanceCounter, of_cist<&SmstInstanceRow::counter_value>},
};

}  // namespace

void stp_bmp_to_SMSTInstanceVlansMapped(SmstInstanceRow *row, const struct stp_vlan_bmp *vlans) {
  if (vlans->size != STP_VLAN_BITMAP_SIZE) {
    STP_LOG(kTrace, "%s(%d) size %d\n", __func__, __LINE__, static_cast<int32_t>(vlans->size));
    return;
  }
  split_vlans(*vlans, row);
}

int header_stpxSMSTInstanceTable(const oid *vp_name, size_t vp_namelen, oid *name, size_t *length, int exact,
                                 SmstInstanceRow *row, int magic) {
  const RowRequest request(vp_name, vp_namelen, name, length, exact, row);
  if (request.has_too_many_arcs(kIndexArcs)) {
    return kFailed;
  }
  // A walk that enters a column starts at the CIST, which is always there; only from then on has it a next.
  row->index = request.index_arc(0, kNoIndex);
  cmd_action action = request.action();
  if (row->index == kNoIndex) {
    row->index = kCist;
    action = CMD_ACTION_GET;
  }
  STP_LOG(kTrace, "%s(%d) instance index:%d\n", __func__, __LINE__, static_cast<int32_t>(row->index));
  if (!fetch_spanning_tree_type()) {
    return kFailed;
  }
  if (is_vlan_column(magic)) {
    return answer_vlans(request, action, row);
  }
  if (!is_mst_column(magic)) {
    STP_LOG(kTrace, "%s(%d): unknown magic\n", __func__, __LINE__);
    return kFailed;
  }
  if (!is_mst()) {
    request.answer({row->index});
    return 0;
  }
  return answer_mst_values(request, action, row);
}

STP_LOOKUP_HANDLER(get_stpxSMSTInstanceTable, find_row, kColumns)
