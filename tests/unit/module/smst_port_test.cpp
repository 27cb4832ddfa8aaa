// MST port table: the query of each column group, what it answers, and each way to fail.
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

constexpr uint8_t kPort = 86;
constexpr uint8_t kFlags = 87;
constexpr uint8_t kAdminMode = 91;
constexpr uint8_t kStatus = 92;

constexpr uint32_t kType = 0x0202B001;
constexpr uint32_t kAdminModeToken = 0x010200AA;
constexpr uint32_t kEdgeToken = 0x0202A01D;
constexpr uint32_t kBoundaryToken = 0x0202A028;
constexpr uint32_t kPeerToken = 0x0202A027;
constexpr uint32_t kDisputeToken = 0x0202A02D;
constexpr uint32_t kStatusToken = 0x0202A02E;
constexpr uint32_t kFlagTokens[] = {kEdgeToken, kBoundaryToken, kPeerToken, kDisputeToken};

constexpr uint32_t kPort129 = 0x1A000001;
constexpr uint32_t kPort130 = 0x1A000002;
constexpr uint32_t kChannel3 = 0x16000003;
constexpr char kList[] = "129-130,4099";

constexpr char kPortKey[] = "0x0C020105";
constexpr char kMstPortKey[] = "0x0C02018B";

std::string in_header(const std::string &text) { return logged("header_stpxSMSTPortTable(LINE)" + text); }

std::string traced(int exact, int length) {
  return logged("exact " + std::to_string(exact) + " *length " + std::to_string(length) +
                " vp_namelen 14\\n");
}

Trace type_read(uint32_t type) {
  return sent(104, 1, "0x01020227", "00000000") + Trace{"free(16000)", "cmd_rsp_attr_get(0x0202B001)",
                                                        logged("value " + std::to_string(type) + "\\n"),
                                                        "cmd_snmp_free_rx_hndl"};
}

// Everything before a column's own search.
Trace entered(int exact, int length) {
  return Trace{traced(exact, length)} + type_read(4) +
         Trace{in_header(" get_stpxSpanningTreeType() returns 4 \\n")};
}

Trace admin_mode_queried(uint32_t if_index) { return port_queried_and_found(119, kPortKey, if_index); }
Trace flags_queried(uint32_t if_index) { return port_queried_and_found(111, kMstPortKey, if_index); }

const Trace kFlagsRead{"cmd_rsp_attr_get(0x0C02A001)", "cmd_rsp_attr_get(0x0202A01D)",
                       "cmd_rsp_attr_get(0x0202A028)", "cmd_rsp_attr_get(0x0202A027)",
                       "cmd_rsp_attr_get(0x0202A02D)", "cmd_rsp_attr_get(0x0202A02E)",
                       "cmd_snmp_free_rx_hndl"};

class SmstPort : public TableTest {
 protected:
  SmstPort() : TableTest(get_stpxSMSTPortTable) {}

  void SetUp() override {
    TableTest::SetUp();
    empty_base_port_cache();
    fake::platform().interfaces = {{.if_index = kPort129, .port = 129, .vlans = {1}},
                                   {.if_index = kPort130, .port = 130, .vlans = {20}},
                                   {.if_index = kChannel3, .port = 4099, .type = 22, .vlans = {10}}};
    row_holds(kAdminModeToken, 1);
    row_holds(kEdgeToken, 1);
    row_holds(kBoundaryToken, 1);
    row_holds(kPeerToken, 1);
    row_holds(kDisputeToken, 1);
    row_holds(kStatusToken, 1);
    // The process's rows name the interface that was asked for.
    fake::platform().answer = [this](const fake::Request &request) {
      if (request.command == 104) {
        return fake::Send{.attributes = fake::Attributes{{kType, fake::number(type_)}}};
      }
      fake::Attributes attributes = row_;
      attributes[kAnsweredInterface] = request.keys.begin()->second;
      return fake::Send{.attributes = attributes};
    };
  }

  void row_holds(uint32_t token, uint32_t number) { row_[token] = fake::number(number); }
  void row_lacks(uint32_t token) { row_.erase(token); }

