/* The library comes and goes as the agent's dlmod makes it come and go, and leaves nothing behind.
 *
 * Usage: platform_unload_test LIBRARY. Prints what is wrong; exits with 0 when nothing is.
 */
#include <net-snmp/net-snmp-config.h>
/**/
#include <net-snmp/net-snmp-includes.h>
/**/
#include <dlfcn.h>
#include <net-snmp/agent/agent_callbacks.h>
#include <net-snmp/library/fd_event_manager.h>
#include <stdio.h>

static int failures = 0;

#define EXPECT(condition)                                              \
  do {                                                                 \
    if (!(condition)) {                                                \
      fprintf(stderr, "line %d: %s is wrong\n", __LINE__, #condition); \
      ++failures;                                                      \
    }                                                                  \
  } while (0)

static int access_check_callbacks(void) {
  return snmp_count_callbacks(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_ACM_CHECK) +
         snmp_count_callbacks(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_ACM_CHECK_SUBTREE);
}

int main(int argc, char **argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: %s LIBRARY\n", argv[0]);
    return 2;
  }
  for (int i = 0; i < 3; ++i) {
    void *library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (library == NULL) {
      fprintf(stderr, "%s\n", dlerror());
      return 1;
    }
    EXPECT(access_check_callbacks() == 2);
    EXPECT(dlclose(library) == 0);
    EXPECT(dlopen(argv[1], RTLD_NOW | RTLD_NOLOAD) == NULL);
    EXPECT(access_check_callbacks() == 0);
    EXPECT(external_readfdlen == 0);
  }
  return failures == 0 ? 0 : 1;
}
