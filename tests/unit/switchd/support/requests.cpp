#include "support/requests.h"

#include <gtest/gtest.h>

#include <cstring>

#include "wire/attributes.h"

namespace wire = stpplatform::wire;

stpswitch::Packet make_request(const RequestText &text) {
  constexpr uint32_t kKeySize = sizeof(wire::AttributeHead) + sizeof(uint32_t);
  stpswitch::Packet packet(sizeof(wire::Request) + text.keys.size() * kKeySize);
  wire::Request request{};
  request.header = {wire::kMagic, wire::kVersion, static_cast<uint16_t>(wire::MessageType::kRequest),
                    static_cast<uint32_t>(packet.size()), text.sequence};
  request.destination = wire::kStpDestination;
  request.service = wire::kStpService;
  request.command = text.command;
  request.action = text.action;
  request.session = 1;
  request.attribute_count = static_cast<uint32_t>(text.keys.size());
  text.user.copy(request.user, CMD_USER_MAX);
  std::memcpy(packet.data(), &request, sizeof request);
  uint8_t *at = packet.data() + sizeof request;
  for (const uint32_t key : text.keys) {
    const uint32_t value = 0;
    at += wire::write_attribute(at, kKeySize, {key, sizeof value, &value});
  }
  return packet;
}

wire::Reply reply_head(const stpswitch::Packet &packet) {
  wire::Reply head{};
  EXPECT_GE(packet.size(), sizeof head);
  if (packet.size() >= sizeof head) {
    std::memcpy(&head, packet.data(), sizeof head);
  }
  return head;
}