  // The second send, the first one reading the type, fares like this.
  static void row_query_fares(const fake::Send &send) {
    fake::platform().next_sends = {{.attributes = fake::Attributes{{kType, fake::number(4)}}}, send};
  }

  static void link_of_129_is_down() { fake::platform().interfaces[0].oper_status = 2; }

  static int header(int magic, SmstPortRow *row, oid index = 129) {
    const oid column[] = {1, 3, 9};
    oid name[MAX_OID_LEN] = {1, 3, 9, index};
    size_t length = 4;
    return header_stpxSMSTPortTable(column, 3, name, &length, 1, row, magic);
  }

  uint32_t type_ = 4;
  fake::Attributes row_;
};

// Admin MST mode.

TEST_F(SmstPort, GetOfTheAdminModeAsksForExactlyThatPort) {
  EXPECT_EQ(number(get(kAdminMode, {130})), 1);
  EXPECT_EQ(answered(), ".1.14.7.1.6.130");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(entered(1, 15) + exact_port(130, kPort130) + admin_mode_queried(kPort130) +
                               Trace{"cmd_rsp_attr_get(0x010200AA)", "cmd_snmp_free_rx_hndl"}));
}

TEST_F(SmstPort, GetNextOfTheBareAdminModeColumnAnswersTheLowestPort) {
  row_holds(kAdminModeToken, 0);
  EXPECT_EQ(number(get_next(kAdminMode, {})), 2);
  EXPECT_EQ(answered(), ".1.14.7.1.6.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(entered(0, 14) + base_ports_fetched() + walked_to(129, kPort129, kList) +
                               admin_mode_queried(kPort129) +
                               Trace{"cmd_rsp_attr_get(0x010200AA)", "cmd_snmp_free_rx_hndl"}));
}

TEST_F(SmstPort, AdminModeIsOneForAnyValueButZero) {
  for (const uint32_t value : {1U, 2U, 0x100U, 0x80000000U, 0xFFFFFFFFU}) {
    row_holds(kAdminModeToken, value);
    EXPECT_EQ(number(get(kAdminMode, {129})), 1);
  }
  row_holds(kAdminModeToken, 0);
  EXPECT_EQ(number(get(kAdminMode, {129})), 2);
}

TEST_F(SmstPort, AdminModeOfAPortThatIsDownIsAskedFor) {
  link_of_129_is_down();
  EXPECT_EQ(number(get(kAdminMode, {129})), 1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(entered(1, 15) + exact_port(129, kPort129) + admin_mode_queried(kPort129) +
                               Trace{"cmd_rsp_attr_get(0x010200AA)", "cmd_snmp_free_rx_hndl"}));
}

TEST_F(SmstPort, RowWithoutTheAdminMode) {
  row_lacks(kAdminModeToken);
  EXPECT_EQ(get(kAdminMode, {129}), std::nullopt);
  EXPECT_EQ(answered(), ".1.14.7.1.6.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(entered(1, 15) + exact_port(129, kPort129) + admin_mode_queried(kPort129) +
                               Trace{"cmd_rsp_attr_get(0x010200AA)", "cmd_snmp_free_rx_hndl",
                                     logged("parse_reply_stpxSMSTPortAdminMSTMode failed\\n")}));
  fake::platform().missing_attribute_result = 1234;
  SmstPortRow row;
  EXPECT_EQ(header(kAdminMode, &row), 1234);
}

TEST_F(SmstPort, AdminModeWithoutAValueIsMissing) {
  fake::platform().attributes_without_value[kAdminModeToken] = 4;
  EXPECT_EQ(get(kAdminMode, {129}), std::nullopt);
  SmstPortRow row;
  EXPECT_EQ(header(kAdminMode, &row), -1);
}

TEST_F(SmstPort, FailedQueryOfTheAdminMode) {
  row_query_fares(no_entry());
  EXPECT_EQ(get_next(kAdminMode, {129}), std::nullopt);
  EXPECT_EQ(answered(), ".1.14.7.1.6.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(entered(0, 15) + base_ports_fetched() + walked_to(130, kPort130, kList) +
                               port_queried_in_vain(119, kPortKey, kPort130)));
}

// Flags and pre-standard status.

