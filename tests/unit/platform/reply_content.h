// What a question came to: the result, and the reply's attributes with their octets, in their order.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "platform/cmd.h"

struct ReplyContent {
  int result = CMD_OK;
  std::vector<std::pair<uint32_t, std::vector<uint8_t>>> attributes = {};

  bool operator==(const ReplyContent &) const = default;

  void add_octets(uint32_t token, const void *octets, size_t length) {
    const auto *begin = static_cast<const uint8_t *>(octets);
    attributes.emplace_back(token, std::vector<uint8_t>(begin, begin + length));
  }
  void add(uint32_t token, uint32_t number) { add_octets(token, &number, sizeof number); }

  // What is unknown is left out.
  template <class T>
  void add(uint32_t token, const std::optional<T> &value) {
    if (value) {
      add(token, static_cast<uint32_t>(*value));
    }
  }

  // The number that the attribute has; nothing when there is none.
  std::optional<uint32_t> number(uint32_t token) const {
    for (const auto &[present, octets] : attributes) {
      uint32_t number = 0;
      if (present == token && octets.size() == sizeof number) {
        std::memcpy(&number, octets.data(), sizeof number);
        return number;
      }
    }
    return std::nullopt;
  }
};

inline std::ostream &operator<<(std::ostream &out, const ReplyContent &content) {
  out << "result " << content.result << std::hex;
  for (const auto &[token, octets] : content.attributes) {
    out << ", " << token << ":";
    for (const uint8_t octet : octets) {
      out << ' ' << uint32_t{octet};
    }
  }
  return out << std::dec;
}
