#include "tables/tree_port.h"

namespace stpsnmp::tables {

void trace_tree_port(const TreePort &asked, CallSite caller) {
  STP_LOG(kTrace, "%s(%d) port_id: %d, tree_id:%d\n", caller.function, caller.line, int{asked.port_id},
          static_cast<int32_t>(asked.tree_id));
}

bool advances(const TreePort &found, const TreePort &asked, CallSite caller) {
  if (found > asked) {
    return true;
  }
  STP_LOG(kTrace, "%s(%d) Looping detected. tree_id=%d, in_tree_id=%d, port_id=%d, in_port_id=%d\n",
          caller.function, caller.line, static_cast<int32_t>(found.tree_id),
          static_cast<int32_t>(asked.tree_id), int{found.port_id}, int{asked.port_id});
  return false;
}

void trace_next_search(const timeval &begin, const timeval &end, int result, CallSite caller) {
  STP_LOG(
      kTrace,
      "%s(%d): get_next_stp_dual_indices_entry_from_im() begin: (sec=%u, usec=%u), end: (sec=%u, usec=%u)",
      caller.function, caller.line, static_cast<uint32_t>(begin.tv_sec), static_cast<uint32_t>(begin.tv_usec),
      static_cast<uint32_t>(end.tv_sec), static_cast<uint32_t>(end.tv_usec));
  STP_LOG(kTrace, "%s(%d) get_next_stp_dual_indices_entry_from_im() returns: %d", caller.function,
          caller.line, result);
}

}  // namespace stpsnmp::tables
