// Makes the fields of the schema: one function for each kind of value. `member` is where the Owner keeps it.
#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "model/refusal.h"
#include "scenario/schema.h"

namespace stpswitch {

inline constexpr size_t kMaxNameLength = 64;

// Checks that several kinds share. They throw Refusal.
uint32_t number_in(const Value &value, int64_t min, int64_t max);
const std::string &text_of(const Value &value, size_t max_length);

std::string range_text(int64_t min, int64_t max);  // "6 to 40"

// The names that a scenario has for an enumeration's values.
template <class Choice, size_t kCount>
using Choices = std::array<std::pair<std::string_view, Choice>, kCount>;

// "up or down", each name between quotes of this kind.
template <class Choice, size_t kCount>
std::string list_choices(const Choices<Choice, kCount> &choices, std::string_view quote) {
  std::string list;
  for (size_t i = 0; i < kCount; ++i) {
    list += i == 0 ? "" : i + 1 < kCount ? ", " : " or ";
    list.append(quote).append(choices[i].first).append(quote);
  }
  return list;
}

template <class Choice, size_t kCount>
Choice choice_of(const Value &value, const Choices<Choice, kCount> &choices) {
  const auto &text = std::get<std::string>(value);
  for (const auto &[name, choice] : choices) {
    if (text == name) {
      return choice;
    }
  }
  throw Refusal("'" + text + "' is not " + list_choices(choices, ""));
}

template <class Choice, size_t kCount>
std::string name_of(Choice choice, const Choices<Choice, kCount> &choices) {
  const auto *const found = std::find_if(choices.begin(), choices.end(),
                                         [choice](const auto &pair) { return pair.second == choice; });
  return std::string(found->first);
}

template <class Owner>
constexpr Field<Owner> required(Field<Owner> field) {
  field.required = true;
  return field;
}

template <class Owner, auto member>
constexpr Field<Owner> flag_field(std::string_view name, std::string_view meaning) {
  return {name,
          meaning,
          ValueType::kBoolean,
          []() -> std::string { return "true or false"; },
          false,
          [](Owner &owner, const Value &value) { owner.*member = std::get<bool>(value); },
          [](const Owner &owner) -> Value { return owner.*member; }};
}

template <class Owner, auto member, const auto &choices>
constexpr Field<Owner> choice_field(std::string_view name, std::string_view meaning) {
  return {name,
          meaning,
          ValueType::kText,
          []() -> std::string { return list_choices(choices, "\""); },
          false,
          [](Owner &owner, const Value &value) { owner.*member = choice_of(value, choices); },
          [](const Owner &owner) -> Value { return name_of(owner.*member, choices); }};
}

template <class Owner, auto member, int64_t min, int64_t max>
constexpr Field<Owner> number_field(std::string_view name, std::string_view meaning) {
  return {name,
          meaning,
          ValueType::kInteger,
          []() -> std::string { return range_text(min, max); },
          false,
          [](Owner &owner, const Value &value) { owner.*member = number_in(value, min, max); },
          [](const Owner &owner) -> Value { return int64_t{owner.*member}; }};
}

template <class Owner, auto member, size_t max_length>
constexpr Field<Owner> text_field(std::string_view name, std::string_view meaning) {
  return {name,
          meaning,
          ValueType::kText,
          []() -> std::string { return "text, up to " + std::to_string(max_length) + " octets"; },
          false,
          [](Owner &owner, const Value &value) { owner.*member = text_of(value, max_length); },
          [](const Owner &owner) -> Value { return owner.*member; }};
}

template <class Owner, auto member>
constexpr Field<Owner> vlans_field(std::string_view name, std::string_view meaning) {
  return {name,
          meaning,
          ValueType::kText,
          []() -> std::string { return "VLANs"; },
          false,
          [](Owner &owner, const Value &value) { owner.*member = parse_vlans(std::get<std::string>(value)); },
          [](const Owner &owner) -> Value { return print_vlans(owner.*member); }};
}

// Trees of one kind, in a map from kinds to trees. Few interfaces of a large switch have any: no room is kept
// for those that have none.
template <class Owner, auto member, auto kind>
constexpr Field<Owner> trees_field(std::string_view name, std::string_view meaning) {
  return {name,
          meaning,
          ValueType::kText,
          []() -> std::string { return "trees"; },
          false,
          [](Owner &owner, const Value &value) {
            const TreeSet trees = parse_trees(std::get<std::string>(value));
            (owner.*member).erase(kind);
            if (!trees.is_empty()) {
              (owner.*member).emplace(kind, trees);
            }
          },
          [](const Owner &owner) -> Value {
            const auto trees = (owner.*member).find(kind);
            return trees != (owner.*member).end() ? print_trees(trees->second) : "";
          }};
}

}  // namespace stpswitch
