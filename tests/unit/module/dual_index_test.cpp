// The searches by tree and port: the exact one, and every turn that the next one can take.
#include <deque>

#include "ledger.h"
#include "protocol_numbers.h"
#include "scripted_process.h"
#include "search/dual_index.h"
#include "search/next_row.h"
#include "search_test.h"
#include "stpsnmp/index_search.h"

namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAreArray;
using ::testing::Not;
using ::testing::StartsWith;

constexpr uint32_t kFirst = 2001;
constexpr uint32_t kSecond = 2002;
constexpr uint32_t kChannel = 1001;
constexpr uint32_t kSecondChannel = 1002;
constexpr uint32_t kWithoutPort = 2999;  // an interface that has no port id

// A line of the routine with this name.
std::string said_by(const std::string &routine, const std::string &text) {
  return logged("\\n" + routine + "(LINE)" + text);
}

std::string in_channel_step(const std::string &text) {
  return said_by("get_next_stp_channel_entry_in_same_tree", ": " + text + "\\n");
}

std::string in_physical_step(const std::string &text) {
  return said_by("check_and_get_next_stp_physical_entry_for_logical", ": " + text);
}

constexpr char kReleased[] = "cmd_snmp_free_rx_hndl";

using ::get_next_of;
using ::get_of;

std::string get_of(uint32_t tree, uint32_t if_index) {
  return get_of(tree, if_index, protocol::kLoopInconsistencies);
}
std::string get_next_of(uint32_t tree, uint32_t if_index) {
  return get_next_of(tree, if_index, protocol::kLoopInconsistencies);
}

class DualIndex : public SearchTest {
 protected:
  void SetUp() override {
    SearchTest::SetUp();
    fake::platform().interfaces = {
        {kChannel, 4097, 22}, {kSecondChannel, 4098, 22}, {kFirst, 129}, {kSecond, 130}};
    fake::platform().answer = [this](const fake::Request &request) { return process_.answer(request); };
  }

  void TearDown() override {
    EXPECT_TRUE(process_.is_done()) << "answers that nobody asked for";
    SearchTest::TearDown();
  }

  // What the spanning-tree process answers, query by query.
  void script(std::deque<fake::Send> answers) { process_.script(std::move(answers)); }

  // The queries, the replies released, and what the searches say of themselves.
  static Trace story() {
    Trace lines;
    for (const std::string &line : fake::taken_trace()) {
      const bool is_told =
          line.starts_with("asked") || line.starts_with(kReleased) || line.starts_with("FREED") ||
          line.find("stp_dual_indices_entry") != std::string::npos ||
          line.find("get_next_stp_channel_entry_in_same_tree") != std::string::npos ||
          line.find("check_and_get_next_stp_physical_entry_for_logical") != std::string::npos;
      if (is_told) {
        lines.push_back(line);
      }
    }
    return lines;
  }

  void expect_row(uint32_t tree, uint16_t port) const {
    EXPECT_EQ(tree_, tree);
    EXPECT_EQ(port_, port);
  }

  // The one reply that lives is the caller's.
  void take_reply() {
    EXPECT_EQ(fake::live_replies(), 1U);
    release(reply_);
    reply_ = nullptr;
  }

  uint32_t tree_ = 0;
  uint16_t port_ = 0;
  void *reply_ = nullptr;

 private:
  ScriptedProcess process_{protocol::kInterfaceKey, protocol::kVlanTreeKey};
};

// The exact search.

class ExactEntry : public DualIndex {
 protected:
  int run(uint32_t tree, uint16_t port, uint32_t command = protocol::kLoopInconsistencies) {
    return run_with(tree, port, &reply_, command);
  }

  int run_with(uint32_t tree, uint16_t port, void **reply,
               uint32_t command = protocol::kLoopInconsistencies) {
    tree_ = tree;
    port_ = port;
    return get_exact_stp_dual_indices_entry(protocol::kInterfaceKey, &port_, protocol::kVlanTreeKey, &tree_,
                                            reply, command);
  }

  static std::string line(const std::string &text) {
    return said_by("get_exact_stp_dual_indices_entry", text + "\\n");
  }

  static Trace looked_up(const std::string &if_index, const std::string &tree, int type) {
    return {line(": get stp dual indices entry."),
            line(": look for ifIndex(" + if_index + ") in tree (" + tree + ")"),
            line(" if_index type: " + std::to_string(type))};
  }
};

TEST_F(ExactEntry, WholeTrace) {
  script({entry(2, kFirst)});
  EXPECT_EQ(run(2, 129), 0);
  const std::string validated =
      "\\nvalidate_port_id_for_snmp_search(LINE): returning port_id(129), in_if_index(2001), "
      "ret_if_index(2001), ret_if_type(26)\\n";
  Trace expected = Trace{line(": get stp dual indices entry."),
                         "stp_dot1dportnum2ifindex(129)",
                         "stp_valid_if_index(0x000007D1)",
                         "if_index_get_type(0x000007D1)",
                         "stp_dot1dportnum2ifindex(129)",
                         logged(validated),
                         line(": look for ifIndex(2001) in tree (2)"),
                         line(" if_index type: 26")} +
                   queried(protocol::kLoopInconsistencies, 1, 2, kFirst) + Trace{get_of(2, kFirst)};
  const Trace found = queried_and_found(protocol::kLoopInconsistencies, 1, 2, kFirst, 2, kFirst);
  expected.insert(expected.end(),
                  found.begin() + std::ssize(queried(protocol::kLoopInconsistencies, 1, 2, kFirst)),
                  found.end());
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(expected + Trace{"if_index_get_type(0x000007D1)",
                                        line(": ret_if_index: 2001, ret_if_type: 26"),
                                        line(": ret_tree_index: 2"), "stp_ifindex2dot1dportnum(0x000007D1)",
                                        line(": returning tree_index: 2, port_index: 129")}));
  expect_row(2, 129);
  take_reply();
}

TEST_F(ExactEntry, IndexIsTheAnsweredEntrys) {
  script({entry(5, kSecondChannel)});
  EXPECT_EQ(run(2, 129), 0);
  EXPECT_THAT(story(),
              ElementsAreArray(looked_up("2001", "2", 26) +
                               Trace{get_of(2, kFirst), line(": ret_if_index: 1002, ret_if_type: 22"),
                                     line(": ret_tree_index: 5"),
                                     line(": returning tree_index: 5, port_index: 4098")}));
  expect_row(5, 4098);
  take_reply();
}

