/* The lookup handlers that the object table names.
 *
 * The agent calls one for every variable of a request that falls on one of its entries: `vp` is the entry,
 * with the full OID in `vp->name`; `name` and `length` (in arcs) hold the request's OID and, after an answer,
 * the instance's; `exact` is 1 for a GET and 0 for a GETNEXT. It returns the value and its length in bytes,
 * valid until the next call, or null where there is no such instance or, for a GETNEXT, no further one under
 * this entry. `write_method` is never set: every object is read-only. */
#ifndef STPSNMP_LOOKUP_HANDLERS_H
#define STPSNMP_LOOKUP_HANDLERS_H

#include "stpsnmp/agent.h"
#include "stpsnmp/export.h"

STPSNMP_EXPORT FindVarMethod get_vantrelStpExtensionsMIB;
STPSNMP_EXPORT FindVarMethod get_stpxInconsistencyTable;
STPSNMP_EXPORT FindVarMethod get_stpxLongStpPortPathCostTable;
STPSNMP_EXPORT FindVarMethod get_stpxLoopGuardConfigTable;
STPSNMP_EXPORT FindVarMethod get_stpxLoopInconsistencyTable;
STPSNMP_EXPORT FindVarMethod get_stpxPVSTVlanTable;
STPSNMP_EXPORT FindVarMethod get_stpxRootGuardConfigTable;
STPSNMP_EXPORT FindVarMethod get_stpxRootInconsistencyTable;
STPSNMP_EXPORT FindVarMethod get_stpxRPVSTPortTable;
STPSNMP_EXPORT FindVarMethod get_stpxRSTPPortRoleTable;
STPSNMP_EXPORT FindVarMethod get_stpxRSTPPortTable;
STPSNMP_EXPORT FindVarMethod get_stpxSMSTInstanceTable;
STPSNMP_EXPORT FindVarMethod get_stpxSMSTPortTable;

#endif
