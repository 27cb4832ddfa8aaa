// What the agent calls when it loads and unloads the module (dlmod stp_bridge_mib PATH).
#pragma once

#include "stpsnmp/export.h"

STPSNMP_EXPORT void init_stp_bridge_mib(void);
STPSNMP_EXPORT int deinit_stp_bridge_mib(void);
