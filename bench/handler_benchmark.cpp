// The lookup handler of the scalars against what it cannot do without: its request buffer and the agent's own
// header check.
#include <algorithm>
#include <cstdlib>

#include <benchmark/benchmark.h>

#include "instant_platform.h"
#include "stpsnmp/agent.h"
#include "stpsnmp/lookup_handlers.h"
#include "stpsnmp/object_table.h"

#include <net-snmp/agent/util_funcs/header_generic.h>

namespace {

constexpr size_t kSpanningTreeTypeRow = 7;
constexpr size_t kMaxInstancesRow = 1;
constexpr size_t kRequestBufferSize = 16000;

// One GET of a scalar, as the agent hands it over.
struct Get {
  variable vp{};
  oid name[MAX_OID_LEN];
  size_t name_length;
  size_t value_length = 0;
  WriteMethod *write_method = nullptr;

  explicit Get(size_t row) {
    const variable7 &entry = stp_extensions_mib_variables[row];
    vp.magic = entry.magic;
    oid *end = std::copy_n(stp_extensions_mib_variables_oid, STP_EXTENSIONS_MIB_ROOT_LENGTH, vp.name);
    end = std::copy_n(entry.name, entry.namelen, end);
    vp.namelen = static_cast<u_char>(end - vp.name);
    name_length = static_cast<size_t>(std::copy(vp.name, end, name) - name);
    name[name_length++] = 0;
  }
};

void HeaderCheckAlone(benchmark::State &state) {
  Get get(kSpanningTreeTypeRow);
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        header_generic(&get.vp, get.name, &get.name_length, 1, &get.value_length, &get.write_method));
  }
}
BENCHMARK(HeaderCheckAlone);

void RequestBufferAlone(benchmark::State &state) {
  for (auto _ : state) {
    void *buffer = malloc(kRequestBufferSize);
    benchmark::DoNotOptimize(buffer);
    free(buffer);
  }
}
BENCHMARK(RequestBufferAlone);

void ask(benchmark::State &state, size_t row, bool history_keeps) {
  set_sinks(history_keeps);
  Get get(row);
  for (auto _ : state) {
    benchmark::DoNotOptimize(get_vantrelStpExtensionsMIB(&get.vp, get.name, &get.name_length, 1,
                                                         &get.value_length, &get.write_method));
  }
}

void Constant(benchmark::State &state) { ask(state, kMaxInstancesRow, false); }
BENCHMARK(Constant);

void FetchedWithoutHistory(benchmark::State &state) { ask(state, kSpanningTreeTypeRow, false); }
BENCHMARK(FetchedWithoutHistory);

void FetchedWithHistory(benchmark::State &state) { ask(state, kSpanningTreeTypeRow, true); }
BENCHMARK(FetchedWithHistory);

}  // namespace
