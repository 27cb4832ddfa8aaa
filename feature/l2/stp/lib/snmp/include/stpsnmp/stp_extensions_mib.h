/* The module's entry and exit, which the agent finds by name (dlmod stp_extensions_mib ...). */
#ifndef STPSNMP_STP_EXTENSIONS_MIB_H
#define STPSNMP_STP_EXTENSIONS_MIB_H

#include "stpsnmp/export.h"

/* Registers the objects, subscribes to the three notification classes, and enables those traps that the
 * persisted setting names. */
STPSNMP_EXPORT void init_stp_extensions_mib(void);

/* Takes everything back. Returns what the last unsubscription returned. */
STPSNMP_EXPORT int deinit_stp_extensions_mib(void);

#endif
