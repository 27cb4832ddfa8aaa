// MST instance table: the query of each column group, what it answers, and each way to fail.
#include <cstring>

#include "fake_platform.h"
#include "ledger.h"
#include "protocol_numbers.h"
#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "table_test.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;

constexpr uint8_t kInstance = 101;
constexpr uint8_t kVlansLow = 102;
constexpr uint8_t kVlansHigh = 103;
constexpr uint8_t kValue = 104;
constexpr uint8_t kBridgeId = 105;
constexpr uint8_t kCounter = 106;

constexpr char kInstanceKey[] = "0x13020131";

const std::string kParseFailure = logged("parse_reply_stpxSMSTInstanceTable failed\\n");

std::string in_header(const std::string &text) { return logged("header_stpxSMSTInstanceTable(LINE)" + text); }

std::string in_handler(const std::string &text) { return logged("get_stpxSMSTInstanceTable(LINE)" + text); }

// One reading of the spanning-tree type.
Trace type_read(uint32_t type) {
  return sent(104, 1, "0x01020227", "00000000") + Trace{"free(16000)", "cmd_rsp_attr_get(0x0202B001)",
                                                        logged("value " + std::to_string(type) + "\\n"),
                                                        "cmd_snmp_free_rx_hndl"};
}

// Everything before a column's own query: the handler reads the type, then the header routine again.
Trace entered(int exact, int length, const std::string &instance, uint32_t type = 4) {
  const std::string returns = " get_stpxSpanningTreeType() returns " + std::to_string(type) + " \\n";
  return type_read(type) +
         Trace{in_handler(returns),
               logged("exact " + std::to_string(exact) + " *length " + std::to_string(length) +
                      " vp_namelen 14\\n"),
               in_header(" instance index:" + instance + "\\n")} +
         type_read(type) + Trace{in_header(returns)};
}

class SmstInstance : public TableTest {
 protected:
  SmstInstance() : TableTest(get_stpxSMSTInstanceTable) {}

  void SetUp() override {
    TableTest::SetUp();
    reply_holds(protocol::kMode, 4);
    reply_holds(protocol::kTree, 0);
    reply_holds(protocol::kHops, 19);
    fake::platform().attributes[protocol::kRegionalRootMac] = fake::octets("\x02\x11\x22\x33\x44\x55");
    reply_holds(protocol::kRegionalRootPriority, 0x6123);
    reply_holds(protocol::kInternalRootPathCost, 2000);
    fake::platform().mst_vlans.instance = 0;
    fake::platform().mst_vlans.vlans = {1, 8, 9, 10, 2049};
  }

  static int header(int magic, SmstInstanceRow *row) {
    const oid column[] = {1, 3, 9};
    oid name[MAX_OID_LEN] = {1, 3, 9, 5};
    size_t length = 4;
    return header_stpxSMSTInstanceTable(column, 3, name, &length, 1, row, magic);
  }
};

// The VLAN columns.

TEST_F(SmstInstance, GetNextOfTheBareVlanColumnGetsInstanceZeroExactly) {
  EXPECT_EQ(get_next(kVlansLow, {}), std::string("\x40\xE0", 2));
  EXPECT_EQ(answered(), ".1.14.5.1.2.0");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(entered(0, 14, "0") + sent(112, 1) +
                               Trace{"free(16000)", "stp_get_mst_vlan_bmp(1, 0, empty 512)",
                                     in_header(" mstid:0, size:512 \\n"),
                                     in_header(":mst_id=0: size=512, vlan_bmp2=1,8-10,2049"),
                                     "cmd_snmp_free_rx_hndl", "dot1d_stringNonZeroLength(256)"}));
}

TEST_F(SmstInstance, GetNextOfAVlanColumnFollowsAPresentIndex) {
  fake::platform().mst_vlans.instance = 7;
  EXPECT_EQ(get_next(kVlansHigh, {3}), std::string("\x40", 1));
  EXPECT_EQ(answered(), ".1.14.5.1.3.7");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(entered(0, 15, "3") + sent(112, 1) +
                               Trace{"free(16000)", "stp_get_mst_vlan_bmp(3, 3, empty 512)",
                                     in_header(" mstid:7, size:512 \\n"),
                                     in_header(":mst_id=7: size=512, vlan_bmp2=1,8-10,2049"),
                                     "cmd_snmp_free_rx_hndl", "dot1d_stringNonZeroLength(256)"}));
}

TEST_F(SmstInstance, IndexOf4294967295IsNoIndex) {
  EXPECT_NE(get_next(kVlansLow, {4294967295}), std::nullopt);
  EXPECT_EQ(answered(), ".1.14.5.1.2.0");
  EXPECT_THAT(fake::taken_trace(), Contains("stp_get_mst_vlan_bmp(1, 0, empty 512)"));
  EXPECT_EQ(number(get_next(kValue, {4294967295})), 19);
  EXPECT_EQ(answered(), ".1.14.5.1.4.0");
  EXPECT_THAT(fake::taken_trace(),
              Contains("cmd_req_attr_add(request, 0x13020131, " + bytes({0, 1, 0, 0}) + ")"));
}

