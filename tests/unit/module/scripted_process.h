// A spanning-tree process that answers query by query as a test says, and tells in the trace what it was
// asked.
#pragma once

#include <cstdint>
#include <deque>
#include <string>

#include "search_test.h"

// A number as the module's log shows it.
std::string shown(uint32_t number);

// How a query of a port in a tree is told.
std::string get_of(uint32_t tree, uint32_t if_index, uint32_t command);
std::string get_next_of(uint32_t tree, uint32_t if_index, uint32_t command);

class ScriptedProcess {
 public:
  // The tokens of the two keys that a query has to have.
  ScriptedProcess(uint32_t interface_key, uint32_t tree_key)
      : interface_key_(interface_key), tree_key_(tree_key) {}

  // The next answers, in place of those that are left.
  void script(std::deque<fake::Send> answers) { answers_ = std::move(answers); }

  fake::Send answer(const fake::Request &request);

  // Whether every answer was asked for.
  bool is_done() const { return answers_.empty(); }

 private:
  uint32_t interface_key_;
  uint32_t tree_key_;
  std::deque<fake::Send> answers_;
};
