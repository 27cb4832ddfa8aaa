#include "model/tree_ports.h"

#include <algorithm>

namespace stpswitch {

void TreePorts::insert(uint32_t if_index, const TreeSet &trees) {
  if (!trees.is_empty()) {
    trees_of_port_[if_index].insert(trees);
    trees_.insert(trees);
  }
}

void TreePorts::insert(const TreePorts &tree_ports) {
  for (const auto &[if_index, trees] : tree_ports.trees_of_port_) {
    insert(if_index, trees);
  }
}

bool TreePorts::contains(const TreePort &tree_port) const {
  const auto port = trees_of_port_.find(tree_port.if_index);
  return port != trees_of_port_.end() && port->second.contains(tree_port.tree);
}

std::optional<TreePort> TreePorts::first_after(const TreePort &place) const {
  for (auto tree = trees_.first_from(place.tree); tree; tree = trees_.first_from(*tree + 1)) {
    const auto begin =
        *tree == place.tree ? trees_of_port_.upper_bound(place.if_index) : trees_of_port_.begin();
    const auto port = std::find_if(begin, trees_of_port_.end(),
                                   [&tree](const auto &entry) { return entry.second.contains(*tree); });
    if (port != trees_of_port_.end()) {
      return TreePort{*tree, port->first};
    }
  }
  return std::nullopt;
}

TreePorts differences(const TreePorts &some, const TreePorts &others) {
  std::map<uint32_t, TreeSet> differing = some.by_port();
  for (const auto &[if_index, trees] : others.by_port()) {
    differing[if_index].toggle(trees);
  }
  TreePorts result;
  for (const auto &[if_index, trees] : differing) {
    result.insert(if_index, trees);
  }
  return result;
}

}  // namespace stpswitch
