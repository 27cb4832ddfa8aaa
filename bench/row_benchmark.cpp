// A step of a walk through each table, over a switch that answers at once. The event history is the shipped
// platform's, set by STPPLATFORM_HISTORY_LEVEL.
#include <algorithm>
#include <iterator>

#include <benchmark/benchmark.h>

#include "instant_switch.h"
#include "platform/stp_protocol.h"
#include "stpsnmp/agent.h"
#include "stpsnmp/lookup_handlers.h"
#include "stpsnmp/object_table.h"

namespace {

// The same number of rows whatever they cost, so that a profiler's count can be divided by it. It is some
// walks of the tables with ports and trees.
constexpr int kRows = 20'000;

struct Column {
  const char *name;
  FindVarMethod *handler;
  u_char magic;
  uint32_t mode;
};

// A walk through a column that starts over at its end.
class Walk {
 public:
  explicit Walk(const Column &column) : column_(column) {
    const auto *entry =
        std::find_if(std::begin(stp_extensions_mib_variables), std::end(stp_extensions_mib_variables),
                     [&](const variable7 &candidate) {
                       return candidate.findVar == column.handler && candidate.magic == column.magic;
                     });
    vp_.magic = entry->magic;
    oid *end = std::copy_n(stp_extensions_mib_variables_oid, STP_EXTENSIONS_MIB_ROOT_LENGTH, vp_.name);
    end = std::copy_n(entry->name, entry->namelen, end);
    vp_.namelen = static_cast<u_char>(end - vp_.name);
    start();
  }

  void start() { name_length_ = static_cast<size_t>(std::copy_n(vp_.name, vp_.namelen, name_) - name_); }

  // False at the end.
  bool step() {
    return column_.handler(&vp_, name_, &name_length_, 0, &value_length_, &write_method_) != nullptr;
  }

 private:
  Column column_;
  variable vp_{};
  oid name_[MAX_OID_LEN];
  size_t name_length_ = 0;
  size_t value_length_ = 0;
  WriteMethod *write_method_ = nullptr;
};

void Row(benchmark::State &state, const Column &column) {
  instant::set_mode(column.mode);
  Walk walk(column);
  if (!walk.step()) {
    state.SkipWithError("the table has no rows");
    return;
  }
  for (auto _ : state) {
    if (!walk.step()) {
      walk.start();
    }
  }
}

constexpr Column kColumns[] = {
    {"role/rapid-pvst", get_stpxRSTPPortRoleTable, 60, STP_MODE_RAPID_PVST},
    {"role/mst", get_stpxRSTPPortRoleTable, 60, STP_MODE_MST},
    {"rpvst_port", get_stpxRPVSTPortTable, 109, STP_MODE_RAPID_PVST},
    {"root_guard", get_stpxRootGuardConfigTable, 63, STP_MODE_RAPID_PVST},
    {"loop_guard", get_stpxLoopGuardConfigTable, 117, STP_MODE_RAPID_PVST},
    {"rstp_port/setting", get_stpxRSTPPortTable, 55, STP_MODE_RAPID_PVST},
    {"rstp_port/link_type", get_stpxRSTPPortTable, 56, STP_MODE_RAPID_PVST},
    {"pvst_vlan", get_stpxPVSTVlanTable, 100, STP_MODE_RAPID_PVST},
    {"port_inconsistency", get_stpxInconsistencyTable, 120, STP_MODE_RAPID_PVST},
    {"root_inconsistency", get_stpxRootInconsistencyTable, 70, STP_MODE_RAPID_PVST},
    {"loop_inconsistency", get_stpxLoopInconsistencyTable, 52, STP_MODE_RAPID_PVST},
    {"smst_port/flags", get_stpxSMSTPortTable, 87, STP_MODE_MST},
    {"smst_instance/vlans", get_stpxSMSTInstanceTable, 102, STP_MODE_MST},
    {"smst_instance/value", get_stpxSMSTInstanceTable, 104, STP_MODE_MST},
};

}  // namespace

int main(int argc, char **argv) {
  for (const Column &column : kColumns) {
    benchmark::RegisterBenchmark(column.name, Row, column)->Iterations(kRows);
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