TEST_F(ExactEntry, PortThatDoesNotExist) {
  EXPECT_EQ(run(2, 131), -1);
  EXPECT_THAT(story(),
              ElementsAreArray({line(": get stp dual indices entry."), line(": GET request failed.")}));
  expect_row(2, 131);
  EXPECT_EQ(reply_, nullptr);
}

TEST_F(ExactEntry, LeavesNoReplyAfterAFailure) {
  reply_ = this;
  script({no_entry()});
  EXPECT_EQ(run(2, 4097), -1);
  EXPECT_EQ(reply_, nullptr);
}

TEST_F(ExactEntry, PortZeroAsksNobodyAnything) {
  EXPECT_EQ(run(2, 0), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray({line(": get stp dual indices entry."),
                                logged("\\nvalidate_port_id_for_snmp_search(LINE): returning FAILURE.\\n"),
                                line(": GET request failed.")}));
}

TEST_F(ExactEntry, PortThatIsNoBridgePortIsAskedFor) {
  fake::platform().interfaces.back().is_base_port = false;
  script({entry(2, kSecond)});
  EXPECT_EQ(run(2, 130), 0);
  take_reply();
}

TEST_F(ExactEntry, NoEntry) {
  script({no_entry()});
  EXPECT_EQ(run(2, 4097), -1);
  EXPECT_THAT(story(), ElementsAreArray(looked_up("1001", "2", 22) +
                                        Trace{get_of(2, kChannel), line(": returning FAILURE")}));
  expect_row(2, 4097);
  EXPECT_EQ(reply_, nullptr);
}

TEST_F(ExactEntry, TreeZeroIsRefusedOrAskedForAsItsCommandHasIt) {
  EXPECT_EQ(run(0, 129, protocol::kPortInconsistencies), -1);
  EXPECT_THAT(story(), ElementsAreArray(looked_up("2001", "0", 26) + Trace{line(": returning FAILURE")}));
  script({entry(0, kFirst)});
  EXPECT_EQ(run(0, 129, protocol::kLoopInconsistencies), 0);
  expect_row(0, 129);
  take_reply();
}

TEST_F(ExactEntry, AnsweredInterfaceWithoutAPort) {
  script({entry(3, kWithoutPort)});
  EXPECT_EQ(run(2, 129), -1);
  EXPECT_THAT(story(),
              ElementsAreArray(looked_up("2001", "2", 26) +
                               Trace{get_of(2, kFirst), line(": ret_if_index: 2999, ret_if_type: 0"),
                                     line(": ret_tree_index: 3"), kReleased, line(": returning FAILURE")}));
  expect_row(2, 129);
}

TEST_F(ExactEntry, WithoutAReplyVariable) {
  script({entry(2, kFirst)});
  EXPECT_EQ(run_with(2, 129, nullptr), 0);
  EXPECT_THAT(story(), ElementsAreArray(looked_up("2001", "2", 26) +
                                        Trace{get_of(2, kFirst), kReleased,
                                              line(": ret_if_index: 2001, ret_if_type: 26"),
                                              line(": ret_tree_index: 2"), line(" resp_h is NULL"),
                                              line(": returning tree_index: 2, port_index: 129")}));
  expect_row(2, 129);
  script({entry(2, kWithoutPort)});
  EXPECT_EQ(run_with(2, 129, nullptr), -1);
  EXPECT_THAT(fake::taken_trace(), Each(Not(StartsWith("FREED REPLY"))));
}

TEST_F(ExactEntry, NumbersAreShownSigned) {
  fake::platform().interfaces = {{0xFFFFFFFE, 129}};
  script({entry(0xFFFFFFFD, 0xFFFFFFFE)});
  EXPECT_EQ(run(2, 129), 0);
  EXPECT_THAT(story(),
              ElementsAreArray(looked_up("-2", "2", 26) +
                               Trace{get_of(2, 0xFFFFFFFE), line(": ret_if_index: -2, ret_if_type: 26"),
                                     line(": ret_tree_index: -3"),
                                     line(": returning tree_index: -3, port_index: 129")}));
  take_reply();
}

// The next search.

class NextEntry : public DualIndex {
 protected:
  int run(uint32_t tree, uint16_t port, uint32_t command = protocol::kLoopInconsistencies) {
    return run_with(tree, port, &reply_, command);
  }

  int run_with(uint32_t tree, uint16_t port, void **reply, uint32_t command = protocol::kLoopInconsistencies,
               uint8_t selector = 0) {
    tree_ = tree;
    port_ = port;
    return get_next_stp_dual_indices_entry_from_im(protocol::kInterfaceKey, &port_, protocol::kVlanTreeKey,
                                                   &tree_, reply, command, selector);
  }

  static std::string line(const std::string &text) {
    return said_by("get_next_stp_dual_indices_entry_from_im", text + "\\n");
  }

  static Trace entered() { return {line(": get stp dual indices entry.")}; }

  // No port lies above this one.
  static Trace no_port_above(int port) {
    return {said_by("get_next_stp_dual_indices_entry_from_im",
                    ": validate_port_id_for_snmp_search FAILED: " + std::to_string(port))};
  }

  // The candidate is asked for.
  static Trace candidate(uint32_t tree, uint32_t if_index, int type,
                         uint32_t command = protocol::kLoopInconsistencies) {
    return {line(": get_next look for ifIndex(" + shown(if_index) + ") in tree (" + shown(tree) + ")"),
            line(" if_index type: " + std::to_string(type)), get_of(tree, if_index, command)};
  }

  // The candidate is asked for in vain, then what follows it.
  static Trace missed(uint32_t tree, uint32_t if_index, int type,
                      uint32_t command = protocol::kLoopInconsistencies) {
    return candidate(tree, if_index, type, command) +
           Trace{line(": NEXT on ifIndex(" + shown(if_index) + ") in tree (" + shown(tree) +
                      "), in_if_type (" + std::to_string(type) + ")"),
                 get_next_of(tree, if_index, command)};
  }

  // What follows it.
  static Trace followed(uint32_t in_tree, uint32_t tree, uint32_t if_index, int type) {
    return {line(": ret_if_index: " + shown(if_index) + ", ret_if_type: " + std::to_string(type)),
            line(": in_tree_index: " + shown(in_tree) + ", ret_tree_index: " + shown(tree))};
  }

  static Trace returned(uint32_t tree, int port) {
    return {line(": returning tree_index: " + shown(tree) + ", port_index: " + std::to_string(port))};
  }

  // Nothing follows a physical port: the channel step begins.
  static Trace nothing_behind(uint32_t in_tree, uint32_t tree, uint32_t if_index, int type = 26) {
    return {line(": getting next channel in same tree, ret_if_index(" + shown(if_index) + "), in_if_type(" +
                 std::to_string(type) + "), ret_tree_index (" + shown(tree) + "), in_tree_index(" +
                 shown(in_tree) + ")"),
            in_channel_step("Looking up stp_channel_entry in tree " + shown(tree))};
  }

