// RSTP port table: the query of each column, what it answers, and each way to fail.
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

constexpr uint8_t kPort = 54;
constexpr uint8_t kSetting = 55;
constexpr uint8_t kLinkType = 56;

constexpr uint32_t kSettingToken = 0x0202A019;
constexpr uint32_t kPointToPointToken = 0x0202A01E;

constexpr uint32_t kPort129 = 0x1A000001;
constexpr uint32_t kPort130 = 0x1A000002;
constexpr uint32_t kChannel3 = 0x16000003;
constexpr char kList[] = "129-130,4099";

constexpr char kPortKey[] = "0x0C020105";

std::string traced(int exact, int length) {
  return logged("exact " + std::to_string(exact) + " *length " + std::to_string(length) +
                " vp_namelen 14\\n");
}

std::string in_header_rejected(const std::string &text) {
  return logged_rejection("header_stpxRSTPPortTable(LINE)" + text + "\\n");
}

const std::string kLookupFailure = in_header_rejected(": get_stp_entry_with_port_id_from_vlan_mgr failed");
const std::string kNoPort =
    logged_rejection("\\nget_stp_entry_with_port_id_from_vlan_mgr(LINE): returning FAILURE\\n");

Trace setting_queried(uint32_t if_index) { return port_queried_and_found(119, kPortKey, if_index); }
Trace link_type_queried(uint32_t if_index) { return port_queried_and_found(105, kPortKey, if_index); }

const Trace kSettingRead{"cmd_rsp_attr_get(0x0C02A001)", "cmd_rsp_attr_get(0x0202A019)",
                         "cmd_snmp_free_rx_hndl"};

Trace link_type_read(const std::string &value) {
  return {
      "cmd_rsp_attr_get(0x0202A01E)",
      logged("parse_reply_stpxRSTPPortOperLinkType(LINE): cmd_rsp_attr_get success, val = " + value + "\\n"),
      "cmd_snmp_free_rx_hndl"};
}

class RstpPort : public TableTest {
 protected:
  RstpPort() : TableTest(get_stpxRSTPPortTable) {}

  void SetUp() override {
    TableTest::SetUp();
    empty_base_port_cache();
    fake::platform().interfaces = {{.if_index = kPort129, .port = 129, .vlans = {1}},
                                   {.if_index = kPort130, .port = 130, .vlans = {20}},
                                   {.if_index = kChannel3, .port = 4099, .type = 22, .vlans = {10}}};
    reply_holds(kSettingToken, 3);
    reply_holds(kPointToPointToken, 1);
    // The process's rows name the interface that was asked for.
    fake::platform().answer = [](const fake::Request &request) {
      fake::Attributes attributes = fake::platform().attributes;
      attributes[kAnsweredInterface] = request.keys.begin()->second;
      return fake::Send{.attributes = attributes};
    };
  }

  static void link_of_129_is_down() { fake::platform().interfaces[0].oper_status = 2; }

  static int header(int magic, RstpPortRow *row, oid index = 129) {
    const oid column[] = {1, 3, 9};
    oid name[MAX_OID_LEN] = {1, 3, 9, index};
    size_t length = 4;
    return header_stpxRSTPPortTable(column, 3, name, &length, 1, row, magic);
  }
};

// The setting.

TEST_F(RstpPort, GetOfTheSettingAsksForExactlyThatPort) {
  EXPECT_EQ(number(get(kSetting, {130})), 3);
  EXPECT_EQ(answered(), ".1.12.1.1.2.130");
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(Trace{traced(1, 15)} + exact_port(130, kPort130) +
                                                    setting_queried(kPort130) + kSettingRead));
}

TEST_F(RstpPort, GetNextOfTheBareSettingColumnAnswersTheLowestPort) {
  EXPECT_EQ(number(get_next(kSetting, {})), 3);
  EXPECT_EQ(answered(), ".1.12.1.1.2.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{traced(0, 14)} + base_ports_fetched() + walked_to(129, kPort129, kList) +
                               setting_queried(kPort129) + kSettingRead));
}

TEST_F(RstpPort, SettingIsServedUnchanged) {
  for (const int32_t value : {0, 1, 2, 2147483647, -1}) {
    reply_holds(kSettingToken, static_cast<uint32_t>(value));
    EXPECT_EQ(number(get(kSetting, {129})), value);
  }
}

TEST_F(RstpPort, SettingOfAPortThatIsDownIsAskedFor) {
  link_of_129_is_down();
  EXPECT_EQ(number(get(kSetting, {129})), 3);
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(Trace{traced(1, 15)} + exact_port(129, kPort129) +
                                                    setting_queried(kPort129) + kSettingRead));
}

