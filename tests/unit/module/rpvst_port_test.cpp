// Rapid PVST port table: modes, searches, the reply's flags, and each way to fail.
#include <utility>

#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "tree_table_test.h"

namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

constexpr uint8_t kTreeColumn = 107;
constexpr uint8_t kPortColumn = 108;
constexpr uint8_t kFlagsColumn = 109;

constexpr uint32_t kCommand = 105;
constexpr uint32_t kEdge = 0x0202A01D;
constexpr uint32_t kPeer = 0x0202A027;

const std::string kEdgeBit("\x80", 1);
const std::string kBothBits("\x90", 1);
const std::string kNoBit("\0", 1);

const RpvstPortRow kStaleRow{99, 99, 0xFF};

class RpvstPort : public TreeTableTest {
 protected:
  RpvstPort()
      : TreeTableTest("stpxRPVSTPortTable", get_stpxRPVSTPortTable, kCommand, kInterfaceKey, kTreeKey) {}

  static fake::Send flags(uint32_t tree, uint32_t if_index, uint32_t edge, uint32_t peer) {
    return row(tree, if_index, {{kEdge, fake::number(edge)}, {kPeer, fake::number(peer)}});
  }

  static fake::Send edge_port(uint32_t tree, uint32_t if_index) { return flags(tree, if_index, 1, 0); }
};

// GET.

TEST_F(RpvstPort, GetOfARow) {
  script({flags(10, kPort1, 1, 1)});
  EXPECT_EQ(get(kFlagsColumn, {10, 129}), kBothBits);
  EXPECT_EQ(answered(), ".1.13.1.1.3.10.129");
  EXPECT_THAT(story(), ElementsAre(begun(1, 16), row_of(10, kPort1), kReleased));
}

TEST_F(RpvstPort, GetReadsTheReplyInThisOrder) {
  script({edge_port(10, kPort1)});
  EXPECT_EQ(get(kFlagsColumn, {10, 129}), kEdgeBit);
  const Trace lines = taken_lines();
  ASSERT_GE(lines.size(), 5U);
  EXPECT_THAT(Trace(lines.end() - 5, lines.end()),
              ElementsAre("cmd_rsp_attr_get(0x1402A006)", "cmd_rsp_attr_get(0x0C02A001)",
                          "cmd_rsp_attr_get(0x0202A01D)", "cmd_rsp_attr_get(0x0202A027)", kReleased));
}

TEST_F(RpvstPort, GetOfADownPort) {
  script({edge_port(20, kDownPort)});
  EXPECT_EQ(get(kFlagsColumn, {20, 131}), kEdgeBit) << "only walks leave it out";
}

TEST_F(RpvstPort, GetWorksInAnyModeAndDoesNotAskForIt) {
  for (const uint32_t type : {0U, 1U, 3U, kMst, kRapidPvst, 6U}) {
    mode_is(type);
    script({edge_port(10, kPort1)});
    EXPECT_EQ(get(kFlagsColumn, {10, 129}), kEdgeBit);
  }
  mode_is(kRapidPvst, 4);
  script({edge_port(10, kPort1)});
  EXPECT_EQ(get(kFlagsColumn, {10, 129}), kEdgeBit);
  EXPECT_THAT(fake::taken_trace(), ::testing::Not(::testing::Contains("asked for the mode")));
}

TEST_F(RpvstPort, GetOfATreeAloneAsksForPortZero) {
  for (const std::vector<oid> &index : {std::vector<oid>{}, {10}, {10, 0}, {10, 65536}}) {
    EXPECT_EQ(get(kFlagsColumn, index), std::nullopt);
    EXPECT_THAT(story(), ElementsAre(begun(1, 14 + static_cast<int>(index.size())),
                                     header_line(" get_exact_stp_dual_indices_entry() failed")));
  }
}

TEST_F(RpvstPort, GetWithThreeIndexArcsFailsAtOnce) {
  EXPECT_EQ(get(kFlagsColumn, {10, 129, 0}), std::nullopt);
  EXPECT_EQ(answered(), ".1.13.1.1.3.10.129.0");
  EXPECT_THAT(fake::taken_trace(), ElementsAre(begun(1, 17)));
  EXPECT_EQ(ask_header(header_stpxRPVSTPortTable, {10, 129, 0}, 1, kStaleRow).result, -1);
}