  static Trace channel_step_failed() {
    return {line(": Lookup port channel range failed. No more to search.")};
  }

  // The physical-entry step from a port-channel of the tree, up to its first query.
  static Trace physical_step(uint32_t tree, uint32_t if_index, int port) {
    return {in_physical_step("if_index: " + shown(if_index) + ", port_index: " + std::to_string(port) +
                             ", tree_index: " + shown(tree) + "\\n"),
            in_physical_step("Valid if_index: 2001"), get_of(tree, kFirst)};
  }

  static Trace physical_step_left(const std::string &what, uint32_t answered_tree, uint32_t tree,
                                  uint32_t if_index, int port) {
    return {in_physical_step("Returned tree_index: " + shown(answered_tree) + ". Returning " + what + "\\n"),
            kReleased,
            in_physical_step("Returning if_index: " + shown(if_index) + ", port_index: " +
                             std::to_string(port) + ", tree_index: " + shown(tree) + "\\n")};
  }
};

TEST_F(NextEntry, WholeTrace) {
  fake::platform().interfaces = {{kFirst, 129}};
  script({entry(2, kFirst)});
  EXPECT_EQ(run(2, 0), 0);
  const std::string scan = "stp_get_next_dot1dportnum[LINE]";
  const std::string validate = "validate_port_id_for_snmp_search_from_im(LINE)";
  const Trace asked = queried(protocol::kLoopInconsistencies, 1, 2, kFirst);
  const Trace found = queried_and_found(protocol::kLoopInconsistencies, 1, 2, kFirst, 2, kFirst);
  const Trace after(found.begin() + std::ssize(asked), found.end());
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(
          Trace{
              line(": get stp dual indices entry."), logged(scan + "received base_port=0"),
              "im_get_next_ifindex(0x00000000)", "check_if_valid_base_port_ifindex(0x000007D1, 0)",
              "stp_ifindex2dot1dportnum(0x000007D1)",
              logged(scan + "(tmp_base_port=129, if_index=0x0next_base_port=65535, next_if_index=0x7d1"),
              "im_get_next_ifindex(0x000007D1)",
              logged(scan + "(base_port=0, if_index=0x7d1next_base_port=129, next_if_index=0x0"),
              logged_rejection(validate +
                               " base_port:0, stp_flag:0, stp_get_next_dot1dportnum() next_port:129\\n"),
              "stp_dot1dportnum2ifindex(129)", logged_rejection(validate + " return SUCCESS\\n"),
              logged("\\n" + validate + ": returning port_id(129), in_if_index(2001), ret_if_index(2001)\\n"),
              "if_index_get_type(0x000007D1)", line(": get_next look for ifIndex(2001) in tree (2)"),
              line(" if_index type: 26")} +
          asked + Trace{get_of(2, kFirst)} + after +
          Trace{line(" Get Successful"), "stp_ifindex2dot1dportnum(0x000007D1)",
                line(": returning tree_index: 2, port_index: 129")}));
  expect_row(2, 129);
  take_reply();
}

// Steps 1 to 4: the candidate.

TEST_F(NextEntry, WalkBeginsWithTheFirstPortOfTreeZero) {
  script({entry(0, kFirst)});
  EXPECT_EQ(run(0, 0), 0);
  EXPECT_THAT(story(), ElementsAreArray(entered() + candidate(0, kFirst, 26) +
                                        Trace{line(" Get Successful")} + returned(0, 129)));
  expect_row(0, 129);
  take_reply();
}

TEST_F(NextEntry, CandidateIsTheNextPortOfEitherKind) {
  script({entry(2, kChannel)});
  EXPECT_EQ(run(2, 130), 0);
  EXPECT_THAT(story(), ElementsAreArray(entered() + candidate(2, kChannel, 22) +
                                        Trace{line(" Get Successful")} + returned(2, 4097)));
  expect_row(2, 4097);
  take_reply();
}

TEST_F(NextEntry, GetThatSucceedsIsTakenWhateverEntryAnswers) {
  script({entry(1, kSecondChannel)});
  EXPECT_EQ(run(2, 0), 0);
  EXPECT_THAT(story(), ElementsAreArray(entered() + candidate(2, kFirst, 26) +
                                        Trace{line(" Get Successful")} + returned(1, 4098)));
  expect_row(1, 4098);
  take_reply();
}

TEST_F(NextEntry, WithoutAPortAboveTheFollowingTreeIsStartedBelowEveryInterface) {
  script({no_entry(), entry(3, kFirst)});
  EXPECT_EQ(run(2, 4098), 0);
  EXPECT_THAT(story(), ElementsAreArray(entered() + no_port_above(4098) + missed(3, 129, 26) +
                                        followed(2, 3, kFirst, 26) + returned(3, 129)));
  expect_row(3, 129);
  take_reply();
}

TEST_F(NextEntry, TreeZeroOfACommandWithoutItIsOnlyAskedForWhatFollows) {
  script({entry(1, kFirst)});
  EXPECT_EQ(run(0, 0, protocol::kPortInconsistencies), 0);
  Trace candidate_alone = missed(0, kFirst, 26, protocol::kPortInconsistencies);
  std::erase(candidate_alone, get_of(0, kFirst, protocol::kPortInconsistencies));
  EXPECT_THAT(story(),
              ElementsAreArray(entered() + candidate_alone + followed(0, 1, kFirst, 26) + returned(1, 129)));
  expect_row(1, 129);
  take_reply();
}

TEST_F(NextEntry, SelectorAndTokensAreTheCallers) {
  fake::platform().answer = nullptr;
  fake::platform().next_sends = {entry(2, kFirst)};
  tree_ = 2;
  EXPECT_EQ(get_next_stp_dual_indices_entry_from_im(0x0C02018B, &port_, 0x13020131, &tree_, &reply_, 111, 1),
            0);
  const Trace trace = fake::taken_trace();
  for (const uint32_t if_index : {kFirst, kSecond, kChannel, kSecondChannel}) {
    EXPECT_THAT(trace, Contains("check_if_valid_base_port_ifindex(" + fake::hex(if_index) + ", 1)"));
  }
  EXPECT_THAT(trace, Contains("cmd_req_cmdId_set(request, 111)"));
  EXPECT_THAT(trace, Contains("cmd_req_attr_add(request, 0x13020131, " + bytes({0, 1, 2, 2}) + ")"));
  EXPECT_THAT(trace, Contains("cmd_req_attr_add(request, 0x0C02018B, d1070000)"));
  take_reply();
}

