// Makes the fields of the schema: one function for each kind of value. `member` is where the Owner keeps it:
// a pointer to a member, or a kPath to one within members.
#pragma once

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "keys/schema.h"
#include "model/bridge_id.h"
#include "model/mac_address.h"
#include "model/refusal.h"

namespace stpswitch {

inline constexpr size_t kMaxNameLength = 64;

// Checks that several kinds share. They throw Refusal.
uint32_t number_in(const Value &value, int64_t min, int64_t max);
uint32_t number_in_steps(const Value &value, int64_t step, int64_t max);  // from 0
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

// Where an Owner keeps the value of a field: a pointer to a member, or to one within members.
template <auto... kMembers>
struct Path {};
template <auto... kMembers>
inline constexpr Path<kMembers...> kPath;

template <class Owner, class T, class Member>
auto &at(Owner &owner, Member T::*member) {
  return owner.*member;
}
template <class Owner, auto... kMembers>
auto &at(Owner &owner, Path<kMembers...> /*path*/) {
  return (owner.*....*kMembers);
}

// What `print` makes of a member that may be unknown.
template <class T, class Print>
std::optional<Value> read_member(const std::optional<T> &member, Print print) {
  return member ? std::optional<Value>(print(*member)) : std::nullopt;
}
template <class T, class Print>
std::optional<Value> read_member(const T &member, Print print) {
  return print(member);
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
          [](Owner &owner, const Value &value) { at(owner, member) = std::get<bool>(value); },
          [](const Owner &owner) {
            return read_member(at(owner, member), [](bool flag) -> Value { return flag; });
          }};
}

template <class Owner, auto member, const auto &choices>
constexpr Field<Owner> choice_field(std::string_view name, std::string_view meaning) {
  return {name,
          meaning,
          ValueType::kText,
          []() -> std::string { return list_choices(choices, "\""); },
          false,
          [](Owner &owner, const Value &value) { at(owner, member) = choice_of(value, choices); },
          [](const Owner &owner) {
            return read_member(at(owner, member),
                               [](auto choice) -> Value { return name_of(choice, choices); });
          }};
}

template <class Owner, auto member, int64_t min, int64_t max>
constexpr Field<Owner> number_field(std::string_view name, std::string_view meaning) {
  return {name,
          meaning,
          ValueType::kInteger,
          []() -> std::string { return range_text(min, max); },
          false,
          [](Owner &owner, const Value &value) { at(owner, member) = number_in(value, min, max); },
          [](const Owner &owner) {
            return read_member(at(owner, member), [](uint32_t number) -> Value { return int64_t{number}; });
          }};
}

// Numbers that are multiples of a step.
template <class Owner, auto member, int64_t step, int64_t max>
constexpr Field<Owner> stepped_field(std::string_view name, std::string_view meaning) {
  Field<Owner> field = number_field<Owner, member, 0, max>(name, meaning);
  field.domain = []() -> std::string { return range_text(0, max) + " in steps of " + std::to_string(step); };
  field.assign = [](Owner &owner, const Value &value) {
    at(owner, member) = number_in_steps(value, step, max);
  };
  return field;
}

template <class Owner, auto member, size_t max_length>
constexpr Field<Owner> text_field(std::string_view name, std::string_view meaning) {
  return {name,
          meaning,
          ValueType::kText,
          []() -> std::string { return "text, up to " + std::to_string(max_length) + " octets"; },
          false,
          [](Owner &owner, const Value &value) { at(owner, member) = text_of(value, max_length); },
          [](const Owner &owner) {
            return read_member(at(owner, member), [](const std::string &text) -> Value { return text; });
          }};
}

template <class Owner, auto member>
constexpr Field<Owner> mac_field(std::string_view name, std::string_view meaning) {
  return {name,
          meaning,
          ValueType::kText,
          []() -> std::string { return "six pairs of hexadecimal digits between colons"; },
          false,
          [](Owner &owner, const Value &value) {
            at(owner, member) = parse_mac_address(std::get<std::string>(value));
          },
          [](const Owner &owner) {
            return read_member(at(owner, member),
                               [](const MacAddress &address) -> Value { return print_mac_address(address); });
          }};
}

// An empty text takes the value back.
template <class Owner, auto member>
constexpr Field<Owner> bridge_id_field(std::string_view name, std::string_view meaning) {
  return {
      name,
      meaning,
      ValueType::kText,
      []() -> std::string { return "priority and address in hexadecimal digits, with a dot between them"; },
      false,
      [](Owner &owner, const Value &value) {
        const auto &text = std::get<std::string>(value);
        at(owner, member) = text.empty() ? std::nullopt : std::optional(parse_bridge_id(text));
      },
      [](const Owner &owner) {
        return read_member(at(owner, member),
                           [](const BridgeId &id) -> Value { return print_bridge_id(id); });
      }};
}

template <class Owner, auto member>
constexpr Field<Owner> vlans_field(std::string_view name, std::string_view meaning) {
  return {
      name,
      meaning,
      ValueType::kText,
      []() -> std::string { return "VLANs"; },
      false,
      [](Owner &owner, const Value &value) { at(owner, member) = parse_vlans(std::get<std::string>(value)); },
      [](const Owner &owner) {
        return read_member(at(owner, member),
                           [](const VlanSet &vlans) -> Value { return print_vlans(vlans); });
      }};
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
            at(owner, member).erase(kind);
            if (!trees.is_empty()) {
              at(owner, member).emplace(kind, trees);
            }
          },
          [](const Owner &owner) -> std::optional<Value> {
            const auto trees = at(owner, member).find(kind);
            return trees != at(owner, member).end() ? print_trees(trees->second) : "";
          }};
}

// The fields of several arrays, one after the other.
template <class Owner, size_t... kCounts>
constexpr auto joined(const std::array<Field<Owner>, kCounts> &...parts) {
  std::array<Field<Owner>, (kCounts + ...)> all{};
  auto at = all.begin();
  ((at = std::copy(parts.begin(), parts.end(), at)), ...);
  return all;
}

}  // namespace stpswitch
