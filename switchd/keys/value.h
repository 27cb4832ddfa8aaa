// What a scenario file or a `set` command says for a key, before a field of the schema has checked it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace stpswitch {

using TextList = std::vector<std::string>;
using Value = std::variant<std::string, int64_t, bool, TextList>;

// The alternatives of Value, in its order.
enum class ValueType { kText, kInteger, kBoolean, kTextList };

// Reads and prints values as they stand on a command line: true or false, digits, items between commas.
// Reading throws Refusal.
Value read_value(ValueType type, const std::string &text);
std::string print_value(const Value &value);

}  // namespace stpswitch