TEST_F(NextEntry, LeavesNoReplyAfterAFailure) {
  reply_ = this;
  script({no_entry(), entry(1, kSecond)});
  EXPECT_EQ(run(2, 4097), -1);
  EXPECT_EQ(reply_, nullptr);
}

// Nothing follows.

TEST_F(NextEntry, NothingBehindAChannelEndsTheWalk) {
  script({no_entry(), no_entry()});
  EXPECT_EQ(run(2, 4097), -1);
  EXPECT_THAT(story(),
              ElementsAreArray(entered() + missed(2, kSecondChannel, 22) +
                               Trace{line(": returning FAILURE, ret_if_index(1002), ret_tree_index (2), "
                                          "in_if_type (22)")}));
  EXPECT_EQ(tree_, 2U);
  EXPECT_EQ(reply_, nullptr);
}

TEST_F(NextEntry, LastPhysicalPortIsFollowedByTheFirstChannelOfItsTree) {
  script({no_entry(), no_entry(), entry(2, kChannel)});
  EXPECT_EQ(run(2, 129), 0);
  EXPECT_THAT(story(), ElementsAreArray(
                           entered() + missed(2, kSecond, 26) + nothing_behind(2, 2, kSecond) +
                           Trace{get_of(2, kChannel), in_channel_step("Search successfull: if_index: 1001")} +
                           returned(2, 4097)));
  expect_row(2, 4097);
  take_reply();
}

TEST_F(NextEntry, CandidateOfUnknownTypeCountsAsAPhysicalPort) {
  fake::platform().interfaces[3].type = 0;
  script({no_entry(), no_entry(), entry(2, kChannel)});
  EXPECT_EQ(run(2, 129), 0);
  EXPECT_THAT(story(), ElementsAreArray(
                           entered() + missed(2, kSecond, 0) + nothing_behind(2, 2, kSecond, 0) +
                           Trace{get_of(2, kChannel), in_channel_step("Search successfull: if_index: 1001")} +
                           returned(2, 4097)));
  take_reply();
}

// The channel step.

TEST_F(NextEntry, ChannelStepIsRefusedForTreeZero) {
  script({no_entry(), no_entry()});
  EXPECT_EQ(run(0, 0), -1);
  EXPECT_THAT(story(),
              ElementsAreArray(entered() + missed(0, kFirst, 26) + nothing_behind(0, 0, kFirst) +
                               Trace{in_channel_step("Invalid tree_id(0) and/or port_id(129)(8191). ")} +
                               channel_step_failed()));
  EXPECT_EQ(tree_, 0U);
  EXPECT_EQ(reply_, nullptr);
}

TEST_F(NextEntry, ChannelStepIsRefusedAboveTheChannels) {
  script({no_entry(), no_entry()});
  EXPECT_EQ(run(2, 8192), -1);
  EXPECT_THAT(story(), ElementsAreArray(
                           entered() + no_port_above(8192) + missed(3, 129, 26) + nothing_behind(2, 3, 129) +
                           Trace{in_channel_step("Invalid tree_id(3) and/or port_id(8192)(8191). ")} +
                           channel_step_failed()));
  EXPECT_EQ(tree_, 2U);
}

TEST_F(NextEntry, ChannelStepStartsAtTheCallersChannel) {
  script({no_entry(), no_entry(), entry(3, kSecondChannel)});
  EXPECT_EQ(run(2, 4098), 0);
  EXPECT_THAT(story(),
              ElementsAreArray(
                  entered() + no_port_above(4098) + missed(3, 129, 26) + nothing_behind(2, 3, 129) +
                  Trace{get_of(3, kSecondChannel), in_channel_step("Search successfull: if_index: 1002")} +
                  returned(3, 4098)));
  expect_row(3, 4098);
  take_reply();
}

TEST_F(NextEntry, ChannelStepTakesPorts8191And4097AsChannelsAndStartsAt4097FromLowerOnes) {
  const struct {
    uint16_t port;
    int start;
  } kStarts[] = {{8191, 8191}, {4098, 4098}, {4097, 4097}, {4096, 4097}, {130, 4097}};
  for (const auto &[port, start] : kStarts) {
    fake::platform().interfaces = {{kFirst, 129}};
    script({no_entry(), no_entry(), no_entry()});
    EXPECT_EQ(run(2, port), -1);
    EXPECT_THAT(
        story(),
        ElementsAreArray(entered() + no_port_above(port) + missed(3, 129, 26) + nothing_behind(2, 3, 129) +
                         Trace{in_channel_step("Error converting " + std::to_string(start) + " to if_index"),
                               in_channel_step("Next search "), get_next_of(3, 0),
                               in_channel_step("Error getting next on tree (3), if_index(0) ")} +
                         channel_step_failed()));
  }
}

TEST_F(NextEntry, ChannelStepGoesOnFromTheStartThatHasNoEntry) {
  script({no_entry(), no_entry(), no_entry(), entry(2, kSecondChannel)});
  EXPECT_EQ(run(2, 0), 0);
  EXPECT_THAT(story(), ElementsAreArray(entered() + missed(2, kFirst, 26) + nothing_behind(2, 2, kFirst) +
                                        Trace{get_of(2, kChannel), in_channel_step("Next search "),
                                              get_next_of(2, kChannel),
                                              in_channel_step("Search successfull: if_index: 1002")} +
                                        returned(2, 4098)));
  expect_row(2, 4098);
  take_reply();
}

TEST_F(NextEntry, ChannelStepAsksForNoUnusableStart) {
  fake::platform().interfaces[0].is_usable = false;
  script({no_entry(), no_entry(), entry(2, kSecondChannel)});
  EXPECT_EQ(run(2, 0), 0);
  EXPECT_THAT(story(), ElementsAreArray(entered() + missed(2, kFirst, 26) + nothing_behind(2, 2, kFirst) +
                                        Trace{in_channel_step("Next search "), get_next_of(2, kChannel),
                                              in_channel_step("Search successfull: if_index: 1002")} +
                                        returned(2, 4098)));
  take_reply();
}

TEST_F(NextEntry, ChannelStepStartsAtInterfaceZeroWhereTheStartHasNone) {
  fake::platform().interfaces.erase(fake::platform().interfaces.begin());
  script({no_entry(), no_entry(), entry(2, kSecondChannel)});
  EXPECT_EQ(run(2, 0), 0);
  EXPECT_THAT(story(), ElementsAreArray(entered() + missed(2, kFirst, 26) + nothing_behind(2, 2, kFirst) +
                                        Trace{in_channel_step("Error converting 4097 to if_index"),
                                              in_channel_step("Next search "), get_next_of(2, 0),
                                              in_channel_step("Search successfull: if_index: 1002")} +
                                        returned(2, 4098)));
  take_reply();
}

