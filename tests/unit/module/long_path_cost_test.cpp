// Long path cost table: the handler without an answer, and the header routine that others call.
#include "fake_platform.h"
#include "protocol_numbers.h"
#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "table_test.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr uint32_t kPort1 = 0x1A000001;
constexpr uint32_t kPort2 = 0x1A000002;
constexpr uint32_t kChannel1 = 0x16000001;
constexpr uint32_t kChannel2 = 0x16000002;

const std::string kFailure = logged("\\nget_stp_entry_from_port_id(LINE): returning FAILURE\\n");

fake::Send entry(uint32_t if_index, uint32_t cost) {
  return {0, true,
          fake::Attributes{{protocol::kInterface, fake::number(if_index)},
                           {protocol::kPathCost, fake::number(cost)}}};
}

class LongPathCost : public TableTest {
 protected:
  LongPathCost() : TableTest(get_stpxLongStpPortPathCostTable) {}

  void SetUp() override {
    TableTest::SetUp();
    fake::platform().interfaces = {
        {kPort1, 129}, {kPort2, 130}, {kChannel1, 4097, 22}, {kChannel2, 4098, 22}};
  }

  // Calls the header routine for the column 1.3.9 with these arcs behind it.
  int header(const std::vector<oid> &arcs, int exact) {
    const oid column[] = {1, 3, 9};
    std::vector<oid> request{1, 3, 9};
    request.insert(request.end(), arcs.begin(), arcs.end());
    request.resize(MAX_OID_LEN);
    size_t length = 3 + arcs.size();
    row_ = {99, 99};
    const int result = header_stpxLongStpPortPathCostTable(column, 3, request.data(), &length, exact, &row_);
    request.resize(length);
    answered_ = request;
    return result;
  }

  // The requests of the trace: action and interface index.
  static Trace requests() {
    Trace found;
    std::string action;
    for (const std::string &line : fake::platform().trace) {
      if (line.starts_with("cmd_req_action_set")) {
        action = line.substr(line.size() - 2, 1);
      } else if (line.starts_with("cmd_req_attr_add")) {
        found.push_back(action + " " + line.substr(line.find("0x")));
      }
    }
    return found;
  }

  PathCostRow row_{};
  std::vector<oid> answered_;
};

TEST_F(LongPathCost, NoRequestThroughTheAgentIsAnswered) {
  for (const int exact : {0, 1}) {
    for (const std::vector<oid> &arcs : {std::vector<oid>{}, {129}, {129, 1}}) {
      std::vector<oid> below_root{1, 6, 3, 1, 1};
      below_root.insert(below_root.end(), arcs.begin(), arcs.end());
      EXPECT_EQ(ask_below_root(61, below_root, exact), std::nullopt);
    }
  }
  EXPECT_THAT(fake::taken_trace(), IsEmpty());
}

TEST_F(LongPathCost, GetOfAPort) {
  fake::platform().next_sends = {entry(kPort1, 200000)};
  EXPECT_EQ(header({129}, 1), 0);
  EXPECT_EQ(row_.index, 129U);
  EXPECT_EQ(row_.value, 200000U);
  EXPECT_THAT(answered_, ElementsAre(1, 3, 9, 129));
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(Trace{logged("exact 1 *length 4 vp_namelen 3\\n"), "stp_dot1dportnum2ifindex(129)",
                             "stp_valid_if_index(0x1A000001)", "if_index_get_type(0x1A000001)",
                             "stp_dot1dportnum2ifindex(129)",
                             logged("\\nvalidate_port_id_for_snmp_search(LINE): returning port_id(129), "
                                    "in_if_index(436207617), ret_if_index(436207617), ret_if_type(26)\\n")} +
                       sent(105, 1, "0x0C020105", "0100001a") +
                       Trace{"free(16000)", "cmd_rsp_attr_get(0x0C02A001)",
                             logged("\\nget_stp_entry_from_if_index(LINE) return if_index id: 436207617\\n"),
                             "cmd_rsp_attr_get(0x1402A015)", "stp_ifindex2dot1dportnum(0x1A000001)",
                             "cmd_rsp_attr_get(0x0C02A001)", "cmd_rsp_attr_get(0x1402A008)",
                             "cmd_snmp_free_rx_hndl"}));
}

TEST_F(LongPathCost, GetWithTwoIndexArcsFails) {
  EXPECT_EQ(header({129, 1}, 1), -1);
  EXPECT_THAT(fake::taken_trace(), ElementsAre(logged("exact 1 *length 5 vp_namelen 3\\n")));
}

TEST_F(LongPathCost, GetOfNoPortFails) {
  EXPECT_EQ(header({131}, 1), -1);
  EXPECT_THAT(requests(), IsEmpty());
  EXPECT_EQ(fake::taken_trace().back(), kFailure);
}

TEST_F(LongPathCost, IndexIsAPortIdOf16Bits) {
  fake::platform().next_sends = {entry(kPort1, 7)};
  EXPECT_EQ(header({65536 + 129}, 1), 0);
  EXPECT_THAT(answered_, ElementsAre(1, 3, 9, 129));
}

TEST_F(LongPathCost, GetOfAPortWithoutAnEntryFails) {
  fake::platform().next_sends = {{19}};
  EXPECT_EQ(header({129}, 1), -1);
  EXPECT_THAT(requests(), ElementsAre("1 0x0C020105, 0100001a)"));
  EXPECT_EQ(fake::taken_trace().back(), kFailure);
}

TEST_F(LongPathCost, GetNextOfTheBareColumnIsTheFirstPort) {
  fake::platform().next_sends = {entry(kPort1, 7)};
  EXPECT_EQ(header({}, 0), 0);
  EXPECT_THAT(answered_, ElementsAre(1, 3, 9, 129));
  EXPECT_THAT(requests(), ElementsAre("1 0x0C020105, 0100001a)"));
}

