#include "model/mac_address.h"

#include "base/hex_octets.h"
#include "model/refusal.h"

namespace stpswitch {
namespace {

constexpr std::string_view kSeparator = ":";

}  // namespace

MacAddress parse_mac_address(std::string_view text) {
  MacAddress address{};
  if (!parse_hex_octets(text, kSeparator, address)) {
    throw Refusal("'" + std::string(text) + "' is not a MAC address such as 00:00:5e:00:53:00");
  }
  return address;
}

std::string print_mac_address(const MacAddress &address) { return print_hex_octets(address, kSeparator); }

}  // namespace stpswitch
