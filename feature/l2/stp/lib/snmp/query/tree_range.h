// The key that selects a spanning tree: a list of one range, of one VLAN or MST instance.
#pragma once

#include <cstdint>

#include "platform/cmd.h"

namespace stpsnmp::query {

struct TreeRange {
  cmd_range_list list;
  cmd_range tree;
};

constexpr TreeRange single_tree(uint32_t id) { return {{0, 1}, {id, id}}; }

}  // namespace stpsnmp::query
