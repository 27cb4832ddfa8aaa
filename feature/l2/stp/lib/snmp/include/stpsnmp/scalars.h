/* The scalar objects: one getter for each that fetches its value from the spanning-tree process. */
#ifndef STPSNMP_SCALARS_H
#define STPSNMP_SCALARS_H

#include "stpsnmp/export.h"
#include "stpsnmp/rows.h"

/* Getters. Return 0 with the record's field set; -1 or the command library's code (enum cmd_result)
 * otherwise. */
STPSNMP_EXPORT int get_stpxMSTRegionName(ScalarValueRecord *record);
STPSNMP_EXPORT int get_stpxSMSTMaxInstances(ScalarValueRecord *record);
STPSNMP_EXPORT int get_stpxSMSTConfigPreStandardDigest(ScalarValueRecord *record);
STPSNMP_EXPORT int get_stpxSMSTMaxInstanceID(ScalarValueRecord *record);
STPSNMP_EXPORT int get_stpxSMSTRegionRevision(ScalarValueRecord *record);
STPSNMP_EXPORT int get_stpxSMSTMaxHopCount(ScalarValueRecord *record);
STPSNMP_EXPORT int get_stpxSMSTConfigDigest(ScalarValueRecord *record);
STPSNMP_EXPORT int get_stpxSpanningTreeType(ScalarValueRecord *record);
STPSNMP_EXPORT int get_stpxSpanningTreePathCostMode(ScalarValueRecord *record);
STPSNMP_EXPORT int get_stpxSpanningTreePathCostOperMode(ScalarValueRecord *record);
STPSNMP_EXPORT int get_stpxLoopGuardGlobalDefaultMode(ScalarValueRecord *record);

/* Kept for callers that link against them; they fetch nothing and return 0. */
STPSNMP_EXPORT int get_stpxMSTMaxInstanceNumber(void);
STPSNMP_EXPORT int get_stpxMSTMaxHopCount(void);
STPSNMP_EXPORT int get_stpxMSTRegionRevision(void);

#endif
