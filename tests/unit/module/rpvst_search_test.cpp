// The next row of a walk through per-VLAN trees: each step, each way to fail, and what becomes of the
// replies.
#include <tuple>

#include "ledger.h"
#include "platform/cmd.h"
#include "protocol_numbers.h"
#include "search/tree_walk.h"
#include "tree_walk_test.h"

namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAreArray;
using ::testing::Not;
using ::testing::StartsWith;

using namespace stpsnmp::search;
using stpsnmp::query::Reply;

class RpvstSearch : public TreeWalkTest {
 protected:
  RpvstSearch()
      : TreeWalkTest("get_next_stp_dual_indices_entry_rpvst", protocol::kRapidPvstPorts,
                     protocol::kInterfaceKey, protocol::kVlanTreeKey) {}

  int run(uint32_t tree, uint16_t port, uint8_t selector = 1) {
    return run_with(tree, port, &reply_, selector);
  }

  int run_with(uint32_t tree, uint16_t port, void **reply, uint8_t selector = 1) {
    tree_ = tree;
    port_ = port;
    return find_next({STP_COMMAND_RAPID_PVST_PORTS, STP_KEY_INTERFACE, STP_KEY_VLAN_TREE}, selector, reply);
  }

  int find_next(const EntryKind &kind, uint8_t selector, void **reply) {
    TreePort row{tree_, port_};
    const int result =
        with_reply(reply, [&](Reply *found) { return find_next_vlan_port(kind, selector, &row, found); });
    tree_ = row.tree_id;
    port_ = row.port_id;
    return result;
  }

  // The tree runs.
  Trace checked(uint32_t tree) const { return {probed(tree), kReleased}; }

  // The tree does not run, and another one is found behind it.
  Trace checked_and_left(uint32_t tree, uint32_t next) const {
    return {probed(tree), line(": invalid tree id"), stepped_from(tree), kReleased,
            line(": Found next tree id " + shown(next))};
  }

  // The tree has no further port, and another one is found behind it.
  Trace stepped(uint32_t tree, uint32_t next) const {
    return {stepped_from(tree), logged_rejection("Found next tree id " + shown(next) + "\\n"), kReleased};
  }

  static std::string no_port_failure() {
    return logged_rejection("validate_port_id_for_snmp_search_new failed in LINE\\n");
  }

  static std::string row_failure() {
    return logged_rejection("get_stp_entry_from_if_index failed at LINE\\n");
  }
};

TEST_F(RpvstSearch, WholeTrace) {
  untell_queries();
  fake::platform().next_sends = {entry(10, kPort1), entry(10, kPort1)};
  EXPECT_EQ(run(10, 0), 0);
  EXPECT_THAT(taken_lines(),
              ElementsAreArray(queried_and_found(protocol::kRapidPvstPorts, 3, 10, 0, 10, kPort1) +
                               Trace{kReleased} + port_found("10", "129-132", 129, kPort1) +
                               queried_and_found(protocol::kRapidPvstPorts, 1, 10, kPort1, 10, kPort1) +
                               Trace{line(" Get Successful"), "stp_ifindex2dot1dportnum(0x000007D1)",
                                     line(": returning tree_index: 10, port_index: 129")}));
  expect_row(10, 129);
  take_reply();
}

TEST_F(RpvstSearch, WholeTraceIntoTheNextTree) {
  untell_queries();
  fake::platform().interfaces.pop_back();
  fake::platform().next_sends = {entry(10, kPort1), entry(20, kDownPort), entry(20, kPort1)};
  EXPECT_EQ(run(10, 132), 0);
  EXPECT_THAT(
      taken_lines(),
      ElementsAreArray(queried_and_found(protocol::kRapidPvstPorts, 3, 10, 0, 10, kPort1) + Trace{kReleased} +
                       no_port_found("10", "129-132") +
                       queried_and_found(protocol::kRapidPvstPorts, 3, 10, kBehindLastPort, 20, kDownPort) +
                       Trace{logged_rejection("Found next tree id 20\\n"), kReleased} +
                       port_found("20", "129,131-132", 129, kPort1) +
                       queried_and_found(protocol::kRapidPvstPorts, 1, 20, kPort1, 20, kPort1) +
                       Trace{line(" Get Successful"), "stp_ifindex2dot1dportnum(0x000007D1)",
                             line(": returning tree_index: 20, port_index: 129")}));
  expect_row(20, 129);
  take_reply();
}

