// Tables that bridge ports number: what they share, the whole trace of their path, and the values of each.
#include <algorithm>
#include <iterator>

#include "base_port_trace.h"
#include "every_column.h"
#include "fake_platform.h"
#include "protocol_numbers.h"
#include "search_test.h"
#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "table_test.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

constexpr uint32_t kChannel3 = 0x16000003;
constexpr char kList[] = "129-130,4099";

const std::string kNoPort =
    logged_rejection("\\nget_stp_entry_with_port_id_from_vlan_mgr(LINE): returning FAILURE\\n");

std::string traced(int exact, int length) {
  return logged("exact " + std::to_string(exact) + " *length " + std::to_string(length) +
                " vp_namelen 14\\n");
}

// Every column.

class EveryBasePort : public EveryColumn {
 protected:
  static void link_of_129_is_down() { fake::platform().interfaces[0].oper_status = 2; }

  static Trace last(const Trace &trace, size_t count) {
    return {trace.end() - static_cast<std::ptrdiff_t>(std::min(count, trace.size())), trace.end()};
  }

  // The request came to no port, and ended with these lines.
  static void expect_not_found(const Trace &end) {
    const Trace expected = end + column().not_found;
    EXPECT_THAT(last(lines(), expected.size()), ElementsAreArray(expected));
  }
};

TEST_P(EveryBasePort, PortIsThatOfTheInterfaceThatTheReplyNames) {
  named_if_index_ = kPort130;
  EXPECT_EQ(get_row(), column().served);
  EXPECT_EQ(answered(), oid_of("130"));
  lines();
}

TEST_P(EveryBasePort, ReplyOfAnInterfaceWithoutAPortIsReleasedOnce) {
  named_if_index_ = 0xAB;
  EXPECT_EQ(get_row(), std::nullopt);
  EXPECT_EQ(answered(), row_oid());
  expect_not_found({"stp_ifindex2dot1dportnum(0x000000AB)", "cmd_snmp_free_rx_hndl",
                    logged("\\nget_stp_entry_with_port_id_from_vlan_mgr(LINE): returning FAILURE\\n")});
}

TEST_P(EveryBasePort, NoPortIsBehindTheLastOne) {
  EXPECT_EQ(get_next(column().magic, {130}), std::nullopt);
  EXPECT_EQ(answered(), oid_of("130"));
  expect_not_found(walked_to_the_end("129-130") + Trace{kNoPort});
}

TEST_P(EveryBasePort, MemberOfAChannelIsNoRow) {
  fake::platform().interfaces[0].channel_if_index = kChannel3;
  EXPECT_EQ(get_row(), std::nullopt);
  EXPECT_EQ(answered(), row_oid());
  expect_not_found({logged("validate_port_id_for_snmp_search_new(LINE): Port 0x1a000001 is a member of PC, "
                           "return no such inst\\n"),
                    kNoPort});
}

TEST_P(EveryBasePort, GetOfNoPortOrOfTheBareColumnFindsNone) {
  for (const std::vector<oid> &index : {std::vector<oid>{131}, {}, {0}}) {
    EXPECT_EQ(get(column().magic, index), std::nullopt);
    EXPECT_EQ(answered(), dotted(column().column) + dotted(index));
    expect_not_found(
        {logged_rejection("\\nvalidate_port_id_for_snmp_search_new(LINE): returning FAILURE.\\n"), kNoPort});
    EXPECT_EQ(column().header(index, 1, column().magic).result, -1);
  }
}

TEST_P(EveryBasePort, IndexAbove65535IsLookedUpAsItsLow16Bits) {
  EXPECT_NE(get(column().magic, {65536 + 129}), std::nullopt);
  EXPECT_EQ(answered(), oid_of("129"));
  EXPECT_NE(get_next(column().magic, {0xFFFF0000 + 129}), std::nullopt);
  EXPECT_EQ(answered(), oid_of("130"));
  EXPECT_NE(get_next(column().magic, {65536}), std::nullopt);
  EXPECT_EQ(answered(), oid_of("129"));
}

