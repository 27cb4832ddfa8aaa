// Which traps start enabled: one word, persisted by another part of the switch and read once.
#pragma once

#include <cstdint>

namespace stpsnmp {

// The three traps, as the query below is asked about them.
enum TrapClass : uint32_t {
  kInconsistencyTrap = 0x40'0000,
  kLoopInconsistencyTrap = 0x80'0000,
  kRootInconsistencyTrap = 0x100'0000
};

// 1 when the persisted word enables the trap, 0 when it does not or the class is another one. The first call
// reads the file; the word is kept for as long as the module stays loaded.
int stp_trap_enable_configured(uint32_t trap_class);

}  // namespace stpsnmp
