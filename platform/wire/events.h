// What the switch tells of unasked: its notification classes and the payloads of their events.
#pragma once

#include <cstddef>
#include <cstdint>

#include "wire/message.h"

namespace stpplatform::wire {

inline constexpr uint32_t kPortInconsistencyClass = 17421;  // port VLAN identifier or port type
inline constexpr uint32_t kLoopInconsistencyClass = 17422;
inline constexpr uint32_t kRootInconsistencyClass = 17423;

// In network byte order, as notification handlers get it.
struct InconsistencyPayload {
  uint32_t tree;                // VLAN or MST instance
  uint32_t if_index;            // interface index
  uint32_t state;               // loop and root: 1 appeared, 2 vanished; port: its bits, see below
  uint32_t spanning_tree_type;  // 4 MST, 5 Rapid-PVST
};

// A port's inconsistencies are the bits of its state's most significant octet: bit 0 port VLAN identifier,
// bit 1 port type; none is left when it is 0. The other octets are 0.
inline constexpr uint32_t kPortInconsistencyShift = 24;

// The length that every payload of the class has; 0 for an unknown class.
constexpr uint32_t event_payload_length(uint32_t notification_class) {
  switch (notification_class) {
    case kPortInconsistencyClass:
    case kLoopInconsistencyClass:
    case kRootInconsistencyClass:
      return sizeof(InconsistencyPayload);
    default:
      return 0;
  }
}

inline constexpr size_t kMaxEventSize = sizeof(Event) + sizeof(InconsistencyPayload);

static_assert(sizeof(InconsistencyPayload) == 16, "payloads have no padding");

}  // namespace stpplatform::wire
