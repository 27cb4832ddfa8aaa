// The one call of the agent library that lookup handlers make beside their answer; it goes into the fake
// platform's trace.
#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include "fake_platform.h"

void snmp_set_detail(const char *detail) { fake::trace("snmp_set_detail(" + fake::quoted(detail) + ")"); }
