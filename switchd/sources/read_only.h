// What sources that only read have in common: every key is refused, with the command that sets it instead.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "model/switch_state.h"

namespace stpswitch {

// Stands in a command for the name of the interface or bridge that the key is about.
inline constexpr char kNamePlaceholder = '%';

struct SetInstead {
  std::string_view name;     // the key's last part: "root_guard"
  std::string_view command;  // "bridge link set dev % root_block on|off"
};

struct ReadOnlyKeys {
  std::span<const SetInstead> of_interfaces;  // of ports and port-channels
  std::span<const SetInstead> of_bridge;      // of all other sections
  std::string_view otherwise;  // a sentence without subject and full stop: "cannot be set: ..."
};

// Throws ConfigError. `bridge` is the bridge that keys of no interface are about.
[[noreturn]] void refuse_to_set(const ReadOnlyKeys &keys, const SwitchState &now, const std::string &bridge,
                                const std::string &key);

}  // namespace stpswitch