TEST_F(SmstPort, GetOfTheFlagsAsksForExactlyThatPort) {
  EXPECT_EQ(get(kFlags, {130}), "\xD8");
  EXPECT_EQ(answered(), ".1.14.7.1.2.130");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(entered(1, 15) + exact_port(130, kPort130) + link_asked(kPort130) +
                               flags_queried(kPort130) + kFlagsRead));
}

TEST_F(SmstPort, GetOfTheStatusAsksTheSame) {
  EXPECT_EQ(number(get(kStatus, {4099})), 2);
  EXPECT_EQ(answered(), ".1.14.7.1.7.4099");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(entered(1, 15) + exact_port(4099, kChannel3) + link_asked(kChannel3) +
                               flags_queried(kChannel3) + kFlagsRead));
}

TEST_F(SmstPort, GetNextOfTheBareFlagsColumnAnswersTheLowestPort) {
  EXPECT_EQ(get_next(kFlags, {}), "\xD8");
  EXPECT_EQ(answered(), ".1.14.7.1.2.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(entered(0, 14) + base_ports_fetched() + walked_to(129, kPort129, kList) +
                               link_asked(kPort129) + flags_queried(kPort129) + kFlagsRead));
}

TEST_F(SmstPort, FlagsAreBitsOfAnOctet) {
  const std::pair<uint32_t, char> bits[] = {
      {kEdgeToken, '\x80'}, {kBoundaryToken, '\x40'}, {kPeerToken, '\x10'}, {kDisputeToken, '\x08'}};
  for (const auto &[set, bit] : bits) {
    for (const uint32_t token : kFlagTokens) {
      row_holds(token, token == set ? 1 : 0);
    }
    EXPECT_EQ(get(kFlags, {129}), std::string(1, bit));
  }
  for (const uint32_t token : kFlagTokens) {
    row_holds(token, 0);
  }
  EXPECT_EQ(get(kFlags, {129}), std::string(1, '\0'));
}

TEST_F(SmstPort, FlagsAreSetByAnyValueButZeroAndPeerByOneAlone) {
  for (const uint32_t value : {2U, 0x100U, 0xFFFFFFFFU}) {
    for (const uint32_t token : kFlagTokens) {
      row_holds(token, value);
    }
    EXPECT_EQ(get(kFlags, {129}), "\xC8");
  }
}

TEST_F(SmstPort, AnyMissingFlagClearsAllAndLeavesTheStatus) {
  for (const uint32_t token : kFlagTokens) {
    row_lacks(token);
    EXPECT_EQ(get(kFlags, {129}), std::string(1, '\0')) << fake::hex(token);
    EXPECT_THAT(fake::taken_trace(),
                ElementsAreArray(entered(1, 15) + exact_port(129, kPort129) + link_asked(kPort129) +
                                 flags_queried(kPort129) + kFlagsRead))
        << "all are read";
    EXPECT_EQ(number(get(kStatus, {129})), 2);
    fake::taken_trace();
    row_holds(token, 1);
  }
  EXPECT_EQ(get(kFlags, {129}), "\xD8");
}

TEST_F(SmstPort, FlagWithoutAValueIsMissing) {
  fake::platform().attributes_without_value[kPeerToken] = 4;
  EXPECT_EQ(get(kFlags, {129}), std::string(1, '\0'));
}

TEST_F(SmstPort, StatusIsThreeForZeroAndTwoForAnyOtherValue) {
  for (const uint32_t value : {1U, 2U, 3U, 0x80000000U}) {
    row_holds(kStatusToken, value);
    EXPECT_EQ(number(get(kStatus, {129})), 2);
  }
  row_holds(kStatusToken, 0);
  EXPECT_EQ(number(get(kStatus, {129})), 3);
}

TEST_F(SmstPort, MissingStatusIsOneAndLeavesTheFlags) {
  row_lacks(kStatusToken);
  EXPECT_EQ(number(get(kStatus, {129})), 1);
  EXPECT_EQ(get(kFlags, {129}), "\xD8");
  row_holds(kStatusToken, 0);
  fake::platform().attributes_without_value[kStatusToken] = 4;
  EXPECT_EQ(number(get(kStatus, {129})), 1);
}

