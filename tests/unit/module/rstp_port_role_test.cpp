// RSTP port role table: both modes, their searches, the reply's role, and each way to fail.
#include <tuple>

#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "tree_table_test.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::Not;

constexpr uint8_t kTreeColumn = 58;
constexpr uint8_t kPortColumn = 59;
constexpr uint8_t kRoleColumn = 60;

constexpr uint32_t kRole = 0x0202A003;

const RstpPortRoleRow kStaleRow{99, 99, 99};

class RstpPortRole : public TreeTableTest {
 protected:
  RstpPortRole(uint32_t type, uint32_t command, uint32_t interface_key, uint32_t tree_key)
      : TreeTableTest("stpxRSTPPortRoleTable", get_stpxRSTPPortRoleTable, command, interface_key, tree_key),
        type_(type) {}

  void SetUp() override {
    TreeTableTest::SetUp();
    mode_is(type_);
    fake::platform().mst_contexts = {{0, {1}}, {10, {10}}, {20, {19, 20}}};
  }

  static fake::Send role(uint32_t tree, uint32_t if_index, uint32_t role) {
    return row(tree, if_index, {{kRole, fake::number(role)}});
  }

  Trace started(int exact, int length, uint32_t tree, int port) const {
    return Trace{begun(exact, length),
                 header_line(" port_id: " + std::to_string(port) + ", tree_id:" + shown(tree))} +
           type_read();
  }

  // The search was timed, and returned this. These lines end without a newline.
  static Trace timed(int result) {
    const std::string header = "header_stpxRSTPPortRoleTable(LINE)";
    return {logged(header + ": get_next_stp_dual_indices_entry_from_im() begin: (sec=1000, usec=7), end: "
                            "(sec=1001, usec=7)"),
            logged(header + " get_next_stp_dual_indices_entry_from_im() returns: " + std::to_string(result))};
  }

  static std::string handler_failure() { return logged("returning NULL\\n"); }

 private:
  uint32_t type_;
};

class RstpPortRoleRpvst : public RstpPortRole {
 protected:
  RstpPortRoleRpvst() : RstpPortRole(kRapidPvst, 105, kInterfaceKey, kTreeKey) {}
};

class RstpPortRoleMst : public RstpPortRole {
 protected:
  RstpPortRoleMst() : RstpPortRole(kMst, 111, kMstInterfaceKey, kMstTreeKey) {}
};

// GET, which makes its queries as the mode has it.

TEST_F(RstpPortRoleRpvst, GetOfARow) {
  script({role(10, kPort1, 3)});
  EXPECT_EQ(number(get(kRoleColumn, {10, 129})), 3);
  EXPECT_EQ(answered(), ".1.12.2.1.3.10.129");
  EXPECT_THAT(story(), ElementsAreArray(started(1, 16, 10, 129) + Trace{row_of(10, kPort1), kReleased}));
}

TEST_F(RstpPortRoleMst, GetOfARow) {
  script({role(10, kPort1, 3)});
  EXPECT_EQ(number(get(kRoleColumn, {10, 129})), 3);
  EXPECT_EQ(answered(), ".1.12.2.1.3.10.129");
  EXPECT_THAT(story(), ElementsAreArray(started(1, 16, 10, 129) + Trace{row_of(10, kPort1), kReleased}));
}

TEST_F(RstpPortRoleRpvst, GetReadsTheReplyInThisOrder) {
  script({role(10, kPort1, 3)});
  EXPECT_EQ(number(get(kRoleColumn, {10, 129})), 3);
  const Trace lines = taken_lines();
  ASSERT_GE(lines.size(), 4U);
  EXPECT_THAT(Trace(lines.end() - 4, lines.end()),
              ElementsAre("cmd_rsp_attr_get(0x1402A006)", "cmd_rsp_attr_get(0x0C02A001)",
                          "cmd_rsp_attr_get(0x0202A003)", kReleased));
}

TEST_F(RstpPortRoleRpvst, GetOfTreeZeroIsRefused) {
  EXPECT_EQ(get(kRoleColumn, {0, 129}), std::nullopt);
  EXPECT_THAT(story(), ElementsAreArray(started(1, 16, 0, 129) +
                                        Trace{header_line(" get_exact_stp_dual_indices_entry() failed, "
                                                          "commandId: STP_CMDID_SHOW_VLAN_INTERFACE"),
                                              handler_failure()}));
}