TEST_P(EveryBasePort, IsAskedForWhenItIsDownUnlessTheColumnHasAValueForThat) {
  link_of_129_is_down();
  EXPECT_EQ(get_row(), column().served_down.value_or(column().served));
  EXPECT_EQ(answered(), row_oid());
  std::vector<std::string> queries = column().queries;
  if (column().served_down) {
    queries.pop_back();
  }
  EXPECT_EQ(queries_, queries);
  const Trace trace = lines();
  EXPECT_EQ(std::count(trace.begin(), trace.end(), link_asked(kPort129).front()),
            column().served_down ? 1 : 0);
  EXPECT_EQ(get_next(column().magic, {}), column().served_down.value_or(column().served));
  EXPECT_EQ(answered(), oid_of("129"));
  EXPECT_EQ(get_next_row(), column().served) << "the next port is up";
}

TEST_P(EveryBasePort, IsAskedForWhenItsLinkCannotBeTold) {
  link_of_129_is_down();
  fake::platform().interfaces[0].has_oper_status = false;
  EXPECT_EQ(get_row(), column().served);
}

INSTANTIATE_TEST_SUITE_P(Columns, EveryBasePort,
                         ::testing::ValuesIn(columns_where([](const TableColumn &column) {
                           return column.index == std::vector<oid>{129};
                         })),
                         name_of);

// A table over two ports and a port-channel. The process's rows name the interface that was asked for.
class BasePortTable : public TableTest {
 protected:
  BasePortTable(FindVarMethod *handler, const std::vector<uint32_t> &tokens) : TableTest(handler) {
    for (const uint32_t token : tokens) {
      row_holds(token, 1);
    }
  }

  void SetUp() override {
    TableTest::SetUp();
    empty_base_port_cache();
    fake::platform().interfaces = {{.if_index = kPort129, .port = 129, .vlans = {1}},
                                   {.if_index = kPort130, .port = 130, .vlans = {20}},
                                   {.if_index = kChannel3, .port = 4099, .type = 22, .vlans = {10}}};
    fake::platform().answer = [this](const fake::Request &request) {
      if (request.command == protocol::kGlobalSettings) {
        return fake::Send{.attributes = fake::Attributes{{protocol::kMode, fake::number(mode_)}}};
      }
      fake::Attributes attributes = row_;
      attributes[protocol::kInterface] = request.keys.begin()->second;
      return fake::Send{.attributes = attributes};
    };
  }

  void row_holds(uint32_t token, uint32_t number) { row_[token] = fake::number(number); }
  void row_lacks(uint32_t token) { row_.erase(token); }
  void mode_is(uint32_t mode) { mode_ = mode; }

  static void link_of_129_is_down() { fake::platform().interfaces[0].oper_status = 2; }

 private:
  uint32_t mode_ = 4;
  fake::Attributes row_;
};

// Loop guard: the whole trace of the path.

constexpr uint8_t kLoopGuardSetting = 117;

Trace queried(uint32_t if_index) { return port_queried_and_found(118, "0x0C020105", if_index); }

Trace value_read(const std::string &value) {
  return {"cmd_rsp_attr_get(0x0C02A001)", "cmd_rsp_attr_get(0x0202A01A)", logged("value " + value + "\\n"),
          "cmd_snmp_free_rx_hndl"};
}

class LoopGuard : public BasePortTable {
 protected:
  LoopGuard() : BasePortTable(get_stpxLoopGuardConfigTable, {protocol::kGuard}) {}
};

TEST_F(LoopGuard, GetAsksForExactlyThatPort) {
  EXPECT_EQ(number(get(kLoopGuardSetting, {130})), 1);
  EXPECT_EQ(answered(), ".1.8.1.1.3.130");
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(Trace{traced(1, 15)} + exact_port(130, kPort130) +
                                                    queried(kPort130) + value_read("1")));
}