TEST_F(SmstPort, PortThatIsDownIsServedWithoutAQuery) {
  link_of_129_is_down();
  EXPECT_EQ(get(kFlags, {129}), std::string(1, '\0'));
  EXPECT_EQ(answered(), ".1.14.7.1.2.129");
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(entered(1, 15) + exact_port(129, kPort129) +
                                                    link_asked(kPort129) + link_is_down(kPort129)));
  EXPECT_EQ(number(get_next(kStatus, {})), 1);
  EXPECT_EQ(answered(), ".1.14.7.1.7.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(entered(0, 14) + base_ports_fetched() + walked_to(129, kPort129, kList) +
                               link_asked(kPort129) + link_is_down(kPort129)));
}

TEST_F(SmstPort, PortWhoseLinkCannotBeToldIsAskedFor) {
  link_of_129_is_down();
  fake::platform().interfaces[0].has_oper_status = false;
  EXPECT_EQ(get(kFlags, {129}), "\xD8");
  EXPECT_EQ(number(get(kStatus, {129})), 2);
}

TEST_F(SmstPort, FailedQueryOfTheFlags) {
  for (const uint8_t magic : {kFlags, kStatus}) {
    row_query_fares(no_entry());
    EXPECT_EQ(get(magic, {129}), std::nullopt);
    EXPECT_THAT(fake::taken_trace(),
                ElementsAreArray(entered(1, 15) + exact_port(129, kPort129) + link_asked(kPort129) +
                                 port_queried_in_vain(111, kMstPortKey, kPort129)));
  }
}

TEST_F(SmstPort, EmptyReply) {
  for (const uint8_t magic : {kFlags, kAdminMode, kStatus}) {
    row_query_fares({.has_reply = false});
    EXPECT_EQ(get(magic, {129}), std::nullopt);
    EXPECT_EQ(fake::taken_trace().back(), logged_rejection("get_stp_entry_from_if_index failed\\n"));
  }
}

// All columns.

TEST_F(SmstPort, RowsInterfaceNeverReachesTheAnswer) {
  for (const uint8_t magic : {kFlags, kAdminMode, kStatus}) {
    fake::Attributes row = row_;
    row[kAnsweredInterface] = fake::number(kChannel3);
    row_query_fares({.attributes = row});
    EXPECT_NE(get(magic, {129}), std::nullopt);
    EXPECT_EQ(answered(), ".1.14.7.1." + std::to_string(magic - 85) + ".4099") << "the port of the row";
  }
}

TEST_F(SmstPort, RowOfAnInterfaceWithoutAPortIsReleasedOnce) {
  fake::Attributes row = row_;
  row[kAnsweredInterface] = fake::number(0xAB);
  row_query_fares({.attributes = row});
  EXPECT_EQ(get(kAdminMode, {129}), std::nullopt);
  EXPECT_EQ(answered(), ".1.14.7.1.6.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(entered(1, 15) + exact_port(129, kPort129) +
                               port_queried_and_not_named(119, kPortKey, kPort129, 0xAB)));
  for (const uint8_t magic : {kFlags, kStatus}) {
    row_query_fares({.attributes = row});
    EXPECT_EQ(get(magic, {129}), std::nullopt);
    EXPECT_THAT(fake::taken_trace(),
                ElementsAreArray(entered(1, 15) + exact_port(129, kPort129) + link_asked(kPort129) +
                                 port_queried_and_not_named(111, kMstPortKey, kPort129, 0xAB)));
  }
}

TEST_F(SmstPort, WalkEndsBehindTheLastPort) {
  for (const uint8_t magic : {kFlags, kAdminMode, kStatus}) {
    const std::string column = ".1.14.7.1." + std::to_string(magic - 85);
    EXPECT_NE(get_next(magic, {129}), std::nullopt);
    EXPECT_EQ(answered(), column + ".130");
    EXPECT_NE(get_next(magic, {130}), std::nullopt);
    EXPECT_EQ(answered(), column + ".4099");
    fake::taken_trace();
    EXPECT_EQ(get_next(magic, {4099}), std::nullopt);
    EXPECT_EQ(answered(), column + ".4099");
    EXPECT_THAT(
        fake::taken_trace(),
        ElementsAreArray(entered(0, 15) + base_ports_copied() + walked_to_the_end(kList) +
                         Trace{logged_rejection(
                             "\\nget_stp_entry_with_port_id_from_vlan_mgr(LINE): returning FAILURE\\n")}));
  }
}

