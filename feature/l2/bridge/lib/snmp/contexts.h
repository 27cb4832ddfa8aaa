// The SNMP contexts of trees (RFC 3411 clause 3.3.1): "N" and "vlan-N" of a VLAN's tree, "mst-N" of an MST
// instance. What is registered follows what runs, a part at a time between the agent's requests.
#pragma once

#include "platform/agent_ext.h"
#include "stpsnmp/agent.h"

namespace stpbridge {

// Of STP_NOTIFICATION_TREES: goes through the trees, soon. Sends nothing.
netsnmp_variable_list *follow_trees(void *message, oid *trap_oid, size_t *trap_oid_len, int *status);

// Withdraws all contexts, and goes through nothing any more.
void withdraw_contexts();

}  // namespace stpbridge
