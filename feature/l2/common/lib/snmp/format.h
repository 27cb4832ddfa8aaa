// The texts of the log are written in printf's notation, of which they have no more than %d, %s, %u and %x.
// To know no others makes a text three times as cheap as printf does.
#pragma once

#include <cstdarg>
#include <cstddef>

namespace stpsnmp {

// A text with its conversions. It does not compile with any that is not known.
class Format {
 public:
  // From a literal, as printf takes it.
  consteval Format(const char *text) : text_(text) {
    for (const char *at = text; *at != '\0'; ++at, ++length_) {
      if (*at == '%') {
        ++at;
        ++length_;
        if (*at != 'd' && *at != 's' && *at != 'u' && *at != 'x') {
          this_conversion_is_not_known();
        }
      }
    }
  }

  const char *begin() const { return text_; }
  const char *end() const { return text_ + length_; }

 private:
  // Not a constant expression, so that the compiler refuses the text and names the reason.
  static void this_conversion_is_not_known();

  const char *text_;
  size_t length_ = 0;
};

// Writes the text with its arguments, as much as there is room for, without a terminator. Returns its end.
char *write_text(const Format &format, va_list arguments, char *at, char *end);

}  // namespace stpsnmp