TEST_F(SmstPort, MemberOfAChannelIsNoRow) {
  fake::platform().interfaces[0].channel_if_index = kChannel3;
  for (const uint8_t magic : {kFlags, kAdminMode, kStatus}) {
    EXPECT_EQ(get(magic, {129}), std::nullopt);
    EXPECT_THAT(fake::taken_trace(),
                Contains(logged("validate_port_id_for_snmp_search_new(LINE): Port 0x1a000001 is "
                                "a member of PC, return no such inst\\n")));
  }
}

TEST_F(SmstPort, GetOfTheBareColumnFindsNoPortZero) {
  for (const uint8_t magic : {kFlags, kAdminMode, kStatus}) {
    EXPECT_EQ(get(magic, {}), std::nullopt);
    EXPECT_THAT(
        fake::taken_trace(),
        ElementsAreArray(
            entered(1, 14) +
            Trace{logged_rejection("\\nvalidate_port_id_for_snmp_search_new(LINE): returning FAILURE.\\n"),
                  logged_rejection(
                      "\\nget_stp_entry_with_port_id_from_vlan_mgr(LINE): returning FAILURE\\n")}));
  }
}

TEST_F(SmstPort, IndexAbove65535IsLookedUpAsItsLow16Bits) {
  for (const uint8_t magic : {kFlags, kAdminMode, kStatus}) {
    const std::string column = ".1.14.7.1." + std::to_string(magic - 85);
    EXPECT_NE(get(magic, {65536 + 129}), std::nullopt);
    EXPECT_EQ(answered(), column + ".129");
    EXPECT_NE(get_next(magic, {0xFFFF0000 + 129}), std::nullopt);
    EXPECT_EQ(answered(), column + ".130");
    EXPECT_NE(get_next(magic, {65536}), std::nullopt);
    EXPECT_EQ(answered(), column + ".129");
  }
}

TEST_F(SmstPort, RequestsOutsideTheColumnBeginAtTheLowestPort) {
  for (const std::vector<oid> &request : {std::vector<oid>{1, 14, 7, 1, 1, 129},
                                          {1, 14, 7, 1, 1, 129, 9},
                                          {1, 14},
                                          {},
                                          {1, 14, 7, 1, 3, 130}}) {
    EXPECT_NE(ask_below_root(kFlags, request, 0), std::nullopt);
    EXPECT_EQ(answered(), ".1.14.7.1.2.129");
  }
}

TEST_F(SmstPort, GetNextIgnoresArcsBehindTheIndex) {
  EXPECT_NE(get_next(kFlags, {129, 0, 5}), std::nullopt);
  EXPECT_EQ(answered(), ".1.14.7.1.2.130");
}

TEST_F(SmstPort, GetWithTwoIndexArcsFailsWithoutAQuestion) {
  for (const uint8_t magic : {kPort, kFlags, kAdminMode, kStatus}) {
    EXPECT_EQ(get(magic, {129, 0}), std::nullopt);
    EXPECT_THAT(fake::taken_trace(), ElementsAre(traced(1, 16)));
  }
  const oid column[] = {1, 3, 9};
  oid name[MAX_OID_LEN] = {1, 3, 9, 129, 0};
  size_t length = 5;
  SmstPortRow row{9, 9, 9, 9};
  EXPECT_EQ(header_stpxSMSTPortTable(column, 3, name, &length, 1, &row, kFlags), -1);
  EXPECT_EQ(length, 5U);
  EXPECT_EQ(row.index, 0U) << "the row was cleared";
}

