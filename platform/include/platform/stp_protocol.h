/* The numbers of the spanning-tree process's protocol: its address, what it is asked and what it answers, and
 * what it tells of unasked; and the class under which the module's records stand in the event history. Here
 * they stand, and nowhere else.
 *
 * A request (cmd.h) names a command and has the command's keys; the reply holds attributes. The type of a key
 * or an attribute stands in its token (enum cmd_type): numbers have 32 bits in host byte order, whatever they
 * mean, and a flag is 0 or 1 unless another meaning is named. What the process does not know is left out of
 * the reply, and the manager gets noSuchInstance. A tree is a VLAN in Rapid-PVST mode, and in MST mode an MST
 * instance, 0 being the CIST (IEEE 802.1Q clause 13). */
#ifndef PLATFORM_STP_PROTOCOL_H
#define PLATFORM_STP_PROTOCOL_H

#include <stdint.h>

#include "platform/cmd.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Where the process is asked: the first two arguments of cmd_snmp_req_send_recv. */
#define STP_DESTINATION 0xFE000000U
#define STP_SERVICE 171U

/* What it is asked. Each has GET; those that say so have GET_NEXT as well. */
enum stp_command CMD_ENUM_BASE {
  STP_COMMAND_GLOBAL_SETTINGS = 104,  /* the switch's settings; key: global settings */
  STP_COMMAND_RAPID_PVST_PORTS = 105, /* ports of Rapid-PVST trees; keys: VLAN tree, interface. By
                                       * interface alone, bridge ports in any mode. GET_NEXT */
  STP_COMMAND_MST_PORTS = 111,        /* ports of MST instances; keys: MST tree, MST interface. GET_NEXT. By
                                       * interface alone, bridge ports, in MST mode */
  STP_COMMAND_MST_REGION = 112,       /* the MST region; no key, or MST digests */
  STP_COMMAND_VLAN_TREES = 115,       /* the VLANs' own trees; key: VLAN tree. GET_NEXT */
  STP_COMMAND_PORT_INCONSISTENCIES = 116, /* port VLAN identifier and port type inconsistencies; keys:
                                           * VLAN tree, interface. GET_NEXT */
  STP_COMMAND_ROOT_GUARD = 117,           /* root guard of bridge ports; key: interface. GET_NEXT */
  STP_COMMAND_LOOP_GUARD = 118,           /* loop guard of bridge ports; key: interface */
  STP_COMMAND_PORT_SETTINGS = 119,        /* RSTP and MST settings of bridge ports; key: interface */
  STP_COMMAND_ROOT_INCONSISTENCIES = 120, /* ports that root guard blocks; keys: VLAN tree, with trees of
                                           * either mode, interface. GET_NEXT */
  STP_COMMAND_LOOP_INCONSISTENCIES = 121, /* ports that loop guard blocks; the same */
  STP_COMMAND_MST_INSTANCES = 122,        /* CIST and MST instances; key: MST tree. GET_NEXT */

  /* What the standard's bridge objects are made of (RFC 4188, RFC 4318). A tree is named by VLAN tree or MST
   * tree, whichever the switch's mode has. Without a tree, the default one is meant: the CIST, or the tree of
   * the lowest VLAN that has one. */
  STP_COMMAND_BRIDGE_TREES = 130, /* the bridge in its trees; key: tree, or none. GET_NEXT with a tree of
                                   * either kind: the next tree that runs */
  STP_COMMAND_BRIDGE_PORTS = 131  /* the bridge ports of a tree; keys: tree, or none, and bridge port. In
                                   * the order of bridge ports within the tree; bridge port 0 asks for the
                                   * first. GET_NEXT */
};

/* Keys of requests. A tree is given as a list of one range with one member. */
enum stp_key CMD_ENUM_BASE {
  STP_KEY_GLOBAL_SETTINGS = 0x01020227, /* its value says nothing: send 0 */
  STP_KEY_MST_DIGESTS = 0x010201C0,     /* the same */
  STP_KEY_INTERFACE = 0x0C020105,       /* interface index */
  STP_KEY_MST_INTERFACE = 0x0C02018B,   /* the same, where MST is asked about */
  STP_KEY_VLAN_TREE = 0x130200B4,
  STP_KEY_MST_TREE = 0x13020131,
  STP_KEY_BRIDGE_PORT = 0x140201C1, /* as STP_ATTRIBUTE_BRIDGE_PORT */

