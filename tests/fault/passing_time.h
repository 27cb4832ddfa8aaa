// The monotonic clock of everybody in this process, which a test moves on: what waits for a time to pass need
// not be waited for.
#pragma once

#include <cstdint>

// From now on it is so much later.
void pass_ms(uint64_t ms);
