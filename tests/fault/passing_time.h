// The monotonic clock of everybody in this process, which a test moves on: what waits for a time to pass need
// not be waited for.
#pragma once

#include <cstdint>

// From now on it is so much later.
void pass_ms(uint64_t ms);

// The wall clock in whole seconds, as time() gives it, stands still but for this: what is kept for some
// seconds is kept however long a busy machine takes.
void pass_wall_seconds(uint32_t seconds);