  /* Of requests that other modules of the agent make: to change settings of a tree, and of a port in it. */
  STP_KEY_VLAN_TREE_SETTINGS = 0x13020005,
  STP_KEY_MST_TREE_SETTINGS = 0x13020074,
  STP_KEY_VLAN_TREE_PORT_SETTINGS = 0x13020019,
  STP_KEY_MST_TREE_PORT_SETTINGS = 0x13020092
};

/* Attributes of replies. */
enum stp_attribute CMD_ENUM_BASE {
  /* Which row it is that answers. */
  STP_ATTRIBUTE_INTERFACE = 0x0C02A001, /* interface index */
  STP_ATTRIBUTE_TREE = 0x14029001,      /* of a tree */
  STP_ATTRIBUTE_PORT_TREE = 0x1402A006, /* of a port in a tree: that tree */

  /* The switch. */
  STP_ATTRIBUTE_MODE =
      0x0202B001, /* enum stp_mode; in each reply of VLAN trees, too, and in MST mode alone there */
  STP_ATTRIBUTE_PATH_COST_METHOD = 0x1402B00B,      /* enum stp_path_cost_method, as configured */
  STP_ATTRIBUTE_PATH_COST_OPER_METHOD = 0x1402B00C, /* the same, in force */
  STP_ATTRIBUTE_LOOP_GUARD_DEFAULT = 0x0202A01F,    /* 1 on, 0 off */
  STP_ATTRIBUTE_HOPS = 0x14029027,                  /* of the switch: MaxHops (IEEE 802.1Q clause 13);
                                                     * of an MST instance: remainingHops */

  /* The MST region (IEEE 802.1Q clause 13.8). */
  STP_ATTRIBUTE_MST_REGION_NAME = 0x3002B002, /* without a terminator */
  STP_ATTRIBUTE_MST_REGION_REVISION = 0x1402B003,
  STP_ATTRIBUTE_MST_CONFIG_DIGEST = 0x3002B005,       /* 16 octets */
  STP_ATTRIBUTE_MST_PRE_STANDARD_DIGEST = 0x3002B006, /* 16 octets: what older equipment computes */

  /* Trees. */
  STP_ATTRIBUTE_VLAN_TREE_STATE = 0x0000102C,         /* 1: a spanning tree runs on the VLAN, 0: none does */
  STP_ATTRIBUTE_REGIONAL_ROOT_MAC = 0x0F029023,       /* of the CIST, as the two that follow: the Regional
                                                       * Root Identifier's address */
  STP_ATTRIBUTE_REGIONAL_ROOT_PRIORITY = 0x14029024,  /* and its priority, 0 to 65535 */
  STP_ATTRIBUTE_INTERNAL_ROOT_PATH_COST = 0x14029025, /* to the regional root */

  /* Ports, and ports in trees. */
  STP_ATTRIBUTE_GUARD = 0x0202A01A,     /* enum stp_guard, of the kind that is asked about */
  STP_ATTRIBUTE_LINK_TYPE = 0x0202A019, /* enum stp_link_type, as configured */
  STP_ATTRIBUTE_POINT_TO_POINT =
      0x0202A01E, /* operational: 1 yes, 0 shared (IEEE 802.1D clause 6.4.3); absent without a link */
  STP_ATTRIBUTE_PRE_STANDARD_MST = 0x010200AA,  /* 1: always sends what older equipment understands */
  STP_ATTRIBUTE_PATH_COST = 0x1402A008,         /* 32-bit port path cost */
  STP_ATTRIBUTE_PORT_ROLE = 0x0202A003,         /* enum stp_port_role */
  STP_ATTRIBUTE_EDGE = 0x0202A01D,              /* operEdge: 1 yes, 0 no, as the four that follow */
  STP_ATTRIBUTE_BOUNDARY = 0x0202A028,          /* of the MST region */
  STP_ATTRIBUTE_PEER = 0x0202A027,              /* the neighbour takes part in spanning tree */
  STP_ATTRIBUTE_DISPUTE = 0x0202A02D,           /* the neighbour does not hear what is sent to it */
  STP_ATTRIBUTE_PRE_STANDARD_PEER = 0x0202A02E, /* the neighbour is older equipment */
  STP_ATTRIBUTE_INCONSISTENCY = 0x1402A015,     /* root and loop: 1; port: enum stp_port_inconsistency */

