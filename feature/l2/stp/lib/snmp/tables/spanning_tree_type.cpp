#include "tables/spanning_tree_type.h"

#include "stpsnmp/scalars.h"

namespace stpsnmp::tables {

using diagnostics::kTrace;

bool fetch_spanning_tree_type(diagnostics::Level failure_level, CallSite caller) {
  const int result = get_stpxSpanningTreeType(&scalar_values);
  if (result != 0) {
    STP_LOG(failure_level, "%s(%d) get_stpxSpanningTreeType() failed rc: %d\n", caller.function, caller.line,
            result);
    return false;
  }
  STP_LOG(kTrace, "%s(%d) get_stpxSpanningTreeType() returns %d \n", caller.function, caller.line,
          scalar_values.spanning_tree_type);
  return true;
}

}  // namespace stpsnmp::tables
