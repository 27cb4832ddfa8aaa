// Who asks: requests as the agent shows them to its access checks.
#include "agent_session.h"

#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>
//
#include <arpa/inet.h>
#include <net-snmp/agent/net-snmp-agent-includes.h>
//
#include <gtest/gtest.h>
#include <net-snmp/agent/agent_callbacks.h>
#include <net-snmp/library/snmpTCPDomain.h>
#include <net-snmp/library/snmpTCPIPv6Domain.h>
#include <net-snmp/library/snmpUDPDomain.h>
#include <net-snmp/library/snmpUDPIPv6Domain.h>
#include <net-snmp/library/snmpUnixDomain.h>

#include <cstring>
#include <set>
#include <string>

#include "platform/agent_ext.h"

namespace {

constexpr oid kUdp[] = {1, 3, 6, 1, 6, 1, 1};
constexpr oid kUdp6[] = {TRANSPORT_DOMAIN_UDP_IPV6};
constexpr oid kTcp[] = {TRANSPORT_DOMAIN_TCP_IP};
constexpr oid kTcp6[] = {TRANSPORT_DOMAIN_TCP_IPV6};
constexpr oid kUnix[] = {TRANSPORT_DOMAIN_LOCAL};
constexpr oid kUnheardOf[] = {1, 3, 6, 1, 4, 1, 32473, 1};

// A request, with everything it points to.
struct Request {
  explicit Request(long transid) {
    pdu.transid = transid;
    set_domain(kUdp);
    set_address("192.0.2.1", 40000);
  }
  Request(const Request &) = delete;
  Request &operator=(const Request &) = delete;

  template <size_t N>
  void set_domain(const oid (&domain)[N]) {
    pdu.tDomain = domain;
    pdu.tDomainLen = N;
  }

  void set_address(const char *address, uint16_t port, uint8_t rest = 0) {
    std::memset(static_cast<void *>(&peer), rest, sizeof peer);
    peer.remote_addr.sin.sin_family = AF_INET;
    peer.remote_addr.sin.sin_port = htons(port);
    inet_pton(AF_INET, address, &peer.remote_addr.sin.sin_addr);
    pdu.transport_data = &peer;
    pdu.transport_data_length = sizeof peer;
  }

  void set_address6(const char *address, uint16_t port) {
    std::memset(static_cast<void *>(&peer), 0, sizeof peer);
    peer.remote_addr.sin6.sin6_family = AF_INET6;
    peer.remote_addr.sin6.sin6_port = htons(port);
    inet_pton(AF_INET6, address, &peer.remote_addr.sin6.sin6_addr);
    pdu.transport_data = &peer;
    pdu.transport_data_length = sizeof peer.remote_addr.sin6;
    set_domain(kUdp6);
  }

  void set_user(const std::string &name) {
    user = name;
    pdu.version = SNMP_VERSION_3;
    pdu.securityName = user.data();
    pdu.securityNameLen = user.size();
  }

  void set_community(const std::string &name, long version = SNMP_VERSION_2c) {
    user = name;
    pdu.version = version;
    pdu.community = reinterpret_cast<u_char *>(user.data());
    pdu.community_len = user.size();
  }

  void set_context(const std::string &name) {
    context = name;
    pdu.contextName = context.data();
    pdu.contextNameLen = context.size();
  }

  // One variable's access check.
  void check(int which = SNMPD_CALLBACK_ACM_CHECK) {
    view_parameters parameters{};
    parameters.pdu = &pdu;
    snmp_call_callbacks(SNMP_CALLBACK_APPLICATION, which, &parameters);
  }

  netsnmp_pdu pdu{};
  netsnmp_indexed_addr_pair peer{};
  std::string user;
  std::string context;
};

class AgentSessions : public testing::Test {
 protected:
  AgentSessions() { stpplatform::end_of_request(); }
  ~AgentSessions() override { stpplatform::end_of_request(); }

  static std::string context() { return {and_context_name, and_context_name_len}; }
  static std::string user() { return get_snmp_username(0); }

