// Lookup handlers of tables that are registered and do not answer yet: no such instance, whatever is asked.
#include "lookup_handlers.h"

#define UNSERVED_TABLE(handler) \
  u_char *handler(struct variable *, oid *, size_t *, int, size_t *, WriteMethod **) { return nullptr; }

UNSERVED_TABLE(get_stpxLoopGuardConfigTable)
UNSERVED_TABLE(get_stpxRPVSTPortTable)
UNSERVED_TABLE(get_stpxRSTPPortRoleTable)
UNSERVED_TABLE(get_stpxRSTPPortTable)
UNSERVED_TABLE(get_stpxSMSTPortTable)