TEST_F(LongPathCost, GetNextOfAPortWithoutAnEntryIsTheEntryBehindIt) {
  fake::platform().next_sends = {{19}, entry(kPort2, 8)};
  EXPECT_EQ(header({}, 0), 0);
  EXPECT_EQ(row_.value, 8U);
  EXPECT_THAT(answered_, ElementsAre(1, 3, 9, 130));
  EXPECT_THAT(requests(), ElementsAre("1 0x0C020105, 0100001a)", "3 0x0C020105, 0100001a)"));
}

TEST_F(LongPathCost, GetNextPastTheLastPhysicalPortAnswersPortChannel1) {
  fake::platform().next_sends = {{19}, {19}, entry(kChannel1, 9)};
  EXPECT_EQ(header({129}, 0), 0);
  EXPECT_EQ(row_.value, 9U);
  EXPECT_THAT(answered_, ElementsAre(1, 3, 9, 4097));
  EXPECT_THAT(requests(),
              ElementsAre("1 0x0C020105, 0200001a)", "3 0x0C020105, 0200001a)", "3 0x0C020105, 01000016)"));
  EXPECT_THAT(fake::taken_trace(), Contains("if_index_eth_port_channel_init(1)"));
}

TEST_F(LongPathCost, GetNextWithoutAnyPortChannelFails) {
  fake::platform().next_sends = {{19}, {19}, {19}};
  EXPECT_EQ(header({129}, 0), -1);
  EXPECT_EQ(fake::taken_trace().back(), kFailure);
}

TEST_F(LongPathCost, GetNextBehindTheLastPortChannelFails) {
  fake::platform().next_sends = {{19}, {19}};
  EXPECT_EQ(header({4097}, 0), -1);
  EXPECT_THAT(requests(), ElementsAre("1 0x0C020105, 02000016)", "3 0x0C020105, 02000016)"));
  const Trace trace = fake::taken_trace();
  EXPECT_EQ(trace.back(), kFailure);
  EXPECT_THAT(trace, Not(Contains("if_index_eth_port_channel_init(1)")));
}

TEST_F(LongPathCost, GetNextOfAPortChannelAcceptsPortChannelsOnly) {
  fake::platform().next_sends = {{19}, entry(kPort1, 9)};
  EXPECT_EQ(header({4097}, 0), -1);
  const Trace trace = fake::taken_trace();
  ASSERT_GE(trace.size(), 3U);
  EXPECT_THAT(Trace(trace.end() - 3, trace.end()),
              ElementsAre("if_index_get_type(0x1A000001)",
                          logged("\\nget_stp_entry_from_port_id(LINE) No more channel port found.\\n"),
                          "cmd_snmp_free_rx_hndl"));
}

TEST_F(LongPathCost, AnswerBehindThePhysicalPortsMustBeAPortChannel) {
  fake::platform().next_sends = {{19}, {19}, entry(kPort1, 9)};
  EXPECT_EQ(header({129}, 0), -1);
  const Trace trace = fake::taken_trace();
  ASSERT_GE(trace.size(), 3U);
  EXPECT_THAT(Trace(trace.end() - 3, trace.end()),
              ElementsAre("if_index_get_type(0x1A000001)",
                          logged("\\nget_stp_entry_from_port_id(LINE) No more channel port found.\\n"),
                          "cmd_snmp_free_rx_hndl"));
}

TEST_F(LongPathCost, AnswerOfAnInterfaceThatIsNoPortFails) {
  fake::platform().next_sends = {entry(0x1A000077, 9)};
  EXPECT_EQ(header({129}, 1), -1);
  const Trace trace = fake::taken_trace();
  ASSERT_GE(trace.size(), 2U);
  EXPECT_EQ(trace[trace.size() - 2], "cmd_snmp_free_rx_hndl");
  EXPECT_EQ(trace.back(), kFailure);
}

TEST_F(LongPathCost, MissingPathCostIsServedAsZero) {
  fake::platform().next_sends = {{0, true, fake::Attributes{{protocol::kInterface, fake::number(kPort1)}}}};
  EXPECT_EQ(header({129}, 1), 0);
  EXPECT_EQ(row_.index, 129U);
  EXPECT_EQ(row_.value, 0U);
  EXPECT_THAT(answered_, ElementsAre(1, 3, 9, 129));
  const Trace trace = fake::taken_trace();
  ASSERT_GE(trace.size(), 2U);
  EXPECT_EQ(trace[trace.size() - 2], logged("parse_reply_stpxLongStpPortPathCostTable failed\\n"));
  EXPECT_EQ(trace.back(), "cmd_snmp_free_rx_hndl");
}

// Counting ends at the end of a range, and never steps from the physical ports to the port-channels.
TEST_F(LongPathCost, GetNextBehindTheLastPortOfARangeFailsWithoutAQuery) {
  for (const oid last : {130U, 4095U, 4098U, 8191U}) {
    EXPECT_EQ(header({last}, 0), -1);
    EXPECT_THAT(requests(), IsEmpty());
    const Trace trace = fake::taken_trace();
    EXPECT_EQ(trace.back(), kFailure);
    EXPECT_THAT(trace, Not(Contains("if_index_eth_port_channel_init(1)")));
  }
}

TEST_F(LongPathCost, GetNextOf4096IsTheFirstPortChannel) {
  fake::platform().next_sends = {entry(kChannel1, 9)};
  EXPECT_EQ(header({4096}, 0), 0);
  EXPECT_THAT(answered_, ElementsAre(1, 3, 9, 4097));
}

}  // namespace