// The tree that the request names.

TEST_F(RpvstSearch, TreeZeroIsReadAsTreeOne) {
  script({entry(10, kPort1), entry(10, kPort1)});
  EXPECT_EQ(run(0, 0), 0);
  EXPECT_THAT(story(), ElementsAreArray(checked(1) + Trace{members_of("10"), looked_at(kPort1)} +
                                        returned(kPort1, 10, 129)));
  expect_row(10, 129);
  take_reply();
}

TEST_F(RpvstSearch, TreeZeroBecomesTreeOneEvenWhenTheSearchFails) {
  script({no_entry(), no_entry()});
  EXPECT_EQ(run(0, 129), -1);
  EXPECT_THAT(story(), ElementsAreArray({probed(1), line(": invalid tree id"), stepped_from(1),
                                         rejection(" Exhausted all instances of stp trees")}));
  expect_nothing(1, 129);
}

TEST_F(RpvstSearch, OtherTreesAreLeftAloneWhenTheSearchFails) {
  for (const uint32_t tree : {1U, 2U, 4094U, 70000U, 0xFFFFFFFFU}) {
    script({no_entry(), no_entry()});
    EXPECT_EQ(run(tree, 129), -1);
    EXPECT_THAT(story(), ElementsAreArray({probed(tree), line(": invalid tree id"), stepped_from(tree),
                                           rejection(" Exhausted all instances of stp trees")}));
    expect_nothing(tree, 129);
  }
}

TEST_F(RpvstSearch, ExhaustedAtTheTreeCheckWholeTrace) {
  untell_queries();
  fake::platform().next_sends = {no_entry(), no_entry()};
  EXPECT_EQ(run(10, 0), -1);
  EXPECT_THAT(taken_lines(),
              ElementsAreArray(queried_in_vain(protocol::kRapidPvstPorts, 3, 10, 0) +
                               Trace{line(": invalid tree id")} +
                               queried_in_vain(protocol::kRapidPvstPorts, 3, 10, kBehindLastPort) +
                               Trace{rejection(" Exhausted all instances of stp trees")}));
}

TEST_F(RpvstSearch, UnknownTreeIsFollowedByTheNextOneFromPortZero) {
  script({no_entry(), entry(20, kDownPort), entry(20, kPort1)});
  EXPECT_EQ(run(15, 4097), 0);
  EXPECT_THAT(story(),
              ElementsAreArray(checked_and_left(15, 20) + Trace{members_of("20"), looked_at(kPort1)} +
                               returned(kPort1, 20, 129)));
  expect_row(20, 129);
  take_reply();
}

TEST_F(RpvstSearch, TheRequestsPortStaysWhereTheTreeCheckLandsInAnotherTree) {
  script({entry(20, kPort1), entry(20, kChannel)});
  EXPECT_EQ(run(15, 130), 0);
  EXPECT_THAT(story(), ElementsAreArray(checked(15) +
                                        Trace{members_of("20"), looked_at(kDownPort), looked_at(kMember),
                                              looked_at(kChannel)} +
                                        returned(kChannel, 20, 4097)));
  expect_row(20, 4097);
  take_reply();
}

TEST_F(RpvstSearch, TheTreeCheckMayLandInAnEarlierTree) {
  script({entry(10, kPort1), entry(10, kPort2)});
  EXPECT_EQ(run(15, 129), 0);
  EXPECT_THAT(story(), ElementsAreArray(checked(15) + Trace{members_of("10"), looked_at(kPort2)} +
                                        returned(kPort2, 10, 130)));
  expect_row(10, 130);
  take_reply();
}

TEST_F(RpvstSearch, ReplyOfTheTreeCheckWithoutATreeMeansTheRequestedOne) {
  script({{.attributes = fake::Attributes{}}, entry(10, kPort1)});
  EXPECT_EQ(run(10, 0), 0);
  EXPECT_THAT(story(), ElementsAreArray(checked(10) + Trace{members_of("10"), looked_at(kPort1)} +
                                        returned(kPort1, 10, 129)));
  take_reply();
}

TEST_F(RpvstSearch, MissingReplyOfTheTreeCheckCountsAsNoEntry) {
  script({{.has_reply = false}, {.has_reply = false}});
  EXPECT_EQ(run(10, 0), -1);
  EXPECT_THAT(story(), ElementsAreArray({probed(10), line(": invalid tree id"), stepped_from(10),
                                         rejection(" Exhausted all instances of stp trees")}));
  expect_nothing(10, 0);
}

