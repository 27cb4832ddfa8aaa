// The two tables that walk trees: modes, searches, what a reply holds, and each way to fail.
#include <algorithm>
#include <cstdint>
#include <deque>
#include <iterator>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "protocol_numbers.h"
#include "scripted_process.h"
#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "table_test.h"
#include "tree_walk_test.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::Not;

constexpr char kTypeAsked[] = "asked for the mode";

constexpr uint32_t kMst = 4;
constexpr uint32_t kRapidPvst = 5;

class TreeTableTest : public TableTest {
 protected:
  // The table, and the command and tokens of the queries for its rows.
  TreeTableTest(const char *name, FindVarMethod *handler, uint32_t command, uint32_t interface_key,
                uint32_t tree_key)
      : TableTest(handler), name_(name), command_(command), process_(interface_key, tree_key) {}

  void SetUp() override;
  void TearDown() override;

  // The switch's mode, and the command library's code where it cannot be told.
  void mode_is(uint32_t type, int result = 0) {
    type_ = type;
    type_result_ = result;
  }

  // What the spanning-tree process answers, query by query.
  void script(std::deque<fake::Send> answers) { process_.script(std::move(answers)); }

  // The entry of a port in a tree, with more attributes.
  static fake::Send row(uint32_t tree, uint32_t if_index, const fake::Attributes &more);

  // Queries, replies released, the clock, and what header routine, parser and handler say.
  Trace story() const;

  std::string header_line(const std::string &text) const;
  std::string row_of(uint32_t tree, uint32_t if_index) const { return get_of(tree, if_index, command_); }
  std::string probed(uint32_t tree) const { return get_next_of(tree, 0, command_); }
  std::string stepped_from(uint32_t tree) const { return get_next_of(tree, kBehindLastPort, command_); }

  static std::string begun(int exact, int length);

  // The mode is asked for.
  Trace type_read() const;

  // The tree runs.
  Trace checked(uint32_t tree) const { return {probed(tree), kReleased}; }

  // The next row is refused, as it does not advance.
  Trace refused(uint32_t tree, uint32_t in_tree, int port, int in_port) const;

 private:
  const char *name_;
  uint32_t command_;
  uint32_t type_ = kRapidPvst;
  int type_result_ = 0;
  ScriptedProcess process_;
};

void TreeTableTest::SetUp() {
  TableTest::SetUp();
  fake::platform().interfaces = {
      {.if_index = kPort1, .port = 129, .vlans = {10, 20}},
      {.if_index = kPort2, .port = 130, .vlans = {10}},
      {.if_index = kDownPort, .port = 131, .oper_status = 2, .vlans = {10, 20}},
      {.if_index = kChannel, .port = 4097, .type = 22, .vlans = {20}},
  };
  fake::platform().answer = [this](const fake::Request &request) {
    if (request.command != protocol::kGlobalSettings) {
      return process_.answer(request);
    }
    fake::trace(kTypeAsked);
    return fake::Send{.result = type_result_,
                      .attributes = fake::Attributes{{protocol::kMode, fake::number(type_)}}};
  };
}

void TreeTableTest::TearDown() {
  EXPECT_TRUE(process_.is_done()) << "answers that nobody asked for";
  TableTest::TearDown();
}

fake::Send TreeTableTest::row(uint32_t tree, uint32_t if_index, const fake::Attributes &more) {
  fake::Send send = entry(tree, if_index);
  send.attributes->insert(more.begin(), more.end());
  return send;
}

Trace TreeTableTest::story() const {
  const std::string parser = std::string("parse_reply_") + name_;
  const std::string header = std::string("header_") + name_;
  const auto is_told = [&](const std::string &line) {
    for (const char *start : {"asked", kReleased, "FREED", "gettimeofday", "snmp_set_detail"}) {
      if (line.starts_with(start)) {
        return true;
      }
    }
    for (const std::string_view part : {std::string_view(parser), std::string_view(header),
                                        std::string_view("\"exact "), std::string_view("returning NULL")}) {
      if (line.find(part) != std::string::npos) {
        return true;
      }
    }
    return false;
  };
  const Trace lines = taken_lines();
  Trace told;
  std::copy_if(lines.begin(), lines.end(), std::back_inserter(told), is_told);
  return told;
}

std::string TreeTableTest::header_line(const std::string &text) const {
  return logged("header_" + std::string(name_) + "(LINE)" + text + "\\n");
}

std::string TreeTableTest::begun(int exact, int length) {
  return logged("exact " + std::to_string(exact) + " *length " + std::to_string(length) +
                " vp_namelen 14\\n");
}

Trace TreeTableTest::type_read() const {
  return {kTypeAsked, kReleased, header_line(" get_stpxSpanningTreeType() returns " + shown(type_) + " ")};
}

