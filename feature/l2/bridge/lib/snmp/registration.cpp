#include "registration.h"

#include <algorithm>
#include <cstring>

#include "dispatch.h"
#include "objects.h"
#include "stpsnmp/agent.h"

namespace stpbridge {
namespace {

constexpr char kDefaultContext[] = "";

// The agent's functions take OIDs as mutable and only read them, so they get a copy.
struct Root {
  const char *name;
  size_t length;
  oid arcs[kBridgeMibLength + 1];
};

Root bridge_mib() {
  Root root{"dot1dBridge", kBridgeMibLength, {}};
  std::copy_n(kBridgeMib, kBridgeMibLength, root.arcs);
  return root;
}

Root group(const char *name, oid arc) {
  Root root = bridge_mib();
  root.name = name;
  root.arcs[root.length++] = arc;
  return root;
}

Root base() { return group("dot1dBase", kBaseGroup); }
Root stp() { return group("dot1dStp", kStpGroup); }

bool enter(Root root, const char *context) {
  netsnmp_handler_registration *const registration = netsnmp_create_handler_registration(
      root.name, answer_requests, root.arcs, root.length, HANDLER_CAN_RONLY);
  if (registration == nullptr) {
    return false;
  }
  registration->contextName = strdup(context);
  if (registration->contextName == nullptr) {
    netsnmp_handler_registration_free(registration);
    return false;
  }
  // The agent frees what it refuses.
  return netsnmp_register_handler(registration) == MIB_REGISTERED_OK;
}

void remove(Root root, const char *context) {
  unregister_mib_context(root.arcs, root.length, DEFAULT_MIB_PRIORITY, 0, 0, context);
}

}  // namespace

bool register_default_context() {
  if (!enter(base(), kDefaultContext)) {
    return false;
  }
  if (!enter(stp(), kDefaultContext)) {
    remove(base(), kDefaultContext);
    return false;
  }
  return true;
}

void unregister_default_context() {
  remove(base(), kDefaultContext);
  remove(stp(), kDefaultContext);
}

bool register_context(const char *name) { return enter(bridge_mib(), name); }

void unregister_context(const char *name) { remove(bridge_mib(), name); }

}  // namespace stpbridge
