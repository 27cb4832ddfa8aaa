// The lookup of a port's entry by interface index: its checks, its query, and what it hands back.
#include "ledger.h"
#include "search_test.h"
#include "stpsnmp/index_search.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

constexpr uint32_t kTreeZeroCommands[] = {111, 120, 121};
constexpr uint32_t kOtherCommands[] = {105, 116, 104, 110, 112, 119, 122, 0};

constexpr uint32_t kPort = 0x1A000005;
constexpr uint32_t kNextPort = 0x1A000009;

std::string line(const std::string &text) {
  return logged("\\nget_stp_entry_from_if_index(LINE)" + text + "\\n");
}

std::string rejection(const std::string &text) {
  return logged_rejection("\\nget_stp_entry_from_if_index(LINE)" + text + "\\n");
}

class PortEntry : public SearchTest {
 protected:
  void SetUp() override {
    SearchTest::SetUp();
    fake::platform().attributes = *entry(9, kNextPort).attributes;
    fake::platform().attributes[protocol::kInconsistency] = fake::number(3);
  }

  int look_up(uint32_t action, uint8_t dual, uint32_t command) {
    return get_stp_entry_from_if_index(action, dual, protocol::kInterfaceKey, &if_index_,
                                       protocol::kVlanTreeKey, &tree_, &reply_, command);
  }

  int look_up_port_alone(uint32_t action, uint32_t command) {
    return get_stp_entry_from_if_index(action, 0, protocol::kInterfaceKey, &if_index_, 0, nullptr, &reply_,
                                       command);
  }

  void expect_unchanged(uint32_t tree = 7) {
    EXPECT_EQ(tree_, tree);
    EXPECT_EQ(if_index_, kPort);
    EXPECT_EQ(reply_, &marker_);
  }

  // Takes the reply of a success and makes the fixture ready for another lookup.
  void take_reply(uint32_t tree = 7) {
    ASSERT_NE(reply_, &marker_);
    release(reply_);
    reply_ = &marker_;
    tree_ = tree;
    if_index_ = kPort;
  }

  char marker_ = 0;
  void *reply_ = &marker_;
  uint32_t tree_ = 7;
  uint32_t if_index_ = kPort;
};

// What is asked and answered.

TEST_F(PortEntry, GetOfATreeAndAPort) {
  EXPECT_EQ(look_up(1, 1, 116), 0);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAre("malloc(16000)", "cmd_req_init(buffer, 16000)", "cmd_req_cmdId_set(request, 116)",
                  "cmd_req_action_set(request, 1)", line(": Searching for dual index: 436207621, 7"),
                  "token_type_2len(0x130200B4, value)",
                  "cmd_req_attr_add(request, 0x130200B4, 00000000010000000700000007000000)",
                  "token_type_2len(0x0C020105, value)", "cmd_req_attr_add(request, 0x0C020105, 0500001a)",
                  "get_snmp_sessionid(0)", "get_snmp_username(0)",
                  "cmd_snmp_req_send_recv(0xFE000000, 171, request, operator, 4711, 0)", "free(16000)",
                  "cmd_rsp_attr_get(0x1402A006)", line(" dual index tree id: 9"),
                  "cmd_rsp_attr_get(0x0C02A001)", line(" return if_index id: 436207625"),
                  "cmd_rsp_attr_get(0x1402A015)", line(": value 3")));
  EXPECT_EQ(tree_, 9U);
  EXPECT_EQ(if_index_, kNextPort);
  take_reply();
}

TEST_F(PortEntry, GetNextDiffersInItsActionAlone) {
  EXPECT_EQ(look_up(3, 1, 116), 0);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(queried_and_found(116, 3, 7, kPort, 9, kNextPort) + Trace{line(": value 3")}));
  EXPECT_EQ(tree_, 9U);
  EXPECT_EQ(if_index_, kNextPort);
  take_reply();
}