Trace TreeTableTest::refused(uint32_t tree, uint32_t in_tree, int port, int in_port) const {
  return {header_line(" Looping detected. tree_id=" + shown(tree) + ", in_tree_id=" + shown(in_tree) +
                      ", port_id=" + std::to_string(port) + ", in_port_id=" + std::to_string(in_port))};
}

// A request of a header routine for the column 1.3.9 with these arcs behind it.
template <class Row>
struct HeaderRequest {
  int result = 0;
  Row row{};
  std::vector<oid> answered;
};

template <class Row>
HeaderRequest<Row> ask_header(int (*header)(const oid *, size_t, oid *, size_t *, int, Row *),
                              const std::vector<oid> &arcs, int exact, const Row &stale) {
  const std::vector<oid> column{1, 3, 9};
  HeaderRequest<Row> request{.row = stale, .answered = column};
  request.answered.insert(request.answered.end(), arcs.begin(), arcs.end());
  size_t length = request.answered.size();
  request.answered.resize(MAX_OID_LEN);
  request.result =
      header(column.data(), column.size(), request.answered.data(), &length, exact, &request.row);
  request.answered.resize(length);
  return request;
}

// Rapid-PVST ports.

constexpr uint8_t kFlagsColumn = 109;

const std::string kEdgeBit("\x80", 1);
const std::string kBothBits("\x90", 1);
const std::string kNoBit("\0", 1);

const RpvstPortRow kStaleRpvstRow{99, 99, 0xFF};

class RpvstPort : public TreeTableTest {
 protected:
  RpvstPort()
      : TreeTableTest("stpxRPVSTPortTable", get_stpxRPVSTPortTable, protocol::kRapidPvstPorts,
                      protocol::kInterfaceKey, protocol::kVlanTreeKey) {}

  static fake::Send flags(uint32_t tree, uint32_t if_index, uint32_t edge, uint32_t peer) {
    return row(tree, if_index,
               {{protocol::kEdge, fake::number(edge)}, {protocol::kPeer, fake::number(peer)}});
  }

  static fake::Send edge_port(uint32_t tree, uint32_t if_index) { return flags(tree, if_index, 1, 0); }
};

TEST_F(RpvstPort, GetOfADownPort) {
  script({edge_port(20, kDownPort)});
  EXPECT_EQ(get(kFlagsColumn, {20, 131}), kEdgeBit) << "only walks leave it out";
}

TEST_F(RpvstPort, GetWorksInAnyModeAndDoesNotAskForIt) {
  for (const uint32_t type : {0U, 1U, 3U, kMst, kRapidPvst, 6U}) {
    mode_is(type);
    script({edge_port(10, kPort1)});
    EXPECT_EQ(get(kFlagsColumn, {10, 129}), kEdgeBit);
  }
  mode_is(kRapidPvst, 4);
  script({edge_port(10, kPort1)});
  EXPECT_EQ(get(kFlagsColumn, {10, 129}), kEdgeBit);
  EXPECT_THAT(fake::taken_trace(), Not(Contains("asked for the mode")));
}

TEST_F(RpvstPort, GetOfATreeAloneAsksForPortZero) {
  for (const std::vector<oid> &index : {std::vector<oid>{}, {10}, {10, 0}, {10, 65536}}) {
    EXPECT_EQ(get(kFlagsColumn, index), std::nullopt);
    EXPECT_THAT(story(), ElementsAre(begun(1, 14 + static_cast<int>(index.size())),
                                     header_line(" get_exact_stp_dual_indices_entry() failed")));
  }
}

TEST_F(RpvstPort, GetOfTreeZeroIsRefused) {
  EXPECT_EQ(get(kFlagsColumn, {0, 129}), std::nullopt);
  EXPECT_THAT(story(), ElementsAre(begun(1, 16), header_line(" get_exact_stp_dual_indices_entry() failed")));
}

// The flags.

TEST_F(RpvstPort, FlagsOfTheReply) {
  struct Case {
    uint32_t edge;
    uint32_t peer;
    char served;
  };
  for (const auto &[edge, peer, served] : {Case{0, 0, '\0'},
                                           {1, 0, '\x80'},
                                           {2, 0, '\x80'},
                                           {0x80000000, 0, '\x80'},
                                           {256, 0, '\x80'},
                                           {0, 1, '\x10'},
                                           {0, 2, '\0'},
                                           {0, 257, '\0'},
                                           {0, 0xFFFFFFFF, '\0'},
                                           {1, 1, '\x90'},
                                           {1, 2, '\x80'},
                                           {0xFFFFFFFF, 1, '\x90'}}) {
    script({flags(10, kPort1, edge, peer)});
    EXPECT_EQ(get(kFlagsColumn, {10, 129}), std::string(1, served)) << edge << ' ' << peer;
  }
}

