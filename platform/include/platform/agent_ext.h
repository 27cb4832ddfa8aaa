/* Agent extensions: what the switch adds to the SNMP agent. Who asks, in which SNMP context, and the
 * notification service. Everything here is used on the agent's one request thread.
 */
#ifndef PLATFORM_AGENT_EXT_H
#define PLATFORM_AGENT_EXT_H

#include <stddef.h>
#include <stdint.h>

#include <net-snmp/library/oid.h>

#ifdef __cplusplus
extern "C" {
#endif

/* net-snmp's list of variable bindings (<net-snmp/net-snmp-includes.h>). */
struct variable_list;
typedef struct variable_list netsnmp_variable_list;

/* The SNMP context (RFC 3411 clause 3.3.1) of the request being served: zero-terminated text and its length
 * in bytes, empty for the default context. Valid while a lookup handler runs. */
extern char and_context_name[];
extern uint32_t and_context_name_len;

/* The longest context name, in bytes without the terminating zero (RFC 3411 clause 5: SnmpAdminString (SIZE
 * (0..32))). A longer one is served as the empty context. */
#define AND_CONTEXT_NAME_MAX 32

/* The user on whose behalf the request being served is made: the SNMPv3 user name, or the security name that
 * the agent's configuration gives a v1 or v2c community. Never null; empty outside a request. Valid until the
 * next request. `index` is 0. */
const char *get_snmp_username(int index);

/* A number for the session of that request: the same for all requests of one manager's transport address and
 * user, as good as always different for others. 0 outside a request. `index` is 0. */
uint32_t get_snmp_sessionid(int index);

/* Turns a message of the spanning-tree process into a notification. `trap_oid` has room for MAX_OID_LEN arcs,
 * and `*trap_oid_len` is set in arcs. Returns the bindings, which the service owns and frees from then on,
 * with `*status` 1, or null where the notification has none; or null with `*status` 0, and nothing is
 * sent. */
typedef netsnmp_variable_list *(*notification_handler)(void *message, oid *trap_oid, size_t *trap_oid_len,
                                                       int *status);

/* The notification service keeps one handler for a class, and whether the class's notifications are sent;
 * they are not, until they are enabled. All three return 0 on success. */

/* Returns non-zero when the handler is null or no room is left. A second subscription
 * replaces the first one. */
int register_for_notification(uint32_t notification_class, notification_handler handler);

/* Forgets handler and enable status. Returns non-zero when the class has no handler. */
int unregister_for_notification(uint32_t notification_class);

/* Enables (`enable` non-zero) or disables the class's notifications. Returns non-zero when the class has no
 * handler. */
int set_notification_enable_disable_status(uint32_t notification_class, int enable);

/* Appends a binding of a copy of `value` (`value_len` bytes of ASN.1 type `type`) under a copy of `name`
 * (`name_len` arcs) and returns the list; a null `list` starts one. Returns the list unchanged when memory is
 * short. */
netsnmp_variable_list *build_varbind(netsnmp_variable_list *list, const void *value, unsigned char type,
                                     size_t value_len, const oid *name, size_t name_len);

#ifdef __cplusplus
}
#endif

#endif
