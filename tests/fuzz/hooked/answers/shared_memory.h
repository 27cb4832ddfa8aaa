// Takes the place of platform/answers/shared_memory.h, with the same loads: before each, somebody else may
// write.
#pragma once

namespace fuzz {

void before_load();

}  // namespace fuzz

#define __atomic_load_n(field, order) (fuzz::before_load(), __atomic_load_n(field, order))
#include "../../../../platform/answers/shared_memory.h"
#undef __atomic_load_n
