// The attributes of a netlink message, of which none is believed to be whole.
#pragma once

#include <libmnl/libmnl.h>
#include <linux/netlink.h>

#include <cstdint>
#include <cstring>
#include <optional>
#include <span>

namespace stpswitch {

using Octets = std::span<const uint8_t>;

inline Octets octets_of(const nlattr &attribute) {
  return {static_cast<const uint8_t *>(mnl_attr_get_payload(&attribute)),
          mnl_attr_get_payload_len(&attribute)};
}

// Calls the visitor with each attribute that lies within the octets.
template <class Visitor>
void for_each_attribute(Octets octets, Visitor &&visitor) {
  const void *const begin = octets.data();
  const auto *attribute = static_cast<const nlattr *>(begin);
  const auto left = [&] {
    const void *const at = attribute;
    return static_cast<int>(octets.size()) -
           static_cast<int>(static_cast<const uint8_t *>(at) - octets.data());
  };
  while (mnl_attr_ok(attribute, left())) {
    visitor(*attribute);
    attribute = mnl_attr_next(attribute);
  }
}

template <class Number>
std::optional<Number> number_of(const nlattr &attribute) {
  const Octets octets = octets_of(attribute);
  if (octets.size() != sizeof(Number)) {
    return std::nullopt;
  }
  Number number{};
  std::memcpy(&number, octets.data(), sizeof number);
  return number;
}

}  // namespace stpswitch
