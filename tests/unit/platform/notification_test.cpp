// The notification service: subscriptions, and the way of a message to the agent's traps.
#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>
//
#include <net-snmp/agent/net-snmp-agent-includes.h>
//
#include <gtest/gtest.h>
#include <net-snmp/agent/agent_callbacks.h>

#include <algorithm>
#include <string>
#include <vector>

#include "notification_registry.h"
#include "platform/agent_ext.h"
#include "platform/xport.h"

namespace {

constexpr uint32_t kClass = 17421;
constexpr oid kTrapOid[] = {1, 3, 6, 1, 4, 1, 32473, 9, 82, 2, 0, 1};
constexpr oid kObject[] = {1, 3, 6, 1, 4, 1, 32473, 9, 82, 1, 5, 1};

using Oid = std::vector<oid>;

struct Sent {
  Oid name;
  unsigned char type;
  std::string value;
  bool operator==(const Sent &) const = default;
};

// The bindings of every trap that was sent.
std::vector<std::vector<Sent>> traps;
std::vector<void *> payloads;

// What the handler is to do.
int handler_status = 1;
bool handler_returns_bindings = true;
size_t handler_oid_length = OID_LENGTH(kTrapOid);

netsnmp_variable_list *handle(void *message, oid *trap_oid, size_t *trap_oid_len, int *status) {
  payloads.push_back(xport_payload_get(message));
  std::copy(std::begin(kTrapOid), std::end(kTrapOid), trap_oid);
  *trap_oid_len = handler_oid_length;
  *status = handler_status;
  if (!handler_returns_bindings) {
    return nullptr;
  }
  const int32_t state = 1;
  netsnmp_variable_list *list =
      build_varbind(nullptr, &state, ASN_INTEGER, sizeof state, kObject, OID_LENGTH(kObject));
  return build_varbind(list, "two", ASN_OCTET_STR, 3, kObject, OID_LENGTH(kObject));
}

netsnmp_variable_list *handle_otherwise(void *, oid *, size_t *, int *status) {
  payloads.push_back(nullptr);
  *status = 0;
  return nullptr;
}

class Notifications : public testing::Test {
 protected:
  Notifications() {
    traps.clear();
    payloads.clear();
    handler_status = 1;
    handler_returns_bindings = true;
    handler_oid_length = OID_LENGTH(kTrapOid);
  }
  ~Notifications() override {
    for (uint32_t i = 0; i < stpplatform::kMaxNotificationClasses; ++i) {
      unregister_for_notification(kClass + i);
    }
  }

  static void enable() {
    ASSERT_EQ(register_for_notification(kClass, handle), 0);
    ASSERT_EQ(set_notification_enable_disable_status(kClass, 1), 0);
  }

  bool deliver() { return stpplatform::deliver_notification(kClass, &message_); }

  int payload_ = 0;
  stpplatform::TransportMessage message_{&payload_};
};

}  // namespace

extern "C" void __wrap_send_v2trap(netsnmp_variable_list *list) {
  std::vector<Sent> bindings;
  for (; list != nullptr; list = list->next_variable) {
    bindings.push_back({Oid(list->name, list->name + list->name_length), list->type,
                        std::string(reinterpret_cast<const char *>(list->val.string), list->val_len)});
  }
  traps.push_back(bindings);
}

