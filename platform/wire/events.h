// The payloads of events: those of the notification classes (platform/stp_protocol.h).
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/stp_protocol.h"
#include "wire/message.h"

namespace stpplatform::wire {

// The length that every payload of the class has; 0 for an unknown class.
constexpr uint32_t event_payload_length(uint32_t notification_class) {
  switch (notification_class) {
    case STP_NOTIFICATION_PORT_INCONSISTENCY:
    case STP_NOTIFICATION_LOOP_INCONSISTENCY:
    case STP_NOTIFICATION_ROOT_INCONSISTENCY:
      return sizeof(stp_inconsistency_payload);
    case STP_NOTIFICATION_NEW_ROOT:
    case STP_NOTIFICATION_TOPOLOGY_CHANGE:
    case STP_NOTIFICATION_TREES:
      return sizeof(stp_tree_payload);
    default:
      return 0;
  }
}

inline constexpr size_t kMaxEventSize = sizeof(Event) + sizeof(stp_inconsistency_payload);

}  // namespace stpplatform::wire
