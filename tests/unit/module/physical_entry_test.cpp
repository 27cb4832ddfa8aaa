// The step that offers the first physical port in place of a port-channel: each path, and who holds which
// reply.
#include <algorithm>

#include "protocol_numbers.h"
#include "search_test.h"
#include "stpsnmp/index_search.h"

namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAreArray;
using ::testing::Not;
using ::testing::StartsWith;

constexpr uint32_t kChannel = 1001;
constexpr uint16_t kChannelPort = 4097;
constexpr uint32_t kFirst = 2001;
constexpr uint16_t kFirstPort = 129;
constexpr uint32_t kSecond = 2002;
constexpr uint16_t kSecondPort = 130;

std::string line(const std::string &text) {
  return logged("\\ncheck_and_get_next_stp_physical_entry_for_logical(LINE): " + text);
}

std::string entered(const std::string &tree) {
  return line("if_index: 1001, port_index: 4097, tree_index: " + tree + "\\n");
}

std::string left_with(const std::string &position) { return line("Returning " + position + "\\n"); }

// The way to the first physical port.
Trace first_port_found() {
  const std::string search = "\\nvalidate_port_id_for_snmp_search(LINE): ";
  return {
      logged(search + "Check if port_id(128) < MIN_STP_PORT_ID(129)\\n"),
      logged(search + "port_id(129) < MIN_STP_PORT_ID(129)\\n"),
      "stp_dot1dportnum2ifindex(129)",
      logged(search + "Checking if if_index: 2001 is valid\\n"),
      "check_if_valid_base_port_ifindex(0x000007D1, 0)",
      "stp_dot1dportnum2ifindex(129)",
      logged(search + "returning port_id(129), in_if_index(2001), ret_if_index(2001), ret_if_type(26)\\n"),
      line("Valid if_index: 2001")};
}

class PhysicalEntry : public SearchTest {
 protected:
  void SetUp() override {
    SearchTest::SetUp();
    fake::platform().interfaces = {
        {kChannel, kChannelPort, 22}, {kFirst, kFirstPort}, {kSecond, kSecondPort}};
  }

  // Stands at the port-channel in the tree, with a reply in hand.
  int run(uint32_t tree, uint32_t command = protocol::kLoopInconsistencies) {
    saved_ = held_reply();
    reply_ = saved_;
    return run_with(tree, command, &reply_);
  }

  int run_with(uint32_t tree, uint32_t command, void **reply) {
    tree_ = tree;
    port_ = kChannelPort;
    if_index_ = kChannel;
    return check_and_get_next_stp_physical_entry_for_logical(
        protocol::kVlanTreeKey, &tree_, protocol::kInterfaceKey, &port_, &if_index_, reply, command);
  }

  void expect_position(uint32_t tree, uint16_t port, uint32_t if_index) const {
    EXPECT_EQ(tree_, tree);
    EXPECT_EQ(port_, port);
    EXPECT_EQ(if_index_, if_index);
  }

  // The caller's old reply is the one that lives.
  void expect_saved_reply() {
    EXPECT_EQ(reply_, saved_);
    EXPECT_EQ(fake::live_replies(), 1U);
    release(reply_);
  }

  // The new one is; its tree tells it from the old one.
  void expect_new_reply() {
    EXPECT_NE(reply_, saved_);
    EXPECT_EQ(fake::live_replies(), 1U);
    release(reply_);
  }

  void *saved_ = nullptr;
  void *reply_ = nullptr;
  uint32_t tree_ = 0;
  uint16_t port_ = 0;
  uint32_t if_index_ = 0;
};

TEST_F(PhysicalEntry, EntryOfTheFirstPortReplacesTheCallers) {
  fake::platform().next_sends = {entry(2, kFirst)};
  EXPECT_EQ(run(2), 0);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{entered("2")} + first_port_found() +
                               queried_and_found(protocol::kLoopInconsistencies, 1, 2, kFirst, 2, kFirst) +
                               Trace{line("Returned tree_index: 2. Returning backend got values\\n"),
                                     "stp_ifindex2dot1dportnum(0x000007D1)", "cmd_snmp_free_rx_hndl",
                                     left_with("if_index: 2001, port_index: 129, tree_index: 2")}));
  expect_position(2, kFirstPort, kFirst);
  expect_new_reply();
}

TEST_F(PhysicalEntry, EntryBehindTheFirstPortReplacesTheCallers) {
  fake::platform().next_sends = {no_entry(), entry(2, kSecond)};
  EXPECT_EQ(run(2), 0);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{entered("2")} + first_port_found() +
                               queried_in_vain(protocol::kLoopInconsistencies, 1, 2, kFirst) +
                               Trace{line("returning FAILURE for GET\\n")} +
                               queried_and_found(protocol::kLoopInconsistencies, 3, 2, kFirst, 2, kSecond) +
                               Trace{line("Returned tree_index: 2. Returning backend got values\\n"),
                                     "stp_ifindex2dot1dportnum(0x000007D2)", "cmd_snmp_free_rx_hndl",
                                     left_with("if_index: 2002, port_index: 130, tree_index: 2")}));
  expect_position(2, kSecondPort, kSecond);
  expect_new_reply();
}

