// The next row of a walk through MST instances: each step, each way to fail, and what becomes of the replies.
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
using ::testing::HasSubstr;
using ::testing::Not;

class MstSearch : public TreeWalkTest {
 protected:
  MstSearch()
      : TreeWalkTest("get_next_stp_dual_indices_entry_mst", protocol::kMstPorts, protocol::kMstInterfaceKey,
                     protocol::kMstTreeKey) {}

  void SetUp() override {
    TreeWalkTest::SetUp();
    // Instance 4 has a context and no port.
    fake::platform().mst_contexts = {{0, {1, 4000}}, {2, {10}}, {3, {19, 20, 21}}, {4, {400}}};
  }

  int run(uint32_t tree, uint16_t port) {
    tree_ = tree;
    port_ = port;
    stpsnmp::search::TreePort row{tree_, port_};
    const int result = with_reply(&reply_, [&](stpsnmp::query::Reply *found) {
      return stpsnmp::search::find_next_mst_port(&row, found);
    });
    tree_ = row.tree_id;
    port_ = row.port_id;
    return result;
  }

  static std::string context_of(uint32_t instance) {
    return "stp_dot1d_bridgemib_get_mst_ctx(" + std::to_string(instance) + ")";
  }

  // The tree runs.
  Trace checked(uint32_t tree) const { return {context_of(tree & 0xFFFF), probed(tree), kReleased}; }

  // The tree does not run, and another one is found behind it.
  Trace checked_and_left(uint32_t tree, uint32_t next) const {
    return {context_of(tree & 0xFFFF), probed(tree), line(": invalid tree id"),
            stepped_from(tree),        kReleased,    line(": Found next tree id " + shown(next)),
            context_of(next & 0xFFFF)};
  }

  // The tree has no further port, and another one is found behind it.
  Trace stepped(uint32_t tree, uint32_t next) const {
    return {stepped_from(tree), logged("Found next tree id " + shown(next) + "\\n"),
            context_of(next & 0xFFFF), kReleased};
  }

  static std::string no_port_failure() {
    return logged("validate_port_id_for_snmp_search_new failed in LINE\\n");
  }

  static std::string row_failure() { return logged("get_stp_entry_from_if_index failed at LINE\\n"); }
};

TEST_F(MstSearch, WholeTrace) {
  untell_queries();
  fake::platform().next_sends = {entry(2, kPort1), entry(2, kPort1)};
  EXPECT_EQ(run(2, 0), 0);
  EXPECT_THAT(
      taken_lines(),
      ElementsAreArray(Trace{context_of(2)} +
                       with_mst_keys(queried_and_found(protocol::kMstPorts, 3, 2, 0, 2, kPort1)) +
                       Trace{kReleased} + port_found("10", "129-132", 129, kPort1) +
                       with_mst_keys(queried_and_found(protocol::kMstPorts, 1, 2, kPort1, 2, kPort1)) +
                       Trace{line(" Get Successful"), "stp_ifindex2dot1dportnum(0x000007D1)",
                             line(": returning tree_index: 2, port_index: 129")}));
  expect_row(2, 129);
  take_reply();
}

TEST_F(MstSearch, WholeTraceIntoTheNextTree) {
  untell_queries();
  fake::platform().interfaces.pop_back();
  fake::platform().next_sends = {entry(2, kPort1), entry(3, kDownPort), entry(3, kPort1)};
  EXPECT_EQ(run(2, 132), 0);
  EXPECT_THAT(
      taken_lines(),
      ElementsAreArray(
          Trace{context_of(2)} + with_mst_keys(queried_and_found(protocol::kMstPorts, 3, 2, 0, 2, kPort1)) +
          Trace{kReleased} + no_port_found("10", "129-132") +
          with_mst_keys(queried_and_found(protocol::kMstPorts, 3, 2, kBehindLastPort, 3, kDownPort)) +
          Trace{logged("Found next tree id 3\\n"), context_of(3), kReleased} +
          port_found("19-21", "129,131-132", 129, kPort1) +
          with_mst_keys(queried_and_found(protocol::kMstPorts, 1, 3, kPort1, 3, kPort1)) +
          Trace{line(" Get Successful"), "stp_ifindex2dot1dportnum(0x000007D1)",
                line(": returning tree_index: 3, port_index: 129")}));
  expect_row(3, 129);
  take_reply();
}

// The tree that the request names.

TEST_F(MstSearch, TreeZeroIsTheCist) {
  fake::platform().interfaces[1].vlans = {4000};
  script({entry(0, kPort1), entry(0, kPort2)});
  EXPECT_EQ(run(0, 0), 0);
  EXPECT_THAT(story(), ElementsAreArray(checked(0) + Trace{members_of("1,4000"), looked_at(kPort2)} +
                                        returned(kPort2, 0, 130)));
  expect_row(0, 130);
  take_reply();
}