TEST_F(PortEntry, PortAloneSendsTheInterfaceAndReadsNoTree) {
  for (const uint32_t action : {1U, 3U}) {
    EXPECT_EQ(look_up_port_alone(action, 105), 0);
    EXPECT_THAT(fake::taken_trace(),
                ElementsAreArray(sent(105, action, "0x0C020105", "0500001a") +
                                 Trace{"free(16000)", "cmd_rsp_attr_get(0x0C02A001)",
                                       line(" return if_index id: 436207625"), "cmd_rsp_attr_get(0x1402A015)",
                                       line(": value 3")}));
    EXPECT_EQ(if_index_, kNextPort);
    take_reply();
  }
}

TEST_F(PortEntry, EveryFlagButOneMeansThePortAlone) {
  for (const uint8_t flag : std::initializer_list<uint8_t>{0, 2, 255}) {
    EXPECT_EQ(look_up(1, flag, 116), 0);
    EXPECT_THAT(fake::taken_trace(),
                ElementsAreArray(sent(116, 1, "0x0C020105", "0500001a") +
                                 Trace{"free(16000)", "cmd_rsp_attr_get(0x0C02A001)",
                                       line(" return if_index id: 436207625"), "cmd_rsp_attr_get(0x1402A015)",
                                       line(": value 3")}));
    EXPECT_EQ(tree_, 7U);
    take_reply();
  }
}

TEST_F(PortEntry, TokensAreTheCallers) {
  EXPECT_EQ(get_stp_entry_from_if_index(1, 1, 0x0C02018B, &if_index_, 0x13020131, &tree_, &reply_, 111), 0);
  const Trace trace = fake::taken_trace();
  EXPECT_THAT(trace, Contains("cmd_req_attr_add(request, 0x13020131, 00000000010000000700000007000000)"));
  EXPECT_THAT(trace, Contains("cmd_req_attr_add(request, 0x0C02018B, 0500001a)"));
  take_reply();
}

TEST_F(PortEntry, NumbersAreShownSigned) {
  tree_ = 0xFFFFFFFE;
  if_index_ = 0x80000000;
  fake::platform().attributes = *entry(0xFFFFFFFD, 0xFFFFFFFC).attributes;
  fake::platform().attributes[protocol::kInconsistency] = fake::number(0xFFFFFFFB);
  EXPECT_EQ(look_up(3, 1, 120), 0);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(Trace{line(": for command id 120, tree_id:-2"),
                             "malloc(16000)",
                             "cmd_req_init(buffer, 16000)",
                             "cmd_req_cmdId_set(request, 120)",
                             "cmd_req_action_set(request, 3)",
                             line(": Searching for dual index: -2147483648, -2"),
                             "token_type_2len(0x130200B4, value)",
                             "cmd_req_attr_add(request, 0x130200B4, 0000000001000000fefffffffeffffff)",
                             "token_type_2len(0x0C020105, value)",
                             "cmd_req_attr_add(request, 0x0C020105, 00000080)",
                             "get_snmp_sessionid(0)",
                             "get_snmp_username(0)",
                             "cmd_snmp_req_send_recv(0xFE000000, 171, request, operator, 4711, 0)",
                             "free(16000)",
                             "cmd_rsp_attr_get(0x1402A006)",
                             line(" dual index tree id: -3"),
                             "cmd_rsp_attr_get(0x0C02A001)",
                             line(" return if_index id: -4"),
                             "cmd_rsp_attr_get(0x1402A015)",
                             line(": value -5")}));
  take_reply();
}

// The checks, in their order.

TEST_F(PortEntry, OtherActionsAreRefused) {
  for (const uint32_t action : {0U, 2U, 4U, 0x80000001U, 0xFFFFFFFFU}) {
    EXPECT_EQ(look_up(action, 1, 120), -1);
    EXPECT_THAT(fake::taken_trace(), ElementsAre(line(": invalid action requested")));
    EXPECT_EQ(look_up_port_alone(action, 120), -1);
    EXPECT_THAT(fake::taken_trace(), ElementsAre(line(": invalid action requested")));
    expect_unchanged();
  }
}

