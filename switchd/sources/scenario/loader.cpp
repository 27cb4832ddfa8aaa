#include "sources/scenario/loader.h"

#include <toml++/toml.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

#include "base/nearest.h"
#include "base/printable.h"
#include "keys/config_error.h"
#include "keys/schema.h"
#include "model/refusal.h"
#include "sources/scenario/consistency.h"
#include "sources/scenario/toml_error.h"

namespace stpswitch {
namespace {

constexpr size_t kMaxFileSize = size_t{16} * 1024 * 1024;
constexpr size_t kReadSize = 4096;
constexpr char kDot = '.';
constexpr char kNothingAsked[] = "";

uint32_t line_of(const toml::node &node) { return node.source().begin.line; }
uint32_t line_of(const toml::key &key) { return key.source().begin.line; }

const char *name_of(ValueType type) {
  switch (type) {
    case ValueType::kText:
      return "a string";
    case ValueType::kInteger:
      return "an integer";
    case ValueType::kBoolean:
      return "true or false";
    case ValueType::kTextList:
      return "a list of strings";
  }
  throw std::logic_error("unknown type of value");
}

TextList text_list_of(const toml::array &array) {
  TextList list;
  for (const toml::node &item : array) {
    if (!item.is_string()) {
      throw Refusal(std::string("expected ") + name_of(ValueType::kTextList));
    }
    list.push_back(item.as_string()->get());
  }
  return list;
}

// Throws Refusal unless the node has the type.
Value value_of(const toml::node &node, ValueType type) {
  if (type == ValueType::kText && node.is_string()) {
    return node.as_string()->get();
  }
  if (type == ValueType::kInteger && node.is_integer()) {
    return node.as_integer()->get();
  }
  if (type == ValueType::kBoolean && node.is_boolean()) {
    return node.as_boolean()->get();
  }
  if (type == ValueType::kTextList && node.is_array()) {
    return text_list_of(*node.as_array());
  }
  throw Refusal(std::string("expected ") + name_of(type));
}

// Fills a state section by section, and remembers which line each key came from.
class Loader {
 public:
  explicit Loader(const toml::table &root) : root_(root) {
    for_each_section([this](const auto &section) { sections_.push_back(section.path); });
    line_of_key_[""] = 1;
  }

  void load() {
    for (const auto &[key, node] : root_) {
      if (!is_section(key.str())) {
        note_line(key.str(), line_of(key));
        throw ConfigError(std::string(key.str()),
                          "unknown section" + suggestion(key.str(), {sections_.begin(), sections_.end()}));
      }
    }
    for_each_section(*this);
    check_consistency(state_, kNothingAsked);
  }

  template <class Owner>
  void operator()(const SingleSection<Owner> &section) {
    const std::string path(section.path);
    const toml::node *const node = root_.at_path(section.path).node();
    if (node != nullptr) {
      note_line(path, line_of(*node));
      if (!node->is_table()) {
        throw ConfigError(path, "expected a [" + path + "] table");
      }
    }
    static const toml::table kNothing;
    const toml::table &table = node != nullptr ? *node->as_table() : kNothing;
    check_keys(table, path, section.fields, "");
    state_.*section.part = section.make();
    assign(table, path, section.fields, &(state_.*section.part));
  }

  template <class Owner>
  void operator()(const ListSection<Owner> &section) {
    const toml::node *const node = root_.at_path(section.path).node();
    if (node == nullptr) {
      return;
    }
    const std::string path(section.path);
    note_line(path, line_of(*node));
    if (!node->is_array()) {
      throw ConfigError(path, "expected [[" + path + "]] tables");
    }
    for (const toml::node &entry : *node->as_array()) {
      note_line(path, line_of(entry));
      if (!entry.is_table()) {
        throw ConfigError(path, "expected [[" + path + "]] tables");
      }
      add_entry(section, *entry.as_table());
    }
  }

  SwitchState take() { return std::move(state_); }

  // The line of a key, or of the innermost part of its path that the file states.
  uint32_t line_of_key(std::string key) const {
    while (!line_of_key_.contains(key)) {
      const size_t dot = key.rfind(kDot);
      key.resize(dot == std::string::npos ? 0 : dot);
    }
    return line_of_key_.at(key);
  }

 private:
  bool is_section(std::string_view path) const {
    return std::find(sections_.begin(), sections_.end(), path) != sections_.end();
  }

  void note_line(std::string_view key, uint32_t line) { line_of_key_[std::string(key)] = line; }

