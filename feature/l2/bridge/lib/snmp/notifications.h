// Handlers of the notifications newRoot and topologyChange (RFC 4188).
#pragma once

#include "platform/agent_ext.h"

namespace stpbridge {

// The bindings are the bridge port through which the change came and its interface, as far as they are known;
// there may be none.
netsnmp_variable_list *handle_new_root(void *message, oid *trap_oid, size_t *trap_oid_len, int *status);
netsnmp_variable_list *handle_topology_change(void *message, oid *trap_oid, size_t *trap_oid_len,
                                              int *status);

}  // namespace stpbridge