TEST_F(LoopGuard, GetNextOfTheBareColumnAnswersTheLowestPort) {
  EXPECT_EQ(number(get_next(kLoopGuardSetting, {})), 1);
  EXPECT_EQ(answered(), ".1.8.1.1.3.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{traced(0, 14)} + base_ports_fetched() + walked_to(129, kPort129, kList) +
                               queried(kPort129) + value_read("1")));
}

TEST_F(LoopGuard, WalkEndsBehindTheLastPort) {
  EXPECT_EQ(number(get_next(kLoopGuardSetting, {129})), 1);
  EXPECT_EQ(answered(), ".1.8.1.1.3.130");
  EXPECT_EQ(number(get_next(kLoopGuardSetting, {130})), 1);
  EXPECT_EQ(answered(), ".1.8.1.1.3.4099");
  fake::taken_trace();
  EXPECT_EQ(get_next(kLoopGuardSetting, {4099}), std::nullopt);
  EXPECT_EQ(answered(), ".1.8.1.1.3.4099");
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(Trace{traced(0, 15)} + base_ports_copied() +
                                                    walked_to_the_end(kList) + Trace{kNoPort}));
}

TEST_F(LoopGuard, SettingIsLoggedAsASignedNumber) {
  row_holds(protocol::kGuard, 0xFFFFFFFF);
  EXPECT_EQ(number(get(kLoopGuardSetting, {129})), -1);
  EXPECT_THAT(fake::taken_trace(), Contains(logged("value -1\\n")));
}

TEST_F(LoopGuard, FailedQuery) {
  fake::platform().next_sends = {no_entry()};
  EXPECT_EQ(get_next(kLoopGuardSetting, {129}), std::nullopt);
  EXPECT_EQ(answered(), ".1.8.1.1.3.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{traced(0, 15)} + base_ports_fetched() + walked_to(130, kPort130, kList) +
                               port_queried_in_vain(118, "0x0C020105", kPort130)));
}

// RSTP: the link type, and the whole trace of a column that has a value for ports that are down.

constexpr uint8_t kRstpIndex = 54;
constexpr uint8_t kLinkType = 56;

constexpr char kPortKey[] = "0x0C020105";

std::string in_header_rejected(const std::string &text) {
  return logged_rejection("header_stpxRSTPPortTable(LINE)" + text + "\\n");
}

Trace link_type_queried(uint32_t if_index) { return port_queried_and_found(105, kPortKey, if_index); }

Trace link_type_read(const std::string &value) {
  return {
      "cmd_rsp_attr_get(0x0202A01E)",
      logged("parse_reply_stpxRSTPPortOperLinkType(LINE): cmd_rsp_attr_get success, val = " + value + "\\n"),
      "cmd_snmp_free_rx_hndl"};
}

class RstpPort : public BasePortTable {
 protected:
  RstpPort() : BasePortTable(get_stpxRSTPPortTable, {protocol::kPointToPoint}) {}
};

TEST_F(RstpPort, GetOfTheLinkTypeAsksForExactlyThatPort) {
  EXPECT_EQ(number(get(kLinkType, {4099})), 1);
  EXPECT_EQ(answered(), ".1.12.1.1.3.4099");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{traced(1, 15)} + exact_port(4099, kChannel3) + link_asked(kChannel3) +
                               link_type_queried(kChannel3) + link_type_read("1")));
}

TEST_F(RstpPort, LinkTypeIsOneForAnyValueButZero) {
  for (const int32_t value : {1, 2, 256, 2147483647, -1}) {
    row_holds(protocol::kPointToPoint, static_cast<uint32_t>(value));
    EXPECT_EQ(number(get(kLinkType, {129})), 1);
    EXPECT_THAT(fake::taken_trace(),
                ElementsAreArray(Trace{traced(1, 15)} + exact_port(129, kPort129) + link_asked(kPort129) +
                                 link_type_queried(kPort129) + link_type_read(std::to_string(value))));
  }
}

