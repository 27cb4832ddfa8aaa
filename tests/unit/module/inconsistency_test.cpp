// The three inconsistency tables: mode, searches, the reply, and each way to fail.
#include <algorithm>

#include "fake_platform.h"
#include "protocol_numbers.h"
#include "search_test.h"
#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "table_test.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAreArray;
using ::testing::Not;

constexpr uint32_t kPort1 = 0x1A000001;
constexpr uint32_t kPort2 = 0x1A000002;
constexpr uint32_t kPort3 = 0x1A000003;

struct TableUnderTest {
  const char *name;
  FindVarMethod *handler;
  uint8_t state_column;
  const char *column_oid;
  uint32_t command;
  const char *command_name;
  const char *next_label;
};

constexpr TableUnderTest kLoop = {"stpxLoopInconsistencyTable",
                                  get_stpxLoopInconsistencyTable,
                                  52,
                                  ".1.8.2.1.3",
                                  121,
                                  "STP_CMDID_SHOW_LOOP_INCONSISTENT",
                                  "commandId"};
constexpr TableUnderTest kRoot = {"stpxRootInconsistencyTable",
                                  get_stpxRootInconsistencyTable,
                                  70,
                                  ".1.5.2.1.3",
                                  120,
                                  "STP_CMDID_SHOW_ROOT_INCONSISTENT",
                                  "commandId"};
constexpr TableUnderTest kPorts = {"stpxInconsistencyTable",
                                   get_stpxInconsistencyTable,
                                   120,
                                   ".1.3.1.1.3",
                                   116,
                                   "STP_CMDID_SHOW_PVID_TYPE_INCONSISTENT",
                                   "command_id"};

class InconsistencyTest : public TableTest {
 protected:
  explicit InconsistencyTest(const TableUnderTest &table) : TableTest(table.handler), table_(table) {}

  void SetUp() override {
    TableTest::SetUp();
    fake::platform().interfaces = {{kPort1, 129}, {kPort2, 130}};
    reply_holds(protocol::kMode, 5);
    entry_is(10, kPort1, 3);
  }

  // The entry that every lookup finds.
  static void entry_is(uint32_t tree, uint32_t if_index, uint32_t state) {
    reply_holds(protocol::kPortTree, tree);
    reply_holds(protocol::kInterface, if_index);
    reply_holds(protocol::kInconsistency, state);
  }

  std::string header_line(const std::string &text) const {
    return logged("header_" + std::string(table_.name) + "(LINE)" + text);
  }

  std::string parse_failure() const {
    return logged("parse_reply_" + std::string(table_.name) + " failed\\n");
  }

  // The trace from its first line of the header routine about the index on, without what the searches log.
  Trace header_lines() {
    Trace found;
    for (const std::string &line : fake::taken_trace()) {
      if (line.find("header_") != std::string::npos || line.find("parse_reply_stpx") != std::string::npos ||
          line.find("exact ") != std::string::npos || line == "gettimeofday" ||
          line.starts_with("cmd_snmp_free") || line.starts_with("snmp_set_detail")) {
        found.push_back(line);
      }
    }
    return found;
  }

  Trace begun(int exact, int length, const std::string &port_and_tree, int type) const {
    return {
        logged("exact " + std::to_string(exact) + " *length " + std::to_string(length) + " vp_namelen 14\\n"),
        header_line(" " + port_and_tree + "\\n"), "cmd_snmp_free_rx_hndl",
        header_line(" get_stpxSpanningTreeType() returns " + std::to_string(type) + " \\n")};
  }

  Trace searched(const std::string &result) const { return Trace{"gettimeofday"} + timed(result); }

  // What follows a search.
  Trace timed(const std::string &result) const {
    return {"gettimeofday",
            header_line(": get_next_stp_dual_indices_entry_from_im() begin: (sec=1000, usec=7), end: "
                        "(sec=1001, usec=7)"),
            header_line(" get_next_stp_dual_indices_entry_from_im() returns: " + result)};
  }

