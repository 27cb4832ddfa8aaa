// The module's lookup handlers over the row store: the least that one can do behind the agent's old API.
#include "stpsnmp/lookup_handlers.h"

#include <algorithm>

#include "row_store.h"

namespace {

using bench::Index;
using bench::Row;

// What the agent asks for lies below the entry, or before it where a GETNEXT comes from there.
Index asked_index(const variable &entry, const oid *name, size_t length) {
  const bool is_below =
      length > entry.namelen && snmp_oid_compare(name, entry.namelen, entry.name, entry.namelen) == 0;
  return is_below ? Index{name + entry.namelen, length - entry.namelen} : Index{};
}

u_char *answer(const variable &entry, oid *name, size_t *length, int exact, size_t *value_length) {
  const Index index = asked_index(entry, name, *length);
  const Row *const row =
      exact != 0 ? bench::find_row(entry.magic, index) : bench::first_row_after(entry.magic, index);
  if (row == nullptr) {
    return nullptr;
  }
  oid *const end = std::copy_n(entry.name, entry.namelen, name);
  *length = static_cast<size_t>(std::copy_n(row->index, row->index_arcs, end) - name);
  *value_length = row->length;
  return static_cast<u_char *>(const_cast<void *>(row->value()));
}

}  // namespace

#define BENCH_LOOKUP_HANDLER(handler)                                                          \
  u_char *handler(variable *entry, oid *name, size_t *length, int exact, size_t *value_length, \
                  WriteMethod ** /*write_method*/) {                                           \
    return answer(*entry, name, length, exact, value_length);                                  \
  }

BENCH_LOOKUP_HANDLER(get_vantrelStpExtensionsMIB)
BENCH_LOOKUP_HANDLER(get_stpxInconsistencyTable)
BENCH_LOOKUP_HANDLER(get_stpxLongStpPortPathCostTable)
BENCH_LOOKUP_HANDLER(get_stpxLoopGuardConfigTable)
BENCH_LOOKUP_HANDLER(get_stpxLoopInconsistencyTable)
BENCH_LOOKUP_HANDLER(get_stpxPVSTVlanTable)
BENCH_LOOKUP_HANDLER(get_stpxRootGuardConfigTable)
BENCH_LOOKUP_HANDLER(get_stpxRootInconsistencyTable)
BENCH_LOOKUP_HANDLER(get_stpxRPVSTPortTable)
BENCH_LOOKUP_HANDLER(get_stpxRSTPPortRoleTable)
BENCH_LOOKUP_HANDLER(get_stpxRSTPPortTable)
BENCH_LOOKUP_HANDLER(get_stpxSMSTInstanceTable)
BENCH_LOOKUP_HANDLER(get_stpxSMSTPortTable)