TEST_F(PhysicalEntry, EntryInALaterTreeIsReleasedAndTheCallersPositionKept) {
  fake::platform().next_sends = {no_entry(), entry(3, kSecond)};
  EXPECT_EQ(run(1), 0);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(Trace{entered("1")} + first_port_found() +
                       queried_in_vain(protocol::kLoopInconsistencies, 1, 1, kFirst) +
                       Trace{line("returning FAILURE for GET\\n")} +
                       queried_and_found(protocol::kLoopInconsistencies, 3, 1, kFirst, 3, kSecond) +
                       Trace{line("Returned tree_index: 3. Returning saved\\n"), "cmd_snmp_free_rx_hndl",
                             left_with("if_index: 1001, port_index: 4097, tree_index: 1")}));
  expect_position(1, kChannelPort, kChannel);
  expect_saved_reply();
}

TEST_F(PhysicalEntry, GetThatIsAnsweredFromALaterTreeIsTreatedTheSame) {
  fake::platform().next_sends = {entry(3, kFirst)};
  EXPECT_EQ(run(1), 0);
  EXPECT_THAT(fake::taken_trace(), Contains(line("Returned tree_index: 3. Returning saved\\n")));
  expect_position(1, kChannelPort, kChannel);
  expect_saved_reply();
}

TEST_F(PhysicalEntry, EntryInAnEarlierTreeIsTaken) {
  fake::platform().next_sends = {entry(3, kFirst)};
  EXPECT_EQ(run(5), 0);
  EXPECT_THAT(fake::taken_trace(), Contains(line("Returned tree_index: 3. Returning backend got values\\n")));
  expect_position(3, kFirstPort, kFirst);
  expect_new_reply();
}

TEST_F(PhysicalEntry, TreesAreComparedUnsigned) {
  fake::platform().next_sends = {entry(0x80000000, kFirst)};
  EXPECT_EQ(run(1), 0);
  EXPECT_THAT(fake::taken_trace(), Contains(line("Returned tree_index: -2147483648. Returning saved\\n")));
  expect_position(1, kChannelPort, kChannel);
  expect_saved_reply();

  fake::platform().next_sends = {entry(5, kFirst)};
  EXPECT_EQ(run(0x80000000), 0);
  EXPECT_THAT(fake::taken_trace(), Contains(line("Returned tree_index: 5. Returning backend got values\\n")));
  expect_position(5, kFirstPort, kFirst);
  expect_new_reply();
}

TEST_F(PhysicalEntry, FirstPortIsTheFirstBridgePort) {
  fake::platform().interfaces[1].is_base_port = false;
  fake::platform().next_sends = {entry(2, kSecond)};
  EXPECT_EQ(run(2), 0);
  EXPECT_THAT(fake::taken_trace(), Contains("cmd_req_attr_add(request, 0x0C020105, d2070000)"));
  expect_position(2, kSecondPort, kSecond);
  expect_new_reply();
}

TEST_F(PhysicalEntry, InterfaceOfTheFirstPortIsTheOneThatItsSecondConversionGives) {
  fake::platform().next_if_indexes = {kFirst, kSecond};
  fake::platform().next_sends = {entry(2, kSecond)};
  EXPECT_EQ(run(2), 0);
  EXPECT_THAT(fake::taken_trace(), Contains(line("Valid if_index: 2002")));
  expect_position(2, kSecondPort, kSecond);
  expect_new_reply();
}

TEST_F(PhysicalEntry, WithoutAPhysicalPortPositionIsLeftAsTheSearchLeftIt) {
  fake::platform().interfaces = {{kChannel, kChannelPort, 22},
                                 {.if_index = 2003, .port = 140, .is_base_port = false}};
  EXPECT_EQ(run(2), -1);
  const Trace trace = fake::taken_trace();
  EXPECT_EQ(trace.front(), entered("2"));
  EXPECT_EQ(trace.back(), line("returning FAILURE\\n"));
  EXPECT_EQ(trace.at(trace.size() - 2), logged("\\nvalidate_port_id_for_snmp_search(LINE): port_id: 4095 > "
                                               "MAX_CHANNEL_PORT_ID: 8191\\n"));
  EXPECT_THAT(trace, Each(Not(StartsWith("cmd_"))));
  expect_position(2, 4095, 2003);
  expect_saved_reply();
}

TEST_F(PhysicalEntry, NeitherTheFirstPortNorAnythingBehindIt) {
  fake::platform().next_sends = {no_entry(), no_entry()};
  EXPECT_EQ(run(2), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{entered("2")} + first_port_found() +
                               queried_in_vain(protocol::kLoopInconsistencies, 1, 2, kFirst) +
                               Trace{line("returning FAILURE for GET\\n")} +
                               queried_in_vain(protocol::kLoopInconsistencies, 3, 2, kFirst) +
                               Trace{line("returning FAILURE for GET_NEXT\\n")}));
  expect_position(2, kChannelPort, kChannel);
  expect_saved_reply();
}