TEST_F(RstpPort, ReplyWithoutTheSetting) {
  reply_lacks(kSettingToken);
  EXPECT_EQ(get(kSetting, {129}), std::nullopt);
  EXPECT_EQ(answered(), ".1.12.1.1.2.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{traced(1, 15)} + exact_port(129, kPort129) + setting_queried(kPort129) +
                               kSettingRead + Trace{logged("parse_reply_stpxRSTPPortTable failed\\n")}));
  fake::platform().missing_attribute_result = 1234;
  RstpPortRow row;
  EXPECT_EQ(header(kSetting, &row), 1234);
}

TEST_F(RstpPort, SettingWithoutAValueIsMissing) {
  fake::platform().attributes_without_value[kSettingToken] = 4;
  RstpPortRow row;
  EXPECT_EQ(header(kSetting, &row), -1);
  EXPECT_EQ(fake::taken_trace().back(), logged("parse_reply_stpxRSTPPortTable failed\\n"));
}

TEST_F(RstpPort, FailedQueryOfTheSetting) {
  fake::platform().next_sends = {no_entry()};
  EXPECT_EQ(get_next(kSetting, {129}), std::nullopt);
  EXPECT_EQ(answered(), ".1.12.1.1.2.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{traced(0, 15)} + base_ports_fetched() + walked_to(130, kPort130, kList) +
                               port_queried_in_vain(119, kPortKey, kPort130)));
}

// The operational link type.

TEST_F(RstpPort, GetOfTheLinkTypeAsksForExactlyThatPort) {
  EXPECT_EQ(number(get(kLinkType, {4099})), 1);
  EXPECT_EQ(answered(), ".1.12.1.1.3.4099");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{traced(1, 15)} + exact_port(4099, kChannel3) + link_asked(kChannel3) +
                               link_type_queried(kChannel3) + link_type_read("1")));
}

TEST_F(RstpPort, GetNextOfTheBareLinkTypeColumnAnswersTheLowestPort) {
  reply_holds(kPointToPointToken, 0);
  EXPECT_EQ(number(get_next(kLinkType, {})), 2);
  EXPECT_EQ(answered(), ".1.12.1.1.3.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{traced(0, 14)} + base_ports_fetched() + walked_to(129, kPort129, kList) +
                               link_asked(kPort129) + link_type_queried(kPort129) + link_type_read("0")));
}

TEST_F(RstpPort, LinkTypeIsOneForAnyValueButZero) {
  for (const int32_t value : {1, 2, 256, 2147483647, -1}) {
    reply_holds(kPointToPointToken, static_cast<uint32_t>(value));
    EXPECT_EQ(number(get(kLinkType, {129})), 1);
    EXPECT_THAT(fake::taken_trace(),
                ElementsAreArray(Trace{traced(1, 15)} + exact_port(129, kPort129) + link_asked(kPort129) +
                                 link_type_queried(kPort129) + link_type_read(std::to_string(value))));
  }
}

TEST_F(RstpPort, ReplyWithoutTheLinkTypeAnswersThree) {
  reply_lacks(kPointToPointToken);
  EXPECT_EQ(number(get(kLinkType, {129})), 3);
  EXPECT_EQ(answered(), ".1.12.1.1.3.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{traced(1, 15)} + exact_port(129, kPort129) + link_asked(kPort129) +
                               link_type_queried(kPort129) +
                               Trace{"cmd_rsp_attr_get(0x0202A01E)", "cmd_snmp_free_rx_hndl"}));
  fake::platform().attributes_without_value[kPointToPointToken] = 4;
  EXPECT_EQ(number(get(kLinkType, {129})), 3);
}

TEST_F(RstpPort, PortThatIsDownAnswersThreeWithoutAQuery) {
  link_of_129_is_down();
  EXPECT_EQ(number(get_next(kLinkType, {})), 3);
  EXPECT_EQ(answered(), ".1.12.1.1.3.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{traced(0, 14)} + base_ports_fetched() + walked_to(129, kPort129, kList) +
                               link_asked(kPort129) + link_is_down(kPort129)));
  EXPECT_EQ(number(get(kLinkType, {129})), 3);
  EXPECT_EQ(answered(), ".1.12.1.1.3.129");
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(Trace{traced(1, 15)} + exact_port(129, kPort129) +
                                                    link_asked(kPort129) + link_is_down(kPort129)));
  EXPECT_EQ(number(get_next(kLinkType, {129})), 1) << "the next port is up";
}

TEST_F(RstpPort, PortWhoseLinkCannotBeToldIsAskedFor) {
  link_of_129_is_down();
  fake::platform().interfaces[0].has_oper_status = false;
  EXPECT_EQ(number(get(kLinkType, {129})), 1);
}

