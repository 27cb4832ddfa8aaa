// The query pattern on one getter, get_stpxSpanningTreeType: every call in its order, on success and on each
// failure.
#include "query/fetch.h"

#include <gmock/gmock.h>

#include "fake_platform.h"
#include "ledger.h"
#include "protocol_numbers.h"
#include "stpsnmp/scalars.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

class Fetch : public ::testing::Test {
 protected:
  void SetUp() override {
    fake::reset();
    record_.spanning_tree_type = 77;
    ledger::start();
  }

  void TearDown() override {
    ledger::stop();
    EXPECT_EQ(ledger::outstanding(), 0U) << "request buffers left";
    EXPECT_EQ(fake::live_replies(), 0U) << "replies left";
  }

  int fetch_type() { return get_stpxSpanningTreeType(&record_); }

  // What every getter of a global setting does up to the send.
  static std::vector<std::string> with_request(const std::vector<std::string> &rest) {
    std::vector<std::string> lines{
        "malloc(16000)",
        "cmd_req_init(buffer, 16000)",
        "cmd_req_cmdId_set(request, 104)",
        "cmd_req_action_set(request, 1)",
        "token_type_2len(0x01020227, value)",
        "cmd_req_attr_add(request, 0x01020227, 00000000)",
        "get_snmp_sessionid(0)",
        "get_snmp_username(0)",
        "cmd_snmp_req_send_recv(0xFE000000, 171, request, operator, 4711, 0)",
    };
    lines.insert(lines.end(), rest.begin(), rest.end());
    return lines;
  }

  ScalarValueRecord record_{};
};

TEST_F(Fetch, Success) {
  fake::platform().attributes[protocol::kMode] = fake::number(4);
  EXPECT_EQ(fetch_type(), 0);
  EXPECT_EQ(record_.spanning_tree_type, 4);
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(with_request({
                                       "free(16000)",
                                       "cmd_rsp_attr_get(0x0202B001)",
                                       "log(0x00730000, 101) \"value 4\\n\"",
                                       "cmd_snmp_free_rx_hndl",
                                   })));
}

TEST_F(Fetch, AllocationFailure) {
  ledger::fail_next_malloc();
  EXPECT_EQ(fetch_type(), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("malloc(16000)",
                          "log(0x00730000, 101) \"get_stpxSpanningTreeType(LINE) malloc failed \\n\""));
  EXPECT_EQ(record_.spanning_tree_type, 77);
}

TEST_F(Fetch, SendFailureReturnsTheLibrarysCodeAndFreesNothingButTheBuffer) {
  fake::platform().send_result = 5;
  EXPECT_EQ(fetch_type(), 5);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(with_request({
          "log(0x00730000, 101) \"get_stpxSpanningTreeType(LINE) cmd_req_snmp_send_recv() failed\\n\"",
          "free(16000)",
      })));
  EXPECT_EQ(record_.spanning_tree_type, 77);
}

TEST_F(Fetch, ReplyOfAFailedSendIsLeftAlone) {
  int no_reply = 0;
  fake::platform().send_result = 5;
  fake::platform().reply_of_failed_send = &no_reply;
  EXPECT_EQ(fetch_type(), 5);
  EXPECT_EQ(fake::taken_trace().back(), "free(16000)");
}

TEST_F(Fetch, NullReplyReturnsMinusOneAndFreesNothingButTheBuffer) {
  fake::platform().answers_without_reply = true;
  EXPECT_EQ(fetch_type(), -1);
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(with_request({
                                       "free(16000)",
                                       "log(0x00730000, 101) \"parse_reply_stpxSpanningTreeType failed\\n\"",
                                   })));
  EXPECT_EQ(record_.spanning_tree_type, 77);
}

