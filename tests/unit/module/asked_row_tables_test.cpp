// Tables whose rows, and their order, are the spanning-tree process's own: the whole trace of the path, and
// what is particular to each.
#include "fake_platform.h"
#include "protocol_numbers.h"
#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "table_test.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAreArray;

// Root guard: the whole trace of the path.

constexpr uint8_t kRootGuardSetting = 63;

constexpr char kInterfaceKey[] = "0x0C020105";

class RootGuard : public TableTest {
 protected:
  RootGuard() : TableTest(get_stpxRootGuardConfigTable) {}

  void SetUp() override {
    TableTest::SetUp();
    reply_holds(protocol::kInterface, 7);
    reply_holds(protocol::kGuard, 2);
  }
};

TEST_F(RootGuard, GetAsksForExactlyThatPort) {
  EXPECT_EQ(number(get(kRootGuardSetting, {7})), 2);
  EXPECT_EQ(answered(), ".1.5.1.1.2.7");
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(Trace{logged("exact 1 *length 15 vp_namelen 14\\n")} +
                                                    sent(117, 1, kInterfaceKey, bytes({7})) +
                                                    Trace{"free(16000)", "cmd_rsp_attr_get(0x0C02A001)",
                                                          "cmd_rsp_attr_get(0x0202A01A)",
                                                          logged("value 2\\n"), "cmd_snmp_free_rx_hndl"}));
}

TEST_F(RootGuard, GetNextOfTheBareColumnSendsIndexZeroAndAnswersTheFirstRow) {
  EXPECT_EQ(number(get_next(kRootGuardSetting, {})), 2);
  EXPECT_EQ(answered(), ".1.5.1.1.2.7");
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(Trace{logged("exact 0 *length 14 vp_namelen 14\\n")} +
                                                    sent(117, 3, kInterfaceKey, bytes({0})) +
                                                    Trace{"free(16000)", "cmd_rsp_attr_get(0x0C02A001)",
                                                          "cmd_rsp_attr_get(0x0202A01A)",
                                                          logged("value 2\\n"), "cmd_snmp_free_rx_hndl"}));
}

TEST_F(RootGuard, GetOfTheBareColumnGoesOnWithIndexZero) {
  EXPECT_EQ(number(get(kRootGuardSetting, {})), 2);
  EXPECT_THAT(fake::taken_trace(), Contains("cmd_req_attr_add(request, 0x0C020105, " + bytes({0}) + ")"));
}

TEST_F(RootGuard, ReplyWithoutTheIndexAnswersWithTheIndexSent) {
  reply_lacks(protocol::kInterface);
  EXPECT_EQ(number(get_next(kRootGuardSetting, {11})), 2);
  EXPECT_EQ(answered(), ".1.5.1.1.2.11");
}

TEST_F(RootGuard, SettingIsLoggedAsASignedNumber) {
  reply_holds(protocol::kGuard, 0xFFFFFFFF);
  EXPECT_EQ(number(get(kRootGuardSetting, {7})), -1);
  EXPECT_THAT(fake::taken_trace(), Contains(logged("value -1\\n")));
}

// PVST: the state of a VLAN, and the mode that every reply tells.

constexpr uint8_t kState = 100;

constexpr char kVlanKey[] = "0x130200B4";

const std::string kParseFailure = logged("parse_reply_stpxPVSTVlanTable failed\\n");

// A list of one range, preceded by a word that says nothing.
std::string vlan_range(uint32_t vlan) { return bytes({0, 1, vlan, vlan}); }

class PvstVlan : public TableTest {
 protected:
  PvstVlan() : TableTest(get_stpxPVSTVlanTable) {}

  void SetUp() override {
    TableTest::SetUp();
    reply_holds(protocol::kMode, 5);
    reply_holds(protocol::kTree, 20);
    reply_holds(protocol::kVlanTreeState, 1);
  }

  // The trace of a GET of VLAN 20, up to the reply.
  static Trace asked() {
    return Trace{logged("exact 1 *length 15 vp_namelen 14\\n")} + sent(115, 1, kVlanKey, vlan_range(20)) +
           Trace{"free(16000)"};
  }
};

TEST_F(PvstVlan, BareColumnSendsTheRangeZero) {
  for (const int exact : {0, 1}) {
    EXPECT_NE(ask_below_root(kState, {1, 2, 2, 1, 2}, exact), std::nullopt);
    EXPECT_THAT(fake::taken_trace(),
                Contains("cmd_req_attr_add(request, 0x130200B4, " + vlan_range(0) + ")"));
  }
}

TEST_F(PvstVlan, StateOneIsTrueAndEveryOtherStateIsFalse) {
  reply_holds(protocol::kVlanTreeState, 1);
  EXPECT_EQ(number(get(kState, {20})), 1);
  for (const uint32_t state : {0U, 2U, 3U, 257U, 0xFFFFFFFFU}) {
    reply_holds(protocol::kVlanTreeState, state);
    EXPECT_EQ(number(get(kState, {20})), 2) << state;
  }
  EXPECT_THAT(fake::taken_trace(), Contains(logged("value -1\\n")));
}

TEST_F(PvstVlan, InMstModeEveryGetAndGetNextYieldsNoInstance) {
  reply_holds(protocol::kMode, 4);
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
    reply_holds(protocol::kMode, mode);
    EXPECT_EQ(number(get(kState, {20})), 1) << mode;
  }
}

TEST_F(PvstVlan, ReplyWithoutTheMode) {
  reply_lacks(protocol::kMode);
  EXPECT_EQ(get(kState, {20}), std::nullopt);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(asked() +
                               Trace{"cmd_rsp_attr_get(0x0202B001)",
                                     logged("parse_reply_stpxPVSTVlanTable(LINE) cmd_rsp_attr_get failed for "
                                            "STP_GBL_MODE\\n"),
                                     "cmd_snmp_free_rx_hndl", kParseFailure}));
  const oid column[] = {1, 3, 9};
  oid name[MAX_OID_LEN] = {1, 3, 9, 20};
  size_t length = 4;
  PvstVlanRow row{99, 99};
  EXPECT_EQ(header_stpxPVSTVlanTable(column, 3, name, &length, 1, &row), -1) << "and not the process's code";
  EXPECT_EQ(row.value, 0) << "the row was cleared";
}

TEST_F(PvstVlan, ReplyWithoutTheVlanAnswersWithTheVlanSent) {
  reply_lacks(protocol::kTree);
  EXPECT_EQ(number(get_next(kState, {33})), 1);
  EXPECT_EQ(answered(), ".1.2.2.1.2.33");
}

}  // namespace
