// What all tables have in common, column by column: the opening of a request, its index, the queries, what a
// reply has to hold, and what a failure leaves behind.
#include <algorithm>
#include <iterator>
#include <optional>
#include <ostream>

#include "every_column.h"
#include "fake_platform.h"
#include "ledger.h"
#include "protocol_numbers.h"
#include "search_test.h"
#include "stpsnmp/lookup_handlers.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAreArray;
using ::testing::Not;

// With an arc that no row has.
std::vector<oid> too_long(std::vector<oid> index) {
  index.push_back(0);
  return index;
}

// What follows the line that starts like this, after as many others.
Trace behind(const Trace &trace, const std::string &start, size_t others) {
  for (auto line = trace.begin(); line != trace.end(); ++line) {
    if (line->starts_with(start) && others-- == 0) {
      return {line + 1, trace.end()};
    }
  }
  ADD_FAILURE() << "there are too few lines " << start;
  return {};
}

TEST_P(EveryColumn, GetOfARow) {
  EXPECT_EQ(get_row(), column().served);
  EXPECT_EQ(answered(), row_oid());
  EXPECT_EQ(queries_, column().queries);
  const Trace trace = lines();
  const Trace opened = column().before + Trace{opening(1, column().index.size())};
  ASSERT_GE(trace.size(), opened.size());
  EXPECT_THAT(Trace(trace.begin(), trace.begin() + static_cast<std::ptrdiff_t>(opened.size())),
              ElementsAreArray(opened));
  EXPECT_THAT(Trace(trace.end() - std::min<std::ptrdiff_t>(std::ssize(trace), std::ssize(column().read)),
                    trace.end()),
              ElementsAreArray(column().read));
}

TEST_P(EveryColumn, GetNextOfARow) {
  EXPECT_NE(get_next_row(), std::nullopt);
  EXPECT_EQ(answered(), oid_of(column().next));
  EXPECT_EQ(queries_, column().next_queries);
  EXPECT_THAT(lines(), Contains(opening(0, column().index.size())));
}

TEST_P(EveryColumn, GetNextIgnoresArcsBehindTheIndex) {
  std::vector<oid> index = column().index;
  index.insert(index.end(), {1, 2, 3});
  EXPECT_NE(get_next(column().magic, index), std::nullopt);
  EXPECT_EQ(answered(), oid_of(column().next));
  EXPECT_THAT(lines(), Contains(opening(0, index.size())));
}

TEST_P(EveryColumn, GetWithAnArcTooManyFailsAtOnce) {
  EXPECT_EQ(get(column().magic, too_long(column().index)), std::nullopt);
  EXPECT_EQ(answered(), row_oid() + ".0");
  EXPECT_THAT(lines(), ElementsAreArray(column().before + Trace{opening(1, too_long(column().index).size())} +
                                        column().refused));
}

TEST_P(EveryColumn, GetWithAnArcTooManyClearsTheRow) {
  const HeaderAnswer refused = column().header(too_long(column().index), 1, column().magic);
  EXPECT_EQ(refused.result, -1);
  EXPECT_TRUE(refused.is_cleared) << refused.row;
  EXPECT_EQ(dotted(refused.name), ".1.3.9" + dotted(too_long(column().index)));
}

TEST_P(EveryColumn, HeaderRoutineFillsTheFieldsOfTheColumnAlone) {
  const HeaderAnswer found = column().header(column().index, 1, column().magic);
  EXPECT_EQ(found.result, 0);
  EXPECT_EQ(found.row, column().row);
  EXPECT_EQ(dotted(found.name), ".1.3.9" + dotted(column().index));
}

TEST_P(EveryColumn, RequestsOutsideTheColumnBeginWithItsFirstRow) {
  const std::string first = column().walk.empty() ? "0" : column().walk.front();
  std::vector<oid> before = column().column;
  --before.back();
  std::vector<oid> behind_column = column().column;
  ++behind_column.back();
  for (std::vector<oid> *request : {&before, &behind_column}) {
    request->insert(request->end(), column().index.begin(), column().index.end());
  }
  std::vector<oid> longer = before;
  longer.push_back(9);
  for (const std::vector<oid> &request :
       {before, longer, behind_column, {column().column.begin(), column().column.begin() + 2}, {}}) {
    EXPECT_NE(ask_below_root(column().magic, request, 0), std::nullopt);
    EXPECT_EQ(answered(), oid_of(first)) << dotted(request);
    lines();
  }
}

