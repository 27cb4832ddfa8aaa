#include "main_loop.h"

#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>
//
#include <net-snmp/library/fd_event_manager.h>
#include <poll.h>

#include <ctime>

int run_main_loop_once() {
  constexpr timespec kAtOnce{};
  int ran = 0;
  for (int i = external_readfdlen - 1; i >= 0; --i) {
    pollfd entry{external_readfd[i], POLLIN, 0};
    // Not poll, which a test may have fail for the code under test.
    if (ppoll(&entry, 1, &kAtOnce, nullptr) > 0) {
      external_readfdfunc[i](external_readfd[i], external_readfd_data[i]);
      ++ran;
    }
  }
  return ran;
}
