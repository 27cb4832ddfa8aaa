// What the tests share that hold column after column to the same: a switch, its spanning-tree process, and
// requests for a row.
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "fake_platform.h"
#include "table_column.h"
#include "table_test.h"

// Bridge ports 129 and 130.
inline constexpr uint32_t kPort129 = 0x1A000001;
inline constexpr uint32_t kPort130 = 0x1A000002;

inline void PrintTo(const TableColumn &column, std::ostream *out) { *out << column.name; }

std::vector<TableColumn> columns_where(bool (*is_meant)(const TableColumn &));

inline std::string name_of(const ::testing::TestParamInfo<TableColumn> &tested) { return tested.param.name; }

// Arcs as ".1.3.9".
std::string dotted(const std::vector<oid> &arcs);

// Two ports, in the VLANs and instances 10 and 20. The process's entries stand in the order of their keys.
class EveryColumn : public TableTest, public ::testing::WithParamInterface<TableColumn> {
 protected:
  EveryColumn() : TableTest(GetParam().handler) {}

  void SetUp() override;

  static const TableColumn &column() { return GetParam(); }

  std::optional<std::string> get_row() { return get(column().magic, column().index); }
  std::optional<std::string> get_next_row() { return get_next(column().magic, column().index); }

  static std::string row_oid() { return dotted(column().column) + dotted(column().index); }
  static std::string oid_of(const std::string &row) { return dotted(column().column) + "." + row; }
  std::vector<oid> answered_index() const;

  // What was asked and logged. Nothing was freed twice, and nothing is left.
  static Trace lines();

  static std::string opening(int exact, size_t arcs);

  // One query of the next request fares like this.
  void query_fares(size_t query, const fake::Send &send);

  std::vector<std::string> queries_;
  fake::Attributes value_;                  // of every entry
  bool lacks_tree_ = false;                 // entries do not name their VLAN or instance
  std::optional<uint32_t> named_tree_;      // the tree that they name, where it is not their own
  std::optional<uint32_t> named_if_index_;  // and the interface

 private:
  fake::Send answer(const fake::Request &request);
  fake::Send entry_of(const fake::Request &request) const;

  std::optional<size_t> failing_query_;
  fake::Send failure_;
};
