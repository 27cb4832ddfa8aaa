// The end of the searches for a row of a tree and port.
#pragma once

#include <cstdint>

#include "call_site.h"
#include "diagnostics.h"

namespace stpsnmp::search {

// Makes the entry that was found, of an interface in a tree, the caller's row. Returns 0, or -1 with the
// reply released. What goes wrong is logged for `caller` at `failure_level`.
int finish(uint32_t tree, uint32_t if_index, uint32_t *tree_id, uint16_t *port_id, void *const *reply,
           diagnostics::Level failure_level, CallSite caller);

}  // namespace stpsnmp::search