  std::string value_line(const std::string &state) const {
    return logged("\\nparse_reply_" + std::string(table_.name) + "(LINE): value " + state + "\\n");
  }

  void expect_get_of_a_row(const std::string &served) {
    EXPECT_EQ(get(table_.state_column, {10, 129}), served);
    EXPECT_EQ(answered(), std::string(table_.column_oid) + ".10.129");
    EXPECT_THAT(header_lines(), ElementsAreArray(begun(1, 16, "port_id: 129, tree_id:10", 5) +
                                                 Trace{value_line("3"), "cmd_snmp_free_rx_hndl"}));
  }

  void expect_get_next_of_the_bare_column(const std::string &served) {
    entry_is(10, kPort2, 3);
    EXPECT_EQ(get_next(table_.state_column, {}), served);
    EXPECT_EQ(answered(), std::string(table_.column_oid) + ".10.130");
    EXPECT_THAT(header_lines(), ElementsAreArray(begun(0, 14, "port_id: 0, tree_id:0", 5) + searched("0") +
                                                 Trace{value_line("3"), "cmd_snmp_free_rx_hndl"}));
  }

  // The clock is read around the search, which goes through every bridge port from port 0 on.
  void expect_search_from_the_start() {
    entry_is(10, kPort2, 3);
    EXPECT_NE(get_next(table_.state_column, {}), std::nullopt);
    const Trace trace = fake::taken_trace();
    const auto at = [&trace](const std::string &wanted) {
      return std::find_if(trace.begin(), trace.end(), [&wanted](const std::string &line) {
        return line.find(wanted) != std::string::npos;
      });
    };
    const auto first_clock = at("gettimeofday");
    ASSERT_NE(first_clock, trace.end());
    const auto second_clock = std::find(first_clock + 1, trace.end(), "gettimeofday");
    const auto start = at("get_next_stp_dual_indices_entry_from_im(LINE): get stp dual indices entry.");
    const auto end = at("get_next_stp_dual_indices_entry_from_im(LINE): returning tree_index: 10");
    EXPECT_LT(first_clock, start);
    EXPECT_LT(start, end);
    EXPECT_LT(end, second_clock);
    EXPECT_LT(second_clock, trace.end());
    EXPECT_LT(at("base_port:0, stp_flag:0, stp_get_next_dot1dportnum() next_port:129"), end);
    EXPECT_LT(at("cmd_req_attr_add(request, 0x130200B4, " + bytes({0, 1, 0, 0}) + ")"), end);
    EXPECT_LT(at("cmd_req_attr_add(request, 0x0C020105, " + bytes({kPort1}) + ")"), end);
  }

  void expect_get_next_of_a_tree_alone_starts_at_port_0() {
    entry_is(10, kPort1, 3);
    EXPECT_NE(get_next(table_.state_column, {10}), std::nullopt);
    const Trace trace = fake::taken_trace();
    EXPECT_THAT(trace, Contains(header_line(" port_id: 0, tree_id:10\\n")));
    EXPECT_THAT(trace, Contains("cmd_req_attr_add(request, 0x130200B4, " + bytes({0, 1, 10, 10}) + ")"));
    EXPECT_THAT(trace, Contains("cmd_req_attr_add(request, 0x0C020105, 0100001a)"));
    EXPECT_THAT(trace, Contains("cmd_req_cmdId_set(request, " + std::to_string(table_.command) + ")"));
  }

