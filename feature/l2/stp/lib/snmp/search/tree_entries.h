// Where the spanning-tree process keeps the ports of trees: its command, and the tokens of the keys.
#pragma once

#include <cstdint>

#include "platform/stp_protocol.h"

namespace stpsnmp::search {

struct TreeEntries {
  uint32_t port_attr;
  uint32_t tree_attr;
  uint32_t command;
};

inline constexpr TreeEntries kRapidPvstEntries = {STP_KEY_INTERFACE, STP_KEY_VLAN_TREE,
                                                  STP_COMMAND_RAPID_PVST_PORTS};
inline constexpr TreeEntries kMstEntries = {STP_KEY_MST_INTERFACE, STP_KEY_MST_TREE, STP_COMMAND_MST_PORTS};

}  // namespace stpsnmp::search
