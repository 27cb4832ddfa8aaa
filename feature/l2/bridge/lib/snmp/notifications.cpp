#include "notifications.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstring>

#include "diagnostics.h"
#include "objects.h"
#include "platform/stp_protocol.h"
#include "platform/xport.h"
#include "stpsnmp/agent.h"

namespace stpbridge {
namespace {

using stpsnmp::diagnostics::kTrace;
using stpsnmp::diagnostics::shown;

// Below dot1dBridge.
constexpr oid kNewRoot[] = {0, 1};
constexpr oid kTopologyChange[] = {0, 2};
constexpr oid kBasePort[] = {kBaseGroup, 4, 1, 1};
constexpr oid kBasePortIfIndex[] = {kBaseGroup, 4, 1, 2};

template <size_t N>
oid *write_name(const oid (&arcs)[N], oid *out) {
  return std::copy_n(arcs, N, std::copy_n(kBridgeMib, kBridgeMibLength, out));
}

// A column's instance at a port, where the value is known.
netsnmp_variable_list *add_known(netsnmp_variable_list *bindings, const oid (&column)[kColumnArcs],
                                 uint32_t port, uint32_t value) {
  if (port == 0 || value == 0) {
    return bindings;
  }
  oid name[kBridgeMibLength + kColumnArcs + 1];
  oid *const instance = write_name(column, name);
  *instance = port;
  return build_varbind(bindings, &value, ASN_INTEGER, sizeof value, name, std::size(name));
}

template <size_t N>
netsnmp_variable_list *handle(const char *handler, void *message, const oid (&trap)[N], oid *trap_oid,
                              size_t *trap_oid_len, int *status) {
  *status = 0;
  const void *const octets = message != nullptr ? xport_payload_get(message) : nullptr;
  if (octets == nullptr) {
    return nullptr;
  }
  stp_tree_payload payload;
  std::memcpy(&payload, octets, sizeof payload);
  const uint32_t port = ntohl(payload.bridge_port);
  const uint32_t if_mib_index = ntohl(payload.if_mib_index);
  STP_LOG(kTrace, "%s: tree %d, bridge port %d, interface %d\n", handler, shown(ntohl(payload.tree)),
          shown(port), shown(if_mib_index));
  *trap_oid_len = static_cast<size_t>(write_name(trap, trap_oid) - trap_oid);
  *status = 1;
  return add_known(add_known(nullptr, kBasePort, port, port), kBasePortIfIndex, port, if_mib_index);
}

}  // namespace

netsnmp_variable_list *handle_new_root(void *message, oid *trap_oid, size_t *trap_oid_len, int *status) {
  return handle(__func__, message, kNewRoot, trap_oid, trap_oid_len, status);
}

netsnmp_variable_list *handle_topology_change(void *message, oid *trap_oid, size_t *trap_oid_len,
                                              int *status) {
  return handle(__func__, message, kTopologyChange, trap_oid, trap_oid_len, status);
}

}  // namespace stpbridge