TEST_F(RpvstPort, FlagsOfTheFormerRowAreForgotten) {
  script({flags(10, kPort1, 1, 1), row(10, kPort1, {{protocol::kPeer, fake::number(0)}})});
  EXPECT_EQ(get(kFlagsColumn, {10, 129}), kBothBits);
  EXPECT_EQ(get(kFlagsColumn, {10, 129}), kNoBit);
}

TEST_F(RpvstPort, ReplyWithoutTheEdgeFlag) {
  script({row(10, kPort1, {{protocol::kPeer, fake::number(1)}})});
  EXPECT_EQ(get(kFlagsColumn, {10, 129}), std::string(1, '\x10'));
}

TEST_F(RpvstPort, NextReplyWithoutATreeAnswersWithTheRequestedOne) {
  const fake::Send bare{.attributes = fake::Attributes{{protocol::kPeer, fake::number(0)}}};
  // The search has moved on to tree 20; the row does not say so.
  script({no_entry(), entry(20, kPort1), bare});
  EXPECT_EQ(get_next(kFlagsColumn, {15, 0}), kNoBit);
  EXPECT_EQ(answered(), ".1.13.1.1.3.15.129");
  // Tree 0 is searched as tree 1, and stays the one that was asked for.
  script({entry(10, kPort1), bare});
  EXPECT_EQ(get_next(kFlagsColumn, {}), kNoBit);
  EXPECT_EQ(answered(), ".1.13.1.1.3.0.129");
}

// GETNEXT.

TEST_F(RpvstPort, GetNextWholeTrace) {
  fake::platform().answer = nullptr;
  fake::platform().next_sends = {
      {.attributes = fake::Attributes{{protocol::kMode, fake::number(kRapidPvst)}}},
      edge_port(10, kPort1),
      edge_port(10, kPort2)};
  EXPECT_EQ(get_next(kFlagsColumn, {10, 129}), kEdgeBit);
  EXPECT_EQ(answered(), ".1.13.1.1.3.10.130");
  const auto search_line = [](const std::string &text) {
    return logged("\\nget_next_stp_dual_indices_entry_rpvst(LINE)" + text + "\\n");
  };
  EXPECT_THAT(
      taken_lines(),
      ElementsAreArray(Trace{begun(0, 16)} + sent(104, 1, "0x01020227", "00000000") +
                       Trace{"free(16000)", "cmd_rsp_attr_get(0x0202B001)", logged("value 5\\n"), kReleased,
                             header_line(" get_stpxSpanningTreeType() returns 5 ")} +
                       queried_and_found(protocol::kRapidPvstPorts, 3, 10, 0, 10, kPort1) + Trace{kReleased} +
                       port_found("10", "129-131", 130, kPort2) +
                       queried_and_found(protocol::kRapidPvstPorts, 1, 10, kPort2, 10, kPort2) +
                       Trace{search_line(" Get Successful"), "stp_ifindex2dot1dportnum(0x000007D2)",
                             search_line(": returning tree_index: 10, port_index: 130"),
                             "cmd_rsp_attr_get(0x1402A006)", "cmd_rsp_attr_get(0x0C02A001)",
                             "cmd_rsp_attr_get(0x0202A01D)", "cmd_rsp_attr_get(0x0202A027)", kReleased}));
}

TEST_F(RpvstPort, GetNextOfTheBareColumnStartsFromTheFirstTree) {
  script({entry(10, kPort1), edge_port(10, kPort1)});
  EXPECT_EQ(get_next(kFlagsColumn, {}), kEdgeBit);
  EXPECT_EQ(answered(), ".1.13.1.1.3.10.129");
  EXPECT_THAT(story(), ElementsAreArray(Trace{begun(0, 14)} + type_read() + checked(1) +
                                        Trace{row_of(10, kPort1), kReleased}));
}

TEST_F(RpvstPort, GetNextOfATreeAloneStartsFromItsPortZero) {
  script({entry(20, kPort1), edge_port(20, kPort1)});
  EXPECT_EQ(get_next(kFlagsColumn, {20}), kEdgeBit);
  EXPECT_EQ(answered(), ".1.13.1.1.3.20.129");
  EXPECT_THAT(story(), ElementsAreArray(Trace{begun(0, 15)} + type_read() + checked(20) +
                                        Trace{row_of(20, kPort1), kReleased}));
}

