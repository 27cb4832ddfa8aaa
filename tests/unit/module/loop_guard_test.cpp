// Loop guard config table: what it asks, what it answers, and each way to fail.
#include "base_port_trace.h"
#include "fake_platform.h"
#include "ledger.h"
#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "table_test.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

constexpr uint8_t kPort = 115;
constexpr uint8_t kSetting = 117;

constexpr uint32_t kSettingToken = 0x0202A01A;

constexpr uint32_t kPort129 = 0x1A000001;
constexpr uint32_t kPort130 = 0x1A000002;
constexpr uint32_t kChannel3 = 0x16000003;
constexpr char kList[] = "129-130,4099";

std::string traced(int exact, int length) {
  return logged("exact " + std::to_string(exact) + " *length " + std::to_string(length) +
                " vp_namelen 14\\n");
}

const std::string kNoPort =
    logged_rejection("\\nget_stp_entry_with_port_id_from_vlan_mgr(LINE): returning FAILURE\\n");

Trace queried(uint32_t if_index) { return port_queried_and_found(118, "0x0C020105", if_index); }

Trace value_read(const std::string &value) {
  return {"cmd_rsp_attr_get(0x0C02A001)", "cmd_rsp_attr_get(0x0202A01A)", logged("value " + value + "\\n"),
          "cmd_snmp_free_rx_hndl"};
}

class LoopGuard : public TableTest {
 protected:
  LoopGuard() : TableTest(get_stpxLoopGuardConfigTable) {}

  void SetUp() override {
    TableTest::SetUp();
    empty_base_port_cache();
    fake::platform().interfaces = {{.if_index = kPort129, .port = 129, .vlans = {1}},
                                   {.if_index = kPort130, .port = 130, .vlans = {20}},
                                   {.if_index = kChannel3, .port = 4099, .type = 22, .vlans = {10}}};
    reply_holds(kSettingToken, 2);
    // The process's rows name the interface that was asked for.
    fake::platform().answer = [](const fake::Request &request) {
      fake::Attributes attributes = fake::platform().attributes;
      attributes[kAnsweredInterface] = request.keys.begin()->second;
      return fake::Send{.attributes = attributes};
    };
  }

  static int header(LoopGuardConfigRow *row, oid index = 129) {
    const oid column[] = {1, 3, 9};
    oid name[MAX_OID_LEN] = {1, 3, 9, index};
    size_t length = 4;
    return header_stpxLoopGuardConfigTable(column, 3, name, &length, 1, row);
  }
};

TEST_F(LoopGuard, GetAsksForExactlyThatPort) {
  EXPECT_EQ(number(get(kSetting, {130})), 2);
  EXPECT_EQ(answered(), ".1.8.1.1.3.130");
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(Trace{traced(1, 15)} + exact_port(130, kPort130) +
                                                    queried(kPort130) + value_read("2")));
}

TEST_F(LoopGuard, GetNextOfTheBareColumnAnswersTheLowestPort) {
  EXPECT_EQ(number(get_next(kSetting, {})), 2);
  EXPECT_EQ(answered(), ".1.8.1.1.3.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{traced(0, 14)} + base_ports_fetched() + walked_to(129, kPort129, kList) +
                               queried(kPort129) + value_read("2")));
}

TEST_F(LoopGuard, WalkEndsBehindTheLastPort) {
  EXPECT_EQ(number(get_next(kSetting, {129})), 2);
  EXPECT_EQ(answered(), ".1.8.1.1.3.130");
  EXPECT_EQ(number(get_next(kSetting, {130})), 2);
  EXPECT_EQ(answered(), ".1.8.1.1.3.4099");
  fake::taken_trace();
  EXPECT_EQ(get_next(kSetting, {4099}), std::nullopt);
  EXPECT_EQ(answered(), ".1.8.1.1.3.4099");
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(Trace{traced(0, 15)} + base_ports_copied() +
                                                    walked_to_the_end(kList) + Trace{kNoPort}));
}