// The ports of a tree.

TEST_F(RpvstSearch, PortsAscendWithinTheTree) {
  fake::platform().interfaces.back().vlans = {10, 20};
  for (const auto &[from, port, if_index] : {std::tuple<uint16_t, uint16_t, uint32_t>{0, 129, kPort1},
                                             {1, 129, kPort1},
                                             {128, 129, kPort1},
                                             {129, 130, kPort2},
                                             {130, 4097, kChannel},
                                             {132, 4097, kChannel},
                                             {4096, 4097, kChannel}}) {
    script({entry(10, kPort1), entry(10, if_index)});
    EXPECT_EQ(run(10, from), 0) << from;
    expect_row(10, port);
    take_reply();
  }
}

TEST_F(RpvstSearch, PortsThatTheSelectorRefusesAreSteppedOver) {
  script({entry(10, kPort1), no_entry()});
  EXPECT_EQ(run(10, 130), -1);
  EXPECT_THAT(story(),
              ElementsAreArray(checked(10) + Trace{members_of("10"), looked_at(kDownPort), looked_at(kMember),
                                                   stepped_from(10),
                                                   rejection(": Exhausted all instances of stp trees")}));
}

TEST_F(RpvstSearch, SelectorIsTheCallers) {
  script({entry(10, kPort1), entry(10, kDownPort)});
  EXPECT_EQ(run(10, 130, 0), 0);
  EXPECT_THAT(story(), ElementsAreArray(checked(10) + Trace{members_of("10"), looked_at(kDownPort, 0)} +
                                        returned(kDownPort, 10, 131)));
  take_reply();
  // In the tree that follows, too.
  script({entry(10, kPort1), entry(20, kPort1), entry(20, kPort1)});
  EXPECT_EQ(run(10, 4097, 200), 0);
  EXPECT_THAT(story(), Contains(looked_at(kPort1, 200)));
  take_reply();
}

TEST_F(RpvstSearch, EveryQueryHasTheCallersCommandAndTokens) {
  untell_queries();
  fake::platform().next_sends = {no_entry(), entry(10, kPort1), entry(20, kPort1), entry(20, kPort1)};
  fake::platform().interfaces = {{.if_index = kPort1, .port = 129, .vlans = {20}}};
  constexpr EntryKind kOther = {STP_COMMAND_PORT_INCONSISTENCIES, static_cast<stp_key>(0x0C020777),
                                static_cast<stp_key>(0x13020888)};
  tree_ = 5;
  EXPECT_EQ(find_next(kOther, 1, &reply_), 0);
  Trace queries;
  for (const std::string &asked : taken_lines()) {
    if (asked.starts_with("cmd_req_cmdId_set") || asked.starts_with("cmd_req_attr_add")) {
      queries.push_back(asked);
    }
  }
  const auto query = [](uint32_t tree, uint32_t if_index) {
    return Trace{"cmd_req_cmdId_set(request, 116)",
                 "cmd_req_attr_add(request, 0x13020888, " + bytes({0, 1, tree, tree}) + ")",
                 "cmd_req_attr_add(request, 0x0C020777, " + bytes({if_index}) + ")"};
  };
  EXPECT_THAT(queries, ElementsAreArray(query(5, 0) + query(5, kBehindLastPort) + query(10, kBehindLastPort) +
                                        query(20, kPort1)));
  expect_row(20, 129);
  take_reply();
}

TEST_F(RpvstSearch, MembersAreAskedForEachTime) {
  for (int i = 0; i < 2; ++i) {
    script({entry(10, kPort1), entry(10, kPort1)});
    EXPECT_EQ(run(10, 0), 0);
    const Trace lines = taken_lines();
    EXPECT_THAT(lines, Contains(members_of("10")));
    EXPECT_THAT(lines, Each(Not(StartsWith("time("))));
    take_reply();
  }
}

TEST_F(RpvstSearch, MembersThatAreNotKnownCountAsNone) {
  fake::platform().next_base_ports = {{.is_null = true}, {.ports = {129}, .size = 0}};
  script({entry(10, kPort1), entry(20, kPort1)});
  EXPECT_EQ(run(10, 0), -1);
  EXPECT_THAT(story(), ElementsAreArray(checked(10) + Trace{members_of("10")} + stepped(10, 20) +
                                        Trace{members_of("20"), no_port_failure()}));
  expect_nothing(10, 0);
}

