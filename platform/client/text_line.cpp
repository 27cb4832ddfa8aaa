#include "text_line.h"

#include <cstring>

namespace stpplatform {
namespace {

constexpr char kLineBreaks[] = "\r\n";
constexpr unsigned char kDelete = 0x7F;

bool is_control(char c) {
  const auto octet = static_cast<unsigned char>(c);
  return octet < ' ' || octet == kDelete;
}

}  // namespace

char *make_line(char *text) {
  char *begin = text + std::strspn(text, kLineBreaks);
  char *end = begin + std::strlen(begin);
  while (end != begin && std::strchr(kLineBreaks, end[-1]) != nullptr) {
    --end;
  }
  *end = '\0';
  for (char *at = begin; at != end; ++at) {
    if (is_control(*at)) {
      *at = ' ';
    }
  }
  return begin;
}

}  // namespace stpplatform
