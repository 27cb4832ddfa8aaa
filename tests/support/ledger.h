// The heap ledger: every malloc and free of the module, seen through the linker's --wrap.
#pragma once

#include <cstddef>

namespace ledger {

// From here on, allocations are written into the fake platform's trace and counted; the fixture of a test
// starts it.
void start();
void stop();

// Makes the next malloc return null, or the one that comes after `count` others.
void fail_next_malloc();
void fail_malloc_after(size_t count);

// Allocations that were not freed.
size_t outstanding();

}  // namespace ledger