TEST_F(SmstInstance, InstanceAbove65535IsTruncatedTo16BitsBeforeTheBitmapLookup) {
  fake::platform().mst_vlans.instance.reset();
  EXPECT_NE(get(kVlansLow, {65536 + 5}), std::nullopt);
  EXPECT_EQ(answered(), ".1.14.5.1.2.5");
  const Trace trace = fake::taken_trace();
  EXPECT_THAT(trace, Contains(in_header(" instance index:65541\\n")));
  EXPECT_THAT(trace, Contains("stp_get_mst_vlan_bmp(1, 5, empty 512)"));
  EXPECT_NE(get(kVlansLow, {65535}), std::nullopt);
  EXPECT_EQ(answered(), ".1.14.5.1.2.65535");
}

TEST_F(SmstInstance, HalfWithoutAVlanIsServedEmpty) {
  fake::platform().mst_vlans.vlans = {2048};
  EXPECT_EQ(get(kVlansLow, {0}), "");
  EXPECT_EQ(get(kVlansHigh, {0}), std::string("\x80", 1));
  fake::platform().mst_vlans.vlans = {};
  EXPECT_EQ(get(kVlansLow, {0}), "");
  EXPECT_EQ(get(kVlansHigh, {0}), "");
}

TEST_F(SmstInstance, HalfIsServedUpToTheOctetOfItsLastVlan) {
  for (const uint32_t octet : {0U, 1U, 100U, 254U, 255U}) {
    fake::platform().mst_vlans.vlans = {8 * octet + 3, 2048 + 8 * octet + 7};
    const std::string zeros(octet, '\0');
    EXPECT_EQ(get(kVlansLow, {0}), zeros + '\x10') << octet;
    EXPECT_EQ(get(kVlansHigh, {0}), zeros + '\x01') << octet;
  }
}

TEST_F(SmstInstance, BitmapLookupThatFailsYieldsNoInstanceOfTheRewrittenOid) {
  fake::platform().mst_vlans = {19, 12, {}, {}};
  EXPECT_EQ(get_next(kVlansLow, {9}), std::nullopt);
  EXPECT_EQ(answered(), ".1.14.5.1.2.12");
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(entered(0, 15, "9") + sent(112, 1) +
                       Trace{"free(16000)", "stp_get_mst_vlan_bmp(3, 9, empty 512)",
                             in_header(" mstid:12, size:512 \\n"),
                             in_header(":mst_id=12: size=512, vlan_bmp2="), "cmd_snmp_free_rx_hndl"}));
}

TEST_F(SmstInstance, HeaderRoutineReturnsWhatTheBitmapLookupReturns) {
  fake::platform().mst_vlans.result = 19;
  SmstInstanceRow row;
  EXPECT_EQ(header(kVlansLow, &row), 19);
}

TEST_F(SmstInstance, BitmapOfAnotherSizeFailsAndKeepsTheReply) {
  fake::platform().mst_vlans.size = 256;
  EXPECT_EQ(get(kVlansLow, {3}), std::nullopt);
  EXPECT_EQ(answered(), ".1.14.5.1.2.3");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(entered(1, 15, "3") + sent(112, 1) +
                               Trace{"free(16000)", "stp_get_mst_vlan_bmp(1, 3, empty 512)",
                                     in_header(" mstid:0, size:256 \\n"), in_header(" size 256\\n")}));
  expect_kept_replies(1);
}

TEST_F(SmstInstance, VlanColumnsHoldBothHalvesEachWithAZeroBehind) {
  fake::platform().mst_vlans.vlans = {0, 2047, 2048, 4095};
  SmstInstanceRow row;
  std::memset(&row, 0xFF, sizeof row);
  EXPECT_EQ(header(kVlansLow, &row), 0);
  EXPECT_EQ(row.vlans_mapped_low[0], 0x80);
  EXPECT_EQ(row.vlans_mapped_low[255], 0x01);
  EXPECT_EQ(row.vlans_mapped_low[256], 0);
  EXPECT_EQ(row.vlans_mapped_high[0], 0x80);
  EXPECT_EQ(row.vlans_mapped_high[255], 0x01);
  EXPECT_EQ(row.vlans_mapped_high[256], 0);
}