TEST_F(RstpPortRoleMst, GetOfTreeZeroIsOneOfTheCist) {
  script({role(0, kDownPort, 1)});
  EXPECT_EQ(number(get(kRoleColumn, {0, 131})), 1);
  EXPECT_EQ(answered(), ".1.12.2.1.3.0.131");
}

TEST_F(RstpPortRoleRpvst, GetOfARowThatDoesNotExist) {
  script({no_entry()});
  EXPECT_EQ(get(kRoleColumn, {10, 129}), std::nullopt);
  EXPECT_EQ(answered(), ".1.12.2.1.3.10.129");
  EXPECT_THAT(story(), ElementsAreArray(started(1, 16, 10, 129) +
                                        Trace{row_of(10, kPort1),
                                              header_line(" get_exact_stp_dual_indices_entry() failed, "
                                                          "commandId: STP_CMDID_SHOW_VLAN_INTERFACE"),
                                              handler_failure()}));
  script({no_entry()});
  EXPECT_EQ(ask_header(header_stpxRSTPPortRoleTable, {10, 129}, 1, kStaleRow).result, -1);
}

TEST_F(RstpPortRoleMst, GetOfARowThatDoesNotExist) {
  script({no_entry()});
  EXPECT_EQ(get(kRoleColumn, {10, 129}), std::nullopt);
  EXPECT_THAT(story(), ElementsAreArray(started(1, 16, 10, 129) +
                                        Trace{row_of(10, kPort1),
                                              header_line(" get_exact_stp_dual_indices_entry() failed"),
                                              handler_failure()}));
  script({no_entry()});
  EXPECT_EQ(ask_header(header_stpxRSTPPortRoleTable, {10, 129}, 1, kStaleRow).result, -1);
}

TEST_F(RstpPortRoleMst, GetOfATreeAloneAsksForPortZero) {
  EXPECT_EQ(get(kRoleColumn, {10}), std::nullopt);
  EXPECT_THAT(story(), ElementsAreArray(started(1, 15, 10, 0) +
                                        Trace{header_line(" get_exact_stp_dual_indices_entry() failed"),
                                              handler_failure()}));
  EXPECT_EQ(get(kRoleColumn, {}), std::nullopt);
  EXPECT_THAT(story(), ElementsAreArray(started(1, 14, 0, 0) +
                                        Trace{header_line(" get_exact_stp_dual_indices_entry() failed"),
                                              handler_failure()}));
}

TEST_F(RstpPortRoleRpvst, GetWithThreeIndexArcsFailsAtOnce) {
  EXPECT_EQ(get(kRoleColumn, {10, 129, 0}), std::nullopt);
  EXPECT_EQ(answered(), ".1.12.2.1.3.10.129.0");
  EXPECT_THAT(fake::taken_trace(), ElementsAre(begun(1, 17), handler_failure()));
  EXPECT_EQ(ask_header(header_stpxRSTPPortRoleTable, {10, 129, 0}, 1, kStaleRow).result, -1);
}

TEST_F(RstpPortRoleRpvst, GetInOtherModesYieldsNothing) {
  for (const uint32_t type : {0U, 1U, 2U, 3U, 6U, 0xFFFFFFFFU}) {
    mode_is(type);
    EXPECT_EQ(get(kRoleColumn, {10, 129}), std::nullopt);
    EXPECT_THAT(story(), ElementsAreArray(started(1, 16, 10, 129) +
                                          Trace{header_line(" tree_type(" + shown(type) + ") invalid."),
                                                handler_failure()}));
  }
  EXPECT_EQ(ask_header(header_stpxRSTPPortRoleTable, {10, 129}, 1, kStaleRow).result, -1);
}

TEST_F(RstpPortRoleRpvst, FailureOfTheMode) {
  mode_is(kRapidPvst, 5);
  for (const int exact : {0, 1}) {
    EXPECT_EQ(ask_below_root(kRoleColumn, {1, 12, 2, 1, 3, 10, 129}, exact), std::nullopt);
    EXPECT_THAT(story(),
                ElementsAre(begun(exact, 16), header_line(" port_id: 129, tree_id:10"), "asked for the mode",
                            header_line(" get_stpxSpanningTreeType() failed rc: 5"), handler_failure()));
    EXPECT_EQ(ask_header(header_stpxRSTPPortRoleTable, {10, 129}, exact, kStaleRow).result, -1);
    fake::taken_trace();
  }
}