TEST_F(RstpPort, FailedQueryOfTheLinkType) {
  fake::platform().next_sends = {no_entry()};
  EXPECT_EQ(get(kLinkType, {129}), std::nullopt);
  EXPECT_EQ(answered(), ".1.12.1.1.3.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{traced(1, 15)} + exact_port(129, kPort129) + link_asked(kPort129) +
                               port_queried_in_vain(105, kPortKey, kPort129) + Trace{kLookupFailure}));
}

TEST_F(RstpPort, EmptyReply) {
  fake::platform().answer = nullptr;
  fake::platform().answers_without_reply = true;
  EXPECT_EQ(get(kSetting, {129}), std::nullopt);
  EXPECT_EQ(fake::taken_trace().back(), logged_rejection("get_stp_entry_from_if_index failed\\n"));
  EXPECT_EQ(get(kLinkType, {129}), std::nullopt);
  EXPECT_EQ(fake::taken_trace().back(), kLookupFailure);
}

// Both columns.

TEST_F(RstpPort, RowsInterfaceNeverReachesTheAnswer) {
  fake::platform().answer = nullptr;
  reply_holds(kAnsweredInterface, kChannel3);
  for (const uint8_t magic : {kSetting, kLinkType}) {
    EXPECT_NE(get(magic, {129}), std::nullopt);
    EXPECT_EQ(answered(), ".1.12.1.1." + std::to_string(magic - 53) + ".4099") << "the port of the row";
  }
}

TEST_F(RstpPort, RowOfAnInterfaceWithoutAPortIsReleasedOnce) {
  fake::platform().answer = nullptr;
  reply_holds(kAnsweredInterface, 0xAB);
  EXPECT_EQ(get(kSetting, {129}), std::nullopt);
  EXPECT_EQ(answered(), ".1.12.1.1.2.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{traced(1, 15)} + exact_port(129, kPort129) +
                               port_queried_and_not_named(119, kPortKey, kPort129, 0xAB)));
  EXPECT_EQ(get(kLinkType, {129}), std::nullopt);
  EXPECT_EQ(answered(), ".1.12.1.1.3.129");
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(Trace{traced(1, 15)} + exact_port(129, kPort129) + link_asked(kPort129) +
                       port_queried_and_not_named(105, kPortKey, kPort129, 0xAB) + Trace{kLookupFailure}));
}

TEST_F(RstpPort, WalkEndsBehindTheLastPort) {
  for (const uint8_t magic : {kSetting, kLinkType}) {
    const std::string column = ".1.12.1.1." + std::to_string(magic - 53);
    EXPECT_NE(get_next(magic, {129}), std::nullopt);
    EXPECT_EQ(answered(), column + ".130");
    EXPECT_NE(get_next(magic, {130}), std::nullopt);
    EXPECT_EQ(answered(), column + ".4099");
    fake::taken_trace();
    EXPECT_EQ(get_next(magic, {4099}), std::nullopt);
    EXPECT_EQ(answered(), column + ".4099");
    Trace expected = Trace{traced(0, 15)} + base_ports_copied() + walked_to_the_end(kList) + Trace{kNoPort};
    if (magic == kLinkType) {
      expected.push_back(kLookupFailure);
    }
    EXPECT_THAT(fake::taken_trace(), ElementsAreArray(expected));
  }
}

TEST_F(RstpPort, MemberOfAChannelIsNoRow) {
  fake::platform().interfaces[0].channel_if_index = kChannel3;
  for (const uint8_t magic : {kSetting, kLinkType}) {
    EXPECT_EQ(get(magic, {129}), std::nullopt);
    EXPECT_THAT(fake::taken_trace(),
                Contains(logged("validate_port_id_for_snmp_search_new(LINE): Port 0x1a000001 is "
                                "a member of PC, return no such inst\\n")));
  }
}

TEST_F(RstpPort, GetOfTheBareColumnFindsNoPortZero) {
  for (const uint8_t magic : {kSetting, kLinkType}) {
    EXPECT_EQ(get(magic, {}), std::nullopt);
    EXPECT_THAT(fake::taken_trace(), Contains(kNoPort));
  }
}

TEST_F(RstpPort, IndexAbove65535IsLookedUpAsItsLow16Bits) {
  for (const uint8_t magic : {kSetting, kLinkType}) {
    const std::string column = ".1.12.1.1." + std::to_string(magic - 53);
    EXPECT_NE(get(magic, {65536 + 129}), std::nullopt);
    EXPECT_EQ(answered(), column + ".129");
    EXPECT_NE(get_next(magic, {0xFFFF0000 + 129}), std::nullopt);
    EXPECT_EQ(answered(), column + ".130");
    EXPECT_NE(get_next(magic, {65536}), std::nullopt);
    EXPECT_EQ(answered(), column + ".129");
  }
}

