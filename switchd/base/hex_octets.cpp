#include "base/hex_octets.h"

#include <charconv>
#include <system_error>

namespace stpswitch {
namespace {

constexpr unsigned kBase = 16;
constexpr size_t kDigitsPerOctet = 2;
constexpr std::string_view kDigits = "0123456789abcdef";

bool take(std::string_view expected, std::string_view *text) {
  const bool is_there = text->starts_with(expected);
  text->remove_prefix(is_there ? expected.size() : 0);
  return is_there;
}

bool take_octet(std::string_view *text, uint8_t *octet) {
  const std::string_view digits = text->substr(0, kDigitsPerOctet);
  const char *const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, *octet, kBase);
  text->remove_prefix(digits.size());
  return error == std::errc() && stop == end && digits.size() == kDigitsPerOctet;
}

}  // namespace

bool parse_hex_octets(std::string_view text, std::string_view separator, std::span<uint8_t> octets) {
  for (size_t i = 0; i < octets.size(); ++i) {
    if ((i != 0 && !take(separator, &text)) || !take_octet(&text, &octets[i])) {
      return false;
    }
  }
  return text.empty();
}

std::string print_hex_octets(std::span<const uint8_t> octets, std::string_view separator) {
  std::string text;
  for (const uint8_t octet : octets) {
    text += text.empty() ? "" : separator;
    text += kDigits[octet / kBase];
    text += kDigits[octet % kBase];
  }
  return text;
}

}  // namespace stpswitch
