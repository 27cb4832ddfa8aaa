// Subscriptions and events as they are on the command socket (platform/wire).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <span>

#include "base/packet.h"
#include "model/events.h"

namespace stpswitch {

using NotificationClasses = std::set<uint32_t>;

// Whether a packet's header says that it is a subscription, well-formed or not.
bool claims_to_be_subscription(std::span<const uint8_t> packet);

// The classes that a packet of `sent_size` octets, of which `packet` holds those that were received,
// subscribes to. Nothing when it is not a well-formed subscription.
std::optional<NotificationClasses> read_subscription(std::span<const uint8_t> packet, size_t sent_size);

// The notification class of the event.
uint32_t class_of(const SwitchEvent &event);

Packet make_event_packet(const SwitchEvent &event, uint32_t sequence);

}  // namespace stpswitch