TEST_F(NextEntry, ChannelStepFindsNothingMore) {
  script({no_entry(), no_entry(), no_entry(), no_entry()});
  EXPECT_EQ(run(2, 0), -1);
  EXPECT_THAT(
      story(),
      ElementsAreArray(entered() + missed(2, kFirst, 26) + nothing_behind(2, 2, kFirst) +
                       Trace{get_of(2, kChannel), in_channel_step("Next search "), get_next_of(2, kChannel),
                             in_channel_step("Error getting next on tree (2), if_index(1001) ")} +
                       channel_step_failed()));
  EXPECT_EQ(tree_, 2U);
  EXPECT_EQ(reply_, nullptr);
}

TEST_F(NextEntry, ChannelStepRefusesAnotherTree) {
  for (const uint32_t tree : {1U, 3U}) {
    script({no_entry(), no_entry(), no_entry(), entry(tree, kSecondChannel)});
    EXPECT_EQ(run(2, 0), -1);
    EXPECT_THAT(story(), ElementsAreArray(entered() + missed(2, kFirst, 26) + nothing_behind(2, 2, kFirst) +
                                          Trace{get_of(2, kChannel), in_channel_step("Next search "),
                                                get_next_of(2, kChannel), kReleased,
                                                in_channel_step("does not return on the same tree")} +
                                          channel_step_failed()));
    EXPECT_EQ(tree_, 2U);
    reply_ = nullptr;
  }
}

TEST_F(NextEntry, ChannelStepTakesTheTreeThatItsGetIsAnsweredFrom) {
  script({no_entry(), no_entry(), entry(7, kChannel)});
  EXPECT_EQ(run(2, 0), 0);
  EXPECT_THAT(story(), Contains(line(": returning tree_index: 7, port_index: 4097")));
  expect_row(7, 4097);
  take_reply();
}

TEST_F(NextEntry, ChannelStepRefusesAPhysicalPort) {
  script({no_entry(), no_entry(), no_entry(), entry(2, kSecond)});
  EXPECT_EQ(run(2, 0), -1);
  EXPECT_THAT(story(), ElementsAreArray(entered() + missed(2, kFirst, 26) + nothing_behind(2, 2, kFirst) +
                                        Trace{get_of(2, kChannel), in_channel_step("Next search "),
                                              get_next_of(2, kChannel),
                                              in_channel_step("Search successfull: if_index: 2002"),
                                              kReleased, in_channel_step("does not return port channel.")} +
                                        channel_step_failed()));
}

TEST_F(NextEntry, ChannelStepRefusesAnInterfaceOfUnknownType) {
  fake::platform().interfaces[1].type = 0;
  script({no_entry(), no_entry(), no_entry(), entry(2, kSecondChannel)});
  EXPECT_EQ(run(2, 0), -1);
  EXPECT_THAT(story(), ElementsAreArray(entered() + missed(2, kFirst, 26) + nothing_behind(2, 2, kFirst) +
                                        Trace{get_of(2, kChannel), in_channel_step("Next search "),
                                              get_next_of(2, kChannel),
                                              in_channel_step("Search successfull: if_index: 1002"),
                                              kReleased, in_channel_step("does not return port channel.")} +
                                        channel_step_failed()));
}

TEST_F(NextEntry, ChannelStepFindsAChannelWithoutAPort) {
  fake::platform().interfaces[1].port = 0;
  script({no_entry(), no_entry(), no_entry(), entry(2, kSecondChannel)});
  EXPECT_EQ(run(2, 0), -1);
  EXPECT_THAT(
      story(),
      ElementsAreArray(entered() + missed(2, kFirst, 26) + nothing_behind(2, 2, kFirst) +
                       Trace{get_of(2, kChannel), in_channel_step("Next search "), get_next_of(2, kChannel),
                             in_channel_step("Search successfull: if_index: 1002"), kReleased} +
                       channel_step_failed()));
}

TEST_F(NextEntry, ChannelStepFindsAPortThatCannotBeConvertedBack) {
  fake::platform().interfaces[1].has_if_index_of_port = false;
  script({no_entry(), no_entry(), no_entry(), entry(2, kSecondChannel)});
  EXPECT_EQ(run(2, 0), -1);
  EXPECT_THAT(story(), ElementsAreArray(entered() + missed(2, kFirst, 26) + nothing_behind(2, 2, kFirst) +
                                        Trace{get_of(2, kChannel), in_channel_step("Next search "),
                                              get_next_of(2, kChannel),
                                              in_channel_step("Search successfull: if_index: 1002"),
                                              kReleased, line(": Lookup if_index failed. ")}));
  EXPECT_EQ(tree_, 2U);
}

TEST_F(NextEntry, ChannelStepWithoutAReplyVariable) {
  script({no_entry(), no_entry(), entry(2, kChannel)});
  EXPECT_EQ(run_with(2, 0, nullptr), 0);
  EXPECT_THAT(story(), ElementsAreArray(entered() + missed(2, kFirst, 26) + nothing_behind(2, 2, kFirst) +
                                        Trace{get_of(2, kChannel), kReleased,
                                              in_channel_step("Search successfull: if_index: 1001"),
                                              line(" resp_h is NULL")} +
                                        returned(2, 4097)));
  for (const auto &refused : {entry(3, kChannel), entry(2, kSecond)}) {
    script({no_entry(), no_entry(), no_entry(), refused});
    EXPECT_EQ(run_with(2, 0, nullptr), -1);
  }
  EXPECT_THAT(fake::taken_trace(), Each(Not(StartsWith("FREED REPLY"))));
}

// The process goes backwards.

TEST_F(NextEntry, AnswerFromAnEarlierTreeEndsTheWalkWithAClearedReply) {
  for (const uint32_t if_index : {kSecond, kSecondChannel}) {
    script({no_entry(), entry(1, if_index)});
    EXPECT_EQ(run(2, 0), -1);
    EXPECT_THAT(story(),
                ElementsAreArray(entered() + missed(2, kFirst, 26) +
                                 Trace{line(": saved_tree_index: 2, ret_tree_index: 1"), kReleased}));
    EXPECT_EQ(reply_, nullptr);
    EXPECT_EQ(tree_, 2U);
  }
}

