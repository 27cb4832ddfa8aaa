#include "support/requests.h"

#include <gtest/gtest.h>

#include <cstring>

#include "protocol_numbers.h"
#include "wire/attributes.h"

namespace wire = stpplatform::wire;

namespace {

uint32_t length_of(const KeyText &key) { return static_cast<uint32_t>(key.words.size() * sizeof(uint32_t)); }

size_t size_of(const RequestText &text) {
  size_t size = sizeof(wire::Request);
  for (const KeyText &key : text.keys) {
    size += sizeof(wire::AttributeHead) + length_of(key);
  }
  return size;
}

}  // namespace

KeyText range_list(uint32_t key, const std::vector<std::pair<uint32_t, uint32_t>> &ranges) {
  std::vector<uint32_t> words = {0, static_cast<uint32_t>(ranges.size())};
  for (const auto &[first, last] : ranges) {
    words.insert(words.end(), {first, last});
  }
  return {key, words};
}

KeyText one_tree(uint32_t key, uint32_t tree) { return range_list(key, {{tree, tree}}); }

stpswitch::Packet make_request(const RequestText &text) {
  stpswitch::Packet packet(size_of(text));
  wire::Request request{};
  request.header = {wire::kMagic, wire::kVersion, static_cast<uint16_t>(wire::MessageType::kRequest),
                    static_cast<uint32_t>(packet.size()), text.sequence};
  request.destination = protocol::kDestination;
  request.service = protocol::kService;
  request.command = text.command;
  request.action = text.action;
  request.session = 1;
  request.attribute_count = static_cast<uint32_t>(text.keys.size());
  text.user.copy(request.user, CMD_USER_MAX);
  std::memcpy(packet.data(), &request, sizeof request);
  uint8_t *at = packet.data() + sizeof request;
  for (const KeyText &key : text.keys) {
    const uint32_t length = length_of(key);
    at += wire::write_attribute(at, sizeof(wire::AttributeHead) + length,
                                {key.token, length, key.words.data()});
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