// The tree that follows.

TEST_F(RpvstSearch, LastPortIsFollowedByTheLowestOneOfTheNextTree) {
  script({entry(10, kPort1), entry(20, kChannel), entry(20, kPort1)});
  EXPECT_EQ(run(10, 130), 0);
  EXPECT_THAT(story(), ElementsAreArray(checked(10) +
                                        Trace{members_of("10"), looked_at(kDownPort), looked_at(kMember)} +
                                        stepped(10, 20) + Trace{members_of("20"), looked_at(kPort1)} +
                                        returned(kPort1, 20, 129)));
  expect_row(20, 129);
  take_reply();
}

TEST_F(RpvstSearch, HighestPortNumberHasNoneAboveIt) {
  script({entry(10, kPort1), entry(20, kChannel), entry(20, kPort1)});
  EXPECT_EQ(run(10, 65535), 0);
  EXPECT_THAT(story(),
              ElementsAreArray(checked(10) + Trace{members_of("10")} + stepped(10, 20) +
                               Trace{members_of("20"), looked_at(kPort1)} + returned(kPort1, 20, 129)));
  take_reply();
}

TEST_F(RpvstSearch, NextTreeIsTheOneBehindTheTreeThatWasFound) {
  script({no_entry(), entry(30, kPort1), entry(20, kPort1), entry(20, kPort1)});
  EXPECT_EQ(run(15, 0), 0);
  EXPECT_THAT(story(),
              ElementsAreArray(checked_and_left(15, 30) + Trace{members_of("30")} + stepped(30, 20) +
                               Trace{members_of("20"), looked_at(kPort1)} + returned(kPort1, 20, 129)));
  take_reply();
  script({entry(30, kPort1), entry(20, kPort1), entry(20, kPort1)});
  EXPECT_EQ(run(15, 0), 0);
  EXPECT_THAT(story(),
              ElementsAreArray(checked(15) + Trace{members_of("30")} + stepped(30, 20) +
                               Trace{members_of("20"), looked_at(kPort1)} + returned(kPort1, 20, 129)));
  expect_row(20, 129);
  take_reply();
}

TEST_F(RpvstSearch, NoTreeFollows) {
  script({entry(20, kPort1), no_entry()});
  EXPECT_EQ(run(20, 4097), -1);
  EXPECT_THAT(story(),
              ElementsAreArray(checked(20) + Trace{members_of("20"), stepped_from(20),
                                                   rejection(": Exhausted all instances of stp trees")}));
  expect_nothing(20, 4097);
}

TEST_F(RpvstSearch, NoReplyAboutTheTreeThatFollows) {
  script({entry(20, kPort1), {.has_reply = false}});
  EXPECT_EQ(run(20, 4097), -1);
  EXPECT_THAT(story(),
              ElementsAreArray(checked(20) + Trace{members_of("20"), stepped_from(20),
                                                   rejection(": Exhausted all instances of stp trees")}));
  expect_nothing(20, 4097);
}

TEST_F(RpvstSearch, NextTreeWithoutAnAcceptablePortEndsTheWalk) {
  script({entry(10, kPort1), entry(30, kPort1)});
  EXPECT_EQ(run(10, 132), -1);
  EXPECT_THAT(story(), ElementsAreArray(checked(10) + Trace{members_of("10")} + stepped(10, 30) +
                                        Trace{members_of("30"), no_port_failure()}));
  expect_nothing(10, 132);
}

TEST_F(RpvstSearch, TheTreeBehindAnUnknownOneMayBeLeftForAnother) {
  script({no_entry(), entry(30, kPort1), entry(40, kPort1)});
  EXPECT_EQ(run(25, 0), -1);
  EXPECT_THAT(story(), ElementsAreArray(checked_and_left(25, 30) + Trace{members_of("30")} + stepped(30, 40) +
                                        Trace{members_of("40"), no_port_failure()}));
  expect_nothing(25, 0);
}

// Trees in the bitmap of VLANs.

TEST_F(RpvstSearch, HighestTreeOfTheBitmap) {
  fake::platform().interfaces[1].vlans = {4095};
  script({entry(4095, kPort2), entry(4095, kPort2)});
  EXPECT_EQ(run(4095, 0), 0);
  EXPECT_THAT(story(), ElementsAreArray(checked(4095) + Trace{members_of("4095"), looked_at(kPort2)} +
                                        returned(kPort2, 4095, 130)));
  expect_row(4095, 130);
  take_reply();
}

