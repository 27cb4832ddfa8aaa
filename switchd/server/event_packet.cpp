#include "server/event_packet.h"

#include <arpa/inet.h>

#include <array>
#include <cstring>
#include <variant>

#include "wire/events.h"
#include "wire/message.h"

namespace stpswitch {
namespace {

namespace wire = stpplatform::wire;

// The state as the payloads of the event's class have it.
uint32_t payload_state(const InconsistencyEvent &event) {
  // Handlers of this class read the word's first octet, as it is sent, and no more.
  constexpr unsigned kFirstOctetShift = 24;
  if (event.kind == InconsistencyEventKind::kPvidAndType) {
    return event.state << kFirstOctetShift;
  }
  return event.state != 0 ? STP_INCONSISTENCY_APPEARED : STP_INCONSISTENCY_VANISHED;
}

// Payloads have the same size (stp_inconsistency_payload, stp_tree_payload).
using Words = std::array<uint32_t, 4>;
static_assert(sizeof(Words) == sizeof(stp_inconsistency_payload) &&
              sizeof(Words) == sizeof(stp_tree_payload));

Words payload_of(const InconsistencyEvent &event) {
  return {event.tree, event.if_index, payload_state(event), static_cast<uint32_t>(event.mode)};
}

Words payload_of(const TreeEvent &event) {
  return {event.tree, event.port, event.if_mib_index, event.mode ? static_cast<uint32_t>(*event.mode) : 0};
}

uint32_t class_of_kind(InconsistencyEventKind kind) {
  switch (kind) {
    case InconsistencyEventKind::kPvidAndType:
      return STP_NOTIFICATION_PORT_INCONSISTENCY;
    case InconsistencyEventKind::kLoop:
      return STP_NOTIFICATION_LOOP_INCONSISTENCY;
    case InconsistencyEventKind::kRoot:
      return STP_NOTIFICATION_ROOT_INCONSISTENCY;
  }
  return 0;
}

uint32_t class_of_kind(TreeEventKind kind) {
  switch (kind) {
    case TreeEventKind::kNewRoot:
      return STP_NOTIFICATION_NEW_ROOT;
    case TreeEventKind::kTopologyChange:
      return STP_NOTIFICATION_TOPOLOGY_CHANGE;
    case TreeEventKind::kTrees:
      return STP_NOTIFICATION_TREES;
  }
  return 0;
}

}  // namespace

bool claims_to_be_subscription(std::span<const uint8_t> packet) {
  wire::MessageHeader header;
  if (packet.size() < sizeof header) {
    return false;
  }
  std::memcpy(&header, packet.data(), sizeof header);
  return header.magic == wire::kMagic && header.type == static_cast<uint16_t>(wire::MessageType::kSubscribe);
}

std::optional<NotificationClasses> read_subscription(std::span<const uint8_t> packet, size_t sent_size) {
  wire::Subscribe subscription;
  if (!claims_to_be_subscription(packet) || packet.size() < sizeof subscription) {
    return std::nullopt;
  }
  std::memcpy(&subscription, packet.data(), sizeof subscription);
  const auto octets = packet.subspan(sizeof subscription);
  if (subscription.header.version != wire::kVersion || subscription.header.length != sent_size ||
      sent_size != packet.size() || subscription.class_count == 0 ||
      subscription.class_count > wire::kMaxSubscribedClasses ||
      octets.size() != subscription.class_count * sizeof(uint32_t)) {
    return std::nullopt;
  }
  NotificationClasses classes;
  for (size_t at = 0; at < octets.size(); at += sizeof(uint32_t)) {
    uint32_t notification_class = 0;
    std::memcpy(&notification_class, octets.data() + at, sizeof notification_class);
    classes.insert(notification_class);
  }
  return classes;
}

uint32_t class_of(const SwitchEvent &event) {
  return std::visit([](const auto &one) { return class_of_kind(one.kind); }, event);
}

Packet make_event_packet(const SwitchEvent &event, uint32_t sequence) {
  const Words payload = std::visit([](const auto &one) { return payload_of(one); }, event);
  constexpr auto kSize = static_cast<uint32_t>(sizeof(wire::Event) + sizeof payload);
  const wire::Event head{
      {wire::kMagic, wire::kVersion, static_cast<uint16_t>(wire::MessageType::kEvent), kSize, sequence},
      class_of(event),
      sizeof payload};
  Packet packet(kSize);
  std::memcpy(packet.data(), &head, sizeof head);
  for (size_t i = 0; i < payload.size(); ++i) {
    const uint32_t word = htonl(payload[i]);
    std::memcpy(packet.data() + sizeof head + i * sizeof word, &word, sizeof word);
  }
  return packet;
}

}  // namespace stpswitch