TEST_F(RpvstPort, GetOfARowThatDoesNotExist) {
  script({no_entry()});
  EXPECT_EQ(get(kFlagsColumn, {10, 129}), std::nullopt);
  EXPECT_EQ(answered(), ".1.13.1.1.3.10.129");
  EXPECT_THAT(story(), ElementsAre(begun(1, 16), row_of(10, kPort1),
                                   header_line(" get_exact_stp_dual_indices_entry() failed")));
}

TEST_F(RpvstPort, GetOfTreeZeroIsRefused) {
  EXPECT_EQ(get(kFlagsColumn, {0, 129}), std::nullopt);
  EXPECT_THAT(story(), ElementsAre(begun(1, 16), header_line(" get_exact_stp_dual_indices_entry() failed")));
}

TEST_F(RpvstPort, GetHasNoLoopCheck) {
  script({edge_port(9, kPort1)});
  EXPECT_EQ(get(kFlagsColumn, {10, 130}), kEdgeBit);
  EXPECT_EQ(answered(), ".1.13.1.1.3.9.129") << "the index is the answered row's";
}

TEST_F(RpvstPort, PortOfTheIndexIsTakenWith16Bits) {
  script({edge_port(10, kPort1)});
  EXPECT_EQ(get(kFlagsColumn, {10, 65536 + 129}), kEdgeBit);
  EXPECT_EQ(answered(), ".1.13.1.1.3.10.129");
  script({edge_port(10, kPort1), edge_port(10, kPort2)});
  EXPECT_EQ(get_next(kFlagsColumn, {10, 65536 + 129}), kEdgeBit);
  EXPECT_EQ(answered(), ".1.13.1.1.3.10.130");
}

TEST_F(RpvstPort, IndexColumnsHaveNoValue) {
  for (const uint8_t column : {kTreeColumn, kPortColumn}) {
    script({edge_port(10, kPort1)});
    EXPECT_EQ(get(column, {10, 129}), std::nullopt);
    EXPECT_THAT(story(), ElementsAre(begun(1, 16), row_of(10, kPort1), kReleased, "snmp_set_detail(\"\")"));
  }
}

// The flags.

TEST_F(RpvstPort, FlagsOfTheReply) {
  struct Case {
    uint32_t edge;
    uint32_t peer;
    char served;
  };
  for (const auto &[edge, peer, served] : {Case{0, 0, '\0'},
                                           {1, 0, '\x80'},
                                           {2, 0, '\x80'},
                                           {0x80000000, 0, '\x80'},
                                           {256, 0, '\x80'},
                                           {0, 1, '\x10'},
                                           {0, 2, '\0'},
                                           {0, 257, '\0'},
                                           {0, 0xFFFFFFFF, '\0'},
                                           {1, 1, '\x90'},
                                           {1, 2, '\x80'},
                                           {0xFFFFFFFF, 1, '\x90'}}) {
    script({flags(10, kPort1, edge, peer)});
    EXPECT_EQ(get(kFlagsColumn, {10, 129}), std::string(1, served)) << edge << ' ' << peer;
  }
}

TEST_F(RpvstPort, FlagsOfTheFormerRowAreForgotten) {
  script({flags(10, kPort1, 1, 1), row(10, kPort1, {{kPeer, fake::number(0)}})});
  EXPECT_EQ(get(kFlagsColumn, {10, 129}), kBothBits);
  EXPECT_EQ(get(kFlagsColumn, {10, 129}), kNoBit);
}

TEST_F(RpvstPort, ReplyWithoutTheEdgeFlag) {
  script({row(10, kPort1, {{kPeer, fake::number(1)}})});
  EXPECT_EQ(get(kFlagsColumn, {10, 129}), std::string(1, '\x10'));
}

