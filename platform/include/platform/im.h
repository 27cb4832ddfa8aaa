/* Interface manager: the switch's interfaces by interface index (ifIndex, RFC 2863), their types
 * and states. */
#ifndef PLATFORM_IM_H
#define PLATFORM_IM_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Interface types. */
enum if_type { IF_TYPE_PORT_CHANNEL = 22, IF_TYPE_PHYSICAL = 26 };

/* Operational states, numbered as ifOperStatus (RFC 2863). */
enum if_oper_status { IF_OPER_UP = 1, IF_OPER_DOWN = 2 };

/* One question for the operational state of an interface, and its answer. */
struct im_oper_status_entry {
  uint32_t if_index; /* set by the caller */
  uint8_t reserved_1[16];
  uint8_t oper_status; /* set by the interface manager: one of enum if_oper_status */
  uint8_t reserved_2[515];
};

/* The interface that follows `if_index` in ascending order; 0 asks for the first one. `*next` is 0 at the
 * end. Returns 0 on success; another code, with `*next` left as it was, when the switch cannot be asked. */
int im_get_next_ifindex(uint32_t if_index, uint32_t *next);

/* Fills the oper_status of `count` entries. Returns non-zero when one of the interfaces does not exist. */
int im_get_ifindex_oper_status_list(struct im_oper_status_entry *entries, uint32_t count);

/* The type of an interface, read from its index. Returns non-zero, with `*type` left as it was, for an index
 * of no known type. */
int if_index_get_type(uint32_t if_index, uint8_t *type);

/* Fills in the interface index of port-channel `channel`, whether or not it exists. Returns non-zero for a
 * channel number that none can have. */
int if_index_eth_port_channel_init(uint32_t *if_index, uint32_t channel);

/* Which ports check_if_valid_base_port_ifindex accepts. */
enum base_port_selector {
  BASE_PORT_ALL = 0,   /* every bridge port; members of a port-channel are not bridge ports of their own */
  BASE_PORT_ACTIVE = 1 /* those of them that are operationally up, and so have a place in a tree */
};

/* Non-zero when the interface is a bridge port that the selector accepts. */
int check_if_valid_base_port_ifindex(uint32_t if_index, uint8_t selector);

#ifdef __cplusplus
}
static_assert(sizeof(struct im_oper_status_entry) == 536 &&
                  offsetof(struct im_oper_status_entry, oper_status) == 20,
              "oper status entry layout");
#else
_Static_assert(sizeof(struct im_oper_status_entry) == 536 &&
                   offsetof(struct im_oper_status_entry, oper_status) == 20,
               "oper status entry layout");
#endif

#endif
