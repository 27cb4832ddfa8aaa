// A dlmod module that stands in the module's place: the same objects, served from the rows of the file that
// the environment variable BENCH_ROWS names. Nothing behind the agent's old API can be faster.
#include <cstdlib>

#include "registration.h"
#include "row_file.h"
#include "row_store.h"
#include "stpsnmp/agent.h"

namespace {

constexpr char kRowsVariable[] = "BENCH_ROWS";

}  // namespace

extern "C" {

__attribute__((visibility("default"))) void init_bench_ceiling(void);
__attribute__((visibility("default"))) void deinit_bench_ceiling(void);

void init_bench_ceiling(void) {
  const char *const path = getenv(kRowsVariable);
  if (path == nullptr) {
    snmp_log(LOG_ERR, "bench_ceiling: error: %s is not set\n", kRowsVariable);
  } else if (bench::load_rows(path) && stpsnmp::register_objects() != MIB_REGISTERED_OK) {
    snmp_log(LOG_ERR, "bench_ceiling: error: cannot register the objects\n");
  }
}

void deinit_bench_ceiling(void) {
  stpsnmp::unregister_objects();
  bench::drop_rows();
}

}  // extern "C"