  void expect_failed_searches() {
    fake::platform().interfaces = {};
    EXPECT_EQ(get(table_.state_column, {10, 129}), std::nullopt);
    EXPECT_THAT(header_lines(),
                ElementsAreArray(begun(1, 16, "port_id: 129, tree_id:10", 5) +
                                 Trace{header_line(" get_exact_stp_dual_indices_entry() failed, commandId: " +
                                                   std::string(table_.command_name) + "\\n")}));
    fake::platform().seconds = 1000;
    fake::platform().next_sends = {{}, {19}, {19}, {19}, {19}};
    EXPECT_EQ(get_next(table_.state_column, {}), std::nullopt);
    EXPECT_THAT(header_lines(),
                ElementsAreArray(
                    begun(0, 14, "port_id: 0, tree_id:0", 5) + searched("-1") +
                    Trace{header_line(" get_next_stp_dual_indices_entry_from_im() failed, " +
                                      std::string(table_.next_label) + ": " + table_.command_name + "\\n")}));
  }

  // The same row again, an earlier port, an earlier tree.
  void expect_walk_must_advance() {
    struct Case {
      std::vector<oid> asked;
      const char *log;
    };
    for (const auto &[asked, log] :
         {Case{{10, 128}, "tree_id=9, in_tree_id=10, port_id=129, in_port_id=128"},
          Case{{10, 129}, "tree_id=9, in_tree_id=10, port_id=129, in_port_id=129"}}) {
      entry_is(9, kPort1, 3);
      EXPECT_EQ(get_next(table_.state_column, asked), std::nullopt);
      const Trace trace = fake::taken_trace();
      ASSERT_GE(trace.size(), 2U);
      EXPECT_EQ(trace[trace.size() - 2], header_line(std::string(" Looping detected. ") + log + "\\n"));
      EXPECT_EQ(trace.back(), "cmd_snmp_free_rx_hndl");
    }
    for (const auto &[asked, in_port] : {std::pair<oid, std::string>{129, "129"}, {130, "130"}}) {
      fake::platform().interfaces = {{kPort1, 129}, {kPort2, 130}, {kPort3, 131}};
      entry_is(10, kPort1, 3);
      EXPECT_EQ(get_next(table_.state_column, {10, asked}), std::nullopt);
      const Trace trace = fake::taken_trace();
      ASSERT_GE(trace.size(), 2U);
      EXPECT_EQ(trace[trace.size() - 2],
                header_line(" Looping detected. tree_id=10, in_tree_id=10, port_id=129, in_port_id=" +
                            in_port + "\\n"));
      EXPECT_EQ(trace.back(), "cmd_snmp_free_rx_hndl");
    }
    fake::platform().interfaces = {{kPort1, 129}, {kPort2, 130}};
    entry_is(1, kPort2, 3);
    EXPECT_EQ(get_next(table_.state_column, {0x80000000, 129}), std::nullopt) << "trees are unsigned";
    fake::taken_trace();
  }

  void expect_failures_of_the_type() {
    fake::platform().next_sends = {{5}};
    EXPECT_EQ(get(table_.state_column, {10, 129}), std::nullopt);
    const std::string in_header = "header_" + std::string(table_.name) + "(LINE)";
    EXPECT_EQ(fake::taken_trace().back(),
              logged_rejection(in_header + " get_stpxSpanningTreeType() failed rc: 5\\n"));
    reply_holds(protocol::kMode, 3);
    EXPECT_EQ(get_next(table_.state_column, {}), std::nullopt);
    EXPECT_EQ(fake::taken_trace().back(),
              logged_rejection(in_header + " get_stpxSpanning_tree_type() retun wrong type: 3\\n"));
    EXPECT_NE(get(table_.state_column, {10, 129}), std::nullopt) << "a GET looks at MST mode alone";
    fake::taken_trace();
  }

  void expect_reply_without_the_tree_answers_with_the_tree_asked_for() {
    reply_lacks(protocol::kPortTree);
    EXPECT_NE(get(table_.state_column, {10, 129}), std::nullopt);
    EXPECT_EQ(answered(), std::string(table_.column_oid) + ".10.129");
  }

  const TableUnderTest &table_;
};

template <const TableUnderTest &kTable>
class Table : public InconsistencyTest {
 protected:
  Table() : InconsistencyTest(kTable) {}
};