TEST_F(NextEntry, ThatTreeIsTheOneThatWasAskedFor) {
  script({no_entry(), entry(2, kFirst)});
  EXPECT_EQ(run(2, 4098), -1);
  EXPECT_THAT(story(), ElementsAreArray(entered() + no_port_above(4098) + missed(3, 129, 26) +
                                        Trace{line(": saved_tree_index: 3, ret_tree_index: 2"), kReleased}));
  EXPECT_EQ(reply_, nullptr);
}

TEST_F(NextEntry, TreesAreComparedUnsigned) {
  script({entry(2, kFirst)});
  EXPECT_EQ(run(0x7FFFFFFF, 4098), -1);
  Trace without_get = missed(0x80000000, 129, 26);
  std::erase(without_get, get_of(0x80000000, 129));
  // A GET of so high a tree is refused before it is sent.
  EXPECT_THAT(story(),
              ElementsAreArray(entered() + no_port_above(4098) + without_get +
                               Trace{line(": saved_tree_index: -2147483648, ret_tree_index: 2"), kReleased}));
}

TEST_F(NextEntry, AnswerFromAnEarlierTreeWithoutAReplyVariable) {
  script({no_entry(), entry(1, kSecond)});
  EXPECT_EQ(run_with(2, 0, nullptr), -1);
  EXPECT_THAT(fake::taken_trace(), Each(Not(StartsWith("FREED REPLY"))));
}

// What follows the candidate, row by row.

TEST_F(NextEntry, ChannelThenChannelOfTheTree) {
  script({no_entry(), entry(2, kSecondChannel)});
  EXPECT_EQ(run(2, 130), 0);
  EXPECT_THAT(story(), ElementsAreArray(entered() + missed(2, kChannel, 22) +
                                        followed(2, 2, kSecondChannel, 22) + returned(2, 4098)));
  expect_row(2, 4098);
  take_reply();
}

TEST_F(NextEntry, ChannelThenPhysicalPortOfTheTree) {
  script({no_entry(), entry(2, kSecond), entry(3, kFirst)});
  EXPECT_EQ(run(2, 4097), 0);
  EXPECT_THAT(story(),
              ElementsAreArray(entered() + missed(2, kSecondChannel, 22) + followed(2, 2, kSecond, 26) +
                               Trace{line(": Incrementing in_tree_index, port_index to search again"),
                                     line(": in_tree_index: 3, port_index: 128"), kReleased} +
                               candidate(3, kFirst, 26) + Trace{line(" Get Successful")} + returned(3, 129)));
  expect_row(3, 129);
  take_reply();
}

TEST_F(NextEntry, ThatSearchInTheNextTreeMeasuresAnswersByIt) {
  script({no_entry(), entry(2, kSecond), no_entry(), entry(3, kSecond)});
  EXPECT_EQ(run(2, 4097), 0);
  EXPECT_THAT(story(),
              ElementsAreArray(entered() + missed(2, kSecondChannel, 22) + followed(2, 2, kSecond, 26) +
                               Trace{line(": Incrementing in_tree_index, port_index to search again"),
                                     line(": in_tree_index: 3, port_index: 128"), kReleased} +
                               missed(3, kFirst, 26) + followed(3, 3, kSecond, 26) + returned(3, 130)));
  expect_row(3, 130);
  take_reply();
}

TEST_F(NextEntry, ThatSearchInTheNextTreeWithoutACandidateIsOneForAPhysicalPort) {
  fake::platform().interfaces[2].has_if_index_of_port = false;
  script({no_entry(), entry(2, kSecond), no_entry(), entry(4, kSecond)});
  EXPECT_EQ(run(2, 4097), 0);
  EXPECT_THAT(story(),
              ElementsAreArray(entered() + missed(2, kSecondChannel, 22) + followed(2, 2, kSecond, 26) +
                               Trace{line(": Incrementing in_tree_index, port_index to search again"),
                                     line(": in_tree_index: 3, port_index: 128"), kReleased} +
                               no_port_above(128) + missed(4, 129, 26) + followed(3, 4, kSecond, 26) +
                               returned(4, 130)));
  expect_row(4, 130);
  take_reply();
}

TEST_F(NextEntry, ThatSearchInTheNextTreeHoldsNoReplyWhenItFails) {
  script({no_entry(), entry(2, kSecond), no_entry(), no_entry(), no_entry(), no_entry()});
  EXPECT_EQ(run(2, 4097), -1);
  EXPECT_EQ(reply_, nullptr) << "cleared before the search went on";
  EXPECT_EQ(tree_, 2U);
}

TEST_F(NextEntry, ThatSearchInTheNextTreeWithoutAReplyVariable) {
  script({no_entry(), entry(2, kSecond), entry(3, kFirst)});
  EXPECT_EQ(run_with(2, 4097, nullptr), 0);
  expect_row(3, 129);
  EXPECT_THAT(fake::taken_trace(), Each(Not(StartsWith("FREED REPLY"))));
}

TEST_F(NextEntry, ThatSearchStepsFromTreeToTree) {
  // On a switch without physical ports, each tree's search begins with its first port-channel.
  fake::platform().interfaces = {{kChannel, 4097, 22},
                                 {.if_index = kFirst, .port = 129, .is_base_port = false}};
  script({no_entry(), entry(2, kFirst), no_entry(), entry(3, kFirst), entry(4, kChannel)});
  EXPECT_EQ(run(2, 0), 0);
  const Trace next_tree = {line(": Incrementing in_tree_index, port_index to search again")};
  EXPECT_THAT(story(), ElementsAreArray(
                           entered() + missed(2, kChannel, 22) + followed(2, 2, kFirst, 26) + next_tree +
                           Trace{line(": in_tree_index: 3, port_index: 128"), kReleased} +
                           missed(3, kChannel, 22) + followed(3, 3, kFirst, 26) + next_tree +
                           Trace{line(": in_tree_index: 4, port_index: 128"), kReleased} +
                           candidate(4, kChannel, 22) + Trace{line(" Get Successful")} + returned(4, 4097)));
  expect_row(4, 4097);
  take_reply();
}

TEST_F(NextEntry, ChannelThenPhysicalPortOfALaterTree) {
  script({no_entry(), entry(4, kSecond)});
  EXPECT_EQ(run(2, 4097), 0);
  EXPECT_THAT(story(), ElementsAreArray(entered() + missed(2, kSecondChannel, 22) +
                                        followed(2, 4, kSecond, 26) + returned(4, 130)));
  expect_row(4, 130);
  take_reply();
}