TEST_F(RpvstPort, GetNextLeavesOutPortsThatAreDown) {
  script({entry(20, kPort1), edge_port(20, kChannel)});
  EXPECT_EQ(get_next(kFlagsColumn, {20, 129}), kEdgeBit);
  EXPECT_EQ(answered(), ".1.13.1.1.3.20.4097");
  EXPECT_THAT(fake::taken_trace(), Contains(looked_at(kDownPort, 1)));
}

TEST_F(RpvstPort, GetNextInMstModeYieldsNothing) {
  mode_is(kMst);
  const auto refusal = [this](const std::string &indices) {
    return Trace{header_line("  tree_type is stpxSpanningTreeType_MST, not supported,  return failed"),
                 header_line(" Looping detected. " + indices)};
  };
  EXPECT_EQ(get_next(kFlagsColumn, {}), std::nullopt);
  EXPECT_EQ(answered(), ".1.13.1.1.3");
  EXPECT_THAT(story(), ElementsAreArray(Trace{begun(0, 14)} + type_read() +
                                        refusal("tree_id=0, in_tree_id=0, port_id=0, in_port_id=0")));
  EXPECT_EQ(get_next(kFlagsColumn, {10, 129}), std::nullopt);
  EXPECT_THAT(story(), ElementsAreArray(Trace{begun(0, 16)} + type_read() +
                                        refusal("tree_id=10, in_tree_id=10, port_id=129, in_port_id=129")));
  EXPECT_EQ(ask_header(header_stpxRPVSTPortTable, {10}, 0, kStaleRpvstRow).result, -1);
}

TEST_F(RpvstPort, GetNextInOtherModesYieldsNothing) {
  for (const uint32_t type : {0U, 1U, 2U, 3U, 6U, 0xFFFFFFFFU}) {
    mode_is(type);
    EXPECT_EQ(get_next(kFlagsColumn, {10, 129}), std::nullopt);
    const std::string told = shown(type);
    EXPECT_THAT(story(), ElementsAre(begun(0, 16), "asked for the mode", kReleased,
                                     header_line(" get_stpxSpanningTreeType() returns " + told + " "),
                                     header_line(" get_stpxSpanning_tree_type() retun wrong type: " + told)));
  }
  EXPECT_EQ(ask_header(header_stpxRPVSTPortTable, {10}, 0, kStaleRpvstRow).result, -1);
}

TEST_F(RpvstPort, GetNextWithoutTheModeFails) {
  mode_is(kRapidPvst, 5);
  EXPECT_EQ(get_next(kFlagsColumn, {10, 129}), std::nullopt);
  EXPECT_THAT(story(), ElementsAre(begun(0, 16), "asked for the mode",
                                   header_line(" get_stpxSpanningTreeType() failed rc: 5")));
  EXPECT_EQ(ask_header(header_stpxRPVSTPortTable, {10}, 0, kStaleRpvstRow).result, -1);
}

TEST_F(RpvstPort, GetNextBehindTheLastRow) {
  script({entry(20, kPort1), no_entry()});
  EXPECT_EQ(get_next(kFlagsColumn, {20, 4097}), std::nullopt);
  EXPECT_EQ(answered(), ".1.13.1.1.3.20.4097");
  EXPECT_THAT(story(),
              ElementsAreArray(
                  Trace{begun(0, 16)} + type_read() + checked(20) +
                  Trace{stepped_from(20), header_line(" get_next_stp_dual_indices_entry_rpvst() failed")}));
  script({no_entry(), no_entry()});
  EXPECT_EQ(ask_header(header_stpxRPVSTPortTable, {10}, 0, kStaleRpvstRow).result, -1);
}

TEST_F(RpvstPort, NextRowThatDoesNotAdvanceIsRefused) {
  // An earlier tree, the same row, an earlier port.
  struct Case {
    uint32_t tree;
    uint32_t if_index;
    int port;
  };
  for (const auto &[tree, if_index, port] :
       {Case{9, kChannel, 4097}, {10, kPort1, 129}, {10, kPort2, 130}, {0, kChannel, 4097}}) {
    script({entry(10, kPort1), edge_port(tree, if_index)});
    fake::platform().interfaces[2].oper_status = 1;
    EXPECT_EQ(get_next(kFlagsColumn, {10, 130}), std::nullopt);
    EXPECT_EQ(answered(), ".1.13.1.1.3.10.130");
    EXPECT_THAT(story(), ElementsAreArray(Trace{begun(0, 16)} + type_read() + checked(10) +
                                          Trace{row_of(10, kDownPort)} + refused(tree, 10, port, 130) +
                                          Trace{kReleased}));
  }
  script({entry(10, kPort1), edge_port(10, kPort1)});
  EXPECT_EQ(ask_header(header_stpxRPVSTPortTable, {10, 130}, 0, kStaleRpvstRow).result, -1);
}

