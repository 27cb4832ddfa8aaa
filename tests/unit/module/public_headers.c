/* The module's public headers can be used from C. */
#include "stpsnmp/context.h"
#include "stpsnmp/index_search.h"
#include "stpsnmp/rows.h"
#include "stpsnmp/scalars.h"
#include "stpsnmp/stp_extensions_mib.h"
#include "stpsnmp/values.h"

#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "stpsnmp/notifications.h"
#include "stpsnmp/object_table.h"
#include "stpsnmp/port_state.h"

int public_headers_compile_as_c(void);
int public_headers_compile_as_c(void) { return STP_EXTENSIONS_MIB_OBJECTS; }