TEST_F(NextEntry, ChannelThenChannelOfALaterTreeWithAPhysicalPort) {
  script({no_entry(), entry(4, kChannel), entry(4, kFirst)});
  EXPECT_EQ(run(2, 4097), 0);
  EXPECT_THAT(story(), ElementsAreArray(entered() + missed(2, kSecondChannel, 22) +
                                        followed(2, 4, kChannel, 22) + physical_step(4, kChannel, 4098) +
                                        physical_step_left("backend got values", 4, 4, kFirst, 129) +
                                        returned(4, 129)));
  expect_row(4, 129);
  take_reply();
}

TEST_F(NextEntry, PhysicalPortThenPhysicalPortOfTheTree) {
  script({no_entry(), entry(2, kSecond)});
  EXPECT_EQ(run(2, 0), 0);
  EXPECT_THAT(story(), ElementsAreArray(entered() + missed(2, kFirst, 26) + followed(2, 2, kSecond, 26) +
                                        returned(2, 130)));
  expect_row(2, 130);
  take_reply();
}

TEST_F(NextEntry, PhysicalPortThenChannelOfTheTreeFails) {
  script({no_entry(), entry(2, kChannel)});
  EXPECT_EQ(run(2, 0), -1);
  EXPECT_THAT(story(), ElementsAreArray(entered() + missed(2, kFirst, 26) + followed(2, 2, kChannel, 22) +
                                        Trace{kReleased}));
  EXPECT_EQ(tree_, 2U);
}

TEST_F(NextEntry, PortStaysWhereAFailedSearchLeftIt) {
  script({no_entry(), entry(2, kChannel)});
  EXPECT_EQ(run(2, 0), -1);
  expect_row(2, 129);
  // Here the search has gone on to the next tree's first port.
  script({no_entry(), entry(2, kSecond), no_entry(), no_entry(), no_entry(), no_entry()});
  EXPECT_EQ(run(2, 4097), -1);
  expect_row(2, 129);
}

TEST_F(NextEntry, FailedSearchHoldsNoReplyWhenItReturns) {
  using namespace stpsnmp::search;
  constexpr EntryKind kKind = {STP_COMMAND_LOOP_INCONSISTENCIES, STP_KEY_INTERFACE, STP_KEY_VLAN_TREE};
  const std::deque<fake::Send> failures[] = {{no_entry(), entry(1, kFirst)},
                                             {no_entry(), entry(2, kChannel)},
                                             {no_entry(), entry(3, kChannel), no_entry(), no_entry()}};
  for (const auto &answers : failures) {
    script(answers);
    TreePort row{2, 0};
    stpsnmp::query::Reply reply;
    EXPECT_FALSE(find_next_row(kKind, 0, &row, &reply));
    EXPECT_FALSE(reply);
    EXPECT_EQ(fake::live_replies(), 0U);
  }
}

TEST_F(NextEntry, PhysicalPortThenATreeBelowTheOneThatTheSearchStandsIn) {
  // Behind the highest tree number comes 0, so that what follows is not below the tree that was asked for.
  for (const uint32_t if_index : {kFirst, kChannel}) {
    script({no_entry(), entry(5, if_index)});
    EXPECT_EQ(run(0xFFFFFFFF, 4098), -1);
    EXPECT_THAT(story(), ElementsAreArray(entered() + no_port_above(4098) + missed(0, 129, 26) +
                                          followed(0xFFFFFFFF, 5, if_index, if_index == kFirst ? 26 : 22) +
                                          Trace{kReleased}));
    EXPECT_EQ(tree_, 0xFFFFFFFFU);
    reply_ = nullptr;
  }
}

TEST_F(NextEntry, PhysicalPortThenPhysicalPortOfALaterTree) {
  script({no_entry(), entry(4, kFirst)});
  EXPECT_EQ(run(2, 129), 0);
  EXPECT_THAT(story(), ElementsAreArray(entered() + missed(2, kSecond, 26) + followed(2, 4, kFirst, 26) +
                                        returned(4, 129)));
  expect_row(4, 129);
  take_reply();
}

TEST_F(NextEntry, PhysicalPortThenChannelOfALaterTreeWithAPhysicalPort) {
  script({no_entry(), entry(4, kChannel), no_entry(), entry(4, kSecond)});
  EXPECT_EQ(run(2, 129), 0);
  EXPECT_THAT(story(), ElementsAreArray(
                           entered() + missed(2, kSecond, 26) + followed(2, 4, kChannel, 22) +
                           physical_step(4, kChannel, 130) +
                           Trace{in_physical_step("returning FAILURE for GET\\n"), get_next_of(4, kFirst)} +
                           physical_step_left("backend got values", 4, 4, kSecond, 130) + returned(4, 130)));
  expect_row(4, 130);
  take_reply();
}

TEST_F(NextEntry, AnswerOfUnknownTypeCountsAsAPhysicalPort) {
  fake::platform().interfaces[3].type = 0;
  script({no_entry(), entry(2, kSecond)});
  EXPECT_EQ(run(2, 0), 0);
  EXPECT_THAT(story(), ElementsAreArray(entered() + missed(2, kFirst, 26) + followed(2, 2, kSecond, 0) +
                                        returned(2, 130)));
  take_reply();
}

// The table behind step 7: no search comes to a channel as candidate and an answer from a tree below.
TEST(NextRowDecision, EveryRow) {
  using stpsnmp::search::decide;
  using stpsnmp::search::NextRow;
  constexpr uint8_t kChannelType = 22;
  constexpr uint8_t kPhysicalType = 26;
  constexpr uint32_t kInTree = 5;
  const struct {
    uint8_t candidate;
    uint32_t answered_tree;
    uint8_t answer;
    NextRow outcome;
  } kRows[] = {
      {kChannelType, 5, kChannelType, NextRow::kFinish},
      {kChannelType, 5, kPhysicalType, NextRow::kNextTree},
      {kChannelType, 4, kChannelType, NextRow::kFail},
      {kChannelType, 4, kPhysicalType, NextRow::kFail},
      {kChannelType, 6, kPhysicalType, NextRow::kFinish},
      {kChannelType, 6, kChannelType, NextRow::kPhysicalEntry},
      {kPhysicalType, 5, kPhysicalType, NextRow::kFinish},
      {kPhysicalType, 5, kChannelType, NextRow::kFail},
      {kPhysicalType, 4, kPhysicalType, NextRow::kFail},
      {kPhysicalType, 4, kChannelType, NextRow::kFail},
      {kPhysicalType, 6, kPhysicalType, NextRow::kFinish},
      {kPhysicalType, 6, kChannelType, NextRow::kPhysicalEntry},
      {0, 5, 0, NextRow::kFinish},
      {0, 5, kChannelType, NextRow::kFail},
      {kChannelType, 0, 0, NextRow::kFail},
      {kChannelType, 0x80000000, kPhysicalType, NextRow::kFinish},
  };
  for (const auto &row : kRows) {
    EXPECT_EQ(decide(row.candidate, kInTree, row.answered_tree, row.answer), row.outcome)
        << int{row.candidate} << ' ' << row.answered_tree << ' ' << int{row.answer};
  }
}

