#include "keys/keys.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>

#include "base/nearest.h"
#include "keys/config_error.h"
#include "keys/schema.h"
#include "model/refusal.h"

namespace stpswitch {
namespace {

constexpr char kDot = '.';

bool lies_below(std::string_view key, std::string_view prefix) {
  return prefix.empty() ||
         (key.starts_with(prefix) && (key.size() == prefix.size() || key[prefix.size()] == kDot));
}

class ValueCollector {
 public:
  ValueCollector(const SwitchState &state, std::string_view prefix) : state_(state), prefix_(prefix) {}

  template <class Owner>
  void operator()(const SingleSection<Owner> &section) {
    note_section(section.path);
    collect(section.path, section.fields, state_.*section.part);
  }

  template <class Owner>
  void operator()(const ListSection<Owner> &section) {
    note_section(section.path);
    for (const auto &[number, entry] : state_.*section.part) {
      const std::string path = std::string(section.path) + kDot + std::to_string(number);
      if (lies_below(path, prefix_) || lies_below(prefix_, path)) {
        collect(path, section.fields, entry);
      }
    }
  }

  bool prefix_is_known() const { return prefix_is_known_ || !values_.empty(); }
  bool is_unknown_value() const { return is_unknown_value_; }
  std::vector<KeyAndValue> take() { return std::move(values_); }

 private:
  // A section without entries has nothing to show, and is no mistake.
  void note_section(std::string_view path) { prefix_is_known_ |= path == prefix_; }

  template <class Owner>
  void collect(std::string_view path, std::span<const Field<Owner>> fields, const Owner &owner) {
    for (const Field<Owner> &field : fields) {
      std::string key = std::string(path) + kDot + std::string(field.name);
      if (!lies_below(key, prefix_)) {
        continue;
      }
      if (std::optional<Value> value = field.read(owner)) {
        values_.emplace_back(std::move(key), std::move(*value));
      } else {
        is_unknown_value_ |= key == prefix_;
      }
    }
  }

  const SwitchState &state_;
  std::string_view prefix_;
  bool prefix_is_known_ = false;
  bool is_unknown_value_ = false;
  std::vector<KeyAndValue> values_;
};

class ValueSetter {
 public:
  ValueSetter(SwitchState *state, const std::string &key, const std::string &text)
      : state_(*state), key_(key), text_(text) {
    const size_t dot = key.rfind(kDot);
    if (dot != std::string::npos) {
      path_ = key.substr(0, dot);
      name_ = key.substr(dot + 1);
    }
  }

  template <class Owner>
  void operator()(const SingleSection<Owner> &section) {
    if (path_ == section.path) {
      assign(section.fields, &(state_.*section.part));
    }
  }

  template <class Owner>
  void operator()(const ListSection<Owner> &section) {
    const size_t dot = path_.rfind(kDot);
    if (dot == std::string::npos || path_.substr(0, dot) != section.path) {
      return;
    }
    for (auto &[number, entry] : state_.*section.part) {
      if (path_.substr(dot + 1) == std::to_string(number)) {
        assign(section.fields, &entry);
      }
    }
  }

  bool found() const { return found_; }

 private:
  template <class Owner>
  void assign(std::span<const Field<Owner>> fields, Owner *owner) {
    for (const Field<Owner> &field : fields) {
      if (field.name == name_) {
        found_ = true;
        try {
          field.assign(*owner, read_value(field.type, text_));
        } catch (const Refusal &refusal) {
          throw ConfigError(key_, refusal.what());
        }
      }
    }
  }

  SwitchState &state_;
  const std::string &key_;
  const std::string &text_;
  std::string path_;  // of the section or entry
  std::string name_;  // of the field
  bool found_ = false;
};

std::string digits_of(std::string_view text) {
  std::string digits;
  std::copy_if(text.begin(), text.end(), std::back_inserter(digits),
               [](char octet) { return octet >= '0' && octet <= '9'; });
  return digits;
}

// Of the switch's keys, and of what lies above them. Who writes another number means another entry.
std::string suggested_key(const SwitchState &state, const std::string &key) {
  ValueCollector collector(state, "");
  for_each_section(collector);
  std::set<std::string> known;
  for (const auto &[name, value] : collector.take()) {
    for (size_t end = name.size(); end != std::string::npos; end = name.rfind(kDot, end - 1)) {
      if (digits_of(name.substr(0, end)) == digits_of(key)) {
        known.insert(name.substr(0, end));
      }
    }
  }
  return suggestion(key, {known.begin(), known.end()});
}

}  // namespace

std::vector<KeyAndValue> values_below(const SwitchState &state, const std::string &prefix) {
  ValueCollector collector(state, prefix);
  for_each_section(collector);
  if (collector.is_unknown_value()) {
    throw ConfigError(prefix, "nobody knows its value");
  }
  if (!collector.prefix_is_known()) {
    throw ConfigError(prefix, "the switch has no such key" + suggested_key(state, prefix));
  }
  return collector.take();
}

SwitchState with_key_set(const SwitchState &state, const std::string &key, const std::string &text) {
  SwitchState changed = state;
  ValueSetter setter(&changed, key, text);
  for_each_section(setter);
  if (!setter.found()) {
    throw ConfigError(key, "the switch has no such key that can be set" + suggested_key(state, key));
  }
  return changed;
}

}  // namespace stpswitch
