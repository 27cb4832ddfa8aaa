/* The module's public headers can be used from C. */
#include "context.h"
#include "index_search.h"
#include "rows.h"
#include "scalars.h"
#include "stp_extensions_mib.h"
#include "values.h"

#include "header_routines.h"
#include "lookup_handlers.h"
#include "notifications.h"
#include "object_table.h"
#include "port_state.h"

int public_headers_compile_as_c(void);
int public_headers_compile_as_c(void) { return STP_EXTENSIONS_MIB_OBJECTS; }
