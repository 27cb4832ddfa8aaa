#include "stpsnmp/notifications.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstring>

#include "diagnostics.h"
#include "platform/stp_protocol.h"
#include "platform/xport.h"
#include "stpsnmp/agent.h"
#include "stpsnmp/object_table.h"
#include "stpsnmp/values.h"

using stpsnmp::diagnostics::kTrace;

namespace {

// Arcs below the module's root, and those of an index: tree and port.
constexpr size_t kTrapArcs = 3;
constexpr size_t kScalarArcs = 3;
constexpr size_t kColumnArcs = 5;
constexpr size_t kIndexArcs = 2;

constexpr size_t kTrapLength = STP_EXTENSIONS_MIB_ROOT_LENGTH + kTrapArcs;
constexpr size_t kScalarLength = STP_EXTENSIONS_MIB_ROOT_LENGTH + kScalarArcs;
constexpr size_t kInstanceLength = STP_EXTENSIONS_MIB_ROOT_LENGTH + kColumnArcs + kIndexArcs;

constexpr oid kSpanningTreeTypeSuffix[kScalarArcs] = {1, 6, 1};

// What is particular to a class. Its lines in the log carry fixed numbers instead of source lines.
struct NotificationClass {
  const char *handler;
  int conversion_failed_line;
  oid trap[kTrapArcs];
  oid column[kColumnArcs];  // of the first binding
};

constexpr NotificationClass kRootClass = {
    "handle_noti_stpxRootInconsistencyUpdate", 835, {2, 0, 2}, {1, 5, 2, 1, 3}};
constexpr NotificationClass kLoopClass = {
    "handle_noti_stpxLoopInconsistencyUpdate", 733, {2, 0, 3}, {1, 8, 2, 1, 3}};
constexpr NotificationClass kPortClass = {
    "handle_noti_stpxInconsistencyUpdate", 633, {2, 0, 1}, {1, 3, 1, 1, 3}};
constexpr int kStateLine = 646;
constexpr int kMappedStateLine = 648;

struct Event {
  stp_inconsistency_payload payload;
  uint16_t port;
};

// Where the caller wants the notification's OID and whether there is one.
struct Outputs {
  oid *trap_oid;
  size_t *trap_oid_len;
  int *status;
};

template <size_t N>
oid *write_oid(const oid (&suffix)[N], oid *out) {
  oid *const behind_root = std::copy_n(stp_extensions_mib_variables_oid, STP_EXTENSIONS_MIB_ROOT_LENGTH, out);
  return std::copy_n(suffix, N, behind_root);
}

// Takes a message in. False, with the status at 0, where it makes no notification.
bool read_event(void *message, const NotificationClass &noti, const Outputs &out, Event *event) {
  *out.status = message != nullptr ? 1 : 0;
  const void *payload = message != nullptr ? xport_payload_get(message) : nullptr;
  if (payload == nullptr) {
    *out.status = 0;
    return false;
  }
  std::memcpy(&event->payload, payload, sizeof event->payload);
  event->port = 0;
  if (stp_ifindex2dot1dportnum(ntohl(event->payload.if_index), &event->port) != 0) {
    STP_LOG(kTrace, "\n%s(%d): stp_ifindex2dot1dportnum() returned FAILURE\n", noti.handler,
            noti.conversion_failed_line);
    *out.status = 0;
    return false;
  }
  return true;
}

// The first binding: the class's column at the event's tree and port.
netsnmp_variable_list *build_state(const NotificationClass &noti, const Event &event, u_char type,
                                   const void *value, size_t size) {
  oid name[kInstanceLength];
  oid *const instance = write_oid(noti.column, name);
  instance[0] = ntohl(event.payload.tree);
  instance[1] = event.port;
  return build_varbind(nullptr, value, type, size, name, kInstanceLength);
}

netsnmp_variable_list *finish(const NotificationClass &noti, const Outputs &out,
                              netsnmp_variable_list *bindings) {
  if (bindings == nullptr) {
    *out.status = 0;
    return nullptr;
  }
  write_oid(noti.trap, out.trap_oid);
  *out.trap_oid_len = kTrapLength;
  return bindings;
}

netsnmp_variable_list *handle_state(void *message, const NotificationClass &noti, const Outputs &out) {
  Event event;
  if (!read_event(message, noti, out, &event)) {
    return nullptr;
  }
  const uint32_t state = ntohl(event.payload.state);
  const uint32_t type = ntohl(event.payload.mode);
  netsnmp_variable_list *bindings = build_state(noti, event, ASN_INTEGER, &state, sizeof state);
  // The object without its instance, deliberately.
  oid type_name[kScalarLength];
  write_oid(kSpanningTreeTypeSuffix, type_name);
  bindings = build_varbind(bindings, &type, ASN_INTEGER, sizeof type, type_name, kScalarLength);
  return finish(noti, out, bindings);
}

}  // namespace

netsnmp_variable_list *handle_noti_stpxInconsistencyUpdate(void *message, oid *trap_oid, size_t *trap_oid_len,
                                                           int *status) {
  const Outputs out{trap_oid, trap_oid_len, status};
  Event event;
  if (!read_event(message, kPortClass, out, &event)) {
    return nullptr;
  }
  // The word's first octet as it was sent.
  uint8_t state = 0;
  std::memcpy(&state, &event.payload.state, sizeof state);
  STP_LOG(kTrace, "\n%s(%d): stpxInconsistentState from stp: %d\n", __func__, kStateLine,
          int{static_cast<int8_t>(state)});
  InconsistencyRow row{};
  const uint32_t word = state;
  stp_sstp_inc_to_bmp(&row, &word, sizeof word);
  uint8_t bits = 0;
  std::memcpy(&bits, &row.value, sizeof bits);
  STP_LOG(kTrace, "\n%s(%d): stpxInconsistentState after mapping: %d\n", __func__, kMappedStateLine,
          int{static_cast<int8_t>(bits)});
  return finish(kPortClass, out, build_state(kPortClass, event, ASN_OCTET_STR, &bits, sizeof bits));
}

netsnmp_variable_list *handle_noti_stpxLoopInconsistencyUpdate(void *message, oid *trap_oid,
                                                               size_t *trap_oid_len, int *status) {
  return handle_state(message, kLoopClass, {trap_oid, trap_oid_len, status});
}

netsnmp_variable_list *handle_noti_stpxRootInconsistencyUpdate(void *message, oid *trap_oid,
                                                               size_t *trap_oid_len, int *status) {
  return handle_state(message, kRootClass, {trap_oid, trap_oid_len, status});
}