TEST_F(RpvstPort, NextRowMayAdvanceByPortOrByTree) {
  for (const auto &[tree, if_index, index] :
       {std::tuple<uint32_t, uint32_t, std::string>{10, kDownPort, "10.131"},
        {11, kPort1, "11.129"},
        {0x80000000, kPort1, "2147483648.129"}}) {
    script({entry(10, kPort1), edge_port(tree, if_index)});
    fake::platform().interfaces[2].oper_status = 1;
    EXPECT_EQ(get_next(kFlagsColumn, {10, 130}), kEdgeBit);
    EXPECT_EQ(answered(), ".1.13.1.1.3." + index);
  }
}

TEST_F(RpvstPort, LoopCheckTakesTreesUnsigned) {
  script({no_entry(), entry(10, kPort1), edge_port(10, kPort1)});
  EXPECT_EQ(get_next(kFlagsColumn, {0xFFFFFFFF, 0}), std::nullopt);
  EXPECT_THAT(story(), ElementsAreArray(Trace{begun(0, 16)} + type_read() +
                                        Trace{probed(0xFFFFFFFF), stepped_from(0xFFFFFFFF), kReleased,
                                              row_of(10, kPort1)} +
                                        refused(10, 0xFFFFFFFF, 129, 0) + Trace{kReleased}));
}

// Port roles.

constexpr uint8_t kRoleColumn = 60;

const RstpPortRoleRow kStaleRoleRow{99, 99, 99};

class RstpPortRole : public TreeTableTest {
 protected:
  RstpPortRole(uint32_t type, uint32_t command, uint32_t interface_key, uint32_t tree_key)
      : TreeTableTest("stpxRSTPPortRoleTable", get_stpxRSTPPortRoleTable, command, interface_key, tree_key),
        mode_(type) {}

  void SetUp() override {
    TreeTableTest::SetUp();
    mode_is(mode_);
    fake::platform().mst_contexts = {{0, {1}}, {10, {10}}, {20, {19, 20}}};
  }

  static fake::Send role(uint32_t tree, uint32_t if_index, uint32_t role) {
    return row(tree, if_index, {{protocol::kPortRole, fake::number(role)}});
  }

  Trace started(int exact, int length, uint32_t tree, int port) const {
    return Trace{begun(exact, length),
                 header_line(" port_id: " + std::to_string(port) + ", tree_id:" + shown(tree))} +
           type_read();
  }

  // The search was timed, and returned this. These lines end without a newline.
  static Trace timed(int result) {
    const std::string header = "header_stpxRSTPPortRoleTable(LINE)";
    return {logged(header + ": get_next_stp_dual_indices_entry_from_im() begin: (sec=1000, usec=7), end: "
                            "(sec=1001, usec=7)"),
            logged(header + " get_next_stp_dual_indices_entry_from_im() returns: " + std::to_string(result))};
  }

  static std::string handler_failure() { return logged("returning NULL\\n"); }

 private:
  uint32_t mode_;
};

class RstpPortRoleRpvst : public RstpPortRole {
 protected:
  RstpPortRoleRpvst() : RstpPortRole(kRapidPvst, 105, protocol::kInterfaceKey, protocol::kVlanTreeKey) {}
};

class RstpPortRoleMst : public RstpPortRole {
 protected:
  RstpPortRoleMst() : RstpPortRole(kMst, 111, protocol::kMstInterfaceKey, protocol::kMstTreeKey) {}
};

// GET, which makes its queries as the mode has it.

TEST_F(RstpPortRoleRpvst, GetOfTreeZeroIsRefused) {
  EXPECT_EQ(get(kRoleColumn, {0, 129}), std::nullopt);
  EXPECT_THAT(story(), ElementsAreArray(started(1, 16, 0, 129) +
                                        Trace{header_line(" get_exact_stp_dual_indices_entry() failed, "
                                                          "commandId: STP_CMDID_SHOW_VLAN_INTERFACE"),
                                              handler_failure()}));
}

TEST_F(RstpPortRoleMst, GetOfTreeZeroIsOneOfTheCist) {
  script({role(0, kDownPort, 1)});
  EXPECT_EQ(number(get(kRoleColumn, {0, 131})), 1);
  EXPECT_EQ(answered(), ".1.12.2.1.3.0.131");
}

TEST_F(RstpPortRoleMst, GetOfATreeAloneAsksForPortZero) {
  EXPECT_EQ(get(kRoleColumn, {10}), std::nullopt);
  EXPECT_THAT(story(), ElementsAreArray(started(1, 15, 10, 0) +
                                        Trace{header_line(" get_exact_stp_dual_indices_entry() failed"),
                                              handler_failure()}));
  EXPECT_EQ(get(kRoleColumn, {}), std::nullopt);
  EXPECT_THAT(story(), ElementsAreArray(started(1, 14, 0, 0) +
                                        Trace{header_line(" get_exact_stp_dual_indices_entry() failed"),
                                              handler_failure()}));
}

