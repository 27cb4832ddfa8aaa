// What the tests of the two tables that walk trees share: a switch, the query script, and a request's story.
#pragma once

#include <cstdint>
#include <deque>
#include <initializer_list>
#include <string>
#include <vector>

#include "scripted_process.h"
#include "table_test.h"
#include "tree_walk_test.h"

inline constexpr uint32_t kMst = 4;
inline constexpr uint32_t kRapidPvst = 5;

class TreeTableTest : public TableTest {
 protected:
  // The table, and the command and tokens of the queries for its rows.
  TreeTableTest(const char *name, FindVarMethod *handler, uint32_t command, uint32_t interface_key,
                uint32_t tree_key)
      : TableTest(handler), name_(name), command_(command), process_(interface_key, tree_key) {}

  void SetUp() override;
  void TearDown() override;

  // The switch's mode, and the command library's code where it cannot be told.
  void mode_is(uint32_t type, int result = 0) {
    type_ = type;
    type_result_ = result;
  }

  // What the spanning-tree process answers, query by query.
  void script(std::deque<fake::Send> answers) { process_.script(std::move(answers)); }

  // The entry of a port in a tree, with more attributes.
  static fake::Send row(uint32_t tree, uint32_t if_index, const fake::Attributes &more);

  // Queries, replies released, the clock, and what header routine, parser and handler say.
  Trace story() const;

  std::string header_line(const std::string &text) const;
  std::string parse_failure() const;
  std::string row_of(uint32_t tree, uint32_t if_index) const { return get_of(tree, if_index, command_); }
  std::string probed(uint32_t tree) const { return get_next_of(tree, 0, command_); }
  std::string stepped_from(uint32_t tree) const { return get_next_of(tree, kBehindLastPort, command_); }

  static std::string begun(int exact, int length);

  // The mode is asked for.
  Trace type_read() const;

  // The tree runs.
  Trace checked(uint32_t tree) const { return {probed(tree), kReleased}; }

  // The next row is refused, as it does not advance.
  Trace refused(uint32_t tree, uint32_t in_tree, int port, int in_port) const;

 private:
  const char *name_;
  uint32_t command_;
  uint32_t type_ = kRapidPvst;
  int type_result_ = 0;
  ScriptedProcess process_;
};

// A request of a header routine for the column 1.3.9 with these arcs behind it.
template <class Row>
struct HeaderRequest {
  int result = 0;
  Row row{};
  std::vector<oid> answered;
};

template <class Row>
HeaderRequest<Row> ask_header(int (*header)(const oid *, size_t, oid *, size_t *, int, Row *),
                              const std::vector<oid> &arcs, int exact, const Row &stale) {
  const std::vector<oid> column{1, 3, 9};
  HeaderRequest<Row> request{.row = stale, .answered = column};
  request.answered.insert(request.answered.end(), arcs.begin(), arcs.end());
  size_t length = request.answered.size();
  request.answered.resize(MAX_OID_LEN);
  request.result =
      header(column.data(), column.size(), request.answered.data(), &length, exact, &request.row);
  request.answered.resize(length);
  return request;
}
