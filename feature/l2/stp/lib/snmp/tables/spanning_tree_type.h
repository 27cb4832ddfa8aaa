// The spanning-tree type, on which rows and columns depend.
#pragma once

#include <cstdint>

#include "call_site.h"

namespace stpsnmp::tables {

inline constexpr uint32_t kTypeMst = 4;

// Fetches it. Returns 0, or another code; either is logged for `caller`.
int fetch_spanning_tree_type(uint32_t *type, CallSite caller = CallSite::here());

}  // namespace stpsnmp::tables