// The physical-entry step's other ends.

TEST_F(NextEntry, LastChannelIsFollowedByTheFirstPhysicalPortOfTheNextTree) {
  script({no_entry(), entry(3, kChannel), entry(3, kFirst)});
  EXPECT_EQ(run(2, 4098), 0);
  EXPECT_THAT(story(), ElementsAreArray(entered() + no_port_above(4098) + missed(3, 129, 26) +
                                        followed(2, 3, kChannel, 22) + physical_step(3, kChannel, 4098) +
                                        physical_step_left("backend got values", 3, 3, kFirst, 129) +
                                        returned(3, 129)));
  expect_row(3, 129);
  take_reply();
}

TEST_F(NextEntry, ChannelOfALaterTreeStaysWhereThePhysicalPortsAreInAnotherOne) {
  script({no_entry(), entry(4, kChannel), no_entry(), entry(6, kSecond)});
  EXPECT_EQ(run(2, 4098), 0);
  EXPECT_THAT(story(), ElementsAreArray(
                           entered() + no_port_above(4098) + missed(3, 129, 26) +
                           followed(2, 4, kChannel, 22) + physical_step(4, kChannel, 4098) +
                           Trace{in_physical_step("returning FAILURE for GET\\n"), get_next_of(4, kFirst)} +
                           physical_step_left("saved", 6, 4, kChannel, 4098) + returned(4, 4097)));
  expect_row(4, 4097);
  take_reply();
}

TEST_F(NextEntry, PhysicalStepFindsNothing) {
  script({no_entry(), entry(4, kChannel), no_entry(), no_entry()});
  EXPECT_EQ(run(2, 4098), -1);
  EXPECT_THAT(
      story(),
      ElementsAreArray(entered() + no_port_above(4098) + missed(3, 129, 26) + followed(2, 4, kChannel, 22) +
                       physical_step(4, kChannel, 4098) +
                       Trace{in_physical_step("returning FAILURE for GET\\n"), get_next_of(4, kFirst),
                             in_physical_step("returning FAILURE for GET_NEXT\\n"),
                             line(": check_and_get_next_stp_physical_entry_for_logical FAILED"), kReleased}));
  EXPECT_EQ(tree_, 2U);
}

TEST_F(NextEntry, PhysicalStepOnASwitchWithoutPhysicalPorts) {
  fake::platform().interfaces = {{kChannel, 4097, 22}};
  script({no_entry(), entry(4, kChannel)});
  EXPECT_EQ(run(2, 4097), -1);
  EXPECT_THAT(
      story(),
      ElementsAreArray(entered() + no_port_above(4097) + missed(3, 129, 26) + followed(2, 4, kChannel, 22) +
                       Trace{in_physical_step("if_index: 1001, port_index: 4097, tree_index: 4\\n"),
                             in_physical_step("returning FAILURE\\n"),
                             line(": check_and_get_next_stp_physical_entry_for_logical FAILED"), kReleased}));
}

TEST_F(NextEntry, PhysicalStepWithoutAReplyVariable) {
  script({no_entry(), entry(4, kChannel), entry(4, kFirst)});
  EXPECT_EQ(run_with(2, 4098, nullptr), 0);
  expect_row(4, 129);
  script({no_entry(), entry(4, kChannel), entry(6, kFirst)});
  EXPECT_EQ(run_with(2, 4098, nullptr), 0);
  expect_row(4, 4097);
  script({no_entry(), entry(4, kChannel), no_entry(), no_entry()});
  EXPECT_EQ(run_with(2, 4098, nullptr), -1);
  EXPECT_THAT(fake::taken_trace(), Each(Not(StartsWith("FREED REPLY"))));
}

// The end of the search.

TEST_F(NextEntry, AnsweredInterfaceWithoutAPortAfterAGet) {
  script({entry(2, kWithoutPort)});
  EXPECT_EQ(run(2, 0), -1);
  EXPECT_THAT(story(),
              ElementsAreArray(entered() + candidate(2, kFirst, 26) +
                               Trace{line(" Get Successful"), kReleased, line(": returning FAILURE")}));
  EXPECT_EQ(tree_, 2U);
}

TEST_F(NextEntry, AnsweredInterfaceWithoutAPortAfterAGetNext) {
  script({no_entry(), entry(3, kWithoutPort)});
  EXPECT_EQ(run(2, 0), -1);
  EXPECT_THAT(story(), ElementsAreArray(entered() + missed(2, kFirst, 26) + followed(2, 3, kWithoutPort, 0) +
                                        Trace{kReleased, line(": returning FAILURE")}));
  EXPECT_EQ(tree_, 2U);
}

TEST_F(NextEntry, AnsweredChannelWithoutAPortIsReleasedOnceAfterThePhysicalStep) {
  fake::platform().interfaces[0].port = 0;
  script({no_entry(), entry(4, kChannel), no_entry(), entry(6, kSecond)});
  EXPECT_EQ(run(2, 4098), -1);
  const Trace told = story();
  ASSERT_GE(told.size(), 2U);
  EXPECT_EQ(told.at(told.size() - 2), kReleased);
  EXPECT_EQ(told.back(), line(": returning FAILURE"));
}

TEST_F(NextEntry, WithoutAReplyVariableTheIndexAloneIsReturned) {
  script({entry(2, kFirst)});
  EXPECT_EQ(run_with(2, 0, nullptr), 0);
  EXPECT_THAT(story(), ElementsAreArray(entered() + candidate(2, kFirst, 26) +
                                        Trace{kReleased, line(" Get Successful"), line(" resp_h is NULL")} +
                                        returned(2, 129)));
  expect_row(2, 129);
  script({no_entry(), entry(2, kChannel)});
  EXPECT_EQ(run_with(2, 0, nullptr), -1);
  script({entry(2, kWithoutPort)});
  EXPECT_EQ(run_with(2, 0, nullptr), -1);
  EXPECT_THAT(fake::taken_trace(), Each(Not(StartsWith("FREED REPLY"))));
}

TEST_F(NextEntry, ShortMemoryCountsAsNoEntry) {
  ledger::fail_next_malloc();
  script({entry(2, kSecond)});
  EXPECT_EQ(run(2, 0), 0);
  expect_row(2, 130);
  take_reply();
}

}  // namespace