TEST_F(MstSearch, TreeIsLeftAloneWhenTheSearchFails) {
  for (const uint32_t tree : {0U, 1U, 2U, 4094U, 65538U, 0xFFFFFFFFU}) {
    script({no_entry(), no_entry()});
    EXPECT_EQ(run(tree, 129), -1);
    EXPECT_THAT(story(),
                ElementsAreArray({context_of(tree & 0xFFFF), probed(tree), line(": invalid tree id"),
                                  stepped_from(tree), line(" Exhausted all instances of stp trees")}));
    expect_nothing(tree, 129);
  }
}

TEST_F(MstSearch, UnknownTreeIsFollowedByTheNextOneFromPortZero) {
  script({no_entry(), entry(2, kDownPort), entry(2, kPort1)});
  EXPECT_EQ(run(1, 4097), 0);
  EXPECT_THAT(story(), ElementsAreArray(checked_and_left(1, 2) + Trace{members_of("10"), looked_at(kPort1)} +
                                        returned(kPort1, 2, 129)));
  expect_row(2, 129);
  take_reply();
}

TEST_F(MstSearch, TreeStaysTheRequestedOneWhereTheProbeAnswersAnother) {
  script({entry(3, kChannel), entry(2, kPort2)});
  EXPECT_EQ(run(2, 129), 0);
  EXPECT_THAT(story(), ElementsAreArray(checked(2) + Trace{members_of("10"), looked_at(kPort2)} +
                                        returned(kPort2, 2, 130)));
  expect_row(2, 130);
  take_reply();
}

TEST_F(MstSearch, NextTreeIsTheOneBehindTheRequestedTreeWhereTheProbeAnsweredAnother) {
  script({entry(3, kChannel), entry(3, kChannel), entry(3, kPort1)});
  EXPECT_EQ(run(2, 130), 0);
  EXPECT_THAT(story(), ElementsAreArray(checked(2) +
                                        Trace{members_of("10"), looked_at(kDownPort), looked_at(kMember)} +
                                        stepped(2, 3) + Trace{members_of("19-21"), looked_at(kPort1)} +
                                        returned(kPort1, 3, 129)));
  expect_row(3, 129);
  take_reply();
}

TEST_F(MstSearch, MissingReplyOfTheProbeCountsAsNoEntry) {
  script({{.has_reply = false}, {.has_reply = false}});
  EXPECT_EQ(run(2, 0), -1);
  EXPECT_THAT(story(), ElementsAreArray({context_of(2), probed(2), line(": invalid tree id"), stepped_from(2),
                                         line(" Exhausted all instances of stp trees")}));
  expect_nothing(2, 0);
}

// Contexts.

TEST_F(MstSearch, InstanceWithoutAContextHasNoVlan) {
  script({entry(7, kPort1), no_entry()});
  EXPECT_EQ(run(7, 0), -1);
  EXPECT_THAT(story(), ElementsAreArray(checked(7) + Trace{members_of("none"), stepped_from(7),
                                                           line(": Exhausted all instances of stp trees")}));
  expect_nothing(7, 0);
}

TEST_F(MstSearch, InstanceFoundWithoutAContextHasNoVlan) {
  script({no_entry(), entry(7, kPort1), no_entry()});
  EXPECT_EQ(run(2, 0), -1);
  EXPECT_THAT(story(), ElementsAreArray(checked_and_left(2, 7) +
                                        Trace{members_of("none"), stepped_from(7),
                                              line(": Exhausted all instances of stp trees")}));
}

TEST_F(MstSearch, NextInstanceWithoutAContextHasNoVlan) {
  script({entry(3, kPort1), entry(7, kPort1)});
  EXPECT_EQ(run(3, 4097), -1);
  EXPECT_THAT(story(), ElementsAreArray(checked(3) + Trace{members_of("19-21")} + stepped(3, 7) +
                                        Trace{members_of("none"), no_port_failure()}));
}

TEST_F(MstSearch, ContextGoesByTheLow16BitsOfTheTree) {
  script({entry(65538, kPort1), entry(65538, kPort1)});
  EXPECT_EQ(run(65538, 0), 0);
  EXPECT_THAT(story(), ElementsAreArray(checked(65538) + Trace{members_of("10"), looked_at(kPort1)} +
                                        returned(kPort1, 65538, 129)));
  expect_row(65538, 129);
  take_reply();
  script({no_entry(), entry(65539, kPort1), entry(131074, kPort1), entry(131074, kPort1)});
  fake::platform().interfaces = {{.if_index = kPort1, .port = 129, .vlans = {10}}};
  EXPECT_EQ(run(65538, 0), 0);
  EXPECT_THAT(story(), ElementsAreArray(checked_and_left(65538, 65539) + Trace{members_of("19-21")} +
                                        stepped(65539, 131074) + Trace{members_of("10"), looked_at(kPort1)} +
                                        returned(kPort1, 131074, 129)));
  take_reply();
}

