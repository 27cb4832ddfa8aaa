// PVST VLAN table: what it asks, what it answers, and each way to fail.
#include "fake_platform.h"
#include "ledger.h"
#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "table_test.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

constexpr uint8_t kVlan = 99;
constexpr uint8_t kState = 100;

constexpr char kVlanKey[] = "0x130200B4";
constexpr uint32_t kMode = 0x0202B001;
constexpr uint32_t kAnsweredVlan = 0x14029001;
constexpr uint32_t kStateToken = 4140;

const std::string kParseFailure = logged("parse_reply_stpxPVSTVlanTable failed\\n");

// A list of one range, preceded by a word that says nothing.
std::string vlan_range(uint32_t vlan) { return bytes({0, 1, vlan, vlan}); }

class PvstVlan : public TableTest {
 protected:
  PvstVlan() : TableTest(get_stpxPVSTVlanTable) {}

  void SetUp() override {
    TableTest::SetUp();
    reply_holds(kMode, 5);
    reply_holds(kAnsweredVlan, 20);
    reply_holds(kStateToken, 1);
  }

  // The trace of a GET of VLAN 20, up to the reply.
  static Trace asked() {
    return Trace{logged("exact 1 *length 15 vp_namelen 14\\n")} + sent(115, 1, kVlanKey, vlan_range(20)) +
           Trace{"free(16000)"};
  }
};

TEST_F(PvstVlan, GetAsksForExactlyThatVlan) {
  EXPECT_EQ(number(get(kState, {20})), 1);
  EXPECT_EQ(answered(), ".1.2.2.1.2.20");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(asked() + Trace{"cmd_rsp_attr_get(0x0202B001)", "cmd_rsp_attr_get(0x14029001)",
                                               "cmd_rsp_attr_get(0x0000102C)", logged("value 1\\n"),
                                               "cmd_snmp_free_rx_hndl"}));
}

TEST_F(PvstVlan, GetNextOfTheBareColumnSendsTheRangeZeroAndAnswersTheFirstVlan) {
  EXPECT_EQ(number(get_next(kState, {})), 1);
  EXPECT_EQ(answered(), ".1.2.2.1.2.20");
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(Trace{logged("exact 0 *length 14 vp_namelen 14\\n")} +
                       sent(115, 3, kVlanKey, vlan_range(0)) +
                       Trace{"free(16000)", "cmd_rsp_attr_get(0x0202B001)", "cmd_rsp_attr_get(0x14029001)",
                             "cmd_rsp_attr_get(0x0000102C)", logged("value 1\\n"), "cmd_snmp_free_rx_hndl"}));
}

TEST_F(PvstVlan, StateOneIsTrueAndEveryOtherStateIsFalse) {
  reply_holds(kStateToken, 1);
  EXPECT_EQ(number(get(kState, {20})), 1);
  for (const uint32_t state : {0U, 2U, 3U, 257U, 0xFFFFFFFFU}) {
    reply_holds(kStateToken, state);
    EXPECT_EQ(number(get(kState, {20})), 2) << state;
  }
  EXPECT_THAT(fake::taken_trace(), Contains(logged("value -1\\n")));
}

TEST_F(PvstVlan, InMstModeEveryGetAndGetNextYieldsNoInstance) {
  reply_holds(kMode, 4);
  EXPECT_EQ(get(kState, {20}), std::nullopt);
  EXPECT_EQ(answered(), ".1.2.2.1.2.20");
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(asked() +
                       Trace{"cmd_rsp_attr_get(0x0202B001)",
                             logged("parse_reply_stpxPVSTVlanTable(LINE) STP mode is MST. Not Supported.\\n"),
                             "cmd_snmp_free_rx_hndl", kParseFailure}));
  EXPECT_EQ(get_next(kState, {}), std::nullopt);
  EXPECT_EQ(answered(), ".1.2.2.1.2");
  EXPECT_EQ(get_next(kState, {20}), std::nullopt);
}

TEST_F(PvstVlan, AnyModeButMstIsServed) {
  for (const uint32_t mode : {0U, 1U, 3U, 5U, 6U}) {
    reply_holds(kMode, mode);
    EXPECT_EQ(number(get(kState, {20})), 1) << mode;
  }
}