TEST_P(EveryColumn, RequestThatCannotBeAllocated) {
  for (size_t i = 0; i < column().failures.size(); ++i) {
    ledger::fail_malloc_after(i);
    EXPECT_EQ(get_row(), std::nullopt);
    EXPECT_EQ(answered(), row_oid());
    EXPECT_THAT(behind(lines(), "malloc(16000)", i), ElementsAreArray(column().failures[i].no_memory));
  }
}

TEST_P(EveryColumn, QueryThatFails) {
  for (size_t i = 0; i < column().failures.size(); ++i) {
    query_fares(i, {5});
    EXPECT_EQ(get_row(), std::nullopt);
    EXPECT_EQ(answered(), row_oid());
    EXPECT_THAT(behind(lines(), "cmd_snmp_req_send_recv", i),
                ElementsAreArray(column().failures[i].failed_send));
  }
}

TEST_P(EveryColumn, QueryWithoutAReply) {
  for (size_t i = 0; i < column().failures.size(); ++i) {
    query_fares(i, {.has_reply = false});
    EXPECT_EQ(get_row(), std::nullopt);
    EXPECT_EQ(answered(), row_oid());
    EXPECT_THAT(behind(lines(), "cmd_snmp_req_send_recv", i),
                ElementsAreArray(column().failures[i].no_reply));
  }
}

// Where a query fails, its code is not the header routine's.
TEST_P(EveryColumn, HeaderRoutineReturnsMinusOneWithoutARow) {
  const size_t of_handler = column().before.empty() ? 0 : 1;
  for (size_t i = 0; i + of_handler < column().failures.size(); ++i) {
    for (const fake::Send &send : {fake::Send{5}, fake::Send{.has_reply = false}}) {
      query_fares(i, send);
      const HeaderAnswer failed = column().header(column().index, 1, column().magic);
      EXPECT_EQ(failed.result, -1);
      EXPECT_EQ(dotted(failed.name), ".1.3.9" + dotted(column().index));
    }
  }
}

// A walk may get over a query that fails, to another row.
TEST_P(EveryColumn, NothingIsLeftOfAGetNextWhateverFails) {
  for (size_t i = 0; i < column().next_queries.size(); ++i) {
    for (const fake::Send &send : {fake::Send{5}, fake::Send{.has_reply = false}}) {
      query_fares(i, send);
      if (!get_next_row()) {
        EXPECT_EQ(answered(), row_oid());
      }
      lines();
    }
  }
}

// Columns without a row where an attribute is missing.
class EveryNeededValue : public EveryColumn {};

TEST_P(EveryNeededValue, MissingYieldsNoInstance) {
  value_.erase(column().needed);
  lacks_tree_ = column().needed == protocol::kTree;
  EXPECT_EQ(get_row(), std::nullopt);
  EXPECT_EQ(answered(), row_oid());
  const Trace trace = lines();
  const auto tail = std::ssize(column().without_needed) + 1;
  ASSERT_GE(std::ssize(trace), tail);
  EXPECT_THAT(Trace(trace.end() - tail, trace.end()),
              ElementsAreArray(Trace{"cmd_rsp_attr_get(" + fake::hex(column().needed) + ")"} +
                               column().without_needed));
  EXPECT_EQ(get_next_row(), std::nullopt);
  EXPECT_EQ(answered(), row_oid());
}

TEST_P(EveryNeededValue, MissingIsTheResultOfTheHeaderRoutine) {
  value_.erase(column().needed);
  lacks_tree_ = column().needed == protocol::kTree;
  fake::platform().missing_attribute_result = 1234;
  EXPECT_EQ(column().header(column().index, 1, column().magic).result, 1234);
  const HeaderAnswer next = column().header(column().index, 0, column().magic);
  EXPECT_EQ(next.result, 1234);
  EXPECT_EQ(dotted(next.name), ".1.3.9" + dotted(column().index));
}

TEST_P(EveryNeededValue, OfNoLengthIsMissing) {
  fake::platform().attributes_without_value[column().needed] = 4;
  EXPECT_EQ(get_row(), std::nullopt);
  EXPECT_EQ(lines().back(), column().without_needed.back());
  EXPECT_EQ(column().header(column().index, 1, column().magic).result, -1);
}

class EveryUnchangedValue : public EveryColumn {};

TEST_P(EveryUnchangedValue, IsServedAsItIs) {
  for (const int32_t served : {0, 1, 3, 4, 2147483647, -1}) {
    value_[column().needed] = fake::number(static_cast<uint32_t>(served));
    EXPECT_EQ(number(get_row()), served);
  }
}

class EveryWalk : public EveryColumn {};