TEST_F(RpvstPort, ReplyWithoutThePeerFlagFails) {
  script({row(10, kPort1, {{kEdge, fake::number(1)}})});
  EXPECT_EQ(get(kFlagsColumn, {10, 129}), std::nullopt);
  EXPECT_EQ(answered(), ".1.13.1.1.3.10.129");
  EXPECT_THAT(story(), ElementsAre(begun(1, 16), row_of(10, kPort1), kReleased, parse_failure()));
  fake::platform().missing_attribute_result = 1234;
  script({row(10, kPort1, {})});
  EXPECT_EQ(ask_header(header_stpxRPVSTPortTable, {10, 129}, 1, kStaleRow).result, 1234);
  mode_is(kRapidPvst);
  script({edge_port(10, kPort1), row(10, kPort1, {})});
  const auto next = ask_header(header_stpxRPVSTPortTable, {10, 0}, 0, kStaleRow);
  EXPECT_EQ(next.result, 1234);
  EXPECT_THAT(next.answered, ElementsAre(1, 3, 9, 10, 0));
}

TEST_F(RpvstPort, RowHasItsIndex) {
  script({flags(11, kPort2, 1, 1)});
  const auto exact = ask_header(header_stpxRPVSTPortTable, {10, 129}, 1, kStaleRow);
  EXPECT_EQ(exact.result, 0);
  EXPECT_EQ(exact.row.tree_id, 11U);
  EXPECT_EQ(exact.row.port_id, 130U) << "the port's number, not its interface's";
  EXPECT_EQ(exact.row.port_flags, 0x90);
  EXPECT_THAT(exact.answered, ElementsAre(1, 3, 9, 11, 130));
}

TEST_F(RpvstPort, RowIsClearedFirst) {
  const auto refused = ask_header(header_stpxRPVSTPortTable, {10, 129, 1}, 1, kStaleRow);
  EXPECT_EQ(refused.row.tree_id, 0U);
  EXPECT_EQ(refused.row.port_id, 0U);
  EXPECT_EQ(refused.row.port_flags, 0);
}

TEST_F(RpvstPort, ReplyWithoutAnIndexAnswersWithTheRequestedOne) {
  const fake::Send bare{.attributes = fake::Attributes{{kPeer, fake::number(0)}}};
  script({bare});
  EXPECT_EQ(get(kFlagsColumn, {10, 129}), kNoBit);
  EXPECT_EQ(answered(), ".1.13.1.1.3.10.129");
}

TEST_F(RpvstPort, NextReplyWithoutATreeAnswersWithTheRequestedOne) {
  const fake::Send bare{.attributes = fake::Attributes{{kPeer, fake::number(0)}}};
  // The search has moved on to tree 20; the row does not say so.
  script({no_entry(), entry(20, kPort1), bare});
  EXPECT_EQ(get_next(kFlagsColumn, {15, 0}), kNoBit);
  EXPECT_EQ(answered(), ".1.13.1.1.3.15.129");
  // Tree 0 is searched as tree 1, and stays the one that was asked for.
  script({entry(10, kPort1), bare});
  EXPECT_EQ(get_next(kFlagsColumn, {}), kNoBit);
  EXPECT_EQ(answered(), ".1.13.1.1.3.0.129");
}

// GETNEXT.

TEST_F(RpvstPort, GetNextWholeTrace) {
  fake::platform().answer = nullptr;
  fake::platform().next_sends = {{.attributes = fake::Attributes{{0x0202B001, fake::number(kRapidPvst)}}},
                                 edge_port(10, kPort1),
                                 edge_port(10, kPort2)};
  EXPECT_EQ(get_next(kFlagsColumn, {10, 129}), kEdgeBit);
  EXPECT_EQ(answered(), ".1.13.1.1.3.10.130");
  const auto search_line = [](const std::string &text) {
    return logged("\\nget_next_stp_dual_indices_entry_rpvst(LINE)" + text + "\\n");
  };
  EXPECT_THAT(
      taken_lines(),
      ElementsAreArray(Trace{begun(0, 16)} + sent(104, 1, "0x01020227", "00000000") +
                       Trace{"free(16000)", "cmd_rsp_attr_get(0x0202B001)", logged("value 5\\n"), kReleased,
                             header_line(" get_stpxSpanningTreeType() returns 5 ")} +
                       queried_and_found(kCommand, 3, 10, 0, 10, kPort1) + Trace{kReleased} +
                       port_found("10", "129-131", 130, kPort2) +
                       queried_and_found(kCommand, 1, 10, kPort2, 10, kPort2) +
                       Trace{search_line(" Get Successful"), "stp_ifindex2dot1dportnum(0x000007D2)",
                             search_line(": returning tree_index: 10, port_index: 130"),
                             "cmd_rsp_attr_get(0x1402A006)", "cmd_rsp_attr_get(0x0C02A001)",
                             "cmd_rsp_attr_get(0x0202A01D)", "cmd_rsp_attr_get(0x0202A027)", kReleased}));
}