TEST_F(RstpPortRoleMst, GetHasNoLoopCheckAndNoClock) {
  script({role(9, kPort1, 3)});
  EXPECT_EQ(number(get(kRoleColumn, {10, 130})), 3);
  EXPECT_EQ(answered(), ".1.12.2.1.3.9.129") << "the index is the answered row's";
  EXPECT_THAT(fake::taken_trace(), Not(Contains("gettimeofday")));
}

TEST_F(RstpPortRoleRpvst, PortOfTheIndexIsTakenWith16Bits) {
  script({role(10, kPort1, 3)});
  EXPECT_EQ(number(get(kRoleColumn, {10, 65536 + 129})), 3);
  EXPECT_EQ(answered(), ".1.12.2.1.3.10.129");
  EXPECT_THAT(story(), Contains(header_line(" port_id: 129, tree_id:10")));
  script({role(10, kPort1, 3), role(10, kPort2, 2)});
  EXPECT_EQ(number(get_next(kRoleColumn, {10, 65536 + 129})), 2);
  EXPECT_EQ(answered(), ".1.12.2.1.3.10.130");
}

TEST_F(RstpPortRoleMst, IndexColumnsHaveNoValue) {
  for (const uint8_t column : {kTreeColumn, kPortColumn}) {
    script({role(10, kPort1, 3)});
    EXPECT_EQ(get(column, {10, 129}), std::nullopt);
    EXPECT_THAT(story(), ElementsAreArray(started(1, 16, 10, 129) +
                                          Trace{row_of(10, kPort1), kReleased, "snmp_set_detail(\"\")"}));
  }
}

// The reply.

TEST_F(RstpPortRoleRpvst, RoleIsServedUnchanged) {
  for (const int32_t served : {0, 1, 2, 3, 4, 5, 6, -1, 2147483647}) {
    script({role(10, kPort1, static_cast<uint32_t>(served))});
    EXPECT_EQ(number(get(kRoleColumn, {10, 129})), served);
  }
}

TEST_F(RstpPortRoleRpvst, ReplyWithoutTheRoleFails) {
  script({entry(10, kPort1)});
  EXPECT_EQ(get(kRoleColumn, {10, 129}), std::nullopt);
  EXPECT_EQ(answered(), ".1.12.2.1.3.10.129");
  EXPECT_THAT(story(), ElementsAreArray(started(1, 16, 10, 129) + Trace{row_of(10, kPort1), kReleased,
                                                                        parse_failure(), handler_failure()}));
  fake::platform().missing_attribute_result = 1234;
  script({entry(10, kPort1)});
  EXPECT_EQ(ask_header(header_stpxRSTPPortRoleTable, {10, 129}, 1, kStaleRow).result, 1234);
}

TEST_F(RstpPortRoleMst, NextReplyWithoutTheRoleFails) {
  script({entry(10, kPort1), entry(10, kPort1)});
  fake::platform().missing_attribute_result = 1234;
  const auto next = ask_header(header_stpxRSTPPortRoleTable, {10, 0}, 0, kStaleRow);
  EXPECT_EQ(next.result, 1234);
  EXPECT_THAT(next.answered, ElementsAre(1, 3, 9, 10, 0));
}

TEST_F(RstpPortRoleMst, RowHasItsIndex) {
  script({role(11, kPort2, 4)});
  const auto exact = ask_header(header_stpxRSTPPortRoleTable, {10, 129}, 1, kStaleRow);
  EXPECT_EQ(exact.result, 0);
  EXPECT_EQ(exact.row.tree_id, 11U);
  EXPECT_EQ(exact.row.port_id, 130U) << "the port's number, not its interface's";
  EXPECT_EQ(exact.row.port_role, 4);
  EXPECT_THAT(exact.answered, ElementsAre(1, 3, 9, 11, 130));
}

TEST_F(RstpPortRoleMst, RowIsClearedFirst) {
  const auto refused = ask_header(header_stpxRSTPPortRoleTable, {10, 129, 1}, 1, kStaleRow);
  EXPECT_EQ(refused.row.tree_id, 0U);
  EXPECT_EQ(refused.row.port_id, 0U);
  EXPECT_EQ(refused.row.port_role, 0);
}

