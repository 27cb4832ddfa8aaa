#include "keys/fields.h"

#include "base/printable.h"

namespace stpswitch {

std::string range_text(int64_t min, int64_t max) {
  return std::to_string(min) + " to " + std::to_string(max);
}

uint32_t number_in(const Value &value, int64_t min, int64_t max) {
  const int64_t number = std::get<int64_t>(value);
  if (number < min || number > max) {
    throw Refusal(std::to_string(number) + " is not in " + std::to_string(min) + ".." + std::to_string(max));
  }
  return static_cast<uint32_t>(number);
}

uint32_t number_in_steps(const Value &value, int64_t step, int64_t max) {
  const uint32_t number = number_in(value, 0, max);
  if (number % step != 0) {
    throw Refusal(std::to_string(number) + " is not a multiple of " + std::to_string(step));
  }
  return number;
}

const std::string &text_of(const Value &value, size_t max_length) {
  const auto &text = std::get<std::string>(value);
  if (text.size() > max_length) {
    throw Refusal("a text of " + std::to_string(text.size()) + " octets is longer than " +
                  std::to_string(max_length));
  }
  if (!is_printable(text)) {
    throw Refusal("the text holds a control character");
  }
  return text;
}

}  // namespace stpswitch