TEST_F(MstSearch, VlansOutsideTheirRangeStayInTheBitmapWhereThereIsNoContext) {
  fake::platform().mst_contexts[2] = {0, 1, 10, 4094, 4095};
  script({entry(2, kPort1), entry(7, kPort1)});
  EXPECT_EQ(run(2, 4097), -1);
  EXPECT_THAT(story(), ElementsAreArray(checked(2) + Trace{members_of("0-1,10,4094-4095")} + stepped(2, 7) +
                                        Trace{members_of("0,4095"), no_port_failure()}));
  script({no_entry(), entry(7, kPort1), no_entry()});
  EXPECT_EQ(run(2, 0), -1);
  EXPECT_THAT(story(), ElementsAreArray(checked_and_left(2, 7) +
                                        Trace{members_of("0,4095"), stepped_from(7),
                                              line(": Exhausted all instances of stp trees")}));
}

TEST_F(MstSearch, ContextOfTheNextTreeReplacesTheFormerOne) {
  fake::platform().mst_contexts[2] = {0, 10, 4095};
  script({entry(2, kPort1), entry(4, kPort1)});
  EXPECT_EQ(run(2, 4097), -1);
  EXPECT_THAT(story(), ElementsAreArray(checked(2) + Trace{members_of("0,10,4095")} + stepped(2, 4) +
                                        Trace{members_of("400"), no_port_failure()}));
}

// The ports of a tree.

TEST_F(MstSearch, PortsAscendWithinTheTree) {
  fake::platform().interfaces.back().vlans = {10};
  for (const auto &[from, port, if_index] : {std::tuple<uint16_t, uint16_t, uint32_t>{0, 129, kPort1},
                                             {128, 129, kPort1},
                                             {129, 130, kPort2},
                                             {130, 4097, kChannel},
                                             {4096, 4097, kChannel}}) {
    script({entry(2, kPort1), entry(2, if_index)});
    EXPECT_EQ(run(2, from), 0) << from;
    expect_row(2, port);
    take_reply();
  }
}

TEST_F(MstSearch, PortsWithoutALinkAndMembersOfPortChannelsAreSteppedOver) {
  script({entry(3, kPort1), entry(3, kChannel)});
  EXPECT_EQ(run(3, 129), 0);
  EXPECT_THAT(story(), ElementsAreArray(checked(3) +
                                        Trace{members_of("19-21"), looked_at(kDownPort), looked_at(kMember),
                                              looked_at(kChannel)} +
                                        returned(kChannel, 3, 4097)));
  expect_row(3, 4097);
  take_reply();
}

TEST_F(MstSearch, MembersAreAskedForEachTime) {
  for (int i = 0; i < 2; ++i) {
    script({entry(2, kPort1), entry(2, kPort1)});
    EXPECT_EQ(run(2, 0), 0);
    const Trace lines = taken_lines();
    EXPECT_THAT(lines, Contains(members_of("10")));
    EXPECT_THAT(lines, Each(Not(HasSubstr("time("))));
    take_reply();
  }
}

// The tree that follows.

TEST_F(MstSearch, LastPortIsFollowedByTheLowestOneOfTheNextTree) {
  script({entry(2, kPort1), entry(3, kDownPort), entry(3, kPort1)});
  EXPECT_EQ(run(2, 65535), 0);
  EXPECT_THAT(story(),
              ElementsAreArray(checked(2) + Trace{members_of("10")} + stepped(2, 3) +
                               Trace{members_of("19-21"), looked_at(kPort1)} + returned(kPort1, 3, 129)));
  expect_row(3, 129);
  take_reply();
}

TEST_F(MstSearch, NextTreeIsTheOneBehindTheTreeThatWasFound) {
  script({no_entry(), entry(4, kPort1), entry(2, kPort1), entry(2, kPort1)});
  EXPECT_EQ(run(3, 0), 0);
  EXPECT_THAT(story(),
              ElementsAreArray(checked_and_left(3, 4) + Trace{members_of("400")} + stepped(4, 2) +
                               Trace{members_of("10"), looked_at(kPort1)} + returned(kPort1, 2, 129)));
  expect_row(2, 129);
  take_reply();
}