TEST_F(RpvstSearch, TreesBeyondTheBitmapHaveNoVlan) {
  for (const uint32_t tree : {4096U, 4106U, 70000U, 65546U, 0x80000000U, 0xFFFFFFFFU}) {
    script({entry(tree, kPort1), no_entry()});
    EXPECT_EQ(run(tree, 0), -1);
    EXPECT_THAT(story(),
                ElementsAreArray(checked(tree) + Trace{members_of("none"), stepped_from(tree),
                                                       rejection(": Exhausted all instances of stp trees")}));
    expect_nothing(tree, 0);
  }
}

TEST_F(RpvstSearch, TreesBeyondTheBitmapCanFollow) {
  fake::platform().next_base_ports = {{}, {.ports = {129}}};
  script({entry(10, kPort1), entry(70000, kPort1), entry(70000, kPort1)});
  EXPECT_EQ(run(10, 0), 0);
  EXPECT_THAT(story(),
              ElementsAreArray(checked(10) + Trace{members_of("10")} + stepped(10, 70000) +
                               Trace{members_of("none"), looked_at(kPort1)} + returned(kPort1, 70000, 129)));
  expect_row(70000, 129);
  take_reply();
}

TEST_F(RpvstSearch, RowOfAnUnsignedTreeIsRefused) {
  // Trees are shown signed, and the query of a row takes a negative one for an error.
  fake::platform().next_base_ports = {{.ports = {129}}};
  script({no_entry(), entry(0xFFFFFFFE, kPort1)});
  EXPECT_EQ(run(0xFFFFFFF0, 0), -1);
  EXPECT_THAT(story(), ElementsAreArray(checked_and_left(0xFFFFFFF0, 0xFFFFFFFE) +
                                        Trace{members_of("none"), looked_at(kPort1), row_failure()}));
  expect_nothing(0xFFFFFFF0, 0);
}

TEST_F(RpvstSearch, VlansOutsideTheirRangeStayInTheBitmapAtATreeStep) {
  for (const auto &[tree, next, vlans] : {std::tuple<uint32_t, uint32_t, std::string>{4095, 5, "5,4095"},
                                          {0, 7, "0,7"},
                                          {1, 4094, "4094"},
                                          {4094, 1, "1"},
                                          {4094, 4095, "4095"},
                                          {1, 0, "0"},
                                          {4095, 0, "0,4095"},
                                          {4095, 70000, "4095"}}) {
    script({entry(tree, kPort1), entry(next, kPort1)});
    EXPECT_EQ(run(9, 0), -1);
    EXPECT_THAT(story(), ElementsAreArray(checked(9) + Trace{members_of(std::to_string(tree))} +
                                          stepped(tree, next) + Trace{members_of(vlans), no_port_failure()}));
  }
}

// The row.

TEST_F(RpvstSearch, RowWithoutAnEntryEndsTheWalk) {
  script({entry(10, kPort1), no_entry()});
  EXPECT_EQ(run(10, 0), -1);
  EXPECT_THAT(story(), ElementsAreArray(checked(10) + Trace{members_of("10"), looked_at(kPort1),
                                                            row_of(10, kPort1), row_failure()}));
  expect_nothing(10, 0);
}

TEST_F(RpvstSearch, RowWithoutAReplyEndsTheWalk) {
  script({entry(10, kPort1), {.has_reply = false}});
  EXPECT_EQ(run(10, 0), -1);
  EXPECT_EQ(story().back(), row_failure());
  expect_nothing(10, 0);
}

TEST_F(RpvstSearch, RowIsTheAnsweredEntrys) {
  script({entry(10, kPort1), entry(12, kChannel)});
  EXPECT_EQ(run(10, 0), 0);
  EXPECT_THAT(story(),
              ElementsAreArray(checked(10) + Trace{members_of("10"), looked_at(kPort1), row_of(10, kPort1),
                                                   line(" Get Successful"),
                                                   line(": returning tree_index: 12, port_index: 4097")}));
  expect_row(12, 4097);
  take_reply();
}