TEST_F(RpvstPort, GetNextOfTheBareColumnStartsFromTheFirstTree) {
  script({entry(10, kPort1), edge_port(10, kPort1)});
  EXPECT_EQ(get_next(kFlagsColumn, {}), kEdgeBit);
  EXPECT_EQ(answered(), ".1.13.1.1.3.10.129");
  EXPECT_THAT(story(), ElementsAreArray(Trace{begun(0, 14)} + type_read() + checked(1) +
                                        Trace{row_of(10, kPort1), kReleased}));
}

TEST_F(RpvstPort, GetNextOfAnOidBeforeTheColumnStartsFromTheFirstTree) {
  for (const std::vector<oid> &below_root : {std::vector<oid>{1, 13, 1, 1}, {1, 13, 1, 1, 2, 20, 4097}}) {
    script({entry(10, kPort1), edge_port(10, kPort1)});
    EXPECT_EQ(ask_below_root(kFlagsColumn, below_root, 0), kEdgeBit);
    EXPECT_EQ(answered(), ".1.13.1.1.3.10.129");
    EXPECT_THAT(fake::taken_trace(), ::testing::Contains(probed(1)));
  }
}

TEST_F(RpvstPort, GetNextOfATreeAloneStartsFromItsPortZero) {
  script({entry(20, kPort1), edge_port(20, kPort1)});
  EXPECT_EQ(get_next(kFlagsColumn, {20}), kEdgeBit);
  EXPECT_EQ(answered(), ".1.13.1.1.3.20.129");
  EXPECT_THAT(story(), ElementsAreArray(Trace{begun(0, 15)} + type_read() + checked(20) +
                                        Trace{row_of(20, kPort1), kReleased}));
}

TEST_F(RpvstPort, GetNextTakesTwoArcsOfMore) {
  script({entry(10, kPort1), edge_port(10, kPort2)});
  EXPECT_EQ(get_next(kFlagsColumn, {10, 129, 4000, 1}), kEdgeBit);
  EXPECT_EQ(answered(), ".1.13.1.1.3.10.130");
  EXPECT_THAT(story(), ElementsAreArray(Trace{begun(0, 18)} + type_read() + checked(10) +
                                        Trace{row_of(10, kPort2), kReleased}));
}

TEST_F(RpvstPort, GetNextLeavesOutPortsThatAreDown) {
  script({entry(20, kPort1), edge_port(20, kChannel)});
  EXPECT_EQ(get_next(kFlagsColumn, {20, 129}), kEdgeBit);
  EXPECT_EQ(answered(), ".1.13.1.1.3.20.4097");
  EXPECT_THAT(fake::taken_trace(), ::testing::Contains(looked_at(kDownPort, 1)));
}

TEST_F(RpvstPort, GetNextInMstModeYieldsNothing) {
  mode_is(kMst);
  const auto refusal = [this](const std::string &indices) {
    return Trace{header_line("  tree_type is stpxSpanningTreeType_MST, not supported,  return failed"),
                 header_line(" Looping detected. " + indices)};
  };
  EXPECT_EQ(get_next(kFlagsColumn, {}), std::nullopt);
  EXPECT_EQ(answered(), ".1.13.1.1.3");
  EXPECT_THAT(story(), ElementsAreArray(Trace{begun(0, 14)} + type_read() +
                                        refusal("tree_id=0, in_tree_id=0, port_id=0, in_port_id=0")));
  EXPECT_EQ(get_next(kFlagsColumn, {10, 129}), std::nullopt);
  EXPECT_THAT(story(), ElementsAreArray(Trace{begun(0, 16)} + type_read() +
                                        refusal("tree_id=10, in_tree_id=10, port_id=129, in_port_id=129")));
  EXPECT_EQ(ask_header(header_stpxRPVSTPortTable, {10}, 0, kStaleRow).result, -1);
}

