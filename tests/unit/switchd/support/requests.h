// Requests as the platform library sends them, and what a test wants of their replies.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "base/packet.h"
#include "protocol_numbers.h"
#include "wire/message.h"

// A key attribute with its value; one that is only named has the value 0.
struct KeyText {
  KeyText(uint32_t key_token) : token(key_token) {}
  KeyText(uint32_t key_token, std::vector<uint32_t> key_words)
      : token(key_token), words(std::move(key_words)) {}

  uint32_t token;
  std::vector<uint32_t> words = {0};
};

// A range list, with each range's first and last member.
KeyText range_list(uint32_t key, const std::vector<std::pair<uint32_t, uint32_t>> &ranges);

// A range list that names one VLAN or MST instance.
KeyText one_tree(uint32_t key, uint32_t tree);

struct RequestText {
  uint32_t command = 104;
  uint32_t action = 1;
  std::vector<KeyText> keys = {protocol::kGlobalSettingsKey};
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
