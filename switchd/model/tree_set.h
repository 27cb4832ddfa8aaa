// Sets of spanning trees. A tree has the number of its VLAN or MST instance.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "model/id_set.h"
#include "model/vlan_set.h"

namespace stpswitch {

// The CIST in the numbering of MST instances, whose numbers end where those of VLANs do.
inline constexpr uint32_t kCistId = 0;
inline constexpr uint32_t kMaxTree = kMaxVlan;

using TreeSet = IdSet;

// Throws Refusal.
inline TreeSet parse_trees(std::string_view text) {
  return parse_ids(text, {"tree", "0,10-12", kCistId, kMaxTree});
}
inline std::string print_trees(const TreeSet &trees) { return print_ids(trees); }

}  // namespace stpswitch