TEST_F(RpvstSearch, RowWhoseReplyNamesNoKeyIsTheOneAskedFor) {
  script({entry(10, kPort1), {.attributes = fake::Attributes{}}});
  EXPECT_EQ(run(10, 129), 0);
  EXPECT_THAT(story(), ElementsAreArray(checked(10) + Trace{members_of("10"), looked_at(kPort2)} +
                                        returned(kPort2, 10, 130)));
  expect_row(10, 130);
  take_reply();
}

TEST_F(RpvstSearch, RowOfAnInterfaceWithoutAPort) {
  script({entry(10, kPort1), entry(11, kWithoutPort)});
  EXPECT_EQ(run(10, 0), -1);
  const Trace lines = taken_lines();
  ASSERT_GE(lines.size(), 4U);
  EXPECT_THAT(Trace(lines.end() - 4, lines.end()),
              ElementsAreArray({line(" Get Successful"), std::string("stp_ifindex2dot1dportnum(0x00000BB7)"),
                                std::string(kReleased), rejection(": returning FAILURE")}));
  expect_row(10, 0);
}

TEST_F(RpvstSearch, ReplyThatIsHandedOverIsTheRows) {
  fake::Send tree_answer = entry(10, kPort1);
  (*tree_answer.attributes)[protocol::kInconsistency] = fake::number(1);
  fake::Send row_answer = entry(10, kPort1);
  (*row_answer.attributes)[protocol::kInconsistency] = fake::number(2);
  script({tree_answer, row_answer});
  EXPECT_EQ(run(10, 0), 0);
  void *value = nullptr;
  uint32_t length = 0;
  ASSERT_EQ(cmd_rsp_attr_get(reply_, protocol::kInconsistency, &value, &length), 0);
  EXPECT_EQ(fake::hex(value, length), bytes({2}));
  take_reply();
}

TEST_F(RpvstSearch, WithoutAReplyVariableTheIndexAloneIsReturned) {
  script({entry(10, kPort1), entry(10, kPort1)});
  EXPECT_EQ(run_with(10, 0, nullptr), 0);
  EXPECT_THAT(
      story(),
      ElementsAreArray(checked(10) + Trace{members_of("10"), looked_at(kPort1), row_of(10, kPort1), kReleased,
                                           line(" Get Successful"), rejection(" resp_h is NULL"),
                                           line(": returning tree_index: 10, port_index: 129")}));
  expect_row(10, 129);
}

TEST_F(RpvstSearch, FailuresWithoutAReplyVariable) {
  script({entry(10, kPort1), entry(10, kWithoutPort)});
  EXPECT_EQ(run_with(10, 0, nullptr), -1);
  EXPECT_EQ(story().back(), rejection(": returning FAILURE"));
  script({entry(10, kPort1), no_entry()});
  EXPECT_EQ(run_with(10, 0, nullptr), -1);
  script({no_entry(), no_entry()});
  EXPECT_EQ(run_with(10, 0, nullptr), -1);
  script({entry(10, kPort1), no_entry()});
  EXPECT_EQ(run_with(10, 4097, nullptr), -1);
  EXPECT_THAT(taken_lines(), Each(Not(StartsWith("FREED REPLY"))));
}

TEST_F(RpvstSearch, NumbersAreShownSigned) {
  fake::platform().interfaces = {{.if_index = 0xFFFFFFFE, .port = 40000}};
  fake::platform().next_base_ports = {{.ports = {40000}}};
  script({entry(10, 1), entry(0xFFFFFFFD, 0xFFFFFFFE)});
  EXPECT_EQ(run(10, 0), 0);
  EXPECT_EQ(story().back(), line(": returning tree_index: -3, port_index: 40000"));
  expect_row(0xFFFFFFFD, 40000);
  take_reply();
}

// Short memory: one query after the other fails.

TEST_F(RpvstSearch, ShortMemoryAtTheTreeCheck) {
  ledger::fail_next_malloc();
  script({entry(20, kPort1), entry(20, kPort1)});
  EXPECT_EQ(run(10, 130), 0);
  const Trace told = story();
  EXPECT_EQ(told.front(), line(": invalid tree id"));
  expect_row(20, 129);
  take_reply();
}

TEST_F(RpvstSearch, ShortMemoryForTheRow) {
  ledger::fail_malloc_after(2);  // the tree check's request, and the VLAN manager's record
  script({entry(10, kPort1)});
  EXPECT_EQ(run(10, 0), -1);
  EXPECT_EQ(story().back(), row_failure());
  expect_nothing(10, 0);
}

}  // namespace
