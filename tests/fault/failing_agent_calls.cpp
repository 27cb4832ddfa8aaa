// Calls of the agent's library that fail, as they do where it has no memory or no room.
//
// Left out is what returns nothing, what only compares or looks up, and snmp_set_var_objid and
// snmp_set_var_typed_value, which take no memory for what the bridge module gives them.
#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>
//
#include <net-snmp/agent/net-snmp-agent-includes.h>
#include <net-snmp/library/fd_event_manager.h>
#include <net-snmp/library/snmp_alarm.h>

#include "wrapper.h"

using faults::kMemory;

MAY_FAIL(kMemory, int, register_mib,
         (const char *name, const variable *entries, size_t entry_size, size_t count, const oid *root,
          size_t length),
         (name, entries, entry_size, count, root, length), MIB_REGISTRATION_FAILED)
MAY_FAIL(kMemory, netsnmp_handler_registration *, netsnmp_create_handler_registration,
         (const char *name, Netsnmp_Node_Handler *handler, const oid *root, size_t length, int modes),
         (name, handler, root, length, modes), nullptr)
MAY_FAIL(kMemory, unsigned, snmp_alarm_register_hr,
         (timeval when, unsigned flags, SNMPAlarmCallback *callback, void *argument),
         (when, flags, callback, argument), 0)
MAY_FAIL(kMemory, int, netsnmp_register_callback,
         (int major, int minor, SNMPCallback *callback, void *argument, int priority),
         (major, minor, callback, argument, priority), SNMPERR_MALLOC)
MAY_FAIL(kMemory, netsnmp_variable_list *, snmp_varlist_add_variable,
         (netsnmp_variable_list * *list, const oid *name, size_t length, u_char type, const void *value,
          size_t size),
         (list, name, length, type, value, size), nullptr)
MAY_FAIL(kMemory, int, register_readfd, (int fd, void (*callback)(int, void *), void *data),
         (fd, callback, data), FD_REGISTRATION_FAILED)

extern "C" {

int __real_netsnmp_register_handler(netsnmp_handler_registration *registration);
int __wrap_netsnmp_register_handler(netsnmp_handler_registration *registration);

// The agent frees what it refuses.
int __wrap_netsnmp_register_handler(netsnmp_handler_registration *registration) {
  if (!faults::strikes(kMemory, "netsnmp_register_handler")) {
    return __real_netsnmp_register_handler(registration);
  }
  netsnmp_handler_registration_free(registration);
  return MIB_REGISTRATION_FAILED;
}
}