TEST_F(RstpPortRoleRpvst, GetInOtherModesYieldsNothing) {
  for (const uint32_t type : {0U, 1U, 2U, 3U, 6U, 0xFFFFFFFFU}) {
    mode_is(type);
    EXPECT_EQ(get(kRoleColumn, {10, 129}), std::nullopt);
    EXPECT_THAT(story(), ElementsAreArray(started(1, 16, 10, 129) +
                                          Trace{header_line(" tree_type(" + shown(type) + ") invalid."),
                                                handler_failure()}));
  }
  EXPECT_EQ(ask_header(header_stpxRSTPPortRoleTable, {10, 129}, 1, kStaleRoleRow).result, -1);
}

TEST_F(RstpPortRoleMst, GetHasNoLoopCheckAndNoClock) {
  script({role(9, kPort1, 3)});
  EXPECT_EQ(number(get(kRoleColumn, {10, 130})), 3);
  EXPECT_EQ(answered(), ".1.12.2.1.3.9.129") << "the index is the answered row's";
  EXPECT_THAT(fake::taken_trace(), Not(Contains("gettimeofday")));
}

// The reply.

TEST_F(RstpPortRoleRpvst, ReplyWithoutATreeAnswersWithTheRequestedOne) {
  const fake::Send bare{.attributes = fake::Attributes{{protocol::kPortRole, fake::number(2)}}};
  script({bare});
  EXPECT_EQ(number(get(kRoleColumn, {10, 129})), 2);
  EXPECT_EQ(answered(), ".1.12.2.1.3.10.129");
  script({no_entry(), entry(20, kPort1), bare});
  EXPECT_EQ(number(get_next(kRoleColumn, {15, 0})), 2);
  EXPECT_EQ(answered(), ".1.12.2.1.3.15.129");
  // Tree 0 is searched as tree 1, and stays the one that was asked for.
  script({entry(10, kPort1), bare});
  EXPECT_EQ(number(get_next(kRoleColumn, {})), 2);
  EXPECT_EQ(answered(), ".1.12.2.1.3.0.129");
}

TEST_F(RstpPortRoleMst, NextReplyWithoutATreeAnswersWithTheRequestedOne) {
  const fake::Send bare{.attributes = fake::Attributes{{protocol::kPortRole, fake::number(2)}}};
  script({no_entry(), entry(20, kPort1), bare});
  EXPECT_EQ(number(get_next(kRoleColumn, {15, 0})), 2);
  EXPECT_EQ(answered(), ".1.12.2.1.3.15.129");
}

// GETNEXT in Rapid PVST mode.

TEST_F(RstpPortRoleRpvst, GetNextOfTheBareColumnStartsFromTheFirstTree) {
  script({entry(10, kPort1), role(10, kPort1, 3)});
  EXPECT_EQ(number(get_next(kRoleColumn, {})), 3);
  EXPECT_EQ(answered(), ".1.12.2.1.3.10.129");
  EXPECT_THAT(story(),
              ElementsAreArray(started(0, 14, 0, 0) + checked(1) + Trace{row_of(10, kPort1), kReleased}));
}

TEST_F(RstpPortRoleRpvst, GetNextOfATreeAloneStartsFromItsPortZero) {
  script({entry(20, kPort1), role(20, kPort1, 3)});
  EXPECT_EQ(number(get_next(kRoleColumn, {20})), 3);
  EXPECT_EQ(answered(), ".1.12.2.1.3.20.129");
  EXPECT_THAT(story(),
              ElementsAreArray(started(0, 15, 20, 0) + checked(20) + Trace{row_of(20, kPort1), kReleased}));
}

TEST_F(RstpPortRoleRpvst, GetNextLeavesOutPortsThatAreDown) {
  script({entry(20, kPort1), role(20, kChannel, 2)});
  EXPECT_EQ(number(get_next(kRoleColumn, {20, 129, 1, 1})), 2);
  EXPECT_EQ(answered(), ".1.12.2.1.3.20.4097");
  const Trace lines = taken_lines();
  EXPECT_THAT(lines, Contains(looked_at(kDownPort, 1)));
  EXPECT_THAT(lines, Not(Contains("gettimeofday")));
  EXPECT_THAT(lines, Not(Contains(::testing::HasSubstr("mst"))));
}