TEST_F(PortEntry, ActionIsCheckedFirst) {
  EXPECT_EQ(get_stp_entry_from_if_index(2, 1, protocol::kInterfaceKey, nullptr, protocol::kVlanTreeKey,
                                        nullptr, &reply_, 116),
            -1);
  EXPECT_THAT(fake::taken_trace(), ElementsAre(line(": invalid action requested")));
  expect_unchanged();
}

TEST_F(PortEntry, TreeAndPortWithoutATreeAreRefusedBeforeTheInterfaceIsLookedAt) {
  for (const uint32_t action : {1U, 3U}) {
    for (const uint32_t command : {116U, 120U}) {
      EXPECT_EQ(get_stp_entry_from_if_index(action, 1, protocol::kInterfaceKey, nullptr,
                                            protocol::kVlanTreeKey, nullptr, &reply_, command),
                -1);
      EXPECT_THAT(fake::taken_trace(), ElementsAre(rejection(": invalid tree_id pointer")));
      expect_unchanged();
    }
  }
}

TEST_F(PortEntry, GetOfTreeZeroIsRefusedForCommandsThatHaveNone) {
  tree_ = 0;
  for (const uint32_t command : kOtherCommands) {
    EXPECT_EQ(look_up(1, 1, command), -1) << command;
    EXPECT_THAT(fake::taken_trace(), ElementsAre(rejection(": invalid action requested or tree_id ")));
    expect_unchanged(0);
  }
}

TEST_F(PortEntry, GetOfTreeZeroIsSentForTheThreeCommandsThatHaveIt) {
  for (const uint32_t command : kTreeZeroCommands) {
    tree_ = 0;
    EXPECT_EQ(look_up(1, 1, command), 0) << command;
    EXPECT_THAT(fake::taken_trace(), ElementsAreArray(queried_and_found(command, 1, 0, kPort, 9, kNextPort) +
                                                      Trace{line(": value 3")}));
    take_reply();
  }
}

TEST_F(PortEntry, GetOfTreeOneIsSentForEveryCommand) {
  for (const uint32_t command : kOtherCommands) {
    tree_ = 1;
    EXPECT_EQ(look_up(1, 1, command), 0) << command;
    fake::taken_trace();
    take_reply();
  }
}

TEST_F(PortEntry, GetOfANegativeTreeIsRefusedForEveryCommand) {
  for (const uint32_t tree : {0xFFFFFFFFU, 0x80000000U}) {
    tree_ = tree;
    for (const auto &commands :
         {std::vector<uint32_t>(std::begin(kTreeZeroCommands), std::end(kTreeZeroCommands)),
          std::vector<uint32_t>(std::begin(kOtherCommands), std::end(kOtherCommands))}) {
      for (const uint32_t command : commands) {
        EXPECT_EQ(look_up(1, 1, command), -1) << command;
        EXPECT_THAT(fake::taken_trace(), ElementsAre(rejection(": invalid action requested or tree_id ")));
        expect_unchanged(tree);
      }
    }
  }
}

TEST_F(PortEntry, TreeIsCheckedBeforeTheInterface) {
  tree_ = 0;
  EXPECT_EQ(get_stp_entry_from_if_index(1, 1, protocol::kInterfaceKey, nullptr, protocol::kVlanTreeKey,
                                        &tree_, &reply_, 116),
            -1);
  EXPECT_THAT(fake::taken_trace(), ElementsAre(rejection(": invalid action requested or tree_id ")));
  expect_unchanged(0);
}