namespace {

TEST_F(Notifications, AMessageOfAnEnabledClassBecomesATrap) {
  enable();
  EXPECT_TRUE(deliver());
  EXPECT_EQ(payloads, std::vector<void *>{&payload_});
  ASSERT_EQ(traps.size(), 1U);
  ASSERT_EQ(traps[0].size(), 3U);
  EXPECT_EQ(traps[0][0].name, (Oid{1, 3, 6, 1, 6, 3, 1, 1, 4, 1, 0}));
  EXPECT_EQ(traps[0][0].type, ASN_OBJECT_ID);
  EXPECT_EQ(traps[0][0].value, std::string(reinterpret_cast<const char *>(kTrapOid), sizeof kTrapOid));
  EXPECT_EQ(traps[0][1].name, Oid(std::begin(kObject), std::end(kObject)));
  EXPECT_EQ(traps[0][1].type, ASN_INTEGER);
  EXPECT_EQ(traps[0][2].value, "two");
}

TEST_F(Notifications, AClassIsNotSentUntilItIsEnabled) {
  ASSERT_EQ(register_for_notification(kClass, handle), 0);
  EXPECT_FALSE(deliver());
  EXPECT_TRUE(payloads.empty());
  EXPECT_EQ(set_notification_enable_disable_status(kClass, 7), 0);
  EXPECT_TRUE(deliver());
  EXPECT_EQ(set_notification_enable_disable_status(kClass, 0), 0);
  EXPECT_FALSE(deliver());
  EXPECT_EQ(traps.size(), 1U);
}

TEST_F(Notifications, ClassesAreToldApart) {
  enable();
  EXPECT_FALSE(stpplatform::deliver_notification(kClass + 1, &message_));
  EXPECT_TRUE(payloads.empty());
}

TEST_F(Notifications, WhatTheHandlerRefusesIsNotSent) {
  enable();
  handler_returns_bindings = false;
  handler_status = 0;
  EXPECT_FALSE(deliver());
  EXPECT_EQ(payloads.size(), 1U);
  EXPECT_TRUE(traps.empty());
}

TEST_F(Notifications, AHandlerMayHaveNoBindings) {
  enable();
  handler_returns_bindings = false;
  EXPECT_TRUE(deliver());
  ASSERT_EQ(traps.size(), 1U);
  ASSERT_EQ(traps[0].size(), 1U);
  EXPECT_EQ(traps[0][0].value, std::string(reinterpret_cast<const char *>(kTrapOid), sizeof kTrapOid));
}

// What is freed, and how often, is what the sanitizers and valgrind look at.
TEST_F(Notifications, BindingsThatCannotBeSentAreFreed) {
  enable();
  handler_status = 0;
  EXPECT_FALSE(deliver());
  handler_status = 1;
  for (const size_t length : {size_t{0}, size_t{MAX_OID_LEN} + 1}) {
    handler_oid_length = length;
    EXPECT_FALSE(deliver());
  }
  EXPECT_TRUE(traps.empty());
}

TEST_F(Notifications, ANotificationIsMadeOnBehalfOfNobody) {
  netsnmp_pdu pdu{};
  char user[] = "alice";
  pdu.version = SNMP_VERSION_3;
  pdu.securityName = user;
  pdu.securityNameLen = 5;
  view_parameters parameters{};
  parameters.pdu = &pdu;
  pdu.transid = 1;
  snmp_call_callbacks(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_ACM_CHECK, &parameters);
  ASSERT_STREQ(get_snmp_username(0), "alice");
  enable();
  EXPECT_TRUE(deliver());
  EXPECT_STREQ(get_snmp_username(0), "");
  EXPECT_EQ(get_snmp_sessionid(0), 0U);
}

TEST_F(Notifications, AClassWithoutHandlerCanNeitherBeSetNorForgotten) {
  EXPECT_NE(set_notification_enable_disable_status(kClass, 1), 0);
  EXPECT_NE(unregister_for_notification(kClass), 0);
  EXPECT_NE(register_for_notification(kClass, nullptr), 0);
  EXPECT_FALSE(deliver());
}

TEST_F(Notifications, ForgettingAClassForgetsItsStatus) {
  EXPECT_FALSE(stpplatform::has_subscriptions());
  enable();
  EXPECT_TRUE(stpplatform::has_subscriptions());
  EXPECT_EQ(unregister_for_notification(kClass), 0);
  EXPECT_FALSE(stpplatform::has_subscriptions());
  EXPECT_FALSE(deliver());
  EXPECT_NE(unregister_for_notification(kClass), 0);
  ASSERT_EQ(register_for_notification(kClass, handle), 0);
  EXPECT_FALSE(deliver());
}

TEST_F(Notifications, ASecondSubscriptionReplacesTheFirstOne) {
  enable();
  ASSERT_EQ(register_for_notification(kClass, handle_otherwise), 0);
  EXPECT_FALSE(deliver());
  EXPECT_TRUE(payloads.empty()) << "not enabled yet";
  ASSERT_EQ(set_notification_enable_disable_status(kClass, 1), 0);
  EXPECT_FALSE(deliver());
  EXPECT_EQ(payloads, std::vector<void *>{nullptr});
  EXPECT_EQ(unregister_for_notification(kClass), 0);
  EXPECT_NE(unregister_for_notification(kClass), 0);
}

TEST_F(Notifications, ASubscriptionWithoutRoomIsRefusedAndTheOthersStay) {
  for (uint32_t i = 0; i < stpplatform::kMaxNotificationClasses; ++i) {
    ASSERT_EQ(register_for_notification(kClass + i, handle), 0) << i;
  }
  EXPECT_NE(register_for_notification(1, handle), 0);
  EXPECT_EQ(register_for_notification(kClass, handle), 0) << "replaces";
  EXPECT_EQ(set_notification_enable_disable_status(kClass + 31, 1), 0);
  EXPECT_TRUE(stpplatform::deliver_notification(kClass + 31, &message_));
  EXPECT_EQ(unregister_for_notification(kClass + 5), 0);
  EXPECT_EQ(register_for_notification(1, handle), 0);
  EXPECT_EQ(unregister_for_notification(1), 0);
}

TEST(Varbind, BindingsAreAppendedAsCopies) {
  uint32_t number = 42;
  oid name[] = {1, 3, 6, 1};
  netsnmp_variable_list *list =
      build_varbind(nullptr, &number, ASN_UNSIGNED, sizeof number, name, OID_LENGTH(name));
  ASSERT_NE(list, nullptr);
  netsnmp_variable_list *first = list;
  number = 43;
  name[3] = 9;
  EXPECT_EQ(build_varbind(list, "", ASN_OCTET_STR, 0, name, OID_LENGTH(name)), first);
  EXPECT_EQ(list->name[3], 1U);
  EXPECT_EQ(*list->val.integer, 42);
  ASSERT_NE(list->next_variable, nullptr);
  EXPECT_EQ(list->next_variable->name[3], 9U);
  EXPECT_EQ(list->next_variable->val_len, 0U);
  snmp_free_varbind(list);
}

TEST(Varbind, ABindingMayHaveNoValue) {
  const oid name[] = {1, 3, 6, 1};
  netsnmp_variable_list *list = build_varbind(nullptr, nullptr, ASN_OCTET_STR, 0, name, OID_LENGTH(name));
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->type, ASN_OCTET_STR);
  EXPECT_EQ(list->val_len, 0U);
  snmp_free_varbind(list);
}

TEST(Varbind, WhatIsNoBindingLeavesTheList) {
  const oid name[MAX_OID_LEN + 1] = {1, 3};
  EXPECT_EQ(build_varbind(nullptr, "x", ASN_OCTET_STR, 1, nullptr, 1), nullptr);
  EXPECT_EQ(build_varbind(nullptr, "x", ASN_OCTET_STR, 1, name, 0), nullptr);
  EXPECT_EQ(build_varbind(nullptr, "x", ASN_OCTET_STR, 1, name, MAX_OID_LEN + 1), nullptr);
  EXPECT_EQ(build_varbind(nullptr, nullptr, ASN_OCTET_STR, 1, name, 2), nullptr);
}

TEST(TransportMessage, MayBeWithoutPayload) {
  stpplatform::TransportMessage empty{nullptr};
  EXPECT_EQ(xport_payload_get(&empty), nullptr);
  EXPECT_EQ(xport_payload_get(nullptr), nullptr);
}

}  // namespace
