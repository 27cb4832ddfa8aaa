// Lays out one reply: its head, then the attributes in the order in which they are added.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "commands/packet.h"
#include "commands/protocol.h"
#include "platform/cmd.h"

namespace stpswitch {

class ReplyBuilder {
 public:
  ReplyBuilder();

  void add_number(Token token, uint32_t value);
  void add_flag(Token token, bool flag) { add_number(token, flag ? 1 : 0); }
  void add_octets(Token token, std::span<const uint8_t> octets);
  void add_octets(Token token, std::string_view octets);

  // The reply to the request with this sequence number. Attributes go with CMD_OK alone.
  Packet finish(uint32_t sequence, cmd_result status) &&;

 private:
  void add(Token token, const void *value, uint32_t length);

  Packet packet_;
  uint32_t attribute_count_ = 0;
};

}  // namespace stpswitch