TEST_F(RstpPort, RequestsOutsideTheColumnBeginAtTheLowestPort) {
  for (const std::vector<oid> &request : {std::vector<oid>{1, 12, 1, 1, 1, 129},
                                          {1, 12, 1, 1, 1, 129, 9},
                                          {1, 12},
                                          {},
                                          {1, 12, 1, 1, 3, 130}}) {
    EXPECT_NE(ask_below_root(kSetting, request, 0), std::nullopt);
    EXPECT_EQ(answered(), ".1.12.1.1.2.129");
  }
}

TEST_F(RstpPort, GetNextIgnoresArcsBehindTheIndex) {
  EXPECT_NE(get_next(kSetting, {129, 0, 5}), std::nullopt);
  EXPECT_EQ(answered(), ".1.12.1.1.2.130");
}

TEST_F(RstpPort, GetWithTwoIndexArcsFailsWithoutAQuestion) {
  for (const uint8_t magic : {kPort, kSetting, kLinkType}) {
    EXPECT_EQ(get(magic, {129, 0}), std::nullopt);
    EXPECT_THAT(fake::taken_trace(), ElementsAre(traced(1, 16)));
  }
  const oid column[] = {1, 3, 9};
  oid name[MAX_OID_LEN] = {1, 3, 9, 129, 0};
  size_t length = 5;
  RstpPortRow row{9, 9, 9, 9};
  EXPECT_EQ(header_stpxRSTPPortTable(column, 3, name, &length, 1, &row, kSetting), -1);
  EXPECT_EQ(length, 5U);
  EXPECT_EQ(row.index, 0U) << "the row was cleared";
}

TEST_F(RstpPort, IndexColumnHasNoValueAndAnswersWithTheWholeIndex) {
  EXPECT_EQ(get(kPort, {70000}), std::nullopt);
  EXPECT_EQ(answered(), ".1.12.1.1.1.70000");
  EXPECT_THAT(fake::taken_trace(), ElementsAre(traced(1, 15), in_header_rejected(": Wrong object, magic 54"),
                                               "snmp_set_detail(\"\")"));
  EXPECT_EQ(get_next(kPort, {0xFFFFFFFF, 3}), std::nullopt);
  EXPECT_EQ(answered(), ".1.12.1.1.1.4294967295");
  EXPECT_EQ(get_next(kPort, {}), std::nullopt);
  EXPECT_EQ(answered(), ".1.12.1.1.1.0");
}

TEST_F(RstpPort, HeaderRoutineSucceedsForOtherMagics) {
  for (const int magic : {0, 54, 57, 55 + 256, -1}) {
    RstpPortRow row{9, 9, 9, 9};
    EXPECT_EQ(header(magic, &row, 70000), 0) << magic;
    EXPECT_EQ(fake::taken_trace().back(),
              in_header_rejected(": Wrong object, magic " + std::to_string(magic)));
    EXPECT_EQ(row.setting, 0);
    EXPECT_EQ(row.oper_link_type, 0);
  }
}

TEST_F(RstpPort, RequestThatCannotBeAllocated) {
  for (const uint8_t magic : {kSetting, kLinkType}) {
    ledger::fail_next_malloc();
    EXPECT_EQ(get(magic, {129}), std::nullopt);
    EXPECT_THAT(fake::taken_trace(), Contains(logged("get_stp_entry_from_if_index(LINE) malloc failed \\n")));
  }
}

TEST_F(RstpPort, HeaderRoutineReturnsMinusOneWithoutARow) {
  RstpPortRow row;
  EXPECT_EQ(header(kSetting, &row, 131), -1);
  EXPECT_EQ(header(kLinkType, &row, 131), -1);
  fake::platform().next_sends = {{5}, {5}};
  EXPECT_EQ(header(kSetting, &row), -1);
  EXPECT_EQ(header(kLinkType, &row), -1);
}

TEST_F(RstpPort, HeaderRoutineFillsTheFieldOfItsColumnAlone) {
  RstpPortRow row{9, 9, 9, 9};
  EXPECT_EQ(header(kSetting, &row), 0);
  EXPECT_EQ(row.index, 129U);
  EXPECT_EQ(row.setting, 3);
  EXPECT_EQ(row.oper_link_type, 0);
  EXPECT_EQ(row.reserved, 0U);
  row = {9, 9, 9, 9};
  EXPECT_EQ(header(kLinkType, &row), 0);
  EXPECT_EQ(row.index, 129U);
  EXPECT_EQ(row.setting, 0);
  EXPECT_EQ(row.oper_link_type, 1);
  EXPECT_EQ(row.reserved, 0U);
}

}  // namespace