TEST_F(RstpPort, ReplyWithoutTheLinkTypeAnswersThree) {
  row_lacks(protocol::kPointToPoint);
  EXPECT_EQ(number(get(kLinkType, {129})), 3);
  EXPECT_EQ(answered(), ".1.12.1.1.3.129");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{traced(1, 15)} + exact_port(129, kPort129) + link_asked(kPort129) +
                               link_type_queried(kPort129) +
                               Trace{"cmd_rsp_attr_get(0x0202A01E)", "cmd_snmp_free_rx_hndl"}));
  fake::platform().attributes_without_value[protocol::kPointToPoint] = 4;
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

TEST_F(RstpPort, IndexColumnHasNoValueAndAnswersWithTheWholeIndex) {
  EXPECT_EQ(get(kRstpIndex, {70000}), std::nullopt);
  EXPECT_EQ(answered(), ".1.12.1.1.1.70000");
  EXPECT_THAT(fake::taken_trace(), ElementsAre(traced(1, 15), in_header_rejected(": Wrong object, magic 54"),
                                               "snmp_set_detail(\"\")"));
  EXPECT_EQ(get_next(kRstpIndex, {0xFFFFFFFF, 3}), std::nullopt);
  EXPECT_EQ(answered(), ".1.12.1.1.1.4294967295");
  EXPECT_EQ(get_next(kRstpIndex, {}), std::nullopt);
  EXPECT_EQ(answered(), ".1.12.1.1.1.0");
}

TEST_F(RstpPort, HeaderRoutineSucceedsForOtherMagics) {
  for (const int magic : {0, 54, 57, 55 + 256, -1}) {
    const oid column[] = {1, 3, 9};
    oid name[MAX_OID_LEN] = {1, 3, 9, 70000};
    size_t length = 4;
    RstpPortRow row{9, 9, 9, 9};
    EXPECT_EQ(header_stpxRSTPPortTable(column, 3, name, &length, 1, &row, magic), 0) << magic;
    EXPECT_EQ(fake::taken_trace().back(),
              in_header_rejected(": Wrong object, magic " + std::to_string(magic)));
    EXPECT_EQ(row.setting, 0);
    EXPECT_EQ(row.oper_link_type, 0);
  }
}

// MST: flags, admin mode and pre-standard status.

constexpr uint8_t kSmstIndex = 86;
constexpr uint8_t kFlags = 87;
constexpr uint8_t kAdminMode = 91;
constexpr uint8_t kStatus = 92;

constexpr char kMstPortKey[] = "0x0C02018B";

constexpr uint32_t kFlagTokens[] = {protocol::kEdge, protocol::kBoundary, protocol::kPeer,
                                    protocol::kDispute};

std::string in_header(const std::string &text) { return logged("header_stpxSMSTPortTable(LINE)" + text); }

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

Trace flags_queried(uint32_t if_index) { return port_queried_and_found(111, kMstPortKey, if_index); }

const Trace kFlagsRead{"cmd_rsp_attr_get(0x0C02A001)", "cmd_rsp_attr_get(0x0202A01D)",
                       "cmd_rsp_attr_get(0x0202A028)", "cmd_rsp_attr_get(0x0202A027)",
                       "cmd_rsp_attr_get(0x0202A02D)", "cmd_rsp_attr_get(0x0202A02E)",
                       "cmd_snmp_free_rx_hndl"};

class SmstPort : public BasePortTable {
 protected:
  SmstPort()
      : BasePortTable(get_stpxSMSTPortTable,
                      {protocol::kPreStandardMst, protocol::kEdge, protocol::kBoundary, protocol::kPeer,
                       protocol::kDispute, protocol::kPreStandardPeer}) {}
};

