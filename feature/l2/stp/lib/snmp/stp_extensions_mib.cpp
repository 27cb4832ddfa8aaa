#include "stpsnmp/stp_extensions_mib.h"

#include "diagnostics.h"
#include "platform/stp_protocol.h"
#include "registration.h"
#include "stpsnmp/agent.h"
#include "stpsnmp/notifications.h"
#include "trap_enable.h"

using stpsnmp::diagnostics::kTrace;

namespace {

// Where a failed registration is reported to have happened.
constexpr char kSourceFile[] = "../feature/l2/stp/lib/snmp/stp_extensions_mib";
constexpr int kRegistrationLine = 926;

// The agent's own pair of debug calls for one message.
#define AGENT_DEBUG(token, ...)        \
  do {                                 \
    debugmsgtoken(token, __VA_ARGS__); \
    debugmsg(token, __VA_ARGS__);      \
  } while (false)

void report_failed_registration(const char *function) {
  if (snmp_get_do_debugging()) {
    AGENT_DEBUG("trace", "%s(): %s, %d:\n", function, kSourceFile, kRegistrationLine);
    AGENT_DEBUG("register_mib", "%s registration failed\n", stpsnmp::kModuleName);
  }
}

// A trap that the setting does not name keeps the notification service's default.
void enable_if_configured(stp_notification notification_class, stpsnmp::TrapClass trap) {
  if (stpsnmp::stp_trap_enable_configured(trap) == 1) {
    set_notification_enable_disable_status(notification_class, 1);
  }
}

}  // namespace

void init_stp_extensions_mib(void) {
  STP_LOG(kTrace, "%s: registering VANTREL-STP-EXTENSIONS-MIB ....\n", __func__);
  if (stpsnmp::register_objects() != MIB_REGISTERED_OK) {
    report_failed_registration(__func__);
  }

  register_for_notification(STP_NOTIFICATION_PORT_INCONSISTENCY, handle_noti_stpxInconsistencyUpdate);
  register_for_notification(STP_NOTIFICATION_LOOP_INCONSISTENCY, handle_noti_stpxLoopInconsistencyUpdate);
  register_for_notification(STP_NOTIFICATION_ROOT_INCONSISTENCY, handle_noti_stpxRootInconsistencyUpdate);

  enable_if_configured(STP_NOTIFICATION_PORT_INCONSISTENCY, stpsnmp::kInconsistencyTrap);
  enable_if_configured(STP_NOTIFICATION_ROOT_INCONSISTENCY, stpsnmp::kRootInconsistencyTrap);
  enable_if_configured(STP_NOTIFICATION_LOOP_INCONSISTENCY, stpsnmp::kLoopInconsistencyTrap);
}

int deinit_stp_extensions_mib(void) {
  STP_LOG(kTrace, "%s: unregistering VANTREL-STP-EXTENSIONS-MIB ...\n", __func__);
  stpsnmp::unregister_objects();
  unregister_for_notification(STP_NOTIFICATION_PORT_INCONSISTENCY);
  unregister_for_notification(STP_NOTIFICATION_LOOP_INCONSISTENCY);
  return unregister_for_notification(STP_NOTIFICATION_ROOT_INCONSISTENCY);
}