  static uint32_t session_of(Request *request) {
    request->check();
    return get_snmp_sessionid(0);
  }
};

TEST_F(AgentSessions, OutsideARequestNobodyAsks) {
  EXPECT_EQ(context(), "");
  EXPECT_EQ(user(), "");
  EXPECT_EQ(get_snmp_sessionid(0), 0U);
}

TEST_F(AgentSessions, BothKindsOfAccessCheckTellWhoAsks) {
  long transid = 0;
  for (const int check : {SNMPD_CALLBACK_ACM_CHECK, SNMPD_CALLBACK_ACM_CHECK_SUBTREE}) {
    Request request(++transid);
    request.set_user("alice");
    request.set_context("vlan-10");
    request.check(check);
    EXPECT_EQ(context(), "vlan-10");
    EXPECT_STREQ(and_context_name, "vlan-10");
    EXPECT_EQ(user(), "alice");
    EXPECT_NE(get_snmp_sessionid(0), 0U);
    stpplatform::end_of_request();
    EXPECT_EQ(context() + user(), "");
    EXPECT_EQ(get_snmp_sessionid(0), 0U);
  }
}

TEST_F(AgentSessions, TheRequestMayDieWhileItsNamesAreInUse) {
  {
    Request request(1);
    request.set_user("a-user-name-too-long-for-any-short-string-optimisation");
    request.set_context("a-context-name-too-long-as-well");
    request.check();
    std::memset(request.user.data(), '#', request.user.size());
    std::memset(request.context.data(), '#', request.context.size());
  }
  EXPECT_EQ(user(), "a-user-name-too-long-for-any-short-string-optimisation");
  EXPECT_EQ(context(), "a-context-name-too-long-as-well");
}

TEST_F(AgentSessions, ARequestIsReadOnce) {
  Request request(1);
  request.set_user("alice");
  request.check();
  request.set_user("mallory");
  request.check();
  EXPECT_EQ(user(), "alice");
}

TEST_F(AgentSessions, AnotherRequestInTheSameMemoryIsAnotherOne) {
  Request request(1);
  request.set_user("alice");
  request.set_context("mst-5");
  request.check();
  request.set_user("bob");
  request.set_context("");
  request.pdu.transid = 2;
  request.check();
  EXPECT_EQ(user(), "bob");
  EXPECT_EQ(context(), "");
}

TEST_F(AgentSessions, TwoRequestsThatTakeTurnsAreToldApart) {
  Request one(1);
  Request two(2);
  one.set_user("alice");
  two.set_user("bob");
  for (int i = 0; i < 3; ++i) {
    one.check();
    EXPECT_EQ(user(), "alice");
    two.check();
    EXPECT_EQ(user(), "bob");
  }
}

TEST_F(AgentSessions, RequestsThatNobodyNumberedAreToldApart) {
  Request one(0);
  Request two(0);
  one.set_user("alice");
  two.set_user("bob");
  one.check();
  two.check();
  EXPECT_EQ(user(), "bob");
}

TEST_F(AgentSessions, TheLongestContextIsTakenAndALongerOneIsNone) {
  Request longest(1);
  longest.set_user("alice");
  longest.set_context(std::string(AND_CONTEXT_NAME_MAX, 'c'));
  longest.check();
  EXPECT_EQ(context(), std::string(AND_CONTEXT_NAME_MAX, 'c'));
  Request longer(2);
  longer.set_user("alice");
  longer.set_context(std::string(AND_CONTEXT_NAME_MAX + 1, 'c'));
  longer.check();
  EXPECT_EQ(context(), "");
}

TEST_F(AgentSessions, ANameWithAZeroInItIsNotTakenForItsBeginning) {
  Request request(1);
  request.set_user(std::string("admin\0x", 7));
  request.set_context(std::string("mst-5\0x", 7));
  request.check();
  EXPECT_EQ(user(), "");
  EXPECT_EQ(context(), "");
}

TEST_F(AgentSessions, ANameThatIsTooLongIsNotCut) {
  Request longest(1);
  longest.set_user(std::string(255, 'u'));
  longest.check();
  EXPECT_EQ(user(), std::string(255, 'u'));
  Request longer(2);
  longer.set_user(std::string(256, 'u'));
  longer.check();
  EXPECT_EQ(user(), "");
}

TEST_F(AgentSessions, NamesMayBeMissing) {
  Request request(1);
  request.pdu.version = SNMP_VERSION_3;
  request.check();
  EXPECT_EQ(user(), "");
  EXPECT_NE(get_snmp_sessionid(0), 0U);
  Request community(2);
  community.pdu.version = SNMP_VERSION_2c;
  community.check();
  EXPECT_EQ(user(), "");
}

class Communities : public AgentSessions {
 protected:
  Communities() {
    configure(netsnmp_udp_parse_security, "com2sec", "reader 192.0.2.0/24 public");
    configure(netsnmp_udp_parse_security, "com2sec", "writer 192.0.2.0/24 private");
    configure(netsnmp_udp6_parse_security, "com2sec6", "reader6 2001:db8::/32 public");
    configure(netsnmp_unix_parse_security, "com2secunix", "local default public");
  }
  // As the agent does when it reads its configuration anew.
  ~Communities() override {
    snmp_call_callbacks(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_PRE_READ_CONFIG, nullptr);
  }

