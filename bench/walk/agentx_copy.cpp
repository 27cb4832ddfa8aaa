// An AgentX subagent that serves the rows of a file: what the same rows cost where another process has them.
//
// Usage: bench_agentx_copy SOCKET FILE
//
// SOCKET is the master agent's, as snmpd.conf names it. Says "ready" once everything is registered there.
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "registration.h"
#include "row_file.h"
#include "row_store.h"
#include "stpsnmp/agent.h"

namespace {

constexpr char kName[] = "bench_agentx_copy";
constexpr int kWait = 1;  // until there is something to do

volatile std::sig_atomic_t is_over = 0;

void end(int /*signal*/) { is_over = 1; }

void be_subagent_of(const char *socket) {
  netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_ROLE, 1);
  netsnmp_ds_set_string(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_X_SOCKET, socket);
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 3) {
    fprintf(stderr, "%s: expected the master agent's socket and a file of rows\n", kName);
    return 2;
  }
  snmp_enable_stderrlog();
  be_subagent_of(argv[1]);
  if (init_agent(kName) != 0 || !bench::load_rows(argv[2]) ||
      stpsnmp::register_objects() != MIB_REGISTERED_OK) {
    fprintf(stderr, "%s: error: cannot serve %s\n", kName, argv[2]);
    return EXIT_FAILURE;
  }
  init_snmp(kName);
  // Without SA_RESTART: the wait for requests ends, too.
  struct sigaction action {};
  action.sa_handler = end;
  sigaction(SIGTERM, &action, nullptr);
  sigaction(SIGINT, &action, nullptr);
  puts("ready");
  fflush(stdout);
  while (is_over == 0) {
    agent_check_and_process(kWait);
  }
  snmp_shutdown(kName);
  stpsnmp::unregister_objects();
  bench::drop_rows();
  return EXIT_SUCCESS;
}
