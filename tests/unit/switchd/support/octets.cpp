#include "support/octets.h"

std::string hex(std::span<const uint8_t> octets) {
  static constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const uint8_t octet : octets) {
    text += kDigits[octet >> 4U];
    text += kDigits[octet & 0xFU];
  }
  return text;
}

stpswitch::Packet octets(std::string_view digits) {
  std::string pairs;
  for (const char digit : digits) {
    if (digit != ' ') {
      pairs += digit;
    }
  }
  stpswitch::Packet packet;
  for (size_t i = 0; i < pairs.size(); i += 2) {
    packet.push_back(static_cast<uint8_t>(std::stoul(pairs.substr(i, 2), nullptr, 16)));
  }
  return packet;
}
