// Requests as the platform library sends them, and what a test wants of their replies.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "commands/packet.h"
#include "wire/message.h"

// Key attributes.
inline constexpr uint32_t kGlobalSettingsKey = 0x0102'0227;
inline constexpr uint32_t kMstDigestsKey = 0x0102'01C0;

struct RequestText {
  uint32_t command = 104;
  uint32_t action = 1;
  std::vector<uint32_t> keys = {kGlobalSettingsKey};  // each with the value 0
  std::string user = "operator";
  uint32_t sequence = 7;
};

stpswitch::Packet make_request(const RequestText &text);

// Overwrites a field of a message.
template <class Field>
void put(stpswitch::Packet *packet, size_t offset, Field value) {
  std::memcpy(packet->data() + offset, &value, sizeof value);
}

// The head of a reply. Fails the test when the packet is too short for one.
stpplatform::wire::Reply reply_head(const stpswitch::Packet &packet);