TEST_F(Fetch, MissingAttributeFreesTheReplyAndReturnsTheLibrarysCode) {
  fake::platform().missing_attribute_result = 1234;
  EXPECT_EQ(fetch_type(), 1234);
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(with_request({
                                       "free(16000)",
                                       "cmd_rsp_attr_get(0x0202B001)",
                                       "cmd_snmp_free_rx_hndl",
                                       "log(0x00730000, 101) \"parse_reply_stpxSpanningTreeType failed\\n\"",
                                   })));
  EXPECT_EQ(record_.spanning_tree_type, 77);
}

TEST_F(Fetch, NumberWithoutValueCountsAsMissingWithMinusOne) {
  fake::platform().attributes_without_value[protocol::kMode] = 4;
  EXPECT_EQ(fetch_type(), -1);
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(with_request({
                                       "free(16000)",
                                       "cmd_rsp_attr_get(0x0202B001)",
                                       "cmd_snmp_free_rx_hndl",
                                       "log(0x00730000, 101) \"parse_reply_stpxSpanningTreeType failed\\n\"",
                                   })));
  EXPECT_EQ(record_.spanning_tree_type, 77);
}

TEST_F(Fetch, QueryWithoutKeyAddsNoAttribute) {
  fake::platform().attributes[0x1402B003] = fake::number(65535);
  EXPECT_EQ(get_stpxSMSTRegionRevision(&record_), 0);
  EXPECT_EQ(record_.region_revision, 65535U);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("malloc(16000)", "cmd_req_init(buffer, 16000)", "cmd_req_cmdId_set(request, 112)",
                          "cmd_req_action_set(request, 1)", "get_snmp_sessionid(0)", "get_snmp_username(0)",
                          "cmd_snmp_req_send_recv(0xFE000000, 171, request, operator, 4711, 0)",
                          "free(16000)", "cmd_rsp_attr_get(0x1402B003)",
                          "log(0x00730000, 101) \"value 65535\\n\"", "cmd_snmp_free_rx_hndl"));
}

TEST_F(Fetch, MissingStringAttributeReturnsTheLibrarysCodeToo) {
  fake::platform().missing_attribute_result = 1234;
  EXPECT_EQ(get_stpxSMSTConfigDigest(&record_), 1234);
}

TEST_F(Fetch, KeyIsAsLongAsTheCommandLibrarySays) {
  fake::platform().value_length = 2;
  fake::platform().attributes[protocol::kMode] = fake::number(4);
  EXPECT_EQ(fetch_type(), 0);
  EXPECT_THAT(fake::taken_trace(), Contains("cmd_req_attr_add(request, 0x01020227, 0000)"));
}

TEST_F(Fetch, TraceShowsTheNumberAsSigned) {
  fake::platform().attributes[protocol::kMode] = fake::number(0xFFFFFFFE);
  EXPECT_EQ(fetch_type(), 0);
  EXPECT_THAT(fake::taken_trace(), Contains("log(0x00730000, 101) \"value -2\\n\""));
}

TEST_F(Fetch, MessagesCarryTheGettersOwnSourceLine) {
  fake::platform().send_result = 5;
  EXPECT_EQ(get_stpxSpanningTreeType(&record_), 5);
  EXPECT_EQ(get_stpxSMSTMaxHopCount(&record_), 5);
  std::vector<int> lines;
  for (const std::string &line : fake::platform().trace) {
    if (line.find("failed") != std::string::npos) {
      lines.push_back(std::stoi(line.substr(line.find('(', line.find("get_")) + 1)));
    }
  }
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_GT(lines[0], 0);
  EXPECT_GT(lines[1], 0);
  EXPECT_NE(lines[0], lines[1]);
}

TEST_F(Fetch, IsMadeForTheUserAndSessionBeingServed) {
  fake::platform().user = "auditor";
  fake::platform().session = 42;
  fake::platform().attributes[protocol::kMode] = fake::number(5);
  EXPECT_EQ(fetch_type(), 0);
  EXPECT_THAT(fake::taken_trace(),
              Contains("cmd_snmp_req_send_recv(0xFE000000, 171, request, auditor, 42, 0)"));
}

}  // namespace
