// Attributes of a request or reply: a head of token and length, then the value, padded to a multiple of four
// bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "platform/cmd.h"

namespace stpplatform::wire {

struct AttributeHead {
  uint32_t token;
  uint32_t length;  // of the value, without padding
};

constexpr uint32_t padded(uint32_t length) { return (length + 3U) & ~3U; }

inline constexpr uint32_t kMacAddressSize = 6;

// The length that every value of the token's type has; 0 for types of variable or unknown length.
constexpr uint32_t fixed_length(uint32_t token) {
  switch (CMD_TOKEN_TYPE(token)) {
    case CMD_TYPE_PLAIN:
    case CMD_TYPE_FLAG:
    case CMD_TYPE_ENUM:
    case CMD_TYPE_IF_INDEX:
    case CMD_TYPE_NUMBER:
      return sizeof(uint32_t);
    case CMD_TYPE_MAC:
      return kMacAddressSize;
    default:
      return 0;
  }
}

constexpr uint32_t range_list_length(uint32_t count) {
  return static_cast<uint32_t>(sizeof(cmd_range_list) + count * sizeof(cmd_range));
}

// Tells whether `length` bytes can be a value of the token's type. A range list must hold as many ranges as
// its count says, which only its bytes tell.
inline bool length_fits_type(uint32_t token, const void *value, uint32_t length) {
  switch (CMD_TOKEN_TYPE(token)) {
    case CMD_TYPE_OCTETS:
      return length <= CMD_ATTR_VALUE_MAX;
    case CMD_TYPE_RANGE_LIST: {
      cmd_range_list list;
      if (length < sizeof list) {
        return false;
      }
      std::memcpy(&list, value, sizeof list);
      return list.count <= CMD_RANGES_MAX && length == range_list_length(list.count);
    }
    default:
      return length != 0 && length == fixed_length(token);
  }
}

// One attribute as it stands in a message; `value` has no particular alignment.
struct Attribute {
  uint32_t token;
  uint32_t length;
  const void *value;
};

// Steps through the attributes of a message that may hold anything at all.
class AttributeReader {
 public:
  AttributeReader(const void *begin, size_t size) : at_(static_cast<const uint8_t *>(begin)), left_(size) {}

  // Reads the next attribute. False at the end and at a malformed one; only the end leaves nothing over.
  bool next(Attribute *attribute) {
    AttributeHead head;
    if (left_ < sizeof head) {
      return false;
    }
    std::memcpy(&head, at_, sizeof head);
    const uint8_t *value = at_ + sizeof head;
    const size_t room = left_ - sizeof head;
    if (head.length > room || padded(head.length) > room ||
        !length_fits_type(head.token, value, head.length)) {
      return false;
    }
    *attribute = {head.token, head.length, value};
    at_ = value + padded(head.length);
    left_ = room - padded(head.length);
    return true;
  }

  bool at_end() const { return left_ == 0; }

 private:
  const uint8_t *at_;
  size_t left_;
};

// True when `size` bytes are exactly `count` well-formed attributes.
inline bool attributes_are_well_formed(const void *begin, size_t size, uint32_t count) {
  AttributeReader reader(begin, size);
  Attribute attribute;
  for (uint32_t i = 0; i < count; ++i) {
    if (!reader.next(&attribute)) {
      return false;
    }
  }
  return reader.at_end();
}

// Writes one attribute at `at`, where `room` bytes are left. Returns the bytes used, 0 when it does not fit.
inline size_t write_attribute(void *at, size_t room, const Attribute &attribute) {
  const size_t used = sizeof(AttributeHead) + padded(attribute.length);
  if (attribute.length > room || used > room) {
    return 0;
  }
  const AttributeHead head{attribute.token, attribute.length};
  auto *bytes = static_cast<uint8_t *>(at);
  std::memcpy(bytes, &head, sizeof head);
  if (padded(attribute.length) != attribute.length) {
    constexpr uint32_t kZero = 0;
    std::memcpy(bytes + used - sizeof kZero, &kZero, sizeof kZero);
  }
  if (attribute.length != 0) {
    std::memcpy(bytes + sizeof head, attribute.value, attribute.length);
  }
  return used;
}

}  // namespace stpplatform::wire
