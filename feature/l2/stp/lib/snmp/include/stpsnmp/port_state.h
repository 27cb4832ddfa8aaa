/* What the platform knows of a port, as the searches for rows ask for it.
 *
 * Return 0 on success, and STP_PORT_STATE_UNKNOWN where the platform cannot tell. */
#ifndef STPSNMP_PORT_STATE_H
#define STPSNMP_PORT_STATE_H

#include <stdint.h>

#include "stpsnmp/export.h"

#define STP_PORT_STATE_UNKNOWN 0x40DD0001

/* Tells the operational state of an interface (enum if_oper_status), which stays as it was after a failure.
 */
STPSNMP_EXPORT int stp_get_port_oper_state(uint32_t if_index, uint32_t *state);

/* Tells whether a port is a member of a port-channel: 1, or 0, also after a failure. A null `is_member` is
 * refused. */
STPSNMP_EXPORT int stp_is_member_port_of_pc(uint32_t if_index, uint32_t *is_member);

#endif