TEST_F(PhysicalEntry, AnsweredInterfaceWithoutAPort) {
  fake::platform().next_sends = {entry(1, 2999)};
  EXPECT_EQ(run(2), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{entered("2")} + first_port_found() +
                               queried_and_found(protocol::kLoopInconsistencies, 1, 2, kFirst, 1, 2999) +
                               Trace{line("Returned tree_index: 1. Returning backend got values\\n"),
                                     "stp_ifindex2dot1dportnum(0x00000BB7)", "cmd_snmp_free_rx_hndl",
                                     line("returning FAILURE\\n")}));
  expect_position(2, kChannelPort, kChannel);
  expect_saved_reply();
}

TEST_F(PhysicalEntry, TreeZeroOfACommandWithoutIt) {
  fake::platform().next_sends = {entry(0, kSecond)};
  EXPECT_EQ(run(0, protocol::kPortInconsistencies), 0);
  const Trace trace = fake::taken_trace();
  EXPECT_THAT(trace, Contains(line("returning FAILURE for GET\\n")));
  EXPECT_THAT(trace, Contains("cmd_req_action_set(request, 3)"));
  EXPECT_THAT(trace, Not(Contains("cmd_req_action_set(request, 1)")));
  expect_position(0, kSecondPort, kSecond);
  expect_new_reply();
}

TEST_F(PhysicalEntry, TokensAreTheCallers) {
  fake::platform().next_sends = {entry(2, kFirst)};
  tree_ = 2;
  port_ = kChannelPort;
  if_index_ = kChannel;
  EXPECT_EQ(check_and_get_next_stp_physical_entry_for_logical(0x13020131, &tree_, 0x0C02018B, &port_,
                                                              &if_index_, &reply_, 111),
            0);
  const Trace trace = fake::taken_trace();
  EXPECT_THAT(trace, Contains("cmd_req_cmdId_set(request, 111)"));
  EXPECT_THAT(trace, Contains("cmd_req_attr_add(request, 0x13020131, " + bytes({0, 1, 2, 2}) + ")"));
  EXPECT_THAT(trace, Contains("cmd_req_attr_add(request, 0x0C02018B, d1070000)"));
  release(reply_);
}

// Callers that hold no reply yet, or want none.

TEST_F(PhysicalEntry, WithoutASavedReplyTheNewOneIsTaken) {
  fake::platform().next_sends = {entry(2, kFirst)};
  EXPECT_EQ(run_with(2, protocol::kLoopInconsistencies, &reply_), 0);
  EXPECT_THAT(fake::taken_trace(), Not(Contains("cmd_snmp_free_rx_hndl")));
  expect_new_reply();
}

TEST_F(PhysicalEntry, WithoutASavedReplyNothingIsKeptOfALaterTree) {
  fake::platform().next_sends = {entry(3, kFirst)};
  EXPECT_EQ(run_with(2, protocol::kLoopInconsistencies, &reply_), 0);
  expect_position(2, kChannelPort, kChannel);
  EXPECT_EQ(reply_, nullptr);
}

TEST_F(PhysicalEntry, WithoutAReplyVariableTheReplyIsReleasedAsSoonAsItIsRead) {
  fake::platform().next_sends = {entry(2, kFirst)};
  EXPECT_EQ(run_with(2, protocol::kLoopInconsistencies, nullptr), 0);
  const Trace trace = fake::taken_trace();
  const auto released = std::find(trace.begin(), trace.end(), "cmd_snmp_free_rx_hndl");
  EXPECT_THAT(Trace(released, trace.end()),
              ElementsAreArray({std::string("cmd_snmp_free_rx_hndl"),
                                line("Returned tree_index: 2. Returning backend got values\\n"),
                                std::string("stp_ifindex2dot1dportnum(0x000007D1)"),
                                left_with("if_index: 2001, port_index: 129, tree_index: 2")}));
}

TEST_F(PhysicalEntry, WithoutAReplyVariableEveryPathReleasesWhatItGets) {
  fake::platform().next_sends = {entry(2, kFirst)};
  EXPECT_EQ(run_with(2, protocol::kLoopInconsistencies, nullptr), 0);
  expect_position(2, kFirstPort, kFirst);
  fake::platform().next_sends = {entry(3, kFirst)};
  EXPECT_EQ(run_with(2, protocol::kLoopInconsistencies, nullptr), 0);
  expect_position(2, kChannelPort, kChannel);
  fake::platform().next_sends = {entry(2, 2999)};
  EXPECT_EQ(run_with(2, protocol::kLoopInconsistencies, nullptr), -1);
  expect_position(2, kChannelPort, kChannel);
  fake::platform().next_sends = {no_entry(), no_entry()};
  EXPECT_EQ(run_with(2, protocol::kLoopInconsistencies, nullptr), -1);
  expect_position(2, kChannelPort, kChannel);
  EXPECT_THAT(fake::taken_trace(), Each(Not(StartsWith("FREED REPLY"))));
}

}  // namespace
