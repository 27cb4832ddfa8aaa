// Loop guard config table: one row for each bridge port.
#include "magic.h"
#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "tables/base_port_row.h"
#include "tables/lookup_handler.h"

using namespace stpsnmp;
using namespace stpsnmp::tables;

namespace {

int parse_setting(const Reply &reply, LoopGuardConfigRow *row) {
  reply.read_number(STP_ATTRIBUTE_INTERFACE, &row->index);
  uint32_t setting = 0;
  const int result = reply.read_number(STP_ATTRIBUTE_GUARD, &setting);
  if (result == 0) {
    row->value = static_cast<int32_t>(setting);
    STP_LOG(kTrace, "value %d\n", row->value);
  }
  return result;
}

constexpr PortSetting<LoopGuardConfigRow> kSetting = {"stpxLoopGuardConfigTable", STP_COMMAND_LOOP_GUARD,
                                                      parse_setting};

constexpr Column<LoopGuardConfigRow> kColumns[] = {{kLoopGuardSetting, field<&LoopGuardConfigRow::value>}};

}  // namespace

int header_stpxLoopGuardConfigTable(const oid *vp_name, size_t vp_namelen, oid *name, size_t *length,
                                    int exact, LoopGuardConfigRow *row) {
  const RowRequest request(vp_name, vp_namelen, name, length, exact, row);
  if (request.has_too_many_arcs(kBasePortArcs)) {
    return kFailed;
  }
  return answer_setting(request, kSetting, row);
}

STP_LOOKUP_HANDLER(get_stpxLoopGuardConfigTable, header_stpxLoopGuardConfigTable, kColumns)
