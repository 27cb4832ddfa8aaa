// A slot of the image as the publisher lays it out.
#pragma once

#include <cstdint>
#include <vector>

#include "support/input.h"

namespace fuzz {

// Of one of two switches, with one in Rapid PVST mode or with MST.
const std::vector<uint8_t> &any_slot(uint8_t choice);

// A word of a slot that becomes another one.
struct Rewrite {
  uint32_t place;
  uint32_t value;
};
// Mostly where there is something, and of a value that may be one.
Rewrite any_rewrite(Input *input, size_t slot_size);

}  // namespace fuzz