TEST_F(MstSearch, NoTreeFollows) {
  for (const fake::Send &answer : {no_entry(), fake::Send{.has_reply = false}}) {
    script({entry(3, kPort1), answer});
    EXPECT_EQ(run(3, 4097), -1);
    EXPECT_THAT(story(),
                ElementsAreArray(checked(3) + Trace{members_of("19-21"), stepped_from(3),
                                                    line(": Exhausted all instances of stp trees")}));
    expect_nothing(3, 4097);
  }
}

TEST_F(MstSearch, NextTreeWithoutAnAcceptablePortEndsTheWalk) {
  script({entry(2, kPort1), entry(4, kPort1)});
  EXPECT_EQ(run(2, 132), -1);
  EXPECT_THAT(story(), ElementsAreArray(checked(2) + Trace{members_of("10")} + stepped(2, 4) +
                                        Trace{members_of("400"), no_port_failure()}));
  expect_nothing(2, 132);
}

TEST_F(MstSearch, MembersThatAreNotKnownCountAsNone) {
  fake::platform().next_base_ports = {{.is_null = true}, {.ports = {129}, .size = 0}};
  script({entry(2, kPort1), entry(3, kPort1)});
  EXPECT_EQ(run(2, 0), -1);
  EXPECT_THAT(story(), ElementsAreArray(checked(2) + Trace{members_of("10")} + stepped(2, 3) +
                                        Trace{members_of("19-21"), no_port_failure()}));
  expect_nothing(2, 0);
}

// The row.

TEST_F(MstSearch, RowWithoutAnEntryEndsTheWalk) {
  for (const fake::Send &answer : {no_entry(), fake::Send{.has_reply = false}}) {
    script({entry(2, kPort1), answer});
    EXPECT_EQ(run(2, 0), -1);
    EXPECT_THAT(story(), ElementsAreArray(checked(2) + Trace{members_of("10"), looked_at(kPort1),
                                                             row_of(2, kPort1), row_failure()}));
    expect_nothing(2, 0);
  }
}

TEST_F(MstSearch, PortIsTheAnsweredInterfacesAndTheTreeTheSearched) {
  for (const uint32_t answered : {3U, 12U, 0U}) {
    script({entry(3, kPort1), entry(answered, kChannel)});
    EXPECT_EQ(run(3, 0), 0);
    EXPECT_THAT(story(),
                ElementsAreArray(checked(3) + Trace{members_of("19-21"), looked_at(kPort1), row_of(3, kPort1),
                                                    line(" Get Successful"),
                                                    line(": returning tree_index: 3, port_index: 4097")}));
    expect_row(3, 4097);
    take_reply();
  }
}

TEST_F(MstSearch, RowWhoseReplyNamesNoKeyIsTheOneAskedFor) {
  script({{.attributes = fake::Attributes{}}, {.attributes = fake::Attributes{}}});
  EXPECT_EQ(run(2, 129), 0);
  EXPECT_THAT(story(), ElementsAreArray(checked(2) + Trace{members_of("10"), looked_at(kPort2)} +
                                        returned(kPort2, 2, 130)));
  expect_row(2, 130);
  take_reply();
}

TEST_F(MstSearch, RowOfAnInterfaceWithoutAPort) {
  script({entry(2, kPort1), entry(2, kWithoutPort)});
  EXPECT_EQ(run(2, 0), -1);
  const Trace lines = taken_lines();
  ASSERT_GE(lines.size(), 4U);
  EXPECT_THAT(Trace(lines.end() - 4, lines.end()),
              ElementsAreArray({line(" Get Successful"), std::string("stp_ifindex2dot1dportnum(0x00000BB7)"),
                                std::string(kReleased), line(": returning FAILURE")}));
  expect_row(2, 0);
}

TEST_F(MstSearch, ReplyThatIsHandedOverIsTheRows) {
  fake::Send tree_answer = entry(2, kPort1);
  (*tree_answer.attributes)[protocol::kInconsistency] = fake::number(1);
  fake::Send row_answer = entry(2, kPort1);
  (*row_answer.attributes)[protocol::kInconsistency] = fake::number(2);
  script({tree_answer, row_answer});
  EXPECT_EQ(run(2, 0), 0);
  void *value = nullptr;
  uint32_t length = 0;
  ASSERT_EQ(cmd_rsp_attr_get(reply_, protocol::kInconsistency, &value, &length), 0);
  EXPECT_EQ(fake::hex(value, length), bytes({2}));
  take_reply();
}

TEST_F(MstSearch, ShortMemoryForTheRow) {
  ledger::fail_malloc_after(2);  // the probe's request, and the VLAN manager's record
  script({entry(2, kPort1)});
  EXPECT_EQ(run(2, 0), -1);
  EXPECT_EQ(story().back(), row_failure());
  expect_nothing(2, 0);
}

}  // namespace