TEST_F(RstpPortRoleRpvst, ReplyWithoutATreeAnswersWithTheRequestedOne) {
  const fake::Send bare{.attributes = fake::Attributes{{kRole, fake::number(2)}}};
  script({bare});
  EXPECT_EQ(number(get(kRoleColumn, {10, 129})), 2);
  EXPECT_EQ(answered(), ".1.12.2.1.3.10.129");
  script({no_entry(), entry(20, kPort1), bare});
  EXPECT_EQ(number(get_next(kRoleColumn, {15, 0})), 2);
  EXPECT_EQ(answered(), ".1.12.2.1.3.15.129");
  // Tree 0 is searched as tree 1, and stays the one that was asked for.
  script({entry(10, kPort1), bare});
  EXPECT_EQ(number(get_next(kRoleColumn, {})), 2);
  EXPECT_EQ(answered(), ".1.12.2.1.3.0.129");
}

TEST_F(RstpPortRoleMst, NextReplyWithoutATreeAnswersWithTheRequestedOne) {
  const fake::Send bare{.attributes = fake::Attributes{{kRole, fake::number(2)}}};
  script({no_entry(), entry(20, kPort1), bare});
  EXPECT_EQ(number(get_next(kRoleColumn, {15, 0})), 2);
  EXPECT_EQ(answered(), ".1.12.2.1.3.15.129");
}

// GETNEXT in Rapid PVST mode.

TEST_F(RstpPortRoleRpvst, GetNextOfTheBareColumnStartsFromTheFirstTree) {
  script({entry(10, kPort1), role(10, kPort1, 3)});
  EXPECT_EQ(number(get_next(kRoleColumn, {})), 3);
  EXPECT_EQ(answered(), ".1.12.2.1.3.10.129");
  EXPECT_THAT(story(),
              ElementsAreArray(started(0, 14, 0, 0) + checked(1) + Trace{row_of(10, kPort1), kReleased}));
}

TEST_F(RstpPortRoleRpvst, GetNextOfATreeAloneStartsFromItsPortZero) {
  script({entry(20, kPort1), role(20, kPort1, 3)});
  EXPECT_EQ(number(get_next(kRoleColumn, {20})), 3);
  EXPECT_EQ(answered(), ".1.12.2.1.3.20.129");
  EXPECT_THAT(story(),
              ElementsAreArray(started(0, 15, 20, 0) + checked(20) + Trace{row_of(20, kPort1), kReleased}));
}

TEST_F(RstpPortRoleRpvst, GetNextLeavesOutPortsThatAreDown) {
  script({entry(20, kPort1), role(20, kChannel, 2)});
  EXPECT_EQ(number(get_next(kRoleColumn, {20, 129, 1, 1})), 2);
  EXPECT_EQ(answered(), ".1.12.2.1.3.20.4097");
  const Trace lines = taken_lines();
  EXPECT_THAT(lines, Contains(looked_at(kDownPort, 1)));
  EXPECT_THAT(lines, Not(Contains("gettimeofday")));
  EXPECT_THAT(lines, Not(Contains(::testing::HasSubstr("mst"))));
}

TEST_F(RstpPortRoleRpvst, GetNextBehindTheLastRow) {
  script({entry(20, kPort1), no_entry()});
  EXPECT_EQ(get_next(kRoleColumn, {20, 4097}), std::nullopt);
  EXPECT_EQ(answered(), ".1.12.2.1.3.20.4097");
  EXPECT_THAT(story(), ElementsAreArray(started(0, 16, 20, 4097) + checked(20) +
                                        Trace{stepped_from(20),
                                              header_line(" get_next_stp_dual_indices_entry_rpvst() failed"),
                                              handler_failure()}));
  script({no_entry(), no_entry()});
  EXPECT_EQ(ask_header(header_stpxRSTPPortRoleTable, {10}, 0, kStaleRow).result, -1);
}

