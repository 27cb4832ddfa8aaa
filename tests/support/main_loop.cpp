#include "main_loop.h"

#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>
//
#include <net-snmp/library/fd_event_manager.h>
#include <poll.h>

int run_main_loop_once() {
  int ran = 0;
  for (int i = external_readfdlen - 1; i >= 0; --i) {
    pollfd entry{external_readfd[i], POLLIN, 0};
    if (poll(&entry, 1, 0) > 0) {
      external_readfdfunc[i](external_readfd[i], external_readfd_data[i]);
      ++ran;
    }
  }
  return ran;
}