TEST_P(EveryWalk, ComesToEveryRowAndEnds) {
  std::vector<oid> index;
  for (const std::string &row : column().walk) {
    EXPECT_NE(get_next(column().magic, index), std::nullopt);
    ASSERT_EQ(answered(), oid_of(row));
    index = answered_index();
    lines();
  }
  EXPECT_EQ(get_next(column().magic, index), std::nullopt);
  EXPECT_EQ(answered(), oid_of(column().walk.back()));
  lines();
}

INSTANTIATE_TEST_SUITE_P(Tables, EveryColumn, ::testing::ValuesIn(all_columns()), name_of);
INSTANTIATE_TEST_SUITE_P(Tables, EveryNeededValue,
                         ::testing::ValuesIn(columns_where([](const TableColumn &column) {
                           return column.needed != 0;
                         })),
                         name_of);
INSTANTIATE_TEST_SUITE_P(Tables, EveryUnchangedValue,
                         ::testing::ValuesIn(columns_where([](const TableColumn &column) {
                           return column.is_served_unchanged;
                         })),
                         name_of);
INSTANTIATE_TEST_SUITE_P(Tables, EveryWalk, ::testing::ValuesIn(columns_where([](const TableColumn &column) {
                           return !column.walk.empty();
                         })),
                         name_of);

// Tables that trees and ports number.
class EveryTreePort : public EveryColumn {};

TEST_P(EveryTreePort, PortOfTheIndexIsTakenWith16Bits) {
  EXPECT_EQ(get(column().magic, {10, 65536 + 129}), column().served);
  EXPECT_EQ(answered(), oid_of("10.129"));
  EXPECT_EQ(get_next(column().magic, {10, 65536 + 129}), column().served);
  EXPECT_EQ(answered(), oid_of("10.130"));
}

TEST_P(EveryTreePort, GetAnswersWithTheIndexOfTheReplyWhateverWasAskedFor) {
  named_tree_ = 9;
  named_if_index_ = kPort130;
  EXPECT_EQ(get_row(), column().served);
  EXPECT_EQ(answered(), oid_of("9.130")) << "the port's number, not its interface's";
  lines();
}

TEST_P(EveryTreePort, ReplyWithoutATreeAnswersWithTheOneThatWasAskedFor) {
  lacks_tree_ = true;
  EXPECT_EQ(get_row(), column().served);
  EXPECT_EQ(answered(), row_oid());
}

TEST_P(EveryTreePort, ReplyOfAnInterfaceWithoutAPortIsReleasedOnce) {
  named_if_index_ = 0xAB;
  EXPECT_EQ(get_row(), std::nullopt);
  EXPECT_EQ(answered(), row_oid());
  EXPECT_THAT(lines(), Contains("cmd_snmp_free_rx_hndl"));
}

TEST_P(EveryTreePort, GetOfATreeAloneAsksForPortZero) {
  for (const std::vector<oid> &index : {std::vector<oid>{}, {10}, {10, 0}, {10, 65536}, {10, 131}}) {
    EXPECT_EQ(get(column().magic, index), std::nullopt);
    EXPECT_EQ(answered(), dotted(column().column) + dotted(index));
    EXPECT_THAT(lines(),
                Contains(logged("\\nget_exact_stp_dual_indices_entry(LINE): GET request failed.\\n")));
  }
}

TEST_P(EveryTreePort, GetNextOfATreeAloneStartsFromItsPortZero) {
  EXPECT_EQ(get_next(column().magic, {20}), column().served);
  EXPECT_EQ(answered(), oid_of("20.129"));
}

INSTANTIATE_TEST_SUITE_P(Tables, EveryTreePort,
                         ::testing::ValuesIn(columns_where([](const TableColumn &column) {
                           return column.index.size() == 2;
                         })),
                         name_of);

// Columns that are a part of the index have no value, whatever the row holds.

struct IndexColumn {
  const char *name;
  FindVarMethod *handler;
  uint8_t magic;
  std::vector<oid> index;
  const char *answered;
};

void PrintTo(const IndexColumn &column, std::ostream *out) { *out << column.name; }

class EveryIndexColumn : public TableTest, public ::testing::WithParamInterface<IndexColumn> {
 protected:
  EveryIndexColumn() : TableTest(GetParam().handler) {}

