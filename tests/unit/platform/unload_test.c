/* The library comes and goes as the agent's dlmod makes it come and go, and leaves nothing behind.
 *
 * Usage: platform_unload_test LIBRARY. Prints what is wrong; exits with 0 when nothing is.
 */
#include <net-snmp/net-snmp-config.h>
/**/
#include <net-snmp/net-snmp-includes.h>
/**/
#include <dirent.h>
#include <dlfcn.h>
#include <net-snmp/agent/agent_callbacks.h>
#include <net-snmp/library/fd_event_manager.h>
#include <net-snmp/library/snmp_alarm.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "platform/agent_ext.h"

enum { kRounds = 1000, kBacklog = 1, kEventClass = 17421 };

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

static int entries_of(const char *directory) {
  int count = 0;
  DIR *listing = opendir(directory);
  while (listing != NULL && readdir(listing) != NULL) {
    ++count;
  }
  if (listing != NULL) {
    closedir(listing);
  }
  return count;
}

static int open_descriptors(void) { return entries_of("/proc/self/fd"); }
static int threads(void) { return entries_of("/proc/self/task"); }

static netsnmp_variable_list *handle(void *message, oid *trap_oid, size_t *trap_oid_len, int *status) {
  (void)message;
  (void)trap_oid;
  (void)trap_oid_len;
  *status = 0;
  return NULL;
}

/* How far the library's connection for events is when the library goes. */
enum stage { kNothing, kSubscribed, kConnecting, kBackingOff, kStages };

/* Brings the library there. A module should unsubscribe, but may forget to. */
static void go_through(void *library, enum stage stage, int unsubscribes) {
  int (*subscribe)(uint32_t, notification_handler) = NULL;
  int (*unsubscribe)(uint32_t) = NULL;
  *(void **)&subscribe = dlsym(library, "register_for_notification");
  *(void **)&unsubscribe = dlsym(library, "unregister_for_notification");
  EXPECT(subscribe != NULL && unsubscribe != NULL);
  if (subscribe == NULL || unsubscribe == NULL) {
    return;
  }
  if (stage == kNothing) {
    return;
  }
  EXPECT(subscribe(kEventClass, handle) == 0);
  EXPECT(sa_find_next() != NULL);
  if (stage != kSubscribed && sa_find_next() != NULL) {
    sa_find_next()->t_nextM.tv_sec = 0;
    sa_find_next()->t_nextM.tv_usec = 1;
    run_alarms();
    EXPECT(external_readfdlen == (stage == kConnecting ? 1 : 0));
    EXPECT(sa_find_next() != NULL);
  }
  if (unsubscribes) {
    EXPECT(unsubscribe(kEventClass) == 0);
    EXPECT(external_readfdlen == 0);
    EXPECT(sa_find_next() == NULL);
  }
}

static void load_and_unload(const char *path, enum stage stage, int unsubscribes) {
  void *library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (library == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    ++failures;
    return;
  }
  EXPECT(access_check_callbacks() == 2);
  go_through(library, stage, unsubscribes);
  EXPECT(dlclose(library) == 0);
  EXPECT(dlopen(path, RTLD_NOW | RTLD_NOLOAD) == NULL);
  EXPECT(access_check_callbacks() == 0);
  EXPECT(external_readfdlen == 0);
  EXPECT(sa_find_next() == NULL);
}

/* A switch that accepts nobody, but is there. */
static int listen_at(const struct sockaddr_un *address) {
  const int listener = socket(AF_UNIX, SOCK_SEQPACKET, 0);
  EXPECT(bind(listener, (const struct sockaddr *)address, sizeof *address) == 0);
  EXPECT(listen(listener, kBacklog) == 0);
  return listener;
}

int main(int argc, char **argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: %s LIBRARY\n", argv[0]);
    return 2;
  }
  char folder[] = "/tmp/platform-unload-XXXXXX";
  if (mkdtemp(folder) == NULL) {
    perror(folder);
    return 2;
  }
  struct sockaddr_un address = {.sun_family = AF_UNIX};
  snprintf(address.sun_path, sizeof address.sun_path, "%s/socket", folder);
  setenv("STPPLATFORM_SOCKET", address.sun_path, 1);
  snmp_disable_stderrlog();
  snmp_enable_calllog(); /* which nobody hears */

  const int descriptors = open_descriptors();
  for (int round = 0; round < kRounds && failures == 0; ++round) {
    const enum stage stage = (enum stage)(round % kStages);
    const int unsubscribes = round / kStages % 2;
    const int listener = stage == kConnecting ? listen_at(&address) : -1;
    load_and_unload(argv[1], stage, unsubscribes);
    if (listener >= 0) {
      close(listener);
      unlink(address.sun_path);
    }
    EXPECT(open_descriptors() == descriptors);
    EXPECT(threads() == 3 /* ".", ".." and this one */);
  }
  rmdir(folder);
  return failures == 0 ? 0 : 1;
}
