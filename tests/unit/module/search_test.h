// What the tests of the index searches share: a fixture with both ledgers open, and the traces of the
// routines that the searches are made of.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <gmock/gmock.h>

#include "fake_platform.h"
#include "protocol_numbers.h"
#include "query/reply.h"
#include "table_test.h"

// Tokens of a row's keys, and of what a reply names it by.

inline constexpr uint32_t kGet = 1;
inline constexpr uint32_t kGetNext = 3;

// A line of the log at level 100.
std::string logged_rejection(const std::string &text);

// The spanning-tree process's answers to a query of a port in a tree.
fake::Send entry(uint32_t tree, uint32_t if_index);
fake::Send no_entry();

// The query of a port in a tree: what is asked of the platform until the answer, and afterwards where the
// process has the entry, and where it has none.
Trace queried(uint32_t command, uint32_t action, uint32_t tree, uint32_t if_index);
Trace queried_and_found(uint32_t command, uint32_t action, uint32_t tree, uint32_t if_index,
                        uint32_t found_tree, uint32_t found_if_index);
Trace queried_in_vain(uint32_t command, uint32_t action, uint32_t tree, uint32_t if_index);

// Makes the module's cache of base ports, which all tests of a program share, one that was never filled.
void empty_base_port_cache();

// Runs a search of the typed core with a reply of its own where there is a variable for it, and hands that
// over after a success. Returns 0, or -1 where the search has failed; then it must have left no reply.
template <class Search>
int with_reply(void **reply, const Search &search) {
  stpsnmp::query::Reply found;
  if (!search(reply != nullptr ? &found : nullptr)) {
    EXPECT_FALSE(found) << "a reply after a failure";
    return -1;
  }
  if (reply != nullptr) {
    *reply = found.detach();
  }
  return 0;
}

class SearchTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // A reply that a caller holds already.
  static void *held_reply();

  // What a successful search hands over.
  static void release(void *reply);
};
