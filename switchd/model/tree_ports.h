// Ports of spanning trees.
#pragma once

#include <cstdint>
#include <map>

#include "model/tree_set.h"

namespace stpswitch {

// An interface in a tree.
struct TreePort {
  uint32_t tree;
  uint32_t if_index;

  bool operator==(const TreePort &) const = default;
};

// A set of them. A large switch has millions, so they are kept as the trees of each port.
class TreePorts {
 public:
  void insert(uint32_t if_index, const TreeSet &trees);
  void insert(const TreePorts &tree_ports);

  // Any number may be asked for.
  bool contains(const TreePort &tree_port) const;

  const std::map<uint32_t, TreeSet> &by_port() const { return trees_of_port_; }

 private:
  std::map<uint32_t, TreeSet> trees_of_port_;  // no empty sets
};

// What is in exactly one of the two.
TreePorts differences(const TreePorts &some, const TreePorts &others);

}  // namespace stpswitch
