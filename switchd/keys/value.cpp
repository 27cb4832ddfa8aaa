#include "keys/value.h"

#include <charconv>

#include "model/refusal.h"

namespace stpswitch {
namespace {

constexpr std::string_view kTrue = "true";
constexpr std::string_view kFalse = "false";
constexpr char kSeparator = ',';

int64_t read_integer(const std::string &text) {
  int64_t number = 0;
  const char *const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) {
    throw Refusal("'" + text + "' is not a number");
  }
  return number;
}

bool read_boolean(const std::string &text) {
  if (text != kTrue && text != kFalse) {
    throw Refusal("'" + text + "' is neither true nor false");
  }
  return text == kTrue;
}

TextList read_list(const std::string &text) {
  TextList list;
  if (text.empty()) {
    return list;
  }
  size_t begin = 0;
  for (size_t end = 0; end != std::string::npos; begin = end + 1) {
    end = text.find(kSeparator, begin);
    list.push_back(text.substr(begin, end - begin));
  }
  return list;
}

struct Printer {
  std::string operator()(const std::string &text) const { return text; }
  std::string operator()(int64_t number) const { return std::to_string(number); }
  std::string operator()(bool flag) const { return std::string(flag ? kTrue : kFalse); }
  std::string operator()(const TextList &list) const {
    std::string text;
    for (const std::string &item : list) {
      text += text.empty() ? "" : std::string(1, kSeparator);
      text += item;
    }
    return text;
  }
};

}  // namespace

Value read_value(ValueType type, const std::string &text) {
  switch (type) {
    case ValueType::kText:
      return text;
    case ValueType::kInteger:
      return read_integer(text);
    case ValueType::kBoolean:
      return read_boolean(text);
    case ValueType::kTextList:
      return read_list(text);
  }
  throw std::logic_error("unknown type of value");
}

std::string print_value(const Value &value) { return std::visit(Printer{}, value); }

}  // namespace stpswitch