// The longest list is longer than a record of the history, which cuts it, and is printed whole.
TEST_F(SmstInstance, DebugVlanListIsBuiltWhole) {
  for (uint32_t vlan = 0; vlan < 4096; ++vlan) {
    if (vlan % 3 != 2) {
      fake::platform().mst_vlans.vlans.push_back(vlan);
    }
  }
  fake::platform().print_answers[101] = 1;
  fake::platform().history_answers[101] = 1;
  EXPECT_NE(get(kVlansLow, {0}), std::nullopt);
  std::string list;
  for (const std::string &line : fake::taken_trace()) {
    const size_t start = line.find("vlan_bmp2=");
    if (start != std::string::npos) {
      list = line.substr(start);
    }
  }
  EXPECT_GT(list.size(), 12000U);
  EXPECT_THAT(list, HasSubstr("vlan_bmp2=0-1,3-4,6-10,"));
  EXPECT_THAT(list, HasSubstr(",4092-4093,4095\""));
}

// The columns of MST mode.

TEST_F(SmstInstance, GetNextOfAnMstColumnStartsWithInstanceZeroExactlyAndThenFollows) {
  EXPECT_EQ(number(get_next(kValue, {})), 19);
  EXPECT_EQ(answered(), ".1.14.5.1.4.0");
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(entered(0, 14, "0") + sent(122, 1, kInstanceKey, bytes({0, 1, 0, 0})) +
                       Trace{"free(16000)", "cmd_rsp_attr_get(0x14029027)", "cmd_rsp_attr_get(0x0F029023)",
                             "cmd_rsp_attr_get(0x14029024)", "cmd_rsp_attr_get(0x14029025)",
                             "cmd_rsp_attr_get(0x14029001)", "cmd_snmp_free_rx_hndl"}));
  reply_holds(protocol::kTree, 4094);
  EXPECT_EQ(number(get_next(kValue, {0})), 19);
  EXPECT_EQ(answered(), ".1.14.5.1.4.4094");
  const Trace trace = fake::taken_trace();
  EXPECT_THAT(trace, Contains("cmd_req_action_set(request, 3)"));
}

TEST_F(SmstInstance, BridgeIdIsThePriorityHighOctetFirstThenTheMacAddress) {
  EXPECT_EQ(get(kBridgeId, {0}), std::string("\x61\x23\x02\x11\x22\x33\x44\x55"));
  EXPECT_EQ(answered(), ".1.14.5.1.5.0");
}

TEST_F(SmstInstance, CounterIsServedUnchanged) {
  EXPECT_EQ(number(get(kCounter, {0})), 2000);
  reply_holds(protocol::kInternalRootPathCost, 0xFFFFFFFF);
  EXPECT_EQ(number(get(kCounter, {0})), -1);
}

TEST_F(SmstInstance, BridgeIdAndCounterYieldNothingForAnyInstanceButZero) {
  for (const uint32_t instance : {1U, 2U, 4094U}) {
    reply_holds(protocol::kTree, instance);
    EXPECT_EQ(number(get(kValue, {instance})), 19);
    EXPECT_EQ(get(kBridgeId, {instance}), std::nullopt);
    EXPECT_EQ(get(kCounter, {instance}), std::nullopt);
  }
}

TEST_F(SmstInstance, OutsideMstModeMstColumnsYieldNothingAndVlanColumnsAreServed) {
  for (const uint32_t type : {0U, 3U, 5U}) {
    reply_holds(protocol::kMode, type);
    for (const uint8_t magic : {kValue, kBridgeId, kCounter}) {
      EXPECT_EQ(get(magic, {0}), std::nullopt);
      EXPECT_THAT(fake::taken_trace(), ElementsAreArray(entered(1, 15, "0", type))) << "no query of its own";
      EXPECT_EQ(get_next(magic, {}), std::nullopt);
      EXPECT_EQ(answered(), ".1.14.5.1." + std::to_string(magic - 100) + ".0");
      EXPECT_THAT(fake::taken_trace(), ElementsAreArray(entered(0, 14, "0", type)));
    }
    EXPECT_EQ(get(kVlansLow, {0}), std::string("\x40\xE0", 2));
    EXPECT_EQ(get(kVlansHigh, {0}), std::string("\x40", 1));
    fake::taken_trace();
  }
}

TEST_F(SmstInstance, EveryMstValueButTheInstanceIsOptional) {
  for (const uint32_t token : {protocol::kHops, protocol::kRegionalRootMac, protocol::kRegionalRootPriority,
                               protocol::kInternalRootPathCost}) {
    reply_lacks(token);
  }
  EXPECT_EQ(number(get(kValue, {0})), 0);
  EXPECT_EQ(get(kBridgeId, {0}), std::string(8, '\0'));
  EXPECT_EQ(number(get(kCounter, {0})), 0);
  reply_holds(protocol::kRegionalRootPriority, 0x8000);
  EXPECT_EQ(get(kBridgeId, {0}), std::string("\x80\0\0\0\0\0\0\0", 8));
}

