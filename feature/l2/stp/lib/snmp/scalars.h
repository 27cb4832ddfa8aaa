/* The scalar objects: their value record, and one getter for each that fetches it from the spanning-tree
 * process. */
#ifndef STPSNMP_SCALARS_H
#define STPSNMP_SCALARS_H

#include <stdint.h>

#include "export.h"
#include "platform/cmd.h"

/* Room for a byte string: the longest attribute value, the byte after it that keeps what it held, and the
 * terminating zero behind that one. */
#define STPSNMP_STRING_SIZE (CMD_ATTR_VALUE_MAX + 2)

/* The latest value of every scalar object. A failed fetch leaves its field as it was. */
typedef struct ScalarValueRecord {
  char region_name[STPSNMP_STRING_SIZE]; /* IEEE 802.1Q clause 13.8: Configuration Name */
  uint32_t max_instances;
  char pre_standard_digest[STPSNMP_STRING_SIZE];
  uint32_t max_instance_id;
  uint32_t region_revision; /* IEEE 802.1Q clause 13.8: Revision Level */
  uint32_t max_hop_count;
  char config_digest[STPSNMP_STRING_SIZE]; /* IEEE 802.1Q clause 13.8: Configuration Digest */
  int32_t spanning_tree_type;              /* 4: MST, 5: Rapid-PVST */
  int32_t path_cost_mode;
  int32_t path_cost_oper_mode;
  int32_t loop_guard_default; /* as fetched: 0 or not; as served: see values.h */
} ScalarValueRecord;

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
