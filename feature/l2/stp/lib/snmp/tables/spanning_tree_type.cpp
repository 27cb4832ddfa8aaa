#include "tables/spanning_tree_type.h"

#include "diagnostics.h"
#include "scalar_values.h"

namespace stpsnmp::tables {

using diagnostics::kTrace;

int fetch_spanning_tree_type(uint32_t *type, CallSite caller) {
  const int result = get_stpxSpanningTreeType(&scalar_values);
  if (result != 0) {
    STP_LOG(kTrace, "%s(%d) get_stpxSpanningTreeType() failed rc: %d\n", caller.function, caller.line,
            result);
    return result;
  }
  STP_LOG(kTrace, "%s(%d) get_stpxSpanningTreeType() returns %d \n", caller.function, caller.line,
          scalar_values.spanning_tree_type);
  *type = static_cast<uint32_t>(scalar_values.spanning_tree_type);
  return 0;
}

}  // namespace stpsnmp::tables
