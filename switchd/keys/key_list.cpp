#include "keys/key_list.h"

#include <optional>

#include "keys/fields.h"

namespace stpswitch {
namespace {

constexpr std::string_view kRequired = "required";
constexpr std::string_view kNone = "none";
constexpr std::string_view kEntryNumber = "N";

struct TomlPrinter {
  std::string operator()(const std::string &text) const { return '"' + text + '"'; }
  std::string operator()(int64_t number) const { return print_value(number); }
  std::string operator()(bool flag) const { return print_value(flag); }
  std::string operator()(const TextList &list) const { return "[" + print_value(list) + "]"; }
};

std::string print_toml(const std::optional<Value> &value) {
  return value ? std::visit(TomlPrinter{}, *value) : std::string(kNone);
}

class KeyLister {
 public:
  template <class Owner>
  void operator()(const SingleSection<Owner> &section) {
    begin_section("[" + std::string(section.path) + "]", section.meaning);
    const Owner defaults = section.make();
    for (const Field<Owner> &field : section.fields) {
      add_key(field, print_toml(field.read(defaults)));
    }
  }

  template <class Owner>
  void operator()(const ListSection<Owner> &section) {
    begin_section("[[" + std::string(section.path) + "]]", section.meaning);
    add_line(section.number_name, domain_of_number(section), kRequired,
             "The number N of the entry, which no other one has.");
    for (const Field<Owner> &field : section.fields) {
      add_key(field, default_of(section, field));
    }
  }

  std::string take() { return std::move(text_); }

 private:
  void begin_section(std::string title, std::string_view meaning) {
    title_ = std::move(title);
    add_line("", "", "", meaning);
  }

  void add_line(std::string_view key, std::string_view domain, std::string_view default_value,
                std::string_view meaning) {
    text_.append(title_);
    for (const std::string_view part : {key, domain, default_value, meaning}) {
      text_.append(1, '\t').append(part);
    }
    text_.append(1, '\n');
  }

  template <class Owner>
  void add_key(const Field<Owner> &field, std::string_view default_value) {
    add_line(field.name, field.domain(), field.required ? kRequired : default_value, field.meaning);
  }

  template <class Owner>
  static std::string domain_of_number(const ListSection<Owner> &section) {
    const std::string range = range_text(section.min_number, section.max_number);
    const bool all_fit = section.max_entries > section.max_number - section.min_number;
    return all_fit ? range : range + ", at most " + std::to_string(section.max_entries) + " entries";
  }

  // Where it depends on the entry, the entry's number is the end of a text, or is counted from another one.
  template <class Owner>
  static std::string default_of(const ListSection<Owner> &section, const Field<Owner> &field) {
    const uint32_t number = section.min_number;
    const std::optional<Value> value = field.read(section.make(number));
    if (!value || value == field.read(section.make(number + 1))) {
      return print_toml(value);
    }
    if (const auto *const counted = std::get_if<int64_t>(&*value)) {
      return std::to_string(*counted - number) + " + " + std::string(kEntryNumber);
    }
    std::string text = std::get<std::string>(*value);
    text.resize(text.size() - std::to_string(number).size());
    return print_toml(text.append(kEntryNumber));
  }

  std::string title_;
  std::string text_;
};

}  // namespace

std::string list_keys() {
  KeyLister lister;
  for_each_section(lister);
  return lister.take();
}

}  // namespace stpswitch
