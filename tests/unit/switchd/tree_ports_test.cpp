// Sets of ports of trees.
#include "model/tree_ports.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <utility>

using namespace stpswitch;
using testing::ElementsAre;
using testing::Pair;

namespace {

// By tree, then by port.
std::set<std::pair<uint32_t, uint32_t>> in_order(const TreePorts &tree_ports) {
  std::set<std::pair<uint32_t, uint32_t>> rows;
  for (const auto &[if_index, trees] : tree_ports.by_port()) {
    trees.for_each([&rows, port = if_index](uint32_t tree) { rows.emplace(tree, port); });
  }
  return rows;
}

TreePorts some_tree_ports() {
  TreePorts tree_ports;
  tree_ports.insert(9, parse_trees("0,4094"));
  tree_ports.insert(5, parse_trees("0,7"));
  tree_ports.insert(6, parse_trees(""));
  return tree_ports;
}

TEST(TreePorts, HaveNoPortsWithoutTrees) {
  EXPECT_THAT(in_order(some_tree_ports()), ElementsAre(Pair(0, 5), Pair(0, 9), Pair(7, 5), Pair(4094, 9)));
  EXPECT_EQ(some_tree_ports().by_port().size(), 2U);
  EXPECT_TRUE(TreePorts().by_port().empty());
}

TEST(TreePorts, ContainWhatWasInserted) {
  const TreePorts tree_ports = some_tree_ports();
  EXPECT_TRUE(tree_ports.contains({7, 5}));
  EXPECT_TRUE(tree_ports.contains({4094, 9}));
  for (const TreePort &other : {TreePort{7, 9}, {7, 6}, {1, 5}, {4095, 5}, {4096, 5}, {0xFFFF'FFFF, 5}}) {
    EXPECT_FALSE(tree_ports.contains(other)) << other.tree << ", " << other.if_index;
  }
}

TEST(TreePorts, GrowWithEachInsertion) {
  TreePorts tree_ports = some_tree_ports();
  tree_ports.insert(5, parse_trees("1,7"));
  TreePorts more;
  more.insert(4, parse_trees("7"));
  tree_ports.insert(more);
  EXPECT_THAT(in_order(tree_ports),
              ElementsAre(Pair(0, 5), Pair(0, 9), Pair(1, 5), Pair(7, 4), Pair(7, 5), Pair(4094, 9)));
}

TEST(TreePorts, DifferWhereOneOfThemHasMore) {
  TreePorts others;
  others.insert(5, parse_trees("0,8"));
  others.insert(4, parse_trees("7"));
  others.insert(9, parse_trees("0,4094"));
  EXPECT_THAT(in_order(differences(some_tree_ports(), others)),
              ElementsAre(Pair(7, 4), Pair(7, 5), Pair(8, 5)));
  EXPECT_THAT(in_order(differences(others, some_tree_ports())),
              ElementsAre(Pair(7, 4), Pair(7, 5), Pair(8, 5)));
  EXPECT_TRUE(differences(others, others).by_port().empty());
}

}  // namespace
