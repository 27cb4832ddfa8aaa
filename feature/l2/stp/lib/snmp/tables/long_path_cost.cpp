// Long path cost table: registered, and deliberately without an answer.
#include "lookup_handlers.h"

u_char *get_stpxLongStpPortPathCostTable(struct variable *, oid *, size_t *, int, size_t *, WriteMethod **) {
  return nullptr;
}
