// A spanning-tree process that has trees with bridge ports, as a test says, and answers what the module asks
// about them.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include <gtest/gtest.h>

#include "fake_platform.h"

// What a reply about the tree holds, and one about each of its ports.
struct ScriptedTree {
  fake::Attributes attributes;
  std::map<uint32_t, fake::Attributes> ports;
};

struct ScriptedBridge {
  bool has_mst_trees = false;
  std::map<uint32_t, ScriptedTree> trees;

  fake::Send answer(const fake::Request &request) const;

 private:
  fake::Send answer_tree(const fake::Request &request) const;
  const ScriptedTree *tree_of(const fake::Request &request) const;
};

// A tree and a port of which everything is known.
fake::Attributes whole_tree();
fake::Attributes whole_port(uint32_t port);

fake::Bytes mac(const std::vector<uint8_t> &octets);

// Puts the bridge in the process's place, and sees to it that nothing the module took is left over.
class BridgeTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // The default tree's; there is a VLAN 1 with bridge ports 3 and 7.
  fake::Attributes &tree() { return bridge_.trees.at(1).attributes; }
  fake::Attributes &port(uint32_t number) { return bridge_.trees.at(1).ports.at(number); }

  ScriptedBridge bridge_;
};