using LoopInconsistency = Table<kLoop>;
using RootInconsistency = Table<kRoot>;
using PortInconsistency = Table<kPorts>;

const std::string kThree("\x03\0\0\0", 4);
const std::string kBothBits("\xC0", 1);

// The state as it is, for loop and root; as BITS for port inconsistencies.
#define TEST_EACH_TABLE(Fixture, served)                                                          \
  TEST_F(Fixture, GetOfARow) { expect_get_of_a_row(served); }                                     \
  TEST_F(Fixture, GetNextOfTheBareColumnStartsFromTree0AndPort0) {                                \
    expect_get_next_of_the_bare_column(served);                                                   \
  }                                                                                               \
  TEST_F(Fixture, GetNextOfTheBareColumnSearchesFromTheStart) { expect_search_from_the_start(); } \
  TEST_F(Fixture, GetNextOfATreeAloneStartsFromItsPort0) {                                        \
    expect_get_next_of_a_tree_alone_starts_at_port_0();                                           \
  }                                                                                               \
  TEST_F(Fixture, FailedSearches) { expect_failed_searches(); }                                   \
  TEST_F(Fixture, NextRowThatDoesNotAdvanceIsRefused) { expect_walk_must_advance(); }             \
  TEST_F(Fixture, FailuresOfTheSpanningTreeType) { expect_failures_of_the_type(); }               \
  TEST_F(Fixture, ReplyWithoutTheTreeAnswersWithTheTreeAskedFor) {                                \
    expect_reply_without_the_tree_answers_with_the_tree_asked_for();                              \
  }

TEST_EACH_TABLE(LoopInconsistency, kThree)
TEST_EACH_TABLE(RootInconsistency, kThree)
TEST_EACH_TABLE(PortInconsistency, kBothBits)

TEST_F(LoopInconsistency, GetNextWholeTrace) {
  entry_is(10, kPort2, 3);
  EXPECT_EQ(get_next(52, {10, 129}), kThree);
  EXPECT_EQ(answered(), ".1.8.2.1.3.10.130");
  const auto listed = [](const std::string &text) {
    return logged("stp_get_next_dot1dportnum[LINE]" + text);
  };
  const auto port = [](const std::string &text) {
    return logged_rejection("validate_port_id_for_snmp_search_from_im(LINE) " + text + "\\n");
  };
  const auto search = [](const std::string &text) {
    return logged("\\nget_next_stp_dual_indices_entry_from_im(LINE)" + text + "\\n");
  };
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(
          Trace{logged("exact 0 *length 16 vp_namelen 14\\n"), header_line(" port_id: 129, tree_id:10\\n")} +
          sent(104, 1, "0x01020227", "00000000") +
          Trace{"free(16000)",
                "cmd_rsp_attr_get(0x0202B001)",
                logged("value 5\\n"),
                "cmd_snmp_free_rx_hndl",
                header_line(" get_stpxSpanningTreeType() returns 5 \\n"),
                "gettimeofday",
                search(": get stp dual indices entry."),
                listed("received base_port=129"),
                "im_get_next_ifindex(0x00000000)",
                "check_if_valid_base_port_ifindex(0x1A000001, 0)",
                "stp_ifindex2dot1dportnum(0x1A000001)",
                "im_get_next_ifindex(0x1A000001)",
                "check_if_valid_base_port_ifindex(0x1A000002, 0)",
                "stp_ifindex2dot1dportnum(0x1A000002)",
                listed("(tmp_base_port=130, if_index=0x1a000001next_base_port=65535, "
                       "next_if_index=0x1a000002"),
                "im_get_next_ifindex(0x1A000002)",
                listed("(base_port=129, if_index=0x1a000002next_base_port=130, next_if_index=0x0"),
                port("base_port:129, stp_flag:0, stp_get_next_dot1dportnum() next_port:130"),
                "stp_dot1dportnum2ifindex(130)",
                port("return SUCCESS"),
                logged("\\nvalidate_port_id_for_snmp_search_from_im(LINE): returning port_id(130), "
                       "in_if_index(436207618), ret_if_index(436207618)\\n"),
                "if_index_get_type(0x1A000002)",
                search(": get_next look for ifIndex(436207618) in tree (10)"),
                search(" if_index type: 26")} +
          queried_and_found(121, 1, 10, kPort2, 10, kPort2) +
          Trace{logged("\\nget_stp_entry_from_if_index(LINE): value 3\\n"), search(" Get Successful"),
                "stp_ifindex2dot1dportnum(0x1A000002)",
                search(": returning tree_index: 10, port_index: 130")} +
          timed("0") +
          Trace{"cmd_rsp_attr_get(0x1402A006)", "cmd_rsp_attr_get(0x0C02A001)",
                "cmd_rsp_attr_get(0x1402A015)", value_line("3"), "cmd_snmp_free_rx_hndl"}));
}

