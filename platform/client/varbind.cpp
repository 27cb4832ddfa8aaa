// agent_ext.h: lists of variable bindings.
#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>

#include "varbind.h"

#include "export.h"
#include "platform/agent_ext.h"

namespace stpplatform {
namespace {

constinit bool is_complete = true;

}  // namespace

void begin_bindings() { is_complete = true; }

bool bindings_are_complete() { return is_complete; }

}  // namespace stpplatform

extern "C" STPPLATFORM_EXPORT netsnmp_variable_list *build_varbind(netsnmp_variable_list *list,
                                                                   const void *value, unsigned char type,
                                                                   size_t value_len, const oid *name,
                                                                   size_t name_len) {
  if (name != nullptr && name_len > 0 && name_len <= MAX_OID_LEN && (value != nullptr || value_len == 0) &&
      snmp_varlist_add_variable(&list, name, name_len, type, value, value_len) == nullptr) {
    stpplatform::is_complete = false;
  }
  return list;
}
