// The notification service: which handler turns the messages of which class into notifications, and the way
// of a message through it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/agent_ext.h"
#include "xport.h"

namespace stpplatform {

// Room for classes.
inline constexpr size_t kMaxNotificationClasses = 32;

bool has_subscriptions();

// Sets the classes that have a handler; `classes` has room for all. Returns how many they are.
size_t subscribed_classes(uint32_t *classes);

// Has `changed` called whenever classes are no longer the same; there is one listener.
void on_subscription_change(void (*changed)());

// Hands a message to the class's handler and sends what it makes of it. Returns whether a notification was
// sent: not for a class without a handler, one that is not enabled, or a message that the handler refuses. To
// be called from the agent's main loop, outside of requests.
bool deliver_notification(uint32_t notification_class, TransportMessage *message);

}  // namespace stpplatform
