// Loop guard config table: one row for each bridge port.
#include "diagnostics.h"
#include "header_routines.h"
#include "lookup_handlers.h"
#include "magic.h"
#include "tables/base_port_row.h"

using namespace stpsnmp;
using stpsnmp::diagnostics::kTrace;
using stpsnmp::query::Reply;
using stpsnmp::tables::RowRequest;

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

constexpr tables::PortSetting<LoopGuardConfigRow> kSetting = {"stpxLoopGuardConfigTable",
                                                              STP_COMMAND_LOOP_GUARD, parse_setting};

}  // namespace

int header_stpxLoopGuardConfigTable(const oid *vp_name, size_t vp_namelen, oid *name, size_t *length,
                                    int exact, LoopGuardConfigRow *row) {
  const RowRequest request(vp_name, vp_namelen, name, length, exact, row);
  if (request.has_too_many_arcs(tables::kBasePortArcs)) {
    return kFailed;
  }
  return tables::answer_setting(request, kSetting, row);
}

u_char *get_stpxLoopGuardConfigTable(struct variable *vp, oid *name, size_t *length, int exact,
                                     size_t *var_len, WriteMethod ** /*write_method*/) {
  static LoopGuardConfigRow row;
  if (header_stpxLoopGuardConfigTable(vp->name, vp->namelen, name, length, exact, &row) != 0) {
    return nullptr;
  }
  return vp->magic == kLoopGuardSetting ? tables::column_value(&row.value, var_len) : tables::index_column();
}
