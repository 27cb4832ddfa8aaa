// The two forms of an entry's key, as get_stp_entry_from_if_index takes them.
#pragma once

#include <cstdint>

namespace stpsnmp::search {

inline constexpr uint8_t kSingle = 0;  // an interface
inline constexpr uint8_t kDual = 1;    // a tree and an interface

}  // namespace stpsnmp::search