TEST_F(PvstVlan, ReplyWithoutTheMode) {
  reply_lacks(kMode);
  EXPECT_EQ(get(kState, {20}), std::nullopt);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(asked() +
                               Trace{"cmd_rsp_attr_get(0x0202B001)",
                                     logged("parse_reply_stpxPVSTVlanTable(LINE) cmd_rsp_attr_get failed for "
                                            "STP_GBL_MODE\\n"),
                                     "cmd_snmp_free_rx_hndl", kParseFailure}));
}

TEST_F(PvstVlan, ReplyWithoutTheVlanAnswersWithTheVlanSent) {
  reply_lacks(kAnsweredVlan);
  EXPECT_EQ(number(get_next(kState, {33})), 1);
  EXPECT_EQ(answered(), ".1.2.2.1.2.33");
}

TEST_F(PvstVlan, ReplyWithoutTheState) {
  reply_lacks(kStateToken);
  EXPECT_EQ(get(kState, {20}), std::nullopt);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(asked() + Trace{"cmd_rsp_attr_get(0x0202B001)", "cmd_rsp_attr_get(0x14029001)",
                                               "cmd_rsp_attr_get(0x0000102C)", "cmd_snmp_free_rx_hndl",
                                               kParseFailure}));
}

TEST_F(PvstVlan, EmptyReply) {
  fake::platform().answers_without_reply = true;
  EXPECT_EQ(get(kState, {20}), std::nullopt);
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(asked() + Trace{kParseFailure}));
}

TEST_F(PvstVlan, AllocationFailure) {
  ledger::fail_next_malloc();
  EXPECT_EQ(get(kState, {20}), std::nullopt);
  EXPECT_THAT(fake::taken_trace(), ElementsAre(logged("exact 1 *length 15 vp_namelen 14\\n"), "malloc(16000)",
                                               logged("header_stpxPVSTVlanTable(LINE) malloc failed \\n")));
}

TEST_F(PvstVlan, SendFailure) {
  fake::platform().send_result = 5;
  EXPECT_EQ(get(kState, {20}), std::nullopt);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(
          Trace{logged("exact 1 *length 15 vp_namelen 14\\n")} + sent(115, 1, kVlanKey, vlan_range(20)) +
          Trace{logged("header_stpxPVSTVlanTable(LINE) cmd_req_snmp_send_recv() failed\\n"), "free(16000)"}));
}

TEST_F(PvstVlan, GetWithTwoIndexArcsFailsWithoutAQuery) {
  EXPECT_EQ(get(kState, {20, 0}), std::nullopt);
  EXPECT_THAT(fake::taken_trace(), ElementsAre(logged("exact 1 *length 16 vp_namelen 14\\n")));
}

TEST_F(PvstVlan, IndexColumnQueriesAndReturnsNoValue) {
  EXPECT_EQ(get(kVlan, {20}), std::nullopt);
  EXPECT_THAT(fake::taken_trace().back(), "snmp_set_detail(\"\")");
}

TEST_F(PvstVlan, HeaderRoutineReturnsTheCodeOfTheFailure) {
  const oid column[] = {1, 3, 9};
  oid name[MAX_OID_LEN] = {1, 3, 9, 4};
  size_t length = 4;
  PvstVlanRow row{99, 99};
  reply_lacks(kStateToken);
  fake::platform().missing_attribute_result = 1234;
  EXPECT_EQ(header_stpxPVSTVlanTable(column, 3, name, &length, 1, &row), 1234);
  reply_lacks(kMode);
  EXPECT_EQ(header_stpxPVSTVlanTable(column, 3, name, &length, 1, &row), -1);
  EXPECT_EQ(row.value, 0) << "the row was cleared";
}

TEST_F(PvstVlan, HeaderRoutineRefusesTooManyArcs) {
  const oid column[] = {1, 3, 9};
  oid name[MAX_OID_LEN] = {1, 3, 9, 4, 5};
  size_t length = 5;
  PvstVlanRow row{99, 99};
  EXPECT_EQ(header_stpxPVSTVlanTable(column, 3, name, &length, 1, &row), -1);
  EXPECT_EQ(length, 5U);
  EXPECT_EQ(row.index, 0U) << "the row was cleared";
}

}  // namespace