TEST_F(RpvstPort, GetNextInOtherModesYieldsNothing) {
  for (const uint32_t type : {0U, 1U, 2U, 3U, 6U, 0xFFFFFFFFU}) {
    mode_is(type);
    EXPECT_EQ(get_next(kFlagsColumn, {10, 129}), std::nullopt);
    const std::string told = shown(type);
    EXPECT_THAT(story(), ElementsAre(begun(0, 16), "asked for the mode", kReleased,
                                     header_line(" get_stpxSpanningTreeType() returns " + told + " "),
                                     header_line(" get_stpxSpanning_tree_type() retun wrong type: " + told)));
  }
  EXPECT_EQ(ask_header(header_stpxRPVSTPortTable, {10}, 0, kStaleRow).result, -1);
}

TEST_F(RpvstPort, GetNextWithoutTheModeFails) {
  mode_is(kRapidPvst, 5);
  EXPECT_EQ(get_next(kFlagsColumn, {10, 129}), std::nullopt);
  EXPECT_THAT(story(), ElementsAre(begun(0, 16), "asked for the mode",
                                   header_line(" get_stpxSpanningTreeType() failed rc: 5")));
  EXPECT_EQ(ask_header(header_stpxRPVSTPortTable, {10}, 0, kStaleRow).result, -1);
}

TEST_F(RpvstPort, GetNextBehindTheLastRow) {
  script({entry(20, kPort1), no_entry()});
  EXPECT_EQ(get_next(kFlagsColumn, {20, 4097}), std::nullopt);
  EXPECT_EQ(answered(), ".1.13.1.1.3.20.4097");
  EXPECT_THAT(story(),
              ElementsAreArray(
                  Trace{begun(0, 16)} + type_read() + checked(20) +
                  Trace{stepped_from(20), header_line(" get_next_stp_dual_indices_entry_rpvst() failed")}));
  script({no_entry(), no_entry()});
  EXPECT_EQ(ask_header(header_stpxRPVSTPortTable, {10}, 0, kStaleRow).result, -1);
}

TEST_F(RpvstPort, NextRowThatDoesNotAdvanceIsRefused) {
  // An earlier tree, the same row, an earlier port.
  struct Case {
    uint32_t tree;
    uint32_t if_index;
    int port;
  };
  for (const auto &[tree, if_index, port] :
       {Case{9, kChannel, 4097}, {10, kPort1, 129}, {10, kPort2, 130}, {0, kChannel, 4097}}) {
    script({entry(10, kPort1), edge_port(tree, if_index)});
    fake::platform().interfaces[2].oper_status = 1;
    EXPECT_EQ(get_next(kFlagsColumn, {10, 130}), std::nullopt);
    EXPECT_EQ(answered(), ".1.13.1.1.3.10.130");
    EXPECT_THAT(story(), ElementsAreArray(Trace{begun(0, 16)} + type_read() + checked(10) +
                                          Trace{row_of(10, kDownPort)} + refused(tree, 10, port, 130) +
                                          Trace{kReleased}));
  }
  script({entry(10, kPort1), edge_port(10, kPort1)});
  EXPECT_EQ(ask_header(header_stpxRPVSTPortTable, {10, 130}, 0, kStaleRow).result, -1);
}

TEST_F(RpvstPort, NextRowMayAdvanceByPortOrByTree) {
  for (const auto &[tree, if_index, index] :
       {std::tuple<uint32_t, uint32_t, std::string>{10, kDownPort, "10.131"},
        {11, kPort1, "11.129"},
        {0x80000000, kPort1, "2147483648.129"}}) {
    script({entry(10, kPort1), edge_port(tree, if_index)});
    fake::platform().interfaces[2].oper_status = 1;
    EXPECT_EQ(get_next(kFlagsColumn, {10, 130}), kEdgeBit);
    EXPECT_EQ(answered(), ".1.13.1.1.3." + index);
  }
}

TEST_F(RpvstPort, LoopCheckTakesTreesUnsigned) {
  script({no_entry(), entry(10, kPort1), edge_port(10, kPort1)});
  EXPECT_EQ(get_next(kFlagsColumn, {0xFFFFFFFF, 0}), std::nullopt);
  EXPECT_THAT(story(), ElementsAreArray(Trace{begun(0, 16)} + type_read() +
                                        Trace{probed(0xFFFFFFFF), stepped_from(0xFFFFFFFF), kReleased,
                                              row_of(10, kPort1)} +
                                        refused(10, 0xFFFFFFFF, 129, 0) + Trace{kReleased}));
}

}  // namespace