TEST_F(RstpPortRoleRpvst, GetNextInOtherModesYieldsNothing) {
  for (const uint32_t type : {0U, 1U, 2U, 3U, 6U, 0xFFFFFFFFU}) {
    mode_is(type);
    EXPECT_EQ(get_next(kRoleColumn, {10, 129}), std::nullopt);
    EXPECT_THAT(
        story(),
        ElementsAreArray(started(0, 16, 10, 129) +
                         Trace{header_line(" get_stpxSpanning_tree_type() retun wrong type: " + shown(type)),
                               handler_failure()}));
  }
  EXPECT_EQ(ask_header(header_stpxRSTPPortRoleTable, {10}, 0, kStaleRow).result, -1);
}

TEST_F(RstpPortRoleRpvst, NextRowThatDoesNotAdvanceIsRefused) {
  // An earlier tree, an earlier port, the same row.
  struct Case {
    uint32_t tree;
    uint32_t if_index;
    int port;
  };
  fake::platform().interfaces[2].oper_status = 1;
  for (const auto &[tree, if_index, port] :
       {Case{9, kChannel, 4097}, {10, kPort1, 129}, {10, kPort2, 130}, {0, kChannel, 4097}}) {
    script({entry(10, kPort1), role(tree, if_index, 3)});
    EXPECT_EQ(get_next(kRoleColumn, {10, 130}), std::nullopt);
    EXPECT_EQ(answered(), ".1.12.2.1.3.10.130");
    EXPECT_THAT(story(),
                ElementsAreArray(started(0, 16, 10, 130) + checked(10) + Trace{row_of(10, kDownPort)} +
                                 refused(tree, 10, port, 130) + Trace{kReleased, handler_failure()}));
  }
  script({entry(10, kPort1), role(10, kPort1, 3)});
  EXPECT_EQ(ask_header(header_stpxRSTPPortRoleTable, {10, 130}, 0, kStaleRow).result, -1);
}

// GETNEXT in MST mode.

TEST_F(RstpPortRoleMst, GetNextOfTheBareColumnStartsFromTheCist) {
  fake::platform().interfaces[1].vlans = {1};
  script({entry(0, kPort1), role(0, kPort2, 3)});
  EXPECT_EQ(number(get_next(kRoleColumn, {})), 3);
  EXPECT_EQ(answered(), ".1.12.2.1.3.0.130");
  EXPECT_THAT(story(),
              ElementsAreArray(started(0, 14, 0, 0) + Trace{"gettimeofday"} + checked(0) +
                               Trace{row_of(0, kPort2), "gettimeofday"} + timed(0) + Trace{kReleased}));
}

TEST_F(RstpPortRoleMst, GetNextWholeTrace) {
  fake::platform().answer = nullptr;
  fake::platform().next_sends = {{.attributes = fake::Attributes{{0x0202B001, fake::number(kMst)}}},
                                 role(10, kPort1, 3),
                                 role(10, kPort2, 3)};
  EXPECT_EQ(number(get_next(kRoleColumn, {10, 129})), 3);
  EXPECT_EQ(answered(), ".1.12.2.1.3.10.130");
  const auto search_line = [](const std::string &text) {
    return logged("\\nget_next_stp_dual_indices_entry_mst(LINE)" + text + "\\n");
  };
  EXPECT_THAT(
      taken_lines(),
      ElementsAreArray(Trace{begun(0, 16), header_line(" port_id: 129, tree_id:10")} +
                       sent(104, 1, "0x01020227", "00000000") +
                       Trace{"free(16000)", "cmd_rsp_attr_get(0x0202B001)", logged("value 4\\n"), kReleased,
                             header_line(" get_stpxSpanningTreeType() returns 4 "), "gettimeofday",
                             "stp_dot1d_bridgemib_get_mst_ctx(10)"} +
                       with_mst_keys(queried_and_found(111, 3, 10, 0, 10, kPort1)) + Trace{kReleased} +
                       port_found("10", "129-131", 130, kPort2) +
                       with_mst_keys(queried_and_found(111, 1, 10, kPort2, 10, kPort2)) +
                       Trace{search_line(" Get Successful"), "stp_ifindex2dot1dportnum(0x000007D2)",
                             search_line(": returning tree_index: 10, port_index: 130"), "gettimeofday"} +
                       timed(0) +
                       Trace{"cmd_rsp_attr_get(0x1402A006)", "cmd_rsp_attr_get(0x0C02A001)",
                             "cmd_rsp_attr_get(0x0202A003)", kReleased}));
}

