#include "model/tree_set.h"

#include <gtest/gtest.h>

#include "model/refusal.h"

using namespace stpswitch;

namespace {

std::string reprinted(const std::string &text) { return print_trees(parse_trees(text)); }

void expect_refused(const std::string &text, const std::string &reason) {
  try {
    parse_trees(text);
    ADD_FAILURE() << "'" << text << "' was taken";
  } catch (const Refusal &refusal) {
    EXPECT_EQ(refusal.what(), reason);
  }
}

TEST(TreeSet, ReadsAndPrintsLists) {
  EXPECT_EQ(reprinted(""), "");
  EXPECT_EQ(reprinted("0"), "0");
  EXPECT_EQ(reprinted("4094"), "4094");
  EXPECT_EQ(reprinted("0-4094"), "0-4094");
  EXPECT_EQ(reprinted("12,10,0,11"), "0,10-12");
}

TEST(TreeSet, RefusesWhatIsNoList) {
  for (const char *const text : {",", "0,", "-0", "0-", "x", "0 1", "-1"}) {
    expect_refused(text, "'" + std::string(text) + "' is not a list of trees such as 0,10-12");
  }
}

TEST(TreeSet, RefusesNumbersThatNoTreeHas) {
  expect_refused("4095", "tree 4095 is not in 0..4094");
  expect_refused("0-4095", "tree 4095 is not in 0..4094");
  expect_refused("4294967296", "tree 4294967296 is not in 0..4094");
}

TEST(TreeSet, RefusesABackwardRange) { expect_refused("1-0", "the range 1-0 runs backwards"); }

TEST(TreeSet, HoldsNothingOutsideItsRange) {
  const TreeSet trees = parse_trees("0-4094");
  EXPECT_TRUE(trees.contains(0));
  EXPECT_TRUE(trees.contains(4094));
  for (const uint32_t tree : {4095U, 4096U, 8192U, 65536U, 0xFFFF'FFFFU}) {
    EXPECT_FALSE(trees.contains(tree)) << tree;
  }
}

TEST(TreeSet, FindsTheFirstFromAnyNumberOn) {
  const TreeSet trees = parse_trees("0,7-8,100,4094");
  EXPECT_EQ(trees.first_from(0), 0U);
  EXPECT_EQ(trees.first_from(1), 7U);
  EXPECT_EQ(trees.first_from(7), 7U);
  EXPECT_EQ(trees.first_from(8), 8U);
  EXPECT_EQ(trees.first_from(9), 100U);
  EXPECT_EQ(trees.first_from(101), 4094U);
  EXPECT_EQ(trees.first_from(4094), 4094U);
  for (const uint32_t from : {4095U, 4096U, 65536U, 0xFFFF'FFFFU}) {
    EXPECT_EQ(trees.first_from(from), std::nullopt) << from;
  }
  EXPECT_EQ(TreeSet().first_from(0), std::nullopt);
}

TEST(TreeSet, IntersectsAndToggles) {
  TreeSet trees = parse_trees("0-9,20");
  trees.intersect(parse_trees("0,5-30"));
  EXPECT_EQ(print_trees(trees), "0,5-9,20");
  trees.toggle(parse_trees("0-6,4094"));
  EXPECT_EQ(print_trees(trees), "1-4,7-9,20,4094");
}

TEST(TreeSet, KnowsWhetherItIsEmpty) {
  EXPECT_TRUE(TreeSet().is_empty());
  EXPECT_FALSE(parse_trees("0").is_empty());
  EXPECT_FALSE(parse_trees("4094").is_empty());
}

TEST(TreeSet, OverlapsWhereAMemberIsInBoth) {
  for (const uint32_t tree : {0U, 1U, 63U, 64U, 4094U}) {
    TreeSet one;
    one.insert(tree);
    EXPECT_TRUE(one.overlaps(parse_trees("0-4094"))) << tree;
    TreeSet others = parse_trees("0-4094");
    others.erase(tree);
    EXPECT_FALSE(one.overlaps(others)) << tree;
  }
  EXPECT_FALSE(TreeSet().overlaps(TreeSet()));
}

}  // namespace
