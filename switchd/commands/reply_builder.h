// Lays out one reply: its head, then the attributes in the order in which they are added.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "commands/packet.h"
#include "platform/cmd.h"
#include "platform/stp_protocol.h"

namespace stpswitch {

class ReplyBuilder {
 public:
  ReplyBuilder();

  // A value that nobody knows is left out.
  void add_number(stp_attribute attribute, std::optional<uint32_t> value);
  void add_flag(stp_attribute attribute, std::optional<bool> flag) { add_number(attribute, flag); }
  template <class Choice>
  void add_choice(stp_attribute attribute, const std::optional<Choice> &choice) {
    add_number(attribute, choice ? std::optional(static_cast<uint32_t>(*choice)) : std::nullopt);
  }
  void add_octets(stp_attribute attribute, std::span<const uint8_t> octets);
  void add_octets(stp_attribute attribute, std::string_view octets);

  // The reply to the request with this sequence number. Attributes go with CMD_OK alone.
  Packet finish(uint32_t sequence, cmd_result status) &&;

 private:
  void add(stp_attribute attribute, const void *value, uint32_t length);

  Packet packet_;
  uint32_t attribute_count_ = 0;
};

}  // namespace stpswitch
