#include "model/tree_ports.h"

namespace stpswitch {

void TreePorts::insert(uint32_t if_index, const TreeSet &trees) {
  if (!trees.is_empty()) {
    trees_of_port_[if_index].insert(trees);
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