TEST_F(SmstInstance, MacAddressWithoutAValueIsMissing) {
  fake::platform().attributes_without_value[protocol::kRegionalRootMac] = 0;
  EXPECT_EQ(get(kBridgeId, {0}), std::string("\x61\x23\0\0\0\0\0\0", 8));
}

// Both kinds of columns.

TEST_F(SmstInstance, IndexColumnFailsInTheHeaderRoutine) {
  EXPECT_EQ(get(kInstance, {0}), std::nullopt);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(entered(1, 15, "0") + Trace{in_header(": unknown magic\\n")}));
}

TEST_F(SmstInstance, HeaderRoutineRefusesMagicsBelowAndAboveItsColumns) {
  SmstInstanceRow row;
  for (const int magic : {0, 101, 107, 358, -154}) {
    EXPECT_EQ(header(magic, &row), -1) << magic;
    EXPECT_EQ(fake::taken_trace().back(), in_header(": unknown magic\\n"));
  }
}

TEST_F(SmstInstance, IndexOfATraceIsSigned) {
  EXPECT_NE(get_next(kValue, {4294967294}), std::nullopt);
  EXPECT_THAT(fake::taken_trace(), Contains(in_header(" instance index:-2\\n")));
}

TEST_F(SmstInstance, RowIsClearedForEachRequest) {
  for (const uint32_t token : {protocol::kHops, protocol::kRegionalRootMac, protocol::kRegionalRootPriority,
                               protocol::kInternalRootPathCost}) {
    reply_lacks(token);
  }
  SmstInstanceRow row;
  std::memset(&row, 0xFF, sizeof row);
  EXPECT_EQ(header(kValue, &row), 0);
  EXPECT_EQ(row.vlans_mapped_low[0], 0);
  EXPECT_EQ(row.vlans_mapped_high[256], 0);
  EXPECT_EQ(row.instance_value, 0);
  EXPECT_EQ(row.bridge_id[7], 0);
  EXPECT_EQ(row.counter_value, 0U);
}

// The header routine reads the type anew, and the handler goes by what it found.
TEST_F(SmstInstance, MstColumnYieldsNothingWhenTheModeChangesBetweenTheTwoReadings) {
  const auto type = [](uint32_t value) { return fake::Attributes{{protocol::kMode, fake::number(value)}}; };
  for (const uint8_t magic : {kValue, kBridgeId, kCounter}) {
    fake::platform().next_sends = {{0, true, type(4)}, {0, true, type(5)}};
    EXPECT_EQ(get(magic, {0}), std::nullopt);
  }
}

TEST_F(SmstInstance, PriorityWithoutAValueIsMissing) {
  fake::platform().attributes_without_value[protocol::kRegionalRootPriority] = 4;
  EXPECT_EQ(get(kBridgeId, {0}), std::string("\0\0\x02\x11\x22\x33\x44\x55", 8));
}

// The helper that splits a bitmap.

TEST(SmstInstanceVlansMapped, SplitsABitmap) {
  fake::reset();
  SmstInstanceRow row;
  std::memset(&row, 0xFF, sizeof row);
  stp_vlan_bmp vlans{512, {}};
  vlans.bits[0] = 0x40;
  vlans.bits[255] = 0x01;
  vlans.bits[256] = 0x80;
  vlans.bits[511] = 0x02;
  stp_bmp_to_SMSTInstanceVlansMapped(&row, &vlans);
  EXPECT_EQ(row.vlans_mapped_low[0], 0x40);
  EXPECT_EQ(row.vlans_mapped_low[1], 0);
  EXPECT_EQ(row.vlans_mapped_low[255], 0x01);
  EXPECT_EQ(row.vlans_mapped_low[256], 0);
  EXPECT_EQ(row.vlans_mapped_high[0], 0x80);
  EXPECT_EQ(row.vlans_mapped_high[255], 0x02);
  EXPECT_EQ(row.vlans_mapped_high[256], 0);
  EXPECT_EQ(row.index, 0xFFFFFFFF) << "nothing else is written";
  EXPECT_THAT(fake::taken_trace(), ::testing::IsEmpty());
}

TEST(SmstInstanceVlansMapped, LeavesTheRowForABitmapOfAnotherSize) {
  fake::reset();
  for (const uint32_t size : {0U, 511U, 513U}) {
    SmstInstanceRow row{};
    row.vlans_mapped_low[3] = 7;
    const stp_vlan_bmp vlans{size, {0xFF}};
    stp_bmp_to_SMSTInstanceVlansMapped(&row, &vlans);
    EXPECT_EQ(row.vlans_mapped_low[0], 0);
    EXPECT_EQ(row.vlans_mapped_low[3], 7);
    EXPECT_THAT(fake::taken_trace(), ElementsAre(logged("stp_bmp_to_SMSTInstanceVlansMapped(LINE) size " +
                                                        std::to_string(size) + "\\n")));
  }
}

}  // namespace
