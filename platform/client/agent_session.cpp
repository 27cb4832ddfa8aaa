#include "agent_session.h"

#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>
//
#include <net-snmp/agent/agent_callbacks.h>
#include <net-snmp/agent/net-snmp-agent-includes.h>
#include <net-snmp/library/snmpTCPDomain.h>
#include <net-snmp/library/snmpTCPIPv6Domain.h>
#include <net-snmp/library/snmpUDPDomain.h>
#include <net-snmp/library/snmpUDPIPv6Domain.h>
#include <net-snmp/library/snmpUnixDomain.h>

#include <cstring>

#include "export.h"
#include "platform/agent_ext.h"
#include "session_number.h"

extern "C" {
STPPLATFORM_EXPORT char and_context_name[AND_CONTEXT_NAME_MAX + 1] = {};
STPPLATFORM_EXPORT uint32_t and_context_name_len = 0;
}

namespace stpplatform {
namespace {

// As long as a security name of any security model can be (RFC 3411 clause 5: SnmpAdminString), so that none
// is cut and then taken for another one.
constexpr size_t kMaxUserLength = 255;

char user_name[kMaxUserLength + 1];
uint32_t session = 0;

// The request whose context, user and session stand above: numbers only, the request itself does not live
// long.
struct RequestIdentity {
  uintptr_t pdu;
  long transid;
};
RequestIdentity current_request = {};

// Set before the first request is seen.
using Listener = void (*)();
constinit Listener on_begin = nullptr;
constinit Listener on_end = nullptr;

// Copies `length` bytes as a text; nothing when it would not be the same text there. Returns the length
// copied.
size_t copy_text(char *to, size_t room, const char *from, size_t length) {
  if (from == nullptr || length >= room || std::memchr(from, '\0', length) != nullptr) {
    length = 0;
  }
  if (length != 0) {
    std::memcpy(to, from, length);
  }
  to[length] = '\0';
  return length;
}

template <size_t N>
bool is_domain(const netsnmp_pdu &pdu, const oid (&domain)[N]) {
  return snmp_oid_compare(pdu.tDomain, pdu.tDomainLen, domain, N) == 0;
}

// The security name that the agent's configuration gives the community of a v1 or v2c request from its peer.
const char *community_user(const netsnmp_pdu &pdu) {
  constexpr oid kTcp[] = {TRANSPORT_DOMAIN_TCP_IP};
  constexpr oid kUdp6[] = {TRANSPORT_DOMAIN_UDP_IPV6};
  constexpr oid kTcp6[] = {TRANSPORT_DOMAIN_TCP_IPV6};
  constexpr oid kUnix[] = {TRANSPORT_DOMAIN_LOCAL};
  const char *user = nullptr;
  const char *context = nullptr;
  const auto *community = reinterpret_cast<const char *>(pdu.community);
  if (community == nullptr || pdu.tDomain == nullptr) {
    return nullptr;
  }
  if (snmp_oid_compare(pdu.tDomain, pdu.tDomainLen, netsnmpUDPDomain, netsnmpUDPDomain_len) == 0 ||
      is_domain(pdu, kTcp)) {
    netsnmp_udp_getSecName(pdu.transport_data, pdu.transport_data_length, community, pdu.community_len, &user,
                           &context);
  } else if (is_domain(pdu, kUdp6) || is_domain(pdu, kTcp6)) {
    netsnmp_udp6_getSecName(pdu.transport_data, pdu.transport_data_length, community,
                            static_cast<int>(pdu.community_len), &user, &context);
  } else if (is_domain(pdu, kUnix)) {
    netsnmp_unix_getSecName(pdu.transport_data, pdu.transport_data_length, community, pdu.community_len,
                            &user, &context);
  }
  return user;
}

void copy_user(const netsnmp_pdu &pdu) {
  if (pdu.version == SNMP_VERSION_3) {
    copy_text(user_name, sizeof user_name, pdu.securityName, pdu.securityNameLen);
    return;
  }
  const char *user = community_user(pdu);
  copy_text(user_name, sizeof user_name, user, user == nullptr ? 0 : std::strlen(user));
}

// Runs for every variable of every request; only a request's first one costs more than the comparison.
int on_access_check(int, int, void *parameters, void *) {
  const netsnmp_pdu *pdu = static_cast<const view_parameters *>(parameters)->pdu;
  const RequestIdentity identity{reinterpret_cast<uintptr_t>(pdu), pdu->transid};
  if (identity.pdu == current_request.pdu && identity.transid == current_request.transid) {
    return SNMPERR_SUCCESS;
  }
  current_request = identity;
  and_context_name_len = static_cast<uint32_t>(
      copy_text(and_context_name, AND_CONTEXT_NAME_MAX + 1, pdu->contextName, pdu->contextNameLen));
  copy_user(*pdu);
  session = session_number(*pdu, user_name);
  on_begin();
  return SNMPERR_SUCCESS;
}

// The first one fires for GET and SET, the second one for GETNEXT and GETBULK.
constexpr int kAccessChecks[] = {SNMPD_CALLBACK_ACM_CHECK, SNMPD_CALLBACK_ACM_CHECK_SUBTREE};

}  // namespace

void watch_requests() {
  for (const int check : kAccessChecks) {
    // Last of all, because the agent's own check gives a v1 or v2c request its context.
    netsnmp_register_callback(SNMP_CALLBACK_APPLICATION, check, on_access_check, nullptr,
                              NETSNMP_CALLBACK_LOWEST_PRIORITY);
  }
}

void on_request(void (*begun)(), void (*ended)()) {
  on_begin = begun;
  on_end = ended;
}

void stop_watching_requests() {
  for (const int check : kAccessChecks) {
    snmp_unregister_callback(SNMP_CALLBACK_APPLICATION, check, on_access_check, nullptr, 1);
  }
}

void end_of_request() {
  current_request = {};
  and_context_name[0] = '\0';
  and_context_name_len = 0;
  user_name[0] = '\0';
  session = 0;
  on_end();
}

}  // namespace stpplatform

extern "C" {

STPPLATFORM_EXPORT const char *get_snmp_username(int) { return stpplatform::user_name; }

STPPLATFORM_EXPORT uint32_t get_snmp_sessionid(int) { return stpplatform::session; }

}  // extern "C"
