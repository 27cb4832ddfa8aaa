#include "sources/read_only.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <system_error>

#include "keys/config_error.h"

namespace stpswitch {
namespace {

constexpr char kDot = '.';
constexpr std::string_view kPortSection = "port";
constexpr std::string_view kPortChannelSection = "port_channel";

// "port.3.root_guard" in its parts.
struct KeyParts {
  std::string_view section;  // "port"
  std::string_view number;   // "3"
  std::string_view name;     // "root_guard"
};

KeyParts parts_of(std::string_view key) {
  const size_t first = key.find(kDot);
  const size_t last = key.rfind(kDot);
  if (first == std::string_view::npos) {
    return {{}, {}, key};
  }
  return {key.substr(0, first), first < last ? key.substr(first + 1, last - first - 1) : std::string_view(),
          key.substr(last + 1)};
}

template <class Entries>
std::optional<std::string> name_in(const Entries &entries, std::string_view digits) {
  uint32_t number = 0;
  const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error != std::errc() || stop != digits.data() + digits.size()) {
    return std::nullopt;
  }
  const auto entry = entries.find(number);
  return entry != entries.end() ? std::optional(entry->second.name) : std::nullopt;
}

[[noreturn]] void refuse(const std::string &key, std::string_view name, const std::string &owner,
                         std::span<const SetInstead> commands, std::string_view otherwise) {
  const auto found = std::find_if(commands.begin(), commands.end(),
                                  [name](const SetInstead &candidate) { return candidate.name == name; });
  if (found == commands.end()) {
    throw ConfigError(key, std::string(otherwise));
  }
  std::string command;
  for (const char octet : found->command) {
    octet == kNamePlaceholder ? command.append(owner) : command.append(1, octet);
  }
  throw ConfigError(key, "is set with '" + command + "'");
}

}  // namespace

void refuse_to_set(const ReadOnlyKeys &keys, const SwitchState &now, const std::string &bridge,
                   const std::string &key) {
  const KeyParts parts = parts_of(key);
  const bool is_port = parts.section == kPortSection;
  if (!is_port && parts.section != kPortChannelSection) {
    refuse(key, parts.name, bridge, keys.of_bridge, keys.otherwise);
  }
  const std::optional<std::string> interface =
      is_port ? name_in(now.ports, parts.number) : name_in(now.port_channels, parts.number);
  if (!interface) {
    throw ConfigError(key, "the switch has no such interface");
  }
  refuse(key, parts.name, *interface, keys.of_interfaces, keys.otherwise);
}

}  // namespace stpswitch
