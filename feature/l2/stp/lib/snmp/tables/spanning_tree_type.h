// The spanning-tree type, on which rows and columns depend.
#pragma once

#include <cstdint>

#include "call_site.h"
#include "diagnostics.h"
#include "platform/stp_protocol.h"
#include "scalar_values.h"

namespace stpsnmp::tables {

// Fetches it into the module's scalar record. The outcome is logged for `caller`.
bool fetch_spanning_tree_type(diagnostics::Level failure_level = diagnostics::kTrace,
                              CallSite caller = CallSite::here());

// As it was fetched last.
inline uint32_t spanning_tree_type() { return static_cast<uint32_t>(scalar_values.spanning_tree_type); }

}  // namespace stpsnmp::tables