TEST_F(RstpPortRoleMst, GetNextOfATreeAloneStartsFromItsPortZero) {
  script({entry(20, kPort1), role(20, kPort1, 3)});
  EXPECT_EQ(number(get_next(kRoleColumn, {20})), 3);
  EXPECT_EQ(answered(), ".1.12.2.1.3.20.129");
  EXPECT_THAT(fake::taken_trace(), Contains(members_of("19-20")));
}

TEST_F(RstpPortRoleMst, GetNextTakesTwoArcsOfMore) {
  script({entry(20, kPort1), role(20, kChannel, 2)});
  EXPECT_EQ(number(get_next(kRoleColumn, {20, 65536 + 129, 7})), 2);
  EXPECT_EQ(answered(), ".1.12.2.1.3.20.4097");
  EXPECT_THAT(fake::taken_trace(), Contains(looked_at(kDownPort, 1)));
}

TEST_F(RstpPortRoleMst, GetNextOfATreeThatIsNoInstanceMovesToTheNextOne) {
  script({no_entry(), entry(20, kPort1), role(20, kPort1, 3)});
  EXPECT_EQ(number(get_next(kRoleColumn, {15, 4097})), 3);
  EXPECT_EQ(answered(), ".1.12.2.1.3.20.129");
}

TEST_F(RstpPortRoleMst, GetNextBehindTheLastRow) {
  script({entry(20, kPort1), no_entry()});
  EXPECT_EQ(get_next(kRoleColumn, {20, 4097}), std::nullopt);
  EXPECT_EQ(answered(), ".1.12.2.1.3.20.4097");
  EXPECT_THAT(story(),
              ElementsAreArray(started(0, 16, 20, 4097) + Trace{"gettimeofday"} + checked(20) +
                               Trace{stepped_from(20), "gettimeofday"} + timed(-1) +
                               Trace{header_line(" get_next_stp_dual_indices_entry_from_im() failed"),
                                     handler_failure()}));
  script({no_entry(), no_entry()});
  EXPECT_EQ(ask_header(header_stpxRSTPPortRoleTable, {10}, 0, kStaleRow).result, -1);
}

TEST_F(RstpPortRoleMst, NextRowThatDoesNotAdvanceIsRefused) {
  fake::platform().interfaces[2].oper_status = 1;
  for (const auto &[if_index, port] : {std::pair{kPort1, 129}, {kPort2, 130}}) {
    script({entry(10, kPort1), role(10, if_index, 3)});
    fake::platform().seconds = 1000;
    EXPECT_EQ(get_next(kRoleColumn, {10, 130}), std::nullopt);
    EXPECT_THAT(story(), ElementsAreArray(started(0, 16, 10, 130) + Trace{"gettimeofday"} + checked(10) +
                                          Trace{row_of(10, kDownPort), "gettimeofday"} + timed(0) +
                                          refused(10, 10, port, 130) + Trace{kReleased, handler_failure()}));
  }
  // The process's trees do not ascend.
  script({no_entry(), entry(10, kPort1), role(10, kPort1, 3)});
  fake::platform().seconds = 1000;
  EXPECT_EQ(get_next(kRoleColumn, {15, 0}), std::nullopt);
  EXPECT_EQ(answered(), ".1.12.2.1.3.15.0");
  EXPECT_THAT(story(),
              ElementsAreArray(started(0, 16, 15, 0) +
                               Trace{"gettimeofday", probed(15), stepped_from(15), kReleased,
                                     row_of(10, kPort1), "gettimeofday"} +
                               timed(0) + refused(10, 15, 129, 0) + Trace{kReleased, handler_failure()}));
  script({entry(10, kPort1), role(10, kPort1, 3)});
  EXPECT_EQ(ask_header(header_stpxRSTPPortRoleTable, {10, 130}, 0, kStaleRow).result, -1);
}

TEST_F(RstpPortRoleMst, NextRowMayHaveALowerPortInALaterTree) {
  script({entry(10, kPort1), entry(20, kPort1), role(20, kPort1, 3)});
  EXPECT_EQ(number(get_next(kRoleColumn, {10, 4097})), 3);
  EXPECT_EQ(answered(), ".1.12.2.1.3.20.129");
}

}  // namespace
