// Root guard and loop guard config tables: one row for each port, by interface index, and one for each bridge
// port.
#include "magic.h"
#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "tables/asked_row.h"
#include "tables/base_port_row.h"
#include "tables/lookup_handler.h"

using namespace stpsnmp;
using namespace stpsnmp::tables;

namespace {

// Where the reply does not name its row, the row is the one that was asked for.
template <class Row>
int parse_setting(const Reply &reply, Row *row) {
  reply.read_number(STP_ATTRIBUTE_INTERFACE, &row->index);
  uint32_t setting = 0;
  const int result = reply.read_number(STP_ATTRIBUTE_GUARD, &setting);
  if (result == 0) {
    row->value = static_cast<int32_t>(setting);
    STP_LOG(kTrace, "value %d\n", row->value);
  }
  return result;
}

constexpr PortSetting<LoopGuardConfigRow> kLoopGuard = {"stpxLoopGuardConfigTable", STP_COMMAND_LOOP_GUARD,
                                                        parse_setting};

constexpr Column<RootGuardConfigRow> kRootGuardColumns[] = {
    {kRootGuardSetting, field<&RootGuardConfigRow::value>}};
constexpr Column<LoopGuardConfigRow> kLoopGuardColumns[] = {
    {kLoopGuardSetting, field<&LoopGuardConfigRow::value>}};

}  // namespace

int header_stpxRootGuardConfigTable(const oid *vp_name, size_t vp_namelen, oid *name, size_t *length,
                                    int exact, RootGuardConfigRow *row) {
  const RowRequest request(vp_name, vp_namelen, name, length, exact, row);
  if (request.has_too_many_arcs(kAskedRowArcs)) {
    return kFailed;
  }
  row->index = request.index_arc(0);
  return answer_asked_row<RootGuardConfigRow>(
      request,
      {"stpxRootGuardConfigTable", STP_COMMAND_ROOT_GUARD, {STP_KEY_INTERFACE, &row->index}, parse_setting},
      row);
}

int header_stpxLoopGuardConfigTable(const oid *vp_name, size_t vp_namelen, oid *name, size_t *length,
                                    int exact, LoopGuardConfigRow *row) {
  const RowRequest request(vp_name, vp_namelen, name, length, exact, row);
  if (request.has_too_many_arcs(kBasePortArcs)) {
    return kFailed;
  }
  return answer_setting(request, kLoopGuard, row);
}

STP_LOOKUP_HANDLER(get_stpxRootGuardConfigTable, header_stpxRootGuardConfigTable, kRootGuardColumns)
STP_LOOKUP_HANDLER(get_stpxLoopGuardConfigTable, header_stpxLoopGuardConfigTable, kLoopGuardColumns)
