/* A dlmod module that answers with what the platform says about the very request: context, user, session
 * number. It is registered in the default context and in two more. Loaded behind the module under test, it
 * also enables the notification classes whose numbers stand in the environment variable AGENT_PROBE_ENABLE.
 */
#include <net-snmp/net-snmp-config.h>
/**/
#include <net-snmp/net-snmp-includes.h>
/**/
#include <net-snmp/agent/net-snmp-agent-includes.h>
#include <net-snmp/agent/util_funcs/header_generic.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include "platform/agent_ext.h"

#define COUNT(array) (sizeof(array) / sizeof(array)[0])

enum { PROBE_CONTEXT = 1, PROBE_USER, PROBE_SESSION };

static u_char *answer(struct variable *entry, oid *name, size_t *length, int exact, size_t *value_length,
                      WriteMethod **write_method) {
  static uint32_t session;
  if (header_generic(entry, name, length, exact, value_length, write_method) == MATCH_FAILED) {
    return NULL;
  }
  switch (entry->magic) {
    case PROBE_CONTEXT:
      *value_length = and_context_name_len;
      return (u_char *)and_context_name;
    case PROBE_USER: {
      static char user[256];
      const char *current = get_snmp_username(0);
      *value_length = strlen(current);
      memcpy(user, current, *value_length + 1);
      return (u_char *)user;
    }
    case PROBE_SESSION:
      session = get_snmp_sessionid(0);
      *value_length = sizeof session;
      return (u_char *)&session;
    default:
      return NULL;
  }
}

static const oid root[] = {1, 3, 6, 1, 4, 1, STPSNMP_ENTERPRISE, 9, 9999};

static struct variable4 entries[] = {
    {PROBE_CONTEXT, ASN_OCTET_STR, NETSNMP_OLDAPI_RONLY, answer, 1, {PROBE_CONTEXT}},
    {PROBE_USER, ASN_OCTET_STR, NETSNMP_OLDAPI_RONLY, answer, 1, {PROBE_USER}},
    {PROBE_SESSION, ASN_UNSIGNED, NETSNMP_OLDAPI_RONLY, answer, 1, {PROBE_SESSION}},
};

static const char *const contexts[] = {"", "vlan-10", "mst-5"};

static void enable_notifications(const char *classes) {
  char *end = NULL;
  for (; *classes != '\0'; classes = end) {
    const unsigned long notification_class = strtoul(classes, &end, 10);
    if (end == classes || set_notification_enable_disable_status((uint32_t)notification_class, 1) != 0) {
      snmp_log(LOG_ERR, "agent_probe: error: cannot enable the notifications '%s'\n", classes);
      return;
    }
  }
}

void init_agent_probe(void);
void deinit_agent_probe(void);

void init_agent_probe(void) {
  const char *classes = getenv("AGENT_PROBE_ENABLE");
  if (classes != NULL) {
    enable_notifications(classes);
  }
  for (size_t i = 0; i < COUNT(contexts); ++i) {
    if (register_mib_context("agent_probe", (struct variable *)entries, sizeof entries[0], COUNT(entries),
                             root, COUNT(root), DEFAULT_MIB_PRIORITY, 0, 0, NULL, contexts[i], -1,
                             0) != MIB_REGISTERED_OK) {
      snmp_log(LOG_ERR, "agent_probe: cannot register in context '%s'\n", contexts[i]);
    }
  }
}

/* The agent keeps one registration for every entry. */
void deinit_agent_probe(void) {
  oid name[COUNT(root) + 1];
  memcpy(name, root, sizeof root);
  for (size_t i = 0; i < COUNT(contexts); ++i) {
    for (size_t k = 0; k < COUNT(entries); ++k) {
      name[COUNT(root)] = entries[k].magic;
      unregister_mib_context(name, COUNT(name), DEFAULT_MIB_PRIORITY, 0, 0, contexts[i]);
    }
  }
}
