/* The records that hold what an answer is made of: one row of a table, the scalars, or a bridge's own data.
 *
 * A header routine (stpsnmp/header_routines.h) clears its row and fills it; the row's index stands first, and
 * the lookup handler serves one of the other fields. Numbers are in host byte order, octet strings as they
 * are served. Fields lie in this order with natural alignment. */
#ifndef STPSNMP_ROWS_H
#define STPSNMP_ROWS_H

#include <stdint.h>

#include "platform/cmd.h"
#include "platform/stp.h"

/* A bridge identifier (IEEE 802.1D clause 9.2.5, BridgeId of RFC 4188): the priority in two octets, high
 * octet first, then the six octets of the MAC address. */
#define STP_BRIDGE_PRIORITY_SIZE 2
#define STP_MAC_ADDRESS_SIZE 6
#define STP_BRIDGE_ID_SIZE (STP_BRIDGE_PRIORITY_SIZE + STP_MAC_ADDRESS_SIZE)

/* Octets of a VLAN column: half of a VLAN bitmap. */
#define STP_VLANS_MAPPED_SIZE (STP_VLAN_BITMAP_SIZE / 2)

/* Root guard of a port. */
typedef struct RootGuardConfigRow {
  uint32_t index; /* interface index */
  int32_t value;  /* enum stp_guard (platform/stp_protocol.h) */
} RootGuardConfigRow;

/* The spanning tree of a VLAN. */
typedef struct PvstVlanRow {
  uint32_t index; /* VLAN identifier */
  int32_t value;  /* TruthValue (RFC 2579): 1 when a spanning tree runs on the VLAN, otherwise 2 */
} PvstVlanRow;

/* An MST instance (IEEE 802.1Q clause 13). */
typedef struct SmstInstanceRow {
  uint32_t index;                                       /* MST instance identifier, 0: the CIST */
  uint8_t vlans_mapped_low[STP_VLANS_MAPPED_SIZE + 1];  /* VLANs 0 to 2047, then a zero octet */
  uint8_t vlans_mapped_high[STP_VLANS_MAPPED_SIZE + 1]; /* VLANs 2048 to 4095, then a zero octet */
  int32_t instance_value;
  uint8_t bridge_id[STP_BRIDGE_ID_SIZE];
  uint32_t counter_value;
} SmstInstanceRow;

/* A port in MST mode. */
typedef struct SmstPortRow {
  uint32_t index;         /* bridge port number */
  uint8_t port_flags;     /* BITS: operational edge 0, boundary 1, peer 3, dispute 4 */
  int32_t admin_mst_mode; /* 1 pre-standard, 2 as the neighbour speaks */
  int32_t prestd_status;  /* of the neighbour: 1 unknown, 2 pre-standard, 3 not so */
} SmstPortRow;

/* A port in Rapid STP. */
typedef struct RstpPortRow {
  uint32_t index;         /* bridge port number */
  int32_t setting;        /* enum stp_link_type (platform/stp_protocol.h) */
  int32_t oper_link_type; /* 1 point-to-point, 2 shared, 3 neither is known (IEEE 802.1D clause 6.4.3) */
  uint32_t reserved;      /* 0 */
} RstpPortRow;

/* Loop guard of a port. */
typedef struct LoopGuardConfigRow {
  uint32_t index;    /* bridge port number */
  uint32_t reserved; /* 0 */
  int32_t value;     /* enum stp_guard (platform/stp_protocol.h) */
} LoopGuardConfigRow;

/* The role of a port in a tree. */
typedef struct RstpPortRoleRow {
  uint32_t tree_id;  /* VLAN or MST instance identifier */
  uint32_t port_id;  /* bridge port number */
  int32_t port_role; /* enum stp_port_role (platform/stp_protocol.h) */
} RstpPortRoleRow;

/* A port of a Rapid-PVST tree. */
typedef struct RpvstPortRow {
  uint32_t tree_id;   /* VLAN identifier */
  uint32_t port_id;   /* bridge port number */
  uint8_t port_flags; /* BITS: operational edge 0, peer 3 */
} RpvstPortRow;

/* An inconsistency of a port in a tree. */
typedef struct InconsistencyRow {
  uint32_t tree_id;
  uint32_t port_id; /* bridge port number */
  int32_t value;    /* the state; as BITS it stands in the first octet */
} InconsistencyRow;

/* The path cost of a port. */
typedef struct PathCostRow {
  uint32_t index; /* bridge port number */
  uint32_t value; /* 32-bit path cost (IEEE 802.1D clause 17.14) */
} PathCostRow;

/* Room for a byte string: the longest attribute value, the byte after it that keeps what it held, and the
 * terminating zero behind that one. */
#define STPSNMP_STRING_SIZE (CMD_ATTR_VALUE_MAX + 2)

/* The latest value of every scalar object. A failed fetch leaves its field as it was. */
typedef struct ScalarValueRecord {
  char region_name[STPSNMP_STRING_SIZE]; /* IEEE 802.1Q clause 13.8: Configuration Name */
  uint32_t max_instances;
  char pre_standard_digest[STPSNMP_STRING_SIZE];
  uint32_t max_instance_id;
  uint32_t region_revision; /* IEEE 802.1Q clause 13.8: Revision Level */
  uint32_t max_hop_count;
  char config_digest[STPSNMP_STRING_SIZE]; /* IEEE 802.1Q clause 13.8: Configuration Digest */
  int32_t spanning_tree_type;              /* enum stp_mode (platform/stp_protocol.h) */
  int32_t path_cost_mode;                  /* enum stp_path_cost_method, as the following */
  int32_t path_cost_oper_mode;
  int32_t loop_guard_default; /* as fetched: 0 or not; as served: see stpsnmp/values.h */
} ScalarValueRecord;

/* What the stp_dot1d_ conversions (stpsnmp/values.h) fill, field by field: objects of the bridge MIB (RFC
 * 4188). */
typedef struct Dot1dBridgeRecord {
  uint8_t bridge_id[STP_BRIDGE_ID_SIZE];         /* the bridge's own identifier */
  uint8_t designated_root[STP_BRIDGE_ID_SIZE];   /* dot1dStpDesignatedRoot */
  uint8_t designated_bridge[STP_BRIDGE_ID_SIZE]; /* dot1dStpPortDesignatedBridge */
  uint32_t time_since_topology_change;           /* TimeTicks: hundredths of a second */
  uint32_t port_state;                           /* dot1dStpPortState */
  uint8_t designated_port[2];                    /* dot1dStpPortDesignatedPort, high octet first */
} Dot1dBridgeRecord;

#endif
