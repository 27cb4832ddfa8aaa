/* The SNMP context of a request: the spanning tree that it names.
 *
 * A context is a VLAN ("10" or "vlan-10") or an MST instance ("mst-10"); anything else stands for VLAN 1. It
 * is that of the request being served (platform/agent_ext.h). These routines serve the agent's other modules
 * that query the spanning-tree process. */
#ifndef STPSNMP_CONTEXT_H
#define STPSNMP_CONTEXT_H

#include <stdint.h>

#include "stpsnmp/export.h"

/* Tells the tree: its number, and 1 for a VLAN or 0 for an MST instance. */
STPSNMP_EXPORT void stp_get_vlan_or_mst_id_from_context(uint32_t *tree, uint32_t *is_vlan);

/* Add the tree as a key to a request under construction (platform/cmd.h), between its action and its send:
 * the tree itself; for a request that changes settings of the tree; for one that changes settings of a port
 * in the tree. The first two return what cmd_req_attr_add returns. */
STPSNMP_EXPORT int stp_set_index_from_context(void *request);
STPSNMP_EXPORT int stp_set_index_from_context_for_set(void *request);
STPSNMP_EXPORT void stp_set_index_from_context_for_set_intf(void *request);

/* 1 when the latest key was an MST instance, 0 when it was a VLAN or there was none yet. */
STPSNMP_EXPORT uint32_t is_mst_context_passed(void);

#endif
