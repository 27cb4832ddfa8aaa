/* The object table: every object under the module's root, with the handler that answers it. */
#ifndef STPSNMP_OBJECT_TABLE_H
#define STPSNMP_OBJECT_TABLE_H

#include "stpsnmp/agent.h"
#include "stpsnmp/export.h"

#define STP_EXTENSIONS_MIB_OBJECTS 46
#define STP_EXTENSIONS_MIB_ROOT_LENGTH 9

STPSNMP_EXPORT const oid stp_extensions_mib_variables_oid[STP_EXTENSIONS_MIB_ROOT_LENGTH];
STPSNMP_EXPORT const struct variable7 stp_extensions_mib_variables[STP_EXTENSIONS_MIB_OBJECTS];

#endif