TEST_F(RstpPortRoleRpvst, GetNextBehindTheLastRow) {
  script({entry(20, kPort1), no_entry()});
  EXPECT_EQ(get_next(kRoleColumn, {20, 4097}), std::nullopt);
  EXPECT_EQ(answered(), ".1.12.2.1.3.20.4097");
  EXPECT_THAT(story(), ElementsAreArray(started(0, 16, 20, 4097) + checked(20) +
                                        Trace{stepped_from(20),
                                              header_line(" get_next_stp_dual_indices_entry_rpvst() failed"),
                                              handler_failure()}));
  script({no_entry(), no_entry()});
  EXPECT_EQ(ask_header(header_stpxRSTPPortRoleTable, {10}, 0, kStaleRoleRow).result, -1);
}

TEST_F(RstpPortRoleRpvst, GetNextInOtherModesYieldsNothing) {
  for (const uint32_t type : {0U, 1U, 2U, 3U, 6U, 0xFFFFFFFFU}) {
    mode_is(type);
    EXPECT_EQ(get_next(kRoleColumn, {10, 129}), std::nullopt);
    EXPECT_THAT(
        story(),
        ElementsAreArray(started(0, 16, 10, 129) +
                         Trace{header_line(" get_stpxSpanning_tree_type() retun wrong type: " + shown(type)),
                               handler_failure()}));
  }
  EXPECT_EQ(ask_header(header_stpxRSTPPortRoleTable, {10}, 0, kStaleRoleRow).result, -1);
}

TEST_F(RstpPortRoleRpvst, NextRowThatDoesNotAdvanceIsRefused) {
  // An earlier tree, an earlier port, the same row.
  struct Case {
    uint32_t tree;
    uint32_t if_index;
    int port;
  };
  fake::platform().interfaces[2].oper_status = 1;
  for (const auto &[tree, if_index, port] :
       {Case{9, kChannel, 4097}, {10, kPort1, 129}, {10, kPort2, 130}, {0, kChannel, 4097}}) {
    script({entry(10, kPort1), role(tree, if_index, 3)});
    EXPECT_EQ(get_next(kRoleColumn, {10, 130}), std::nullopt);
    EXPECT_EQ(answered(), ".1.12.2.1.3.10.130");
    EXPECT_THAT(story(),
                ElementsAreArray(started(0, 16, 10, 130) + checked(10) + Trace{row_of(10, kDownPort)} +
                                 refused(tree, 10, port, 130) + Trace{kReleased, handler_failure()}));
  }
  script({entry(10, kPort1), role(10, kPort1, 3)});
  EXPECT_EQ(ask_header(header_stpxRSTPPortRoleTable, {10, 130}, 0, kStaleRoleRow).result, -1);
}

// GETNEXT in MST mode.

TEST_F(RstpPortRoleMst, GetNextOfTheBareColumnStartsFromTheCist) {
  fake::platform().interfaces[1].vlans = {1};
  script({entry(0, kPort1), role(0, kPort2, 3)});
  EXPECT_EQ(number(get_next(kRoleColumn, {})), 3);
  EXPECT_EQ(answered(), ".1.12.2.1.3.0.130");
  EXPECT_THAT(story(),
              ElementsAreArray(started(0, 14, 0, 0) + Trace{"gettimeofday"} + checked(0) +
                               Trace{row_of(0, kPort2), "gettimeofday"} + timed(0) + Trace{kReleased}));
}

TEST_F(RstpPortRoleMst, GetNextWholeTrace) {
  fake::platform().answer = nullptr;
  fake::platform().next_sends = {{.attributes = fake::Attributes{{protocol::kMode, fake::number(kMst)}}},
                                 role(10, kPort1, 3),
                                 role(10, kPort2, 3)};
  EXPECT_EQ(number(get_next(kRoleColumn, {10, 129})), 3);
  EXPECT_EQ(answered(), ".1.12.2.1.3.10.130");
  const auto search_line = [](const std::string &text) {
    return logged("\\nget_next_stp_dual_indices_entry_mst(LINE)" + text + "\\n");
  };
  EXPECT_THAT(
      taken_lines(),
      ElementsAreArray(Trace{begun(0, 16), header_line(" port_id: 129, tree_id:10")} +
                       sent(104, 1, "0x01020227", "00000000") +
                       Trace{"free(16000)", "cmd_rsp_attr_get(0x0202B001)", logged("value 4\\n"), kReleased,
                             header_line(" get_stpxSpanningTreeType() returns 4 "), "gettimeofday",
                             "stp_dot1d_bridgemib_get_mst_ctx(10)"} +
                       with_mst_keys(queried_and_found(111, 3, 10, 0, 10, kPort1)) + Trace{kReleased} +
                       port_found("10", "129-131", 130, kPort2) +
                       with_mst_keys(queried_and_found(111, 1, 10, kPort2, 10, kPort2)) +
                       Trace{search_line(" Get Successful"), "stp_ifindex2dot1dportnum(0x000007D2)",
                             search_line(": returning tree_index: 10, port_index: 130"), "gettimeofday"} +
                       timed(0) +
                       Trace{"cmd_rsp_attr_get(0x1402A006)", "cmd_rsp_attr_get(0x0C02A001)",
                             "cmd_rsp_attr_get(0x0202A003)", kReleased}));
}

