// Root guard config table: what it asks, what it answers, and each way to fail.
#include "fake_platform.h"
#include "ledger.h"
#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "table_test.h"

namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

constexpr uint8_t kPort = 62;
constexpr uint8_t kSetting = 63;

constexpr char kInterfaceKey[] = "0x0C020105";
constexpr uint32_t kAnsweredInterface = 0x0C02A001;
constexpr uint32_t kSettingToken = 0x0202A01A;

class RootGuard : public TableTest {
 protected:
  RootGuard() : TableTest(get_stpxRootGuardConfigTable) {}

  void SetUp() override {
    TableTest::SetUp();
    reply_holds(kAnsweredInterface, 7);
    reply_holds(kSettingToken, 2);
  }
};

TEST_F(RootGuard, GetAsksForExactlyThatPort) {
  EXPECT_EQ(number(get(kSetting, {7})), 2);
  EXPECT_EQ(answered(), ".1.5.1.1.2.7");
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(Trace{logged("exact 1 *length 15 vp_namelen 14\\n")} +
                                                    sent(117, 1, kInterfaceKey, bytes({7})) +
                                                    Trace{"free(16000)", "cmd_rsp_attr_get(0x0C02A001)",
                                                          "cmd_rsp_attr_get(0x0202A01A)",
                                                          logged("value 2\\n"), "cmd_snmp_free_rx_hndl"}));
}

TEST_F(RootGuard, GetNextOfTheBareColumnSendsIndexZeroAndAnswersTheFirstRow) {
  EXPECT_EQ(number(get_next(kSetting, {})), 2);
  EXPECT_EQ(answered(), ".1.5.1.1.2.7");
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(Trace{logged("exact 0 *length 14 vp_namelen 14\\n")} +
                                                    sent(117, 3, kInterfaceKey, bytes({0})) +
                                                    Trace{"free(16000)", "cmd_rsp_attr_get(0x0C02A001)",
                                                          "cmd_rsp_attr_get(0x0202A01A)",
                                                          logged("value 2\\n"), "cmd_snmp_free_rx_hndl"}));
}

TEST_F(RootGuard, GetNextLeavesTheNextRowToTheSpanningTreeProcess) {
  reply_holds(kAnsweredInterface, 0x1A000005);
  EXPECT_EQ(number(get_next(kSetting, {0x16000001})), 2);
  EXPECT_EQ(answered(), ".1.5.1.1.2.436207621");
  EXPECT_THAT(fake::taken_trace(),
              ::testing::Contains("cmd_req_attr_add(request, 0x0C020105, " + bytes({0x16000001}) + ")"));
}

TEST_F(RootGuard, GetWithTwoIndexArcsFailsWithoutAQuery) {
  EXPECT_EQ(get(kSetting, {7, 1}), std::nullopt);
  EXPECT_EQ(answered(), ".1.5.1.1.2.7.1");
  EXPECT_THAT(fake::taken_trace(), ElementsAre(logged("exact 1 *length 16 vp_namelen 14\\n")));
}

TEST_F(RootGuard, GetNextIgnoresArcsBehindTheIndex) {
  EXPECT_NE(get_next(kSetting, {5, 1, 2, 3}), std::nullopt);
  EXPECT_EQ(answered(), ".1.5.1.1.2.7");
  EXPECT_THAT(fake::taken_trace(),
              ::testing::Contains("cmd_req_attr_add(request, 0x0C020105, " + bytes({5}) + ")"));
}

TEST_F(RootGuard, GetOfTheBareColumnGoesOnWithIndexZero) {
  EXPECT_EQ(number(get(kSetting, {})), 2);
  EXPECT_THAT(fake::taken_trace(),
              ::testing::Contains("cmd_req_attr_add(request, 0x0C020105, " + bytes({0}) + ")"));
}

TEST_F(RootGuard, RequestsOutsideTheColumnSendIndexZero) {
  for (const std::vector<oid> &request :
       {std::vector<oid>{1, 5, 1, 1, 1, 9}, {1, 5, 1, 1, 1, 9, 9}, {1, 5}, {}, {1, 5, 1, 1, 3, 9}}) {
    EXPECT_NE(ask_below_root(kSetting, request, 0), std::nullopt);
    EXPECT_EQ(answered(), ".1.5.1.1.2.7");
    EXPECT_THAT(fake::taken_trace(),
                ::testing::Contains("cmd_req_attr_add(request, 0x0C020105, " + bytes({0}) + ")"));
  }
}

