// Calls of the module that end in the agent library; they go into the fake platform's trace.
#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include "fake_platform.h"
#include "platform/agent_ext.h"

namespace {

std::string dotted(const oid *name, size_t length) {
  std::string text;
  for (size_t i = 0; i < length; ++i) {
    text += "." + std::to_string(name[i]);
  }
  return text;
}

}  // namespace

void snmp_set_detail(const char *detail) { fake::trace("snmp_set_detail(" + fake::quoted(detail) + ")"); }

netsnmp_variable_list *build_varbind(netsnmp_variable_list *list, const void *value, unsigned char type,
                                     size_t value_len, const oid *name, size_t name_len) {
  const auto *const octets = static_cast<const uint8_t *>(value);
  fake::trace("build_varbind(" + std::string(list == nullptr ? "NULL" : "list") + ", " +
              fake::hex(octets, value_len) + ", " + std::to_string(type) + ", " + dotted(name, name_len) +
              ")");
  if (fake::platform().build_varbind_fails) {
    return list;
  }
  snmp_varlist_add_variable(&list, name, name_len, type, value, value_len);
  return list;
}