TEST_F(LoopInconsistency, IsWalkedInMstMode) {
  reply_holds(protocol::kMode, 4);
  EXPECT_EQ(get_next(52, {}), kThree);
  EXPECT_EQ(get(52, {0, 129}), kThree) << "the CIST has rows";
}

TEST_F(RootInconsistency, IsWalkedInMstMode) {
  reply_holds(protocol::kMode, 4);
  EXPECT_EQ(get_next(70, {}), kThree);
  EXPECT_EQ(get(70, {0, 129}), kThree) << "the CIST has rows";
}

TEST_F(PortInconsistency, YieldsNothingInMstMode) {
  reply_holds(protocol::kMode, 4);
  for (const int exact : {0, 1}) {
    EXPECT_EQ(ask_below_root(120, {1, 3, 1, 1, 3, 10, 129}, exact), std::nullopt);
    const Trace trace = fake::taken_trace();
    EXPECT_EQ(trace.back(), header_line("  tree_type is stpxSpanningTreeType_MST, not supported,  return "
                                        "failed\\n"));
    EXPECT_THAT(trace, Not(Contains("cmd_req_cmdId_set(request, 116)")));
  }
}

TEST_F(PortInconsistency, BitsAreTheTwoLowOnesInSnmpOrder) {
  for (const auto &[state, served] :
       {std::pair<uint32_t, char>{1, '\x80'}, {2, '\x40'}, {3, '\xC0'}, {5, '\x80'}, {0xFFFFFFFE, '\x40'}}) {
    reply_holds(protocol::kInconsistency, state);
    EXPECT_EQ(get(120, {10, 129}), std::string(1, served)) << state;
  }
}

TEST_F(PortInconsistency, StateWithoutEitherBitEndsTheWalk) {
  entry_is(10, kPort2, 4);
  EXPECT_EQ(get_next(120, {}), std::nullopt);
  EXPECT_EQ(answered(), ".1.3.1.1.3");
  EXPECT_THAT(header_lines(),
              ElementsAreArray(begun(0, 14, "port_id: 0, tree_id:0", 5) + searched("0") +
                               Trace{value_line("4"), "cmd_snmp_free_rx_hndl",
                                     logged_rejection("parse_reply_stpxInconsistencyTable(LINE) "
                                                      "stpxInconsistentState is 0. Return FAILURE.\\n"),
                                     parse_failure()}));
}

TEST_F(LoopInconsistency, PortOfTheIndexIsTakenWith16Bits) {
  EXPECT_EQ(get(52, {10, 65536 + 129}), kThree);
  EXPECT_EQ(answered(), ".1.8.2.1.3.10.129");
}

TEST_F(LoopInconsistency, TreeOfTheReplyIsTheRows) {
  entry_is(11, kPort1, 3);
  EXPECT_EQ(get(52, {10, 129}), kThree);
  EXPECT_EQ(answered(), ".1.8.2.1.3.11.129");
}

}  // namespace