TEST_F(RootGuard, GetOfTheIndexColumnQueriesAndReturnsNoValue) {
  EXPECT_EQ(get(kPort, {7}), std::nullopt);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(Trace{logged("exact 1 *length 15 vp_namelen 14\\n")} +
                       sent(117, 1, kInterfaceKey, bytes({7})) +
                       Trace{"free(16000)", "cmd_rsp_attr_get(0x0C02A001)", "cmd_rsp_attr_get(0x0202A01A)",
                             logged("value 2\\n"), "cmd_snmp_free_rx_hndl", "snmp_set_detail(\"\")"}));
}

TEST_F(RootGuard, ReplyWithoutTheIndexAnswersWithTheIndexSent) {
  reply_lacks(kAnsweredInterface);
  EXPECT_EQ(number(get_next(kSetting, {11})), 2);
  EXPECT_EQ(answered(), ".1.5.1.1.2.11");
}

TEST_F(RootGuard, ReplyWithoutTheValueYieldsNoInstanceWhateverItsIndex) {
  reply_lacks(kSettingToken);
  EXPECT_EQ(get(kSetting, {7}), std::nullopt);
  EXPECT_EQ(answered(), ".1.5.1.1.2.7");
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(
          Trace{logged("exact 1 *length 15 vp_namelen 14\\n")} + sent(117, 1, kInterfaceKey, bytes({7})) +
          Trace{"free(16000)", "cmd_rsp_attr_get(0x0C02A001)", "cmd_rsp_attr_get(0x0202A01A)",
                "cmd_snmp_free_rx_hndl", logged("parse_reply_stpxRootGuardConfigTable failed\\n")}));
}

TEST_F(RootGuard, AllocationFailure) {
  ledger::fail_next_malloc();
  EXPECT_EQ(get(kSetting, {7}), std::nullopt);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre(logged("exact 1 *length 15 vp_namelen 14\\n"), "malloc(16000)",
                          logged("header_stpxRootGuardConfigTable(LINE) malloc failed \\n")));
}

TEST_F(RootGuard, SendFailure) {
  fake::platform().send_result = 5;
  EXPECT_EQ(get_next(kSetting, {7}), std::nullopt);
  EXPECT_EQ(answered(), ".1.5.1.1.2.7");
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(
          Trace{logged("exact 0 *length 15 vp_namelen 14\\n")} + sent(117, 3, kInterfaceKey, bytes({7})) +
          Trace{logged("header_stpxRootGuardConfigTable(LINE) cmd_req_snmp_send_recv() failed\\n"),
                "free(16000)"}));
}

TEST_F(RootGuard, EmptyReply) {
  fake::platform().answers_without_reply = true;
  EXPECT_EQ(get(kSetting, {7}), std::nullopt);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(Trace{logged("exact 1 *length 15 vp_namelen 14\\n")} +
                       sent(117, 1, kInterfaceKey, bytes({7})) +
                       Trace{"free(16000)", logged("parse_reply_stpxRootGuardConfigTable failed\\n")}));
}

TEST_F(RootGuard, ValueIsServedUnchanged) {
  for (const int32_t value : {0, 1, 3, 2147483647, -1}) {
    reply_holds(kSettingToken, static_cast<uint32_t>(value));
    EXPECT_EQ(number(get(kSetting, {7})), value);
    EXPECT_THAT(fake::taken_trace(), ::testing::Contains(logged("value " + std::to_string(value) + "\\n")));
  }
}

TEST_F(RootGuard, HeaderRoutineReturnsTheCodeOfTheFailure) {
  const oid column[] = {1, 3, 9};
  oid name[MAX_OID_LEN] = {1, 3, 9, 4};
  size_t length = 4;
  RootGuardConfigRow row{99, 99};
  reply_lacks(kSettingToken);
  fake::platform().missing_attribute_result = 1234;
  EXPECT_EQ(header_stpxRootGuardConfigTable(column, 3, name, &length, 1, &row), 1234);
  fake::platform().send_result = 5;
  EXPECT_EQ(header_stpxRootGuardConfigTable(column, 3, name, &length, 1, &row), -1);
  EXPECT_EQ(row.index, 4U);
  EXPECT_EQ(row.value, 0) << "the row was cleared";
  EXPECT_EQ(length, 4U);
}

TEST_F(RootGuard, HeaderRoutineRefusesTooManyArcs) {
  const oid column[] = {1, 3, 9};
  oid name[MAX_OID_LEN] = {1, 3, 9, 4, 5};
  size_t length = 5;
  RootGuardConfigRow row{99, 99};
  EXPECT_EQ(header_stpxRootGuardConfigTable(column, 3, name, &length, 1, &row), -1);
  EXPECT_EQ(length, 5U);
  EXPECT_EQ(row.index, 0U) << "the row was cleared";
}

}  // namespace
