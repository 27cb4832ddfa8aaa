#include "trap_enable.h"

#include <cstdio>

namespace stpsnmp {
namespace {

constexpr char kTrapEnableFile[] = "/mnt/pss/stp_trap_value";

constexpr uint32_t kRootInconsistencyBit = 1U << 0;
constexpr uint32_t kLoopInconsistencyBit = 1U << 1;
constexpr uint32_t kInconsistencyBit = 1U << 2;
constexpr uint32_t kNewRootBit = 1U << 3;
constexpr uint32_t kTopologyChangeBit = 1U << 4;

uint32_t trap_enable_word = 0;
bool trap_enable_word_read = false;

void read_trap_enable_word() {
  FILE *file = fopen(kTrapEnableFile, "r");
  if (file != nullptr) {
    uint32_t word;
    if (fscanf(file, "%x", &word) == 1) {
      trap_enable_word = word;
    }
    fclose(file);
  }
}

uint32_t bit_of(uint32_t trap_class) {
  switch (trap_class) {
    case kInconsistencyTrap:
      return kInconsistencyBit;
    case kLoopInconsistencyTrap:
      return kLoopInconsistencyBit;
    case kRootInconsistencyTrap:
      return kRootInconsistencyBit;
    case kNewRootTrap:
      return kNewRootBit;
    case kTopologyChangeTrap:
      return kTopologyChangeBit;
    default:
      return 0;
  }
}

}  // namespace

int stp_trap_enable_configured(uint32_t trap_class) {
  if (!trap_enable_word_read) {
    read_trap_enable_word();
    trap_enable_word_read = true;
  }
  return (trap_enable_word & bit_of(trap_class)) != 0 ? 1 : 0;
}

}  // namespace stpsnmp