  template <class Owner>
  void check_keys(const toml::table &table, const std::string &path, std::span<const Field<Owner>> fields,
                  std::string_view number_name) {
    for (const auto &[key, node] : table) {
      const std::string_view name = key.str();
      const std::string full_key = path + kDot + std::string(name);
      const bool is_field =
          std::any_of(fields.begin(), fields.end(), [name](const auto &field) { return field.name == name; });
      if (is_field || name == number_name) {
        note_line(full_key, line_of(key));
      } else if (!is_section(full_key)) {
        note_line(full_key, line_of(key));
        std::vector<std::string> names{std::string(number_name)};
        std::transform(fields.begin(), fields.end(), std::back_inserter(names),
                       [](const auto &field) { return std::string(field.name); });
        throw ConfigError(full_key, "unknown key" + suggestion(name, names));
      }
    }
  }

  template <class Owner>
  void assign(const toml::table &table, const std::string &path, std::span<const Field<Owner>> fields,
              Owner *owner) {
    for (const Field<Owner> &field : fields) {
      const std::string key = path + kDot + std::string(field.name);
      const toml::node *const node = table.get(field.name);
      if (node != nullptr) {
        with_key(key, [&] { field.assign(*owner, value_of(*node, field.type)); });
      } else if (field.required) {
        throw ConfigError(key, "the key is missing");
      }
    }
  }

  template <class Owner>
  void add_entry(const ListSection<Owner> &section, const toml::table &table) {
    const std::string number_key = std::string(section.path) + kDot + std::string(section.number_name);
    const uint32_t number = entry_number(section, table, number_key);
    const std::string path = std::string(section.path) + kDot + std::to_string(number);
    auto &entries = state_.*section.part;
    if (entries.contains(number)) {
      throw ConfigError(number_key, std::to_string(number) + " stands on line " +
                                        std::to_string(line_of_key(path)) + " already");
    }
    if (entries.size() == section.max_entries) {
      throw ConfigError(number_key,
                        "there are more than " + std::to_string(section.max_entries) + " entries");
    }
    note_line(path, line_of(table));
    check_keys(table, path, section.fields, section.number_name);
    Owner entry = section.make(number);
    assign(table, path, section.fields, &entry);
    entries.emplace(number, std::move(entry));
  }

  template <class Owner>
  uint32_t entry_number(const ListSection<Owner> &section, const toml::table &table, const std::string &key) {
    const toml::node *const node = table.get(section.number_name);
    line_of_key_.erase(key);
    if (node == nullptr) {
      throw ConfigError(key, "the key is missing");
    }
    note_line(key, line_of(*node));
    int64_t number = 0;
    with_key(key, [&] { number = std::get<int64_t>(value_of(*node, ValueType::kInteger)); });
    if (number < section.min_number || number > section.max_number) {
      throw ConfigError(key, std::to_string(number) + " is not in " + std::to_string(section.min_number) +
                                 ".." + std::to_string(section.max_number));
    }
    return static_cast<uint32_t>(number);
  }

  template <class Action>
  static void with_key(const std::string &key, Action action) {
    try {
      action();
    } catch (const Refusal &refusal) {
      throw ConfigError(key, refusal.what());
    }
  }

  const toml::table &root_;
  std::vector<std::string_view> sections_;
  std::map<std::string, uint32_t> line_of_key_;
  SwitchState state_;
};

// TOML has escapes for control characters, and reasons quote keys and values.
[[noreturn]] void fail(const std::string &name, uint32_t line, std::string_view reason) {
  throw ScenarioError(name + ":" + std::to_string(line) + ": " + made_printable(reason, reason.size()));
}

toml::table parse_toml(const std::string &text, const std::string &name) {
  try {
    return toml::parse(text, name);
  } catch (const toml::parse_error &error) {
    const uint32_t line = error.source().begin.line;
    fail(name, line, explain_toml_error(error.description(), text, line));
  }
}

std::string read_file(const std::string &path) {
  const auto fail_with_errno = [&path] { throw ScenarioError(path + ": " + std::strerror(errno)); };
  const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::fopen(path.c_str(), "re"), std::fclose);
  if (!file) {
    fail_with_errno();
  }
  std::string text;
  std::array<char, kReadSize> block{};
  size_t got = 0;
  while ((got = std::fread(block.data(), 1, block.size(), file.get())) > 0) {
    text.append(block.data(), got);
    if (text.size() > kMaxFileSize) {
      throw ScenarioError(path + ": larger than " + std::to_string(kMaxFileSize) + " octets");
    }
  }
  if (std::ferror(file.get()) != 0) {
    fail_with_errno();
  }
  return text;
}

}  // namespace

SwitchState parse_scenario(const std::string &text, const std::string &name) {
  const toml::table root = parse_toml(text, name);
  Loader loader(root);
  try {
    loader.load();
  } catch (const ConfigError &error) {
    fail(name, loader.line_of_key(error.key()), error.what());
  }
  return loader.take();
}

SwitchState load_scenario(const std::string &path) { return parse_scenario(read_file(path), path); }

}  // namespace stpswitch
