// What is registered in the real agent library.
#pragma once

#include <string>
#include <vector>

#include "stpsnmp/agent.h"

namespace registered {

inline void prepare_agent() {
  snmp_disable_log();
  netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_ROLE, 1);
  init_agent("bridge_module_test");
}

// The name under which what is below dot1dBridge is registered in a context, empty where it is not.
inline std::string name_of(const std::vector<oid> &below, const std::string &context) {
  std::vector<oid> id{1, 3, 6, 1, 2, 1, 17};
  id.insert(id.end(), below.begin(), below.end());
  const netsnmp_subtree *subtree = netsnmp_subtree_find(id.data(), id.size(), nullptr, context.c_str());
  if (subtree == nullptr || snmp_oid_compare(subtree->name_a, subtree->namelen, id.data(), id.size()) != 0) {
    return "";
  }
  return subtree->label_a;
}

// The names under which dot1dBridge itself and its two groups are registered in a context, one after the
// other.
inline std::string names(const std::string &context) {
  return name_of({}, context) + name_of({1}, context) + name_of({2}, context);
}

}  // namespace registered
