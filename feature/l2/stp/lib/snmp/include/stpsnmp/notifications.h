/* The three inconsistency notifications: handlers of the notification service (platform/agent_ext.h). */
#ifndef STPSNMP_NOTIFICATIONS_H
#define STPSNMP_NOTIFICATIONS_H

#include "platform/agent_ext.h"
#include "stpsnmp/export.h"

STPSNMP_EXPORT netsnmp_variable_list *handle_noti_stpxInconsistencyUpdate(void *message, oid *trap_oid,
                                                                          size_t *trap_oid_len, int *status);
STPSNMP_EXPORT netsnmp_variable_list *handle_noti_stpxLoopInconsistencyUpdate(void *message, oid *trap_oid,
                                                                              size_t *trap_oid_len,
                                                                              int *status);
STPSNMP_EXPORT netsnmp_variable_list *handle_noti_stpxRootInconsistencyUpdate(void *message, oid *trap_oid,
                                                                              size_t *trap_oid_len,
                                                                              int *status);

#endif