TEST_F(SmstPort, AdminModeIsOneForAnyValueButZero) {
  for (const uint32_t value : {1U, 2U, 0x100U, 0x80000000U, 0xFFFFFFFFU}) {
    row_holds(protocol::kPreStandardMst, value);
    EXPECT_EQ(number(get(kAdminMode, {129})), 1);
  }
  row_holds(protocol::kPreStandardMst, 0);
  EXPECT_EQ(number(get(kAdminMode, {129})), 2);
}

TEST_F(SmstPort, FlagsAreBitsOfAnOctet) {
  const std::pair<uint32_t, char> bits[] = {{protocol::kEdge, '\x80'},
                                            {protocol::kBoundary, '\x40'},
                                            {protocol::kPeer, '\x10'},
                                            {protocol::kDispute, '\x08'}};
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
  fake::platform().attributes_without_value[protocol::kPeer] = 4;
  EXPECT_EQ(get(kFlags, {129}), std::string(1, '\0'));
}

TEST_F(SmstPort, StatusIsThreeForZeroAndTwoForAnyOtherValue) {
  for (const uint32_t value : {1U, 2U, 3U, 0x80000000U}) {
    row_holds(protocol::kPreStandardPeer, value);
    EXPECT_EQ(number(get(kStatus, {129})), 2);
  }
  row_holds(protocol::kPreStandardPeer, 0);
  EXPECT_EQ(number(get(kStatus, {129})), 3);
}

TEST_F(SmstPort, MissingStatusIsOneAndLeavesTheFlags) {
  row_lacks(protocol::kPreStandardPeer);
  EXPECT_EQ(number(get(kStatus, {129})), 1);
  EXPECT_EQ(get(kFlags, {129}), "\xD8");
  row_holds(protocol::kPreStandardPeer, 0);
  fake::platform().attributes_without_value[protocol::kPreStandardPeer] = 4;
  EXPECT_EQ(number(get(kStatus, {129})), 1);
}

TEST_F(SmstPort, IndexColumnHasNoValueAndAnswersWithTheWholeIndex) {
  EXPECT_EQ(get(kSmstIndex, {70000}), std::nullopt);
  EXPECT_EQ(answered(), ".1.14.7.1.1.70000");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(entered(1, 15) +
                               Trace{in_header(": wrong object, magic=86\\n"), "snmp_set_detail(\"\")"}));
  EXPECT_EQ(get_next(kSmstIndex, {0xFFFFFFFF, 3}), std::nullopt);
  EXPECT_EQ(answered(), ".1.14.7.1.1.4294967295");
  EXPECT_EQ(get_next(kSmstIndex, {}), std::nullopt);
  EXPECT_EQ(answered(), ".1.14.7.1.1.0");
}

TEST_F(SmstPort, HeaderRoutineSucceedsForOtherMagics) {
  for (const int magic : {0, 86, 88, 90, 93, 87 + 256, -1}) {
    const oid column[] = {1, 3, 9};
    oid name[MAX_OID_LEN] = {1, 3, 9, 70000};
    size_t length = 4;
    SmstPortRow row{9, 9, 9, 9};
    EXPECT_EQ(header_stpxSMSTPortTable(column, 3, name, &length, 1, &row, magic), 0) << magic;
    EXPECT_EQ(fake::taken_trace().back(),
              in_header(": wrong object, magic=" + std::to_string(magic) + "\\n"));
    EXPECT_EQ(row.port_flags, 0);
    EXPECT_EQ(row.admin_mst_mode, 0);
    EXPECT_EQ(row.prestd_status, 0);
  }
}

TEST_F(SmstPort, OutsideMstModeNoColumnAnswers) {
  for (const uint32_t type : {0U, 3U, 5U, 0x104U}) {
    mode_is(type);
    for (const uint8_t magic : {kSmstIndex, kFlags, kAdminMode, kStatus}) {
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

}  // namespace
