// Where the spanning-tree process keeps the ports of trees: its command, and the tokens of the keys.
#pragma once

#include <cstdint>

#include "query/protocol.h"

namespace stpsnmp::search {

struct TreeEntries {
  uint32_t port_attr;
  uint32_t tree_attr;
  uint32_t command;
};

inline constexpr TreeEntries kRapidPvstEntries = {static_cast<uint32_t>(query::Token::kInterfaceKey),
                                                  static_cast<uint32_t>(query::Token::kVlanTreeKey),
                                                  static_cast<uint32_t>(query::Command::kRapidPvstPort)};
inline constexpr TreeEntries kMstEntries = {static_cast<uint32_t>(query::Token::kMstInterfaceKey),
                                            static_cast<uint32_t>(query::Token::kMstTreeKey),
                                            static_cast<uint32_t>(query::Command::kMstPort)};

}  // namespace stpsnmp::search
