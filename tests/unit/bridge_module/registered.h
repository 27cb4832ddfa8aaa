// What is registered in the real agent library.
#pragma once

#include <algorithm>
#include <string>

#include "stpsnmp/agent.h"

namespace registered {

inline void prepare_agent() {
  snmp_disable_log();
  netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_ROLE, 1);
  init_agent("bridge_module_test");
}

// The name under which a group is registered in a context, empty where it is not.
inline std::string group(oid group, const std::string &context) {
  oid id[] = {1, 3, 6, 1, 2, 1, 17, group};
  const netsnmp_subtree *subtree = netsnmp_subtree_find(id, std::size(id), nullptr, context.c_str());
  if (subtree == nullptr || snmp_oid_compare(subtree->name_a, subtree->namelen, id, std::size(id)) != 0) {
    return "";
  }
  return subtree->label_a;
}

// Both groups in a context, or none of them; "half" for one alone.
inline std::string both(const std::string &context) {
  const std::string base = group(1, context);
  const std::string stp = group(2, context);
  if (base.empty() && stp.empty()) {
    return "none";
  }
  return base == "dot1dBase" && stp == "dot1dStp" ? "both" : "half";
}

}  // namespace registered
