// Which traps start enabled: one word, persisted by another part of the switch and read once.
#pragma once

#include <cstdint>

namespace stpsnmp {

// The traps of the agent's modules, as the query below is asked about them.
enum TrapClass : uint32_t {
  kInconsistencyTrap = 0x40'0000,
  kLoopInconsistencyTrap = 0x80'0000,
  kRootInconsistencyTrap = 0x100'0000,
  kNewRootTrap = 0x200'0000,
  kTopologyChangeTrap = 0x400'0000
};

// 1 when the persisted word enables the trap, 0 when it does not or the class is another one. The first call
// reads the file; the word is kept for as long as the calling module stays loaded.
int stp_trap_enable_configured(uint32_t trap_class);

}  // namespace stpsnmp
