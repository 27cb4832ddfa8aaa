/* Conversions from the spanning-tree process's values to those that the objects carry. */
#ifndef STPSNMP_VALUES_H
#define STPSNMP_VALUES_H

#include "export.h"
#include "scalars.h"

/* Rewrites the record's loop guard default: not 0 becomes 1 (enabled), 0 becomes 2 (disabled). */
STPSNMP_EXPORT void stp_loopguard_global_default_mode_2_snmp_val(ScalarValueRecord *record);

#endif
