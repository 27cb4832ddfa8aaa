/* The agent library's headers, in the one order in which they compile. */
#ifndef STPSNMP_AGENT_H
#define STPSNMP_AGENT_H

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <net-snmp/agent/net-snmp-agent-includes.h>

#endif
