// The handlers are subscribed and send nothing yet: every message is answered as one that gives no trap.
#include "notifications.h"

namespace {

netsnmp_variable_list *no_trap(int *status) {
  *status = 0;
  return nullptr;
}

}  // namespace

netsnmp_variable_list *handle_noti_stpxInconsistencyUpdate(void *, oid *, size_t *, int *status) {
  return no_trap(status);
}

netsnmp_variable_list *handle_noti_stpxLoopInconsistencyUpdate(void *, oid *, size_t *, int *status) {
  return no_trap(status);
}

netsnmp_variable_list *handle_noti_stpxRootInconsistencyUpdate(void *, oid *, size_t *, int *status) {
  return no_trap(status);
}