TEST_F(SmstPort, IndexColumnHasNoValueAndAnswersWithTheWholeIndex) {
  EXPECT_EQ(get(kPort, {70000}), std::nullopt);
  EXPECT_EQ(answered(), ".1.14.7.1.1.70000");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(entered(1, 15) +
                               Trace{in_header(": wrong object, magic=86\\n"), "snmp_set_detail(\"\")"}));
  EXPECT_EQ(get_next(kPort, {0xFFFFFFFF, 3}), std::nullopt);
  EXPECT_EQ(answered(), ".1.14.7.1.1.4294967295");
  EXPECT_EQ(get_next(kPort, {}), std::nullopt);
  EXPECT_EQ(answered(), ".1.14.7.1.1.0");
}

TEST_F(SmstPort, HeaderRoutineSucceedsForOtherMagics) {
  for (const int magic : {0, 86, 88, 90, 93, 87 + 256, -1}) {
    SmstPortRow row{9, 9, 9, 9};
    EXPECT_EQ(header(magic, &row, 70000), 0) << magic;
    EXPECT_EQ(fake::taken_trace().back(),
              in_header(": wrong object, magic=" + std::to_string(magic) + "\\n"));
    EXPECT_EQ(row.port_flags, 0);
    EXPECT_EQ(row.admin_mst_mode, 0);
    EXPECT_EQ(row.prestd_status, 0);
  }
}

TEST_F(SmstPort, OutsideMstModeNoColumnAnswers) {
  for (const uint32_t type : {0U, 3U, 5U, 0x104U}) {
    type_ = type;
    for (const uint8_t magic : {kPort, kFlags, kAdminMode, kStatus}) {
      const std::string returns = " get_stpxSpanningTreeType() returns " + std::to_string(type) + " \\n";
      EXPECT_EQ(get_next(magic, {}), std::nullopt);
      EXPECT_THAT(fake::taken_trace(),
                  ElementsAreArray(
                      Trace{traced(0, 14)} + type_read(type) +
                      Trace{in_header(returns), in_header(" Spanning Tree type is not MST, return\\n")}));
      EXPECT_EQ(get(magic, {129}), std::nullopt);
      EXPECT_EQ(answered(), ".1.14.7.1." + std::to_string(magic - 85) + ".129");
      fake::taken_trace();
    }
  }
}

TEST_F(SmstPort, TypeThatCannotBeRead) {
  fake::platform().next_sends = {{5}};
  EXPECT_EQ(get(kFlags, {129}), std::nullopt);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(Trace{traced(1, 15)} + sent(104, 1, "0x01020227", "00000000") +
                       Trace{logged("get_stpxSpanningTreeType(LINE) cmd_req_snmp_send_recv() failed\\n"),
                             "free(16000)", in_header(" get_stpxSpanningTreeType() failed rc: 5\\n")}));
  fake::platform().next_sends = {{5}};
  SmstPortRow row;
  EXPECT_EQ(header(kFlags, &row), -1);
}

TEST_F(SmstPort, RequestThatCannotBeAllocated) {
  for (const uint8_t magic : {kFlags, kAdminMode, kStatus}) {
    ledger::fail_malloc_after(1);
    EXPECT_EQ(get(magic, {129}), std::nullopt);
    EXPECT_EQ(fake::taken_trace().back(), logged_rejection("get_stp_entry_from_if_index failed\\n"));
  }
}

TEST_F(SmstPort, HeaderRoutineReturnsMinusOneWithoutARow) {
  SmstPortRow row;
  for (const int magic : {kFlags, kAdminMode, kStatus}) {
    EXPECT_EQ(header(magic, &row, 131), -1);
  }
}

TEST_F(SmstPort, HeaderRoutineFillsTheFieldsOfItsColumnAlone) {
  SmstPortRow row{9, 9, 9, 9};
  EXPECT_EQ(header(kAdminMode, &row), 0);
  EXPECT_EQ(row.index, 129U);
  EXPECT_EQ(row.admin_mst_mode, 1);
  EXPECT_EQ(row.port_flags, 0);
  EXPECT_EQ(row.prestd_status, 0);
  for (const int magic : {kFlags, kStatus}) {
    row = {9, 9, 9, 9};
    EXPECT_EQ(header(magic, &row), 0);
    EXPECT_EQ(row.index, 129U);
    EXPECT_EQ(row.admin_mst_mode, 0);
    EXPECT_EQ(row.port_flags, 0xD8);
    EXPECT_EQ(row.prestd_status, 2);
  }
}

}  // namespace