  /* The bridge in a tree. An identifier of a bridge is a priority of 16 bits, with the tree's number in its
   * low twelve bits where the bridge puts it there, and an address (IEEE 802.1D clause 9.2.5): one is not
   * there without the other. Times are in hundredths of a second. */
  STP_ATTRIBUTE_BRIDGE_PRIORITY = 0x14029040, /* of its own identifier in the tree */
  STP_ATTRIBUTE_BRIDGE_MAC = 0x0F029041,
  STP_ATTRIBUTE_ROOT_PRIORITY = 0x14029042, /* of the tree's root */
  STP_ATTRIBUTE_ROOT_MAC = 0x0F029043,
  STP_ATTRIBUTE_ROOT_COST = 0x14029044, /* to that root */
  STP_ATTRIBUTE_ROOT_PORT = 0x14029045, /* a bridge port, 0 at the root */
  STP_ATTRIBUTE_MAX_AGE = 0x14029046,   /* in force, as the two that follow */
  STP_ATTRIBUTE_HELLO_TIME = 0x14029047,
  STP_ATTRIBUTE_FORWARD_DELAY = 0x14029048,
  STP_ATTRIBUTE_BRIDGE_MAX_AGE =
      0x14029049, /* its own, as the two that follow: what it would use as the root */
  STP_ATTRIBUTE_BRIDGE_HELLO_TIME = 0x1402904A,
  STP_ATTRIBUTE_BRIDGE_FORWARD_DELAY = 0x1402904B,
  STP_ATTRIBUTE_TX_HOLD_COUNT = 0x1402904C,     /* IEEE 802.1D clause 17.13.12 */
  STP_ATTRIBUTE_PROTOCOL_VERSION = 0x0202904D,  /* enum stp_protocol_version */
  STP_ATTRIBUTE_TOPOLOGY_CHANGES = 0x1402904E,  /* how many there were */
  STP_ATTRIBUTE_TOPOLOGY_AGE = 0x1402904F,      /* time since the latest one, modulo 2^32 */
  STP_ATTRIBUTE_BRIDGE_PORT_COUNT = 0x14029050, /* bridge ports of the tree */

  /* A bridge port in a tree. */
  STP_ATTRIBUTE_BRIDGE_PORT = 0x1402A040,   /* its number as the bridge itself has it in port identifiers, or,
                                             * where no bridge has such a number, its bridge port number */
  STP_ATTRIBUTE_IF_MIB_INDEX = 0x1402A041,  /* ifIndex (RFC 2863) */
  STP_ATTRIBUTE_PORT_PRIORITY = 0x1402A042, /* 0 to 255 */
  STP_ATTRIBUTE_PORT_STATE = 0x0202A043,    /* enum stp_port_state; disabled without a link */
  STP_ATTRIBUTE_DESIGNATED_ROOT_PRIORITY = 0x1402A044, /* of the segment that it attaches to */
  STP_ATTRIBUTE_DESIGNATED_ROOT_MAC = 0x0F02A045,
  STP_ATTRIBUTE_DESIGNATED_COST = 0x1402A046,
  STP_ATTRIBUTE_DESIGNATED_BRIDGE_PRIORITY = 0x1402A047,
  STP_ATTRIBUTE_DESIGNATED_BRIDGE_MAC = 0x0F02A048,
  STP_ATTRIBUTE_DESIGNATED_PORT = 0x1402A049,     /* a port identifier of 16 bits */
  STP_ATTRIBUTE_FORWARD_TRANSITIONS = 0x1402A04A, /* from learning to forwarding */
  STP_ATTRIBUTE_ADMIN_EDGE = 0x0202A04B           /* as configured: 1 yes, 0 no */
};

