/* Conversions from the spanning-tree process's values to those that the objects carry.
 *
 * Each writes one field of a record (stpsnmp/rows.h) from the value that its second argument points to: a
 * number in host byte order, 32 bits unless another width is named, or the six octets of a MAC address. The
 * value needs no alignment: it may lie in a reply. Several are here for other modules of the same agent. */
#ifndef STPSNMP_VALUES_H
#define STPSNMP_VALUES_H

#include <stdint.h>

#include "stpsnmp/export.h"
#include "stpsnmp/rows.h"

/* Writes a 16-bit priority into the first two octets of a bridge identifier, high octet first. */
STPSNMP_EXPORT void set_bridge_id_prio(uint8_t *bridge_id, const void *priority);

/* Write one part of an MST instance's bridge identifier: a 16-bit priority, a MAC address. */
STPSNMP_EXPORT void stp_prio_to_bridge_id(SmstInstanceRow *row, const void *priority);
STPSNMP_EXPORT void stp_mac_to_bridge_id(SmstInstanceRow *row, const void *mac_address);

/* The same for the bridge's own identifier, the designated root's and the designated bridge's. The first
 * argument points to the identifier itself, a field of Dot1dBridgeRecord. */
STPSNMP_EXPORT void stp_dot1d_prio_to_bridge_id(uint8_t *bridge_id, const void *priority);
STPSNMP_EXPORT void stp_dot1d_mac_to_bridge_id(uint8_t *bridge_id, const void *mac_address);
STPSNMP_EXPORT void stp_dot1d_droot_prio_to_bridge_id(uint8_t *designated_root, const void *priority);
STPSNMP_EXPORT void stp_dot1d_droot_mac_to_bridge_id(uint8_t *designated_root, const void *mac_address);
STPSNMP_EXPORT void stp_dot1d_dbridge_prio_to_bridge_id(uint8_t *designated_bridge, const void *priority);
STPSNMP_EXPORT void stp_dot1d_dbridge_mac_to_bridge_id(uint8_t *designated_bridge, const void *mac_address);

/* Writes seconds as TimeTicks, modulo 2^32. */
STPSNMP_EXPORT void stp_dot1d_sec_to_ticks(uint32_t *ticks, const void *seconds);

/* Writes a port state as dot1dStpPortState counts it (RFC 4188): 0 to 4 become disabled (1) to forwarding
 * (5), anything else broken (6). */
STPSNMP_EXPORT void stp_dot1d_port_state(uint32_t *port_state, const void *state);

/* Writes a 16-bit port identifier into two octets, high octet first. */
STPSNMP_EXPORT void stp_dot1d_port_to_dport(uint8_t *designated_port, const void *port_id);

/* Writes a pre-standard flag as 2 when it is set and 3 when it is not; returns what it wrote. */
STPSNMP_EXPORT int32_t stp_mst_prestd_status(int32_t *status, const void *flag);

/* Rewrites the record's loop guard default: not 0 becomes 1 (enabled), 0 becomes 2 (disabled). */
STPSNMP_EXPORT void stp_loopguard_global_default_mode_2_snmp_val(ScalarValueRecord *record);

/* Set one flag of a row where the value says so, and leave the others: the caller clears them first. A flag
 * is set by any value but 0; peer by 1 alone, deliberately. */
STPSNMP_EXPORT void stp_mst_oper_edge_to_bit(SmstPortRow *row, const void *flag);
STPSNMP_EXPORT void stp_mst_boundary_to_bit(SmstPortRow *row, const void *flag);
STPSNMP_EXPORT void stp_mst_peer_to_bit(SmstPortRow *row, const void *peer);
STPSNMP_EXPORT void stp_mst_dispute_to_bit(SmstPortRow *row, const void *flag);
STPSNMP_EXPORT void stp_oper_edge_to_bit(RpvstPortRow *row, const void *flag);
STPSNMP_EXPORT void stp_peer_to_bit(RpvstPortRow *row, const void *peer);

/* Writes bits 0 and 1 of an inconsistency word as the first two of a BITS octet, the first octet of the row's
 * value. Unlike a flag, the octet is assigned. `length` is that of the word in octets. */
STPSNMP_EXPORT void stp_sstp_inc_to_bmp(InconsistencyRow *row, const void *state, uint32_t length);

#endif
