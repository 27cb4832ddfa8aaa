#include "notification_registry.h"

#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>
//
#include <net-snmp/agent/net-snmp-agent-includes.h>

#include <algorithm>
#include <iterator>

#include "agent_session.h"
#include "export.h"
#include "varbind.h"

namespace stpplatform {
namespace {

struct Subscription {
  uint32_t notification_class;
  notification_handler handler;  // null: the place is free
  bool enabled;
};

constinit Subscription subscriptions[kMaxNotificationClasses] = {};

// Set before the first subscription.
using Listener = void (*)();
constinit Listener subscription_listener = nullptr;

Subscription *find_subscription(uint32_t notification_class) {
  for (Subscription &subscription : subscriptions) {
    if (subscription.handler != nullptr && subscription.notification_class == notification_class) {
      return &subscription;
    }
  }
  return nullptr;
}

Subscription *find_free_place() {
  for (Subscription &subscription : subscriptions) {
    if (subscription.handler == nullptr) {
      return &subscription;
    }
  }
  return nullptr;
}

// The bindings with snmpTrapOID.0 before them (RFC 3416 clause 4.2.6); null, and the bindings freed, when it
// cannot be made.
netsnmp_variable_list *with_trap_oid(netsnmp_variable_list *bindings, const oid *trap_oid,
                                     size_t trap_oid_len) {
  constexpr oid kSnmpTrapOid[] = {1, 3, 6, 1, 6, 3, 1, 1, 4, 1, 0};
  netsnmp_variable_list *list = nullptr;
  if (trap_oid_len == 0 || trap_oid_len > MAX_OID_LEN ||
      snmp_varlist_add_variable(&list, kSnmpTrapOid, OID_LENGTH(kSnmpTrapOid), ASN_OBJECT_ID, trap_oid,
                                trap_oid_len * sizeof *trap_oid) == nullptr) {
    snmp_free_varbind(bindings);
    return nullptr;
  }
  list->next_variable = bindings;
  return list;
}

}  // namespace

bool has_subscriptions() {
  return std::any_of(std::begin(subscriptions), std::end(subscriptions),
                     [](const Subscription &subscription) { return subscription.handler != nullptr; });
}

size_t subscribed_classes(uint32_t *classes) {
  size_t count = 0;
  for (const Subscription &subscription : subscriptions) {
    if (subscription.handler != nullptr) {
      classes[count++] = subscription.notification_class;
    }
  }
  return count;
}

void on_subscription_change(void (*changed)()) { subscription_listener = changed; }

bool deliver_notification(uint32_t notification_class, TransportMessage *message) {
  const Subscription *subscription = find_subscription(notification_class);
  if (subscription == nullptr || !subscription->enabled) {
    return false;
  }
  end_of_request();
  oid trap_oid[MAX_OID_LEN] = {};
  size_t trap_oid_len = 0;
  int status = 0;
  begin_bindings();
  netsnmp_variable_list *bindings = subscription->handler(message, trap_oid, &trap_oid_len, &status);
  // A handler goes on with the bindings that it has, and a manager would take them for all.
  if (!bindings_are_complete()) {
    snmp_free_varbind(bindings);
    snmp_log(LOG_ERR, "stpplatform: notification class %u: lost, as the agent has no memory for it\n",
             notification_class);
    return false;
  }
  if (status == 0) {
    snmp_free_varbind(bindings);
    return false;
  }
  netsnmp_variable_list *notification = with_trap_oid(bindings, trap_oid, trap_oid_len);
  if (notification == nullptr) {
    snmp_log(LOG_ERR, "stpplatform: notification class %u: the notification has no usable OID and is lost\n",
             notification_class);
    return false;
  }
  send_v2trap(notification);
  snmp_free_varbind(notification);
  return true;
}

}  // namespace stpplatform

extern "C" {

STPPLATFORM_EXPORT int register_for_notification(uint32_t notification_class, notification_handler handler) {
  if (handler == nullptr) {
    return 1;
  }
  stpplatform::Subscription *place = stpplatform::find_subscription(notification_class);
  const bool is_new = place == nullptr;
  if (is_new) {
    place = stpplatform::find_free_place();
  }
  if (place == nullptr) {
    return 1;
  }
  *place = {notification_class, handler, false};
  if (is_new) {
    stpplatform::subscription_listener();
  }
  return 0;
}

STPPLATFORM_EXPORT int unregister_for_notification(uint32_t notification_class) {
  stpplatform::Subscription *subscription = stpplatform::find_subscription(notification_class);
  if (subscription == nullptr) {
    return 1;
  }
  *subscription = {};
  stpplatform::subscription_listener();
  return 0;
}

STPPLATFORM_EXPORT int set_notification_enable_disable_status(uint32_t notification_class, int enable) {
  stpplatform::Subscription *subscription = stpplatform::find_subscription(notification_class);
  if (subscription == nullptr) {
    return 1;
  }
  subscription->enabled = enable != 0;
  return 0;
}

}  // extern "C"