TEST_F(LoopGuard, ValueIsServedUnchanged) {
  for (const int32_t value : {0, 1, 3, 2147483647, -1}) {
    reply_holds(kSettingToken, static_cast<uint32_t>(value));
    EXPECT_EQ(number(get(kSetting, {129})), value);
    EXPECT_THAT(fake::taken_trace(), Contains(logged("value " + std::to_string(value) + "\\n")));
  }
}

TEST_F(LoopGuard, PortThatIsDownIsAskedFor) {
  fake::platform().interfaces[0].oper_status = 2;
  EXPECT_EQ(number(get(kSetting, {129})), 2);
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(Trace{traced(1, 15)} + exact_port(129, kPort129) +
                                                    queried(kPort129) + value_read("2")));
}

TEST_F(LoopGuard, RowsInterfaceNeverReachesTheAnswer) {
  fake::platform().answer = nullptr;
  reply_holds(kAnsweredInterface, kChannel3);
  EXPECT_EQ(number(get(kSetting, {129})), 2);
  EXPECT_EQ(answered(), ".1.8.1.1.3.4099") << "the port of the row";
}

TEST_F(LoopGuard, RowOfAnInterfaceWithoutAPortIsReleasedOnce) {
  fake::platform().answer = nullptr;
  reply_holds(kAnsweredInterface, 0xAB);
  EXPECT_EQ(get(kSetting, {129}), std::nullopt);
  EXPECT_EQ(answered(), ".1.8.1.1.3.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{traced(1, 15)} + exact_port(129, kPort129) +
                               port_queried_and_not_named(118, "0x0C020105", kPort129, 0xAB)));
}

TEST_F(LoopGuard, IndexColumnQueriesAndReturnsNoValue) {
  EXPECT_EQ(get(kPort, {129}), std::nullopt);
  EXPECT_EQ(answered(), ".1.8.1.1.1.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{traced(1, 15)} + exact_port(129, kPort129) + queried(kPort129) +
                               value_read("2") + Trace{"snmp_set_detail(\"\")"}));
}

TEST_F(LoopGuard, IndexColumnWithoutARowEndsThere) {
  EXPECT_EQ(get(kPort, {131}), std::nullopt);
  EXPECT_EQ(fake::taken_trace().back(), kNoPort);
}

TEST_F(LoopGuard, ReplyWithoutTheSetting) {
  reply_lacks(kSettingToken);
  EXPECT_EQ(get(kSetting, {129}), std::nullopt);
  EXPECT_EQ(answered(), ".1.8.1.1.3.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{traced(1, 15)} + exact_port(129, kPort129) + queried(kPort129) +
                               Trace{"cmd_rsp_attr_get(0x0C02A001)", "cmd_rsp_attr_get(0x0202A01A)",
                                     "cmd_snmp_free_rx_hndl",
                                     logged("parse_reply_stpxLoopGuardConfigTable failed\\n")}));
  fake::platform().missing_attribute_result = 1234;
  LoopGuardConfigRow row;
  EXPECT_EQ(header(&row), 1234);
}

TEST_F(LoopGuard, SettingWithoutAValueIsMissing) {
  fake::platform().attributes_without_value[kSettingToken] = 4;
  LoopGuardConfigRow row;
  EXPECT_EQ(header(&row), -1);
  EXPECT_EQ(fake::taken_trace().back(), logged("parse_reply_stpxLoopGuardConfigTable failed\\n"));
}

TEST_F(LoopGuard, FailedQuery) {
  fake::platform().next_sends = {no_entry()};
  EXPECT_EQ(get_next(kSetting, {129}), std::nullopt);
  EXPECT_EQ(answered(), ".1.8.1.1.3.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{traced(0, 15)} + base_ports_fetched() + walked_to(130, kPort130, kList) +
                               port_queried_in_vain(118, "0x0C020105", kPort130)));
}

TEST_F(LoopGuard, EmptyReply) {
  fake::platform().next_sends = {{.has_reply = false}};
  EXPECT_EQ(get(kSetting, {129}), std::nullopt);
  EXPECT_EQ(fake::taken_trace().back(), logged_rejection("get_stp_entry_from_if_index failed\\n"));
}

