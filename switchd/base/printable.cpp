#include "base/printable.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace stpswitch {
namespace {

// RFC 3629: how the first octet of a character tells the number of its octets, and the least character that
// needs so many.
struct Form {
  uint8_t mask;
  uint8_t lead;
  uint32_t least;
};
constexpr std::array<Form, 4> kForms{
    {{0x80, 0x00, 0x00}, {0xE0, 0xC0, 0x80}, {0xF0, 0xE0, 0x800}, {0xF8, 0xF0, 0x10000}}};
constexpr Form kContinuation{0xC0, 0x80, 0};
constexpr unsigned kBitsOfContinuation = 6;

bool has(const Form &form, uint8_t octet) { return (octet & form.mask) == form.lead; }
uint32_t bits_of(const Form &form, uint8_t octet) { return octet & ~uint32_t{form.mask}; }

bool is_control(uint32_t character) {
  constexpr uint32_t kFirstDelete = 0x7F;
  constexpr uint32_t kLastOfSecondSet = 0x9F;
  return character < ' ' || (character >= kFirstDelete && character <= kLastOfSecondSet);
}

bool is_character(uint32_t number) {
  constexpr uint32_t kFirstSurrogate = 0xD800;
  constexpr uint32_t kLastSurrogate = 0xDFFF;
  constexpr uint32_t kLast = 0x10FFFF;
  return number < kFirstSurrogate || (number > kLastSurrogate && number <= kLast);
}

}  // namespace

size_t printable_length(std::string_view text) {
  if (text.empty()) {
    return 0;
  }
  const auto first = static_cast<uint8_t>(text.front());
  const auto *const form =
      std::find_if(kForms.begin(), kForms.end(), [first](const Form &known) { return has(known, first); });
  const auto length = static_cast<size_t>(form - kForms.begin()) + 1;
  if (form == kForms.end() || length > text.size()) {
    return 0;
  }
  uint32_t character = bits_of(*form, first);
  for (const char next : text.substr(1, length - 1)) {
    const auto octet = static_cast<uint8_t>(next);
    if (!has(kContinuation, octet)) {
      return 0;
    }
    character = character << kBitsOfContinuation | bits_of(kContinuation, octet);
  }
  return character >= form->least && is_character(character) && !is_control(character) ? length : 0;
}

bool is_printable(std::string_view text) {
  while (!text.empty()) {
    const size_t length = printable_length(text);
    if (length == 0) {
      return false;
    }
    text.remove_prefix(length);
  }
  return true;
}

std::string made_printable(std::string_view text, size_t max) {
  std::string made;
  while (!text.empty() && made.size() < max) {
    const size_t length = printable_length(text);
    if (length > max - made.size()) {
      break;
    }
    length != 0 ? made.append(text.substr(0, length)) : made.append(1, '?');
    text.remove_prefix(std::max(length, size_t{1}));
  }
  return made;
}

}  // namespace stpswitch
