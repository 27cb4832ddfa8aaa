#include "search/found_row.h"

#include "platform/stp.h"
#include "result.h"
#include "search/held_reply.h"

namespace stpsnmp::search {

int finish(uint32_t tree, uint32_t if_index, uint32_t *tree_id, uint16_t *port_id, void *const *reply,
           diagnostics::Level failure_level, CallSite caller) {
  if (stp_ifindex2dot1dportnum(if_index, port_id) != 0) {
    release_reply(held_reply(reply));
    STP_LOG(failure_level, "\n%s(%d): returning FAILURE\n", caller.function, caller.line);
    return kFailed;
  }
  if (reply == nullptr) {
    STP_LOG(failure_level, "\n%s(%d) resp_h is NULL\n", caller.function, caller.line);
  }
  *tree_id = tree;
  STP_LOG(diagnostics::kTrace, "\n%s(%d): returning tree_index: %d, port_index: %d\n", caller.function,
          caller.line, static_cast<int32_t>(tree), int{*port_id});
  return 0;
}

}  // namespace stpsnmp::search
