#include "registration.h"

#include <algorithm>
#include <cstring>

#include "dispatch.h"
#include "objects.h"
#include "stpsnmp/agent.h"

namespace stpbridge {
namespace {

constexpr size_t kGroupLength = kBridgeMibLength + 1;

// The agent's functions take OIDs as mutable and only read them, so they get a copy.
struct GroupId {
  oid arcs[kGroupLength];

  explicit GroupId(oid group) {
    std::copy_n(kBridgeMib, kBridgeMibLength, arcs);
    arcs[kBridgeMibLength] = group;
  }
};

const char *name_of(oid group) { return group == kBaseGroup ? "dot1dBase" : "dot1dStp"; }

bool register_group(oid group, const char *context) {
  const GroupId id(group);
  netsnmp_handler_registration *const registration = netsnmp_create_handler_registration(
      name_of(group), answer_group, id.arcs, kGroupLength, HANDLER_CAN_RONLY);
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

void unregister_group(oid group, const char *context) {
  GroupId id(group);
  unregister_mib_context(id.arcs, kGroupLength, DEFAULT_MIB_PRIORITY, 0, 0, context);
}

}  // namespace

bool register_groups(const char *context) {
  if (!register_group(kBaseGroup, context)) {
    return false;
  }
  if (!register_group(kStpGroup, context)) {
    unregister_group(kBaseGroup, context);
    return false;
  }
  return true;
}

void unregister_groups(const char *context) {
  unregister_group(kBaseGroup, context);
  unregister_group(kStpGroup, context);
}

}  // namespace stpbridge
