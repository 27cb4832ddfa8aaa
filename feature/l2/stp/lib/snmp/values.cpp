#include "values.h"

namespace {

constexpr int32_t kEnabled = 1;
constexpr int32_t kDisabled = 2;

}  // namespace

void stp_loopguard_global_default_mode_2_snmp_val(ScalarValueRecord *record) {
  record->loop_guard_default = record->loop_guard_default != 0 ? kEnabled : kDisabled;
}