TEST_F(PortEntry, GetNextOfAnyTreeIsSent) {
  for (const uint32_t tree : {0U, 0xFFFFFFFFU, 0x80000000U}) {
    for (const uint32_t command : {116U, 105U, 111U, 120U, 121U}) {
      tree_ = tree;
      EXPECT_EQ(look_up(3, 1, command), 0) << command;
      EXPECT_THAT(fake::taken_trace(),
                  ElementsAreArray(queried_and_found(command, 3, tree, kPort, 9, kNextPort) +
                                   Trace{line(": value 3")}));
      take_reply();
    }
  }
}

TEST_F(PortEntry, GetOfAPortAloneChecksNoTree) {
  tree_ = 0xFFFFFFFF;
  EXPECT_EQ(look_up(1, 0, 116), 0);
  EXPECT_EQ(tree_, 0xFFFFFFFFU);
  fake::taken_trace();
  take_reply();
}

TEST_F(PortEntry, TreeIsTracedForTheThreeCommandsWheneverThereIsOne) {
  for (const uint32_t command : kTreeZeroCommands) {
    for (const uint32_t action : {1U, 3U}) {
      EXPECT_EQ(look_up(action, 0, command), 0);
      EXPECT_EQ(fake::taken_trace().front(),
                line(": for command id " + std::to_string(command) + ", tree_id:7"));
      take_reply();
      EXPECT_EQ(look_up_port_alone(action, command), 0);
      EXPECT_EQ(fake::taken_trace().front(), "malloc(16000)");
      take_reply();
    }
  }
}

TEST_F(PortEntry, MissingInterfaceIsRefusedLast) {
  EXPECT_EQ(get_stp_entry_from_if_index(1, 1, protocol::kInterfaceKey, nullptr, protocol::kVlanTreeKey,
                                        &tree_, &reply_, 116),
            -1);
  EXPECT_THAT(fake::taken_trace(), ElementsAre(rejection(": invalid if_index pointer")));
  EXPECT_EQ(get_stp_entry_from_if_index(3, 1, protocol::kInterfaceKey, nullptr, protocol::kVlanTreeKey,
                                        &tree_, &reply_, 121),
            -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre(line(": for command id 121, tree_id:7"), rejection(": invalid if_index pointer")));
  EXPECT_EQ(get_stp_entry_from_if_index(1, 0, protocol::kInterfaceKey, nullptr, 0, nullptr, &reply_, 121),
            -1);
  EXPECT_THAT(fake::taken_trace(), ElementsAre(rejection(": invalid if_index pointer")));
  expect_unchanged();
}

// Failures of the query.

TEST_F(PortEntry, AllocationFailure) {
  ledger::fail_next_malloc();
  EXPECT_EQ(look_up(1, 1, 116), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("malloc(16000)", logged("get_stp_entry_from_if_index(LINE) malloc failed \\n")));
  expect_unchanged();
}

TEST_F(PortEntry, SendFailureHasTheSameWordsForBothActionsAndKeepsItsCodeToItself) {
  fake::platform().send_result = 5;
  for (const uint32_t action : {1U, 3U}) {
    EXPECT_EQ(look_up(action, 1, 116), -1);
    EXPECT_THAT(fake::taken_trace(),
                ElementsAreArray(queried(116, action, 7, kPort) +
                                 Trace{line(" cmd_req_snmp_send_recv() failed for GET"), "free(16000)"}));
    expect_unchanged();
  }
}

TEST_F(PortEntry, EmptyReply) {
  fake::platform().answers_without_reply = true;
  EXPECT_EQ(look_up(1, 1, 116), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(queried(116, 1, 7, kPort) + Trace{"free(16000)", line(": resp_h is NULL ")}));
  expect_unchanged();
}

// Replies that lack something.

