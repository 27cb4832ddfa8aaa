// Root guard config table: one row for each port, by interface index.
#include "diagnostics.h"
#include "header_routines.h"
#include "lookup_handlers.h"
#include "magic.h"
#include "tables/asked_row.h"

using namespace stpsnmp;
using stpsnmp::diagnostics::kTrace;
using stpsnmp::query::Reply;
using stpsnmp::tables::RowRequest;

namespace {

constexpr size_t kIndexArcs = 1;

int parse_reply(const Reply &reply, RootGuardConfigRow *row) {
  // Where the reply does not name its row, the row is the one that was asked for.
  reply.read_number(STP_ATTRIBUTE_INTERFACE, &row->index);
  uint32_t setting = 0;
  const int result = reply.read_number(STP_ATTRIBUTE_GUARD, &setting);
  if (result == 0) {
    row->value = static_cast<int32_t>(setting);
    STP_LOG(kTrace, "value %d\n", row->value);
  }
  return result;
}

}  // namespace

int header_stpxRootGuardConfigTable(const oid *vp_name, size_t vp_namelen, oid *name, size_t *length,
                                    int exact, RootGuardConfigRow *row) {
  const RowRequest request(vp_name, vp_namelen, name, length, exact, row);
  if (request.has_too_many_arcs(kIndexArcs)) {
    return kFailed;
  }
  row->index = request.index_arc(0);
  return tables::answer_asked_row<RootGuardConfigRow>(
      request,
      {"stpxRootGuardConfigTable", STP_COMMAND_ROOT_GUARD, {STP_KEY_INTERFACE, &row->index}, parse_reply},
      row);
}

u_char *get_stpxRootGuardConfigTable(struct variable *vp, oid *name, size_t *length, int exact,
                                     size_t *var_len, WriteMethod ** /*write_method*/) {
  static RootGuardConfigRow row;
  if (header_stpxRootGuardConfigTable(vp->name, vp->namelen, name, length, exact, &row) != 0) {
    return nullptr;
  }
  return vp->magic == kRootGuardSetting ? tables::column_value(&row.value, var_len) : tables::index_column();
}
