// The number of a manager's session, from its transport address and user.
#pragma once

#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>

#include <cstdint>

namespace stpplatform {

// Never 0.
uint32_t session_number(const netsnmp_pdu &pdu, const char *user);

}  // namespace stpplatform
