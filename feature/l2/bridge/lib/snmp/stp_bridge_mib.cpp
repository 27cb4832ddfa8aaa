#include "stp_bridge_mib.h"

#include "contexts.h"
#include "diagnostics.h"
#include "notifications.h"
#include "platform/agent_ext.h"
#include "platform/stp_protocol.h"
#include "registration.h"
#include "trap_enable.h"

namespace {

using stpsnmp::diagnostics::kRejection;
using stpsnmp::diagnostics::kTrace;

constinit bool is_registered = false;

// A trap that the setting does not name keeps the notification service's default.
void subscribe(stp_notification notification_class, notification_handler handler, stpsnmp::TrapClass trap) {
  register_for_notification(notification_class, handler);
  if (stpsnmp::stp_trap_enable_configured(trap) == 1) {
    set_notification_enable_disable_status(notification_class, 1);
  }
}

}  // namespace

void init_stp_bridge_mib(void) {
  STP_LOG(kTrace, "%s: registering BRIDGE-MIB\n", __func__);
  is_registered = stpbridge::register_default_context();
  if (!is_registered) {
    STP_LOG(kRejection, "%s: the agent refuses BRIDGE-MIB\n", __func__);
  }
  subscribe(STP_NOTIFICATION_NEW_ROOT, stpbridge::handle_new_root, stpsnmp::kNewRootTrap);
  subscribe(STP_NOTIFICATION_TOPOLOGY_CHANGE, stpbridge::handle_topology_change,
            stpsnmp::kTopologyChangeTrap);
  // Nothing is sent of these; enabled, they reach their handler.
  register_for_notification(STP_NOTIFICATION_TREES, stpbridge::follow_trees);
  set_notification_enable_disable_status(STP_NOTIFICATION_TREES, 1);
}

int deinit_stp_bridge_mib(void) {
  STP_LOG(kTrace, "%s: unregistering BRIDGE-MIB\n", __func__);
  unregister_for_notification(STP_NOTIFICATION_TREES);
  unregister_for_notification(STP_NOTIFICATION_TOPOLOGY_CHANGE);
  unregister_for_notification(STP_NOTIFICATION_NEW_ROOT);
  stpbridge::withdraw_contexts();
  if (is_registered) {
    stpbridge::unregister_default_context();
    is_registered = false;
  }
  return 0;
}