  void SetUp() override {
    TableTest::SetUp();
    fake::platform().interfaces = {{.if_index = kPort129, .port = 129}};
    fake::platform().answer = [](const fake::Request &request) {
      if (request.command == protocol::kGlobalSettings) {
        const bool is_mst = GetParam().magic == 86;
        return fake::Send{.attributes = fake::Attributes{{protocol::kMode, fake::number(is_mst ? 4 : 5)}}};
      }
      fake::Send row = entry(10, kPort129);
      for (const uint32_t token : {protocol::kGuard, protocol::kVlanTreeState, protocol::kInconsistency,
                                   protocol::kPortRole, protocol::kPeer}) {
        (*row.attributes)[token] = fake::number(1);
      }
      (*row.attributes)[protocol::kMode] = fake::number(5);
      (*row.attributes)[protocol::kTree] = fake::number(10);
      return row;
    };
  }
};

TEST_P(EveryIndexColumn, HasNoValueAndTheOidOfTheRow) {
  EXPECT_EQ(get(GetParam().magic, GetParam().index), std::nullopt);
  EXPECT_EQ(answered(), GetParam().answered);
  const Trace trace = fake::taken_trace();
  ASSERT_FALSE(trace.empty());
  EXPECT_EQ(trace.back(), "snmp_set_detail(\"\")");
  EXPECT_EQ(std::count(trace.begin(), trace.end(), trace.back()), 1);
}

// Where the row is looked up.
class EveryIndexColumnOfARow : public EveryIndexColumn {};

TEST_P(EveryIndexColumnOfARow, HasNoDetailWithoutOne) {
  fake::platform().next_sends = {{19}, {19}};
  fake::platform().interfaces.clear();
  EXPECT_EQ(get(GetParam().magic, GetParam().index), std::nullopt);
  EXPECT_THAT(fake::taken_trace(), Not(Contains("snmp_set_detail(\"\")")));
}

const std::vector<IndexColumn> kIndexColumnsOfARow{
    {"RootGuardPort", get_stpxRootGuardConfigTable, 62, {436207617}, ".1.5.1.1.1.436207617"},
    {"PvstVlan", get_stpxPVSTVlanTable, 99, {10}, ".1.2.2.1.1.10"},
    {"LoopGuardPort", get_stpxLoopGuardConfigTable, 115, {129}, ".1.8.1.1.1.129"},
    {"RpvstTree", get_stpxRPVSTPortTable, 107, {10, 129}, ".1.13.1.1.1.10.129"},
    {"RpvstPort", get_stpxRPVSTPortTable, 108, {10, 129}, ".1.13.1.1.2.10.129"},
    {"RoleTree", get_stpxRSTPPortRoleTable, 58, {10, 129}, ".1.12.2.1.1.10.129"},
    {"RolePort", get_stpxRSTPPortRoleTable, 59, {10, 129}, ".1.12.2.1.2.10.129"},
    {"LoopInconsistencyTree", get_stpxLoopInconsistencyTable, 50, {10, 129}, ".1.8.2.1.1.10.129"},
    {"LoopInconsistencyPort", get_stpxLoopInconsistencyTable, 51, {10, 129}, ".1.8.2.1.2.10.129"},
    {"RootInconsistencyTree", get_stpxRootInconsistencyTable, 68, {10, 129}, ".1.5.2.1.1.10.129"},
    {"RootInconsistencyPort", get_stpxRootInconsistencyTable, 69, {10, 129}, ".1.5.2.1.2.10.129"},
    {"PortInconsistencyTree", get_stpxInconsistencyTable, 118, {10, 129}, ".1.3.1.1.1.10.129"},
    {"PortInconsistencyPort", get_stpxInconsistencyTable, 119, {10, 129}, ".1.3.1.1.2.10.129"}};

// These answer with whatever index is asked for.
const std::vector<IndexColumn> kOtherIndexColumns{
    {"RstpPort", get_stpxRSTPPortTable, 54, {70000}, ".1.12.1.1.1.70000"},
    {"SmstPort", get_stpxSMSTPortTable, 86, {70000}, ".1.14.7.1.1.70000"}};

std::string name_of_index(const ::testing::TestParamInfo<IndexColumn> &tested) { return tested.param.name; }

INSTANTIATE_TEST_SUITE_P(Tables, EveryIndexColumn, ::testing::ValuesIn(kIndexColumnsOfARow), name_of_index);
INSTANTIATE_TEST_SUITE_P(OtherTables, EveryIndexColumn, ::testing::ValuesIn(kOtherIndexColumns),
                         name_of_index);
INSTANTIATE_TEST_SUITE_P(Tables, EveryIndexColumnOfARow, ::testing::ValuesIn(kIndexColumnsOfARow),
                         name_of_index);

}  // namespace
