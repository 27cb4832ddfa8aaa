/* Searches over spanning trees and ports: from the index that an SNMP request carries to the entry that the
 * spanning-tree process holds.
 *
 * A tree is a VLAN or an MST instance; a port goes by its bridge port number (port id), its interface by its
 * interface index. Physical ports are 129 to 4095, port-channels 4097 to 8191. An entry of the spanning-tree
 * process is found by its keys (enum stp_key) and a command (enum stp_command) of platform/stp_protocol.h.
 * Actions are those of enum cmd_action. Routines that return int return 0 on success and -1 otherwise.
 *
 * A reply that a routine leaves behind `reply` is the caller's, who releases it with cmd_snmp_free_rx_hndl.
 * `reply` itself may be null, where only the index is wanted. */
#ifndef STPSNMP_INDEX_SEARCH_H
#define STPSNMP_INDEX_SEARCH_H

#include <stdint.h>

#include "stpsnmp/export.h"

/* Fetches the entry of an interface, or with `dual` 1 of a tree and an interface; the action GET_NEXT fetches
 * the one behind it, in the process's own order. `*if_index` and, with `dual` 1, `*tree_id` are replaced by
 * the entry's, as far as the reply names them. After -1 nothing is changed, `*reply` included. */
STPSNMP_EXPORT int get_stp_entry_from_if_index(uint32_t action, uint8_t dual, uint32_t index_token,
                                               uint32_t *if_index, uint32_t tree_token, uint32_t *tree_id,
                                               void **reply, uint32_t command);

/* GET: accepts `*port_id` where it stands for a usable interface. Any other action: moves it to the next such
 * port by counting upwards, within physical ports or within port-channels; after -1 it stands where the count
 * ended. Sets both interface indexes to that port's, and `*if_type` to its type (enum if_type). */
STPSNMP_EXPORT int validate_port_id_for_snmp_search(uint32_t action, uint32_t *in_if_index,
                                                    uint32_t *ret_if_index, uint16_t *port_id,
                                                    uint8_t *if_type);

/* The same without a type, except that the next port is the lowest above `*port_id`, of either kind, among
 * the interfaces that the interface manager knows and that `stp_flag` (enum base_port_selector) accepts.
 * After -1 nothing is changed. */
STPSNMP_EXPORT int validate_port_id_for_snmp_search_from_im(uint32_t action, uint32_t *in_if_index,
                                                            uint32_t *ret_if_index, uint16_t *port_id,
                                                            uint8_t stp_flag);

/* That lowest port id above `base_port`; 0 where there is none. */
STPSNMP_EXPORT uint16_t stp_get_next_dot1dportnum(uint16_t base_port, uint8_t stp_flag);

/* Offers the first physical port in place of a port-channel that the spanning-tree process answered with:
 * takes over its entry in the tree, or the one behind it, unless that lies in a later tree. `*reply` is the
 * caller's reply; of that and the new one, the one that is not kept is released. After -1 the caller's is
 * still there. */
STPSNMP_EXPORT int check_and_get_next_stp_physical_entry_for_logical(uint32_t tree_token, uint32_t *tree_id,
                                                                     uint32_t index_token, uint16_t *port_id,
                                                                     uint32_t *if_index, void **reply,
                                                                     uint32_t command);

/* Finds the entry of exactly this tree and port. `*reply` is null before the call, and after -1. */
STPSNMP_EXPORT int get_exact_stp_dual_indices_entry(uint32_t index_token, uint16_t *port_id,
                                                    uint32_t tree_token, uint32_t *tree_id, void **reply,
                                                    uint32_t command);

/* Finds the entry behind this tree and port in SNMP order: by tree, then by port id. `stp_flag` says which
 * ports are candidates. `*reply` as above; after -1 `*port_id` may have moved, and `*tree_id` has not. */
STPSNMP_EXPORT int get_next_stp_dual_indices_entry_from_im(uint32_t index_token, uint16_t *port_id,
                                                           uint32_t tree_token, uint32_t *tree_id,
                                                           void **reply, uint32_t command, uint8_t stp_flag);

#endif
