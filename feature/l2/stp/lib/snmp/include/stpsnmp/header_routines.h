/* The tables' header routines: what a lookup handler does before it picks its column.
 *
 * `vp_name` and `vp_namelen` (in arcs) are the column's registered OID; `name` and `length` hold the
 * request's OID, with room for MAX_OID_LEN arcs, and after a success the answered row's: the column and its
 * index. `exact` is 1 for a GET and 0 for a GETNEXT. Return 0 with `*row` filled; -1 or the command library's
 * code (enum cmd_result), with `*row` not to be used, where there is no such row or it cannot be fetched. */
#ifndef STPSNMP_HEADER_ROUTINES_H
#define STPSNMP_HEADER_ROUTINES_H

#include "stpsnmp/agent.h"
#include "stpsnmp/export.h"
#include "stpsnmp/rows.h"

STPSNMP_EXPORT int header_stpxInconsistencyTable(const oid *vp_name, size_t vp_namelen, oid *name,
                                                 size_t *length, int exact, InconsistencyRow *row);
STPSNMP_EXPORT int header_stpxLoopGuardConfigTable(const oid *vp_name, size_t vp_namelen, oid *name,
                                                   size_t *length, int exact, LoopGuardConfigRow *row);
STPSNMP_EXPORT int header_stpxLoopInconsistencyTable(const oid *vp_name, size_t vp_namelen, oid *name,
                                                     size_t *length, int exact, InconsistencyRow *row);
STPSNMP_EXPORT int header_stpxPVSTVlanTable(const oid *vp_name, size_t vp_namelen, oid *name, size_t *length,
                                            int exact, PvstVlanRow *row);
STPSNMP_EXPORT int header_stpxRootGuardConfigTable(const oid *vp_name, size_t vp_namelen, oid *name,
                                                   size_t *length, int exact, RootGuardConfigRow *row);
STPSNMP_EXPORT int header_stpxRootInconsistencyTable(const oid *vp_name, size_t vp_namelen, oid *name,
                                                     size_t *length, int exact, InconsistencyRow *row);

STPSNMP_EXPORT int header_stpxRPVSTPortTable(const oid *vp_name, size_t vp_namelen, oid *name, size_t *length,
                                             int exact, RpvstPortRow *row);
STPSNMP_EXPORT int header_stpxRSTPPortRoleTable(const oid *vp_name, size_t vp_namelen, oid *name,
                                                size_t *length, int exact, RstpPortRoleRow *row);

/* Works, although the table itself does not answer. A port without a path cost is served with 0. */
STPSNMP_EXPORT int header_stpxLongStpPortPathCostTable(const oid *vp_name, size_t vp_namelen, oid *name,
                                                       size_t *length, int exact, PathCostRow *row);

/* `magic` says which column the row is wanted for (stpsnmp/object_table.h); fields of other columns are left
 * cleared. The request's OID may be rewritten without success. */
STPSNMP_EXPORT int header_stpxSMSTInstanceTable(const oid *vp_name, size_t vp_namelen, oid *name,
                                                size_t *length, int exact, SmstInstanceRow *row, int magic);

/* `magic` likewise, except that columns which one query serves are filled together. Without a value column of
 * that magic, the answer is a cleared row with the index that the request names. */
STPSNMP_EXPORT int header_stpxRSTPPortTable(const oid *vp_name, size_t vp_namelen, oid *name, size_t *length,
                                            int exact, RstpPortRow *row, int magic);
STPSNMP_EXPORT int header_stpxSMSTPortTable(const oid *vp_name, size_t vp_namelen, oid *name, size_t *length,
                                            int exact, SmstPortRow *row, int magic);

/* Splits a VLAN bitmap into a row's two columns. A bitmap of another size than STP_VLAN_BITMAP_SIZE is logged
 * and leaves the row as it was. */
STPSNMP_EXPORT void stp_bmp_to_SMSTInstanceVlansMapped(SmstInstanceRow *row,
                                                       const struct stp_vlan_bmp *vlans);

#endif