  template <typename Parser>
  static void configure(Parser parser, const char *token, std::string line) {
    parser(token, line.data());
  }
};

TEST_F(Communities, TheConfigurationNamesTheUserBehindACommunity) {
  Request v1(1);
  v1.set_community("public", SNMP_VERSION_1);
  v1.check();
  EXPECT_EQ(user(), "reader");
  Request v2c(2);
  v2c.set_community("private");
  v2c.check();
  EXPECT_EQ(user(), "writer");
}

TEST_F(Communities, ThePeerDecidesToo) {
  Request request(1);
  request.set_address("198.51.100.1", 40000);
  request.set_community("public");
  request.check();
  EXPECT_EQ(user(), "");
}

TEST_F(Communities, AnUnknownCommunityHasNoUser) {
  Request known(1);
  known.set_community("public");
  known.check();
  Request unknown(2);
  unknown.set_community("secret");
  unknown.check();
  EXPECT_EQ(user(), "");
}

TEST_F(Communities, EveryTransportHasItsOwnConfiguration) {
  Request v6(1);
  v6.set_address6("2001:db8::1", 40000);
  v6.set_community("public");
  v6.check();
  EXPECT_EQ(user(), "reader6");
  Request local(2);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, "/run/agent");
  local.pdu.transport_data = &address;
  local.pdu.transport_data_length = sizeof address;
  local.set_domain(kUnix);
  local.set_community("public");
  local.check();
  EXPECT_EQ(user(), "local");
  Request other(3);
  other.set_domain(kUnheardOf);
  other.set_community("public");
  other.check();
  EXPECT_EQ(user(), "");
  Request nowhere(4);
  nowhere.pdu.tDomain = nullptr;
  nowhere.pdu.tDomainLen = 0;
  nowhere.set_community("public");
  nowhere.check();
  EXPECT_EQ(user(), "");
}

TEST_F(Communities, TcpHasTheConfigurationOfUdp) {
  Request v4(1);
  v4.set_domain(kTcp);
  v4.set_community("private");
  v4.check();
  EXPECT_EQ(user(), "writer");
  Request v6(2);
  v6.set_address6("2001:db8::1", 40000);
  v6.set_domain(kTcp6);
  v6.set_community("public");
  v6.check();
  EXPECT_EQ(user(), "reader6");
}

TEST_F(AgentSessions, OneManagerKeepsItsSession) {
  Request first(1);
  first.set_user("alice");
  const uint32_t session = session_of(&first);
  Request second(2);
  // Padding and the agent's own address are not the manager's.
  second.set_address("192.0.2.1", 40000, 0xEE);
  second.set_user("alice");
  second.set_context("mst-5");
  EXPECT_EQ(session_of(&second), session);
}

TEST_F(AgentSessions, SessionsDifferByUserPortAddressAndTransport) {
  std::set<uint32_t> sessions;
  long transid = 0;
  const auto add = [&](const char *name, const auto &place) {
    Request request(++transid);
    request.set_user(name);
    place(&request);
    sessions.insert(session_of(&request));
  };
  add("alice", [](Request *) {});
  add("bob", [](Request *) {});
  add("", [](Request *) {});
  add("alice", [](Request *request) { request->set_address("192.0.2.1", 40001); });
  add("alice", [](Request *request) { request->set_address("192.0.2.2", 40000); });
  add("alice", [](Request *request) { request->set_domain(kUnheardOf); });
  add("alice", [](Request *request) { request->set_address6("2001:db8::1", 40000); });
  add("alice", [](Request *request) { request->set_address6("2001:db8::2", 40000); });
  add("alice", [](Request *request) { request->set_address6("2001:db8::1", 40001); });
  add("alice", [](Request *request) { request->pdu.transport_data = nullptr; });
  EXPECT_EQ(sessions.size(), 10U);
  EXPECT_EQ(sessions.count(0), 0U);
}

// These four octets have the hash 0.
TEST_F(AgentSessions, NoManagerHasTheSessionOfNobody) {
  Request request(1);
  request.set_user("\xCC\x24\x31\xC4");
  request.pdu.tDomain = nullptr;
  request.pdu.transport_data = nullptr;
  EXPECT_EQ(session_of(&request), 2166136261U);
}

TEST_F(AgentSessions, ThousandsOfManagersHaveSessionsOfTheirOwn) {
  constexpr int kManagers = 5000;
  std::set<uint32_t> sessions;
  for (int i = 0; i < kManagers; ++i) {
    Request request(i + 1);
    request.set_address(("192.0." + std::to_string(i % 250) + ".7").c_str(),
                        static_cast<uint16_t>(30000 + i));
    request.set_user("alice");
    sessions.insert(session_of(&request));
  }
  EXPECT_GE(sessions.size(), static_cast<size_t>(kManagers - 5));
}

TEST_F(AgentSessions, AnAddressRecordThatIsTooShortIsNotRead) {
  Request request(1);
  request.set_user("alice");
  const std::vector<uint8_t> octets(4, 2);
  request.pdu.transport_data = const_cast<uint8_t *>(octets.data());
  request.pdu.transport_data_length = 4;
  EXPECT_NE(session_of(&request), 0U);
  request.pdu.transid = 2;
  request.pdu.transport_data_length = -1;
  EXPECT_NE(session_of(&request), 0U);
}

TEST_F(AgentSessions, NothingIsHeardAnyMoreAfterTheEnd) {
  stpplatform::stop_watching_requests();
  Request request(1);
  request.set_user("alice");
  request.check();
  request.check(SNMPD_CALLBACK_ACM_CHECK_SUBTREE);
  EXPECT_EQ(user(), "");
  stpplatform::watch_requests();
  request.check();
  EXPECT_EQ(user(), "alice");
}

}  // namespace