TEST_F(PortEntry, ReplyWithoutTheTree) {
  fake::platform().attributes.erase(protocol::kPortTree);
  EXPECT_EQ(look_up(3, 1, 116), 0);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(queried(116, 3, 7, kPort) +
                               Trace{"free(16000)", "cmd_rsp_attr_get(0x1402A006)",
                                     line(" cmd_rsp_attr_get returns error."), line(" dual index tree id: 7"),
                                     "cmd_rsp_attr_get(0x0C02A001)", line(" return if_index id: 436207625"),
                                     "cmd_rsp_attr_get(0x1402A015)", line(": value 3")}));
  EXPECT_EQ(tree_, 7U);
  EXPECT_EQ(if_index_, kNextPort);
  take_reply();
}

TEST_F(PortEntry, ReplyWithoutTheInterface) {
  fake::platform().attributes.erase(protocol::kInterface);
  EXPECT_EQ(look_up(3, 1, 116), 0);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(queried(116, 3, 7, kPort) +
                       Trace{"free(16000)", "cmd_rsp_attr_get(0x1402A006)", line(" dual index tree id: 9"),
                             "cmd_rsp_attr_get(0x0C02A001)", line(" cmd_rsp_attr_get returns error."),
                             line(" return if_index id: 436207621"), "cmd_rsp_attr_get(0x1402A015)",
                             line(": value 3")}));
  EXPECT_EQ(tree_, 9U);
  EXPECT_EQ(if_index_, kPort);
  take_reply();
}

TEST_F(PortEntry, EmptyAttributeListStillSucceedsAndAMissingValueIsSilent) {
  fake::platform().attributes.clear();
  EXPECT_EQ(look_up(1, 1, 116), 0);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(queried(116, 1, 7, kPort) +
                       Trace{"free(16000)", "cmd_rsp_attr_get(0x1402A006)",
                             line(" cmd_rsp_attr_get returns error."), line(" dual index tree id: 7"),
                             "cmd_rsp_attr_get(0x0C02A001)", line(" cmd_rsp_attr_get returns error."),
                             line(" return if_index id: 436207621"), "cmd_rsp_attr_get(0x1402A015)"}));
  EXPECT_EQ(tree_, 7U);
  EXPECT_EQ(if_index_, kPort);
  take_reply();
}

TEST_F(PortEntry, AttributeWithoutAValueCountsAsMissing) {
  for (const uint32_t token : {protocol::kPortTree, protocol::kInterface, protocol::kInconsistency}) {
    fake::platform().attributes_without_value[token] = 4;
  }
  EXPECT_EQ(look_up(1, 1, 116), 0);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(queried(116, 1, 7, kPort) +
                       Trace{"free(16000)", "cmd_rsp_attr_get(0x1402A006)",
                             line(" cmd_rsp_attr_get returns error."), line(" dual index tree id: 7"),
                             "cmd_rsp_attr_get(0x0C02A001)", line(" cmd_rsp_attr_get returns error."),
                             line(" return if_index id: 436207621"), "cmd_rsp_attr_get(0x1402A015)"}));
  take_reply();
}

// Callers that want the index alone.

TEST_F(PortEntry, ReplyThatNobodyWantsIsReleased) {
  EXPECT_EQ(get_stp_entry_from_if_index(3, 1, protocol::kInterfaceKey, &if_index_, protocol::kVlanTreeKey,
                                        &tree_, nullptr, 116),
            0);
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(queried_and_found(116, 3, 7, kPort, 9, kNextPort) +
                                                    Trace{line(": value 3"), "cmd_snmp_free_rx_hndl"}));
  EXPECT_EQ(tree_, 9U);
  EXPECT_EQ(if_index_, kNextPort);
}

TEST_F(PortEntry, FailuresWithoutAReplyVariable) {
  fake::platform().next_sends = {no_entry(), {.has_reply = false}};
  for (int failures = 0; failures < 2; ++failures) {
    EXPECT_EQ(get_stp_entry_from_if_index(1, 1, protocol::kInterfaceKey, &if_index_, protocol::kVlanTreeKey,
                                          &tree_, nullptr, 116),
              -1);
  }
  expect_unchanged();
}

}  // namespace