TEST_F(LoopGuard, RequestThatCannotBeAllocated) {
  ledger::fail_next_malloc();
  EXPECT_EQ(get(kSetting, {129}), std::nullopt);
  EXPECT_THAT(fake::taken_trace(), Contains(logged("get_stp_entry_from_if_index(LINE) malloc failed \\n")));
}

TEST_F(LoopGuard, MemberOfAChannelIsNoRow) {
  fake::platform().interfaces[0].channel_if_index = kChannel3;
  EXPECT_EQ(get(kSetting, {129}), std::nullopt);
  EXPECT_THAT(fake::taken_trace(),
              Contains(logged("validate_port_id_for_snmp_search_new(LINE): Port 0x1a000001 is a "
                              "member of PC, return no such inst\\n")));
}

TEST_F(LoopGuard, GetOfTheBareColumnFindsNoPortZero) {
  EXPECT_EQ(get(kSetting, {}), std::nullopt);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAre(traced(1, 14),
                  logged_rejection("\\nvalidate_port_id_for_snmp_search_new(LINE): returning FAILURE.\\n"),
                  kNoPort));
}

TEST_F(LoopGuard, IndexAbove65535IsLookedUpAsItsLow16Bits) {
  EXPECT_EQ(number(get(kSetting, {65536 + 129})), 2);
  EXPECT_EQ(answered(), ".1.8.1.1.3.129");
  EXPECT_EQ(number(get_next(kSetting, {0xFFFF0000 + 129})), 2);
  EXPECT_EQ(answered(), ".1.8.1.1.3.130");
  EXPECT_EQ(number(get_next(kSetting, {65536})), 2);
  EXPECT_EQ(answered(), ".1.8.1.1.3.129");
}

TEST_F(LoopGuard, RequestsOutsideTheColumnBeginAtTheLowestPort) {
  for (const std::vector<oid> &request :
       {std::vector<oid>{1, 8, 1, 1, 1, 129}, {1, 8, 1, 1, 1, 129, 9}, {1, 8}, {}, {1, 8, 1, 1, 4, 130}}) {
    EXPECT_NE(ask_below_root(kSetting, request, 0), std::nullopt);
    EXPECT_EQ(answered(), ".1.8.1.1.3.129");
  }
}

TEST_F(LoopGuard, GetNextIgnoresArcsBehindTheIndex) {
  EXPECT_NE(get_next(kSetting, {129, 0, 5}), std::nullopt);
  EXPECT_EQ(answered(), ".1.8.1.1.3.130");
}

TEST_F(LoopGuard, GetWithTwoIndexArcsFailsWithoutAQuestion) {
  for (const uint8_t magic : {kPort, kSetting}) {
    EXPECT_EQ(get(magic, {129, 0}), std::nullopt);
    EXPECT_THAT(fake::taken_trace(), ElementsAre(traced(1, 16)));
  }
  const oid column[] = {1, 3, 9};
  oid name[MAX_OID_LEN] = {1, 3, 9, 129, 0};
  size_t length = 5;
  LoopGuardConfigRow row{9, 9, 9};
  EXPECT_EQ(header_stpxLoopGuardConfigTable(column, 3, name, &length, 1, &row), -1);
  EXPECT_EQ(length, 5U);
  EXPECT_EQ(row.index, 0U) << "the row was cleared";
}

TEST_F(LoopGuard, HeaderRoutineReturnsMinusOneWithoutARow) {
  LoopGuardConfigRow row;
  EXPECT_EQ(header(&row, 131), -1);
  fake::platform().next_sends = {{5}};
  EXPECT_EQ(header(&row), -1);
}

TEST_F(LoopGuard, HeaderRoutineFillsTheRow) {
  LoopGuardConfigRow row{9, 9, 9};
  EXPECT_EQ(header(&row), 0);
  EXPECT_EQ(row.index, 129U);
  EXPECT_EQ(row.value, 2);
  EXPECT_EQ(row.reserved, 0U);
}

}  // namespace
