// A value for each spanning tree, of which most are the same.
#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include "model/tree_set.h"

namespace stpswitch {

// A large switch has a port in thousands of trees: exceptions are kept as sets of trees, and no room for
// those that do not occur.
template <class T>
struct PerTree {
  std::optional<T> elsewhere;  // none: unknown there
  std::map<T, TreeSet> exceptions;

  std::optional<T> in(uint32_t tree) const {
    for (const auto &[value, trees] : exceptions) {
      if (trees.contains(tree)) {
        return value;
      }
    }
    return elsewhere;
  }

  // For a tree that has none yet; it may be unknown.
  void set(uint32_t tree, const std::optional<T> &value) {
    if (value) {
      exceptions[*value].insert(tree);
    }
  }

  bool operator==(const PerTree &) const = default;
};

}  // namespace stpswitch
