#include "model/bridge_id.h"

#include <array>

#include "base/hex_octets.h"
#include "model/refusal.h"

namespace stpswitch {
namespace {

constexpr char kDot = '.';
constexpr unsigned kOctetBits = 8;
constexpr size_t kPriorityDigits = 4;

}  // namespace

BridgeId parse_bridge_id(std::string_view text) {
  std::array<uint8_t, sizeof(uint16_t)> priority{};
  BridgeId id{};
  if (text.size() <= kPriorityDigits || text[kPriorityDigits] != kDot ||
      !parse_hex_octets(text.substr(0, kPriorityDigits), "", priority) ||
      !parse_hex_octets(text.substr(kPriorityDigits + 1), "", id.address)) {
    throw Refusal("'" + std::string(text) + "' is not a bridge identifier such as 8000.00005e005300");
  }
  id.priority = static_cast<uint16_t>(priority[0] << kOctetBits | priority[1]);
  return id;
}

std::string print_bridge_id(const BridgeId &id) {
  const std::array<uint8_t, sizeof(uint16_t)> priority = {static_cast<uint8_t>(id.priority >> kOctetBits),
                                                          static_cast<uint8_t>(id.priority)};
  return print_hex_octets(priority, "") + kDot + print_hex_octets(id.address, "");
}

}  // namespace stpswitch