TEST_F(RstpPortRoleMst, GetNextOfATreeAloneStartsFromItsPortZero) {
  script({entry(20, kPort1), role(20, kPort1, 3)});
  EXPECT_EQ(number(get_next(kRoleColumn, {20})), 3);
  EXPECT_EQ(answered(), ".1.12.2.1.3.20.129");
  EXPECT_THAT(fake::taken_trace(), Contains(members_of("19-20")));
}

TEST_F(RstpPortRoleMst, GetNextTakesTwoArcsOfMore) {
  script({entry(20, kPort1), role(20, kChannel, 2)});
  EXPECT_EQ(number(get_next(kRoleColumn, {20, 65536 + 129, 7})), 2);
  EXPECT_EQ(answered(), ".1.12.2.1.3.20.4097");
  EXPECT_THAT(fake::taken_trace(), Contains(looked_at(kDownPort, 1)));
}

TEST_F(RstpPortRoleMst, GetNextOfATreeThatIsNoInstanceMovesToTheNextOne) {
  script({no_entry(), entry(20, kPort1), role(20, kPort1, 3)});
  EXPECT_EQ(number(get_next(kRoleColumn, {15, 4097})), 3);
  EXPECT_EQ(answered(), ".1.12.2.1.3.20.129");
}

TEST_F(RstpPortRoleMst, GetNextBehindTheLastRow) {
  script({entry(20, kPort1), no_entry()});
  EXPECT_EQ(get_next(kRoleColumn, {20, 4097}), std::nullopt);
  EXPECT_EQ(answered(), ".1.12.2.1.3.20.4097");
  EXPECT_THAT(story(),
              ElementsAreArray(started(0, 16, 20, 4097) + Trace{"gettimeofday"} + checked(20) +
                               Trace{stepped_from(20), "gettimeofday"} + timed(-1) +
                               Trace{header_line(" get_next_stp_dual_indices_entry_from_im() failed"),
                                     handler_failure()}));
  script({no_entry(), no_entry()});
  EXPECT_EQ(ask_header(header_stpxRSTPPortRoleTable, {10}, 0, kStaleRoleRow).result, -1);
}

TEST_F(RstpPortRoleMst, NextRowThatDoesNotAdvanceIsRefused) {
  fake::platform().interfaces[2].oper_status = 1;
  for (const auto &[if_index, port] : {std::pair{kPort1, 129}, {kPort2, 130}}) {
    script({entry(10, kPort1), role(10, if_index, 3)});
    fake::platform().seconds = 1000;
    EXPECT_EQ(get_next(kRoleColumn, {10, 130}), std::nullopt);
    EXPECT_THAT(story(), ElementsAreArray(started(0, 16, 10, 130) + Trace{"gettimeofday"} + checked(10) +
                                          Trace{row_of(10, kDownPort), "gettimeofday"} + timed(0) +
                                          refused(10, 10, port, 130) + Trace{kReleased, handler_failure()}));
  }
  // The process's trees do not ascend.
  script({no_entry(), entry(10, kPort1), role(10, kPort1, 3)});
  fake::platform().seconds = 1000;
  EXPECT_EQ(get_next(kRoleColumn, {15, 0}), std::nullopt);
  EXPECT_EQ(answered(), ".1.12.2.1.3.15.0");
  EXPECT_THAT(story(),
              ElementsAreArray(started(0, 16, 15, 0) +
                               Trace{"gettimeofday", probed(15), stepped_from(15), kReleased,
                                     row_of(10, kPort1), "gettimeofday"} +
                               timed(0) + refused(10, 15, 129, 0) + Trace{kReleased, handler_failure()}));
  script({entry(10, kPort1), role(10, kPort1, 3)});
  EXPECT_EQ(ask_header(header_stpxRSTPPortRoleTable, {10, 130}, 0, kStaleRoleRow).result, -1);
}

TEST_F(RstpPortRoleMst, NextRowMayHaveALowerPortInALaterTree) {
  script({entry(10, kPort1), entry(20, kPort1), role(20, kPort1, 3)});
  EXPECT_EQ(number(get_next(kRoleColumn, {10, 4097})), 3);
  EXPECT_EQ(answered(), ".1.12.2.1.3.20.129");
}

}  // namespace