/* Values of attributes. */
enum stp_mode CMD_ENUM_BASE { STP_MODE_MST = 4, STP_MODE_RAPID_PVST = 5 };
enum stp_path_cost_method CMD_ENUM_BASE {
  STP_PATH_COST_SHORT = 1, /* 16 bits */
  STP_PATH_COST_LONG = 2   /* 32 bits */
};
enum stp_guard CMD_ENUM_BASE {
  STP_GUARD_ENABLED = 1,
  STP_GUARD_DISABLED = 2,
  STP_GUARD_DEFAULT = 3 /* of loop guard: as the switch's default says */
};
enum stp_link_type CMD_ENUM_BASE {
  STP_LINK_POINT_TO_POINT = 1,
  STP_LINK_SHARED = 2,
  STP_LINK_AUTO = 3 /* as the link turns out */
};
enum stp_port_role CMD_ENUM_BASE {
  STP_ROLE_DISABLED = 1,
  STP_ROLE_ROOT = 2,
  STP_ROLE_DESIGNATED = 3,
  STP_ROLE_ALTERNATE = 4,
  STP_ROLE_BACKUP = 5
};

enum stp_port_state CMD_ENUM_BASE {
  STP_PORT_STATE_DISABLED = 0,
  STP_PORT_STATE_BLOCKING = 1, /* what IEEE 802.1D-2004 calls discarding */
  STP_PORT_STATE_LISTENING = 2,
  STP_PORT_STATE_LEARNING = 3,
  STP_PORT_STATE_FORWARDING = 4
};

/* What a bridge sends: IEEE 802.1D clause 9.3, IEEE 802.1Q clause 14. */
enum stp_protocol_version CMD_ENUM_BASE {
  STP_PROTOCOL_VERSION_STP = 0,
  STP_PROTOCOL_VERSION_RSTP = 2,
  STP_PROTOCOL_VERSION_MSTP = 3
};

/* A port's inconsistencies, added up. */
enum stp_port_inconsistency CMD_ENUM_BASE {
  STP_INCONSISTENT_PVID = 1, /* the neighbour's port VLAN identifier is another one */
  STP_INCONSISTENT_TYPE = 2  /* the neighbour's port is not of the same type */
};

/* What the process tells of unasked: classes of notifications (agent_ext.h). */
enum stp_notification CMD_ENUM_BASE {
  STP_NOTIFICATION_PORT_INCONSISTENCY = 17421, /* port VLAN identifier or port type */
  STP_NOTIFICATION_LOOP_INCONSISTENCY = 17422,
  STP_NOTIFICATION_ROOT_INCONSISTENCY = 17423,
  STP_NOTIFICATION_NEW_ROOT = 17424,        /* the bridge has become a tree's root */
  STP_NOTIFICATION_TOPOLOGY_CHANGE = 17425, /* a port of a tree begins to forward, or ceases and blocks */
  STP_NOTIFICATION_TREES = 17426 /* trees have come or gone; each subscription is followed by one */
};

/* The payload of inconsistencies (xport.h): words in network byte order. */
struct stp_inconsistency_payload {
  uint32_t tree;
  uint32_t if_index;
  uint32_t state; /* root and loop: enum stp_inconsistency_change; port: its inconsistencies as they are now,
                   * enum stp_port_inconsistency, in the first octet as it is sent, the others being 0 */
  uint32_t mode;  /* enum stp_mode */
};

enum stp_inconsistency_change CMD_ENUM_BASE {
  STP_INCONSISTENCY_APPEARED = 1,
  STP_INCONSISTENCY_VANISHED = 2
};

/* The payload of the others: words in network byte order. Of STP_NOTIFICATION_TREES all are 0. */
struct stp_tree_payload {
  uint32_t tree;
  uint32_t bridge_port;  /* as STP_ATTRIBUTE_BRIDGE_PORT: through which the change came; 0: nobody knows */
  uint32_t if_mib_index; /* of that port; the same */
  uint32_t mode;         /* enum stp_mode */
};

/* The class of the module's records in the event history (evhist.h). */
#define STP_EVENT_CLASS 0x730000U

#ifdef __cplusplus
}
static_assert(sizeof(struct stp_inconsistency_payload) == 16 && sizeof(struct stp_tree_payload) == 16,
              "payloads have no padding");
#else
_Static_assert(sizeof(struct stp_inconsistency_payload) == 16 && sizeof(struct stp_tree_payload) == 16,
               "payloads have no padding");
#endif

#endif
