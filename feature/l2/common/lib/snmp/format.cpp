#include "format.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>

namespace stpsnmp {
namespace {

constexpr int kDecimal = 10;
constexpr int kHexadecimal = 16;

char *write_octets(const char *octets, size_t length, char *at, char *end) {
  length = std::min(length, static_cast<size_t>(end - at));
  std::memcpy(at, octets, length);
  return at + length;
}

template <class Number>
char *write_number(Number number, int base, char *at, char *end) {
  constexpr size_t kSignSize = 1;
  char digits[kSignSize + std::numeric_limits<uint32_t>::digits10 + 1];
  const char *end_of_digits = std::to_chars(digits, digits + sizeof digits, number, base).ptr;
  return write_octets(digits, static_cast<size_t>(end_of_digits - digits), at, end);
}

}  // namespace

char *write_text(const Format &format, va_list arguments, char *at, char *end) {
  const char *rest = format.begin();
  for (;;) {
    const auto *conversion =
        static_cast<const char *>(std::memchr(rest, '%', static_cast<size_t>(format.end() - rest)));
    const char *const literal_end = conversion != nullptr ? conversion : format.end();
    at = write_octets(rest, static_cast<size_t>(literal_end - rest), at, end);
    if (conversion == nullptr) {
      return at;
    }
    switch (conversion[1]) {
      case 's': {
        const char *const text = va_arg(arguments, const char *);
        at = write_octets(text, std::strlen(text), at, end);
        break;
      }
      case 'd':
        at = write_number(va_arg(arguments, int), kDecimal, at, end);
        break;
      case 'u':
        at = write_number(va_arg(arguments, unsigned), kDecimal, at, end);
        break;
      default:
        at = write_number(va_arg(arguments, unsigned), kHexadecimal, at, end);
    }
    rest = conversion + 2;
  }
}

}  // namespace stpsnmp
