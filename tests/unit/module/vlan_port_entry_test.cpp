// The entry of a bridge port: the port is found in the set of all VLANs' members, and the spanning-tree
// process is asked for exactly that port.
#include "search/base_port.h"

#include "base_port_trace.h"
#include "ledger.h"
#include "protocol_numbers.h"
#include "search_test.h"

namespace {

using stpsnmp::query::Reply;
using stpsnmp::search::EntryKind;
using stpsnmp::search::find_base_port_entry;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

constexpr uint32_t kPort129 = 0x1A000001;
constexpr uint32_t kPort130 = 0x1A000002;
constexpr uint32_t kChannel3 = 0x16000003;

constexpr char kKey[] = "0x0C020105";

constexpr bool kUp = false;  // whether the link is looked at
constexpr bool kLook = true;

constexpr EntryKind kPortSettings = {STP_COMMAND_PORT_SETTINGS, STP_KEY_INTERFACE, std::nullopt};

std::string line(const std::string &text) {
  return logged("get_stp_entry_with_port_id_from_vlan_mgr(LINE)" + text + "\\n");
}

std::string rejection(const std::string &text) {
  return logged_rejection("get_stp_entry_with_port_id_from_vlan_mgr(LINE)" + text + "\\n");
}

const std::string kFailure =
    logged_rejection("\\nget_stp_entry_with_port_id_from_vlan_mgr(LINE): returning FAILURE\\n");

class VlanPortEntry : public SearchTest {
 protected:
  void SetUp() override {
    SearchTest::SetUp();
    empty_base_port_cache();
    set_interfaces({{.if_index = kPort129, .port = 129, .vlans = {1}},
                    {.if_index = kPort130, .port = 130, .vlans = {4094}},
                    {.if_index = kChannel3, .port = 4099, .type = 22, .vlans = {10}}});
  }

  static void set_interfaces(std::vector<fake::Interface> interfaces) {
    fake::platform().interfaces = std::move(interfaces);
  }

  // The process's entries name their interface.
  static void serve_entries() {
    fake::platform().answer = [](const fake::Request &request) {
      return fake::Send{.attributes = fake::Attributes{{protocol::kInterface, request.keys.begin()->second}}};
    };
  }

  int look_up(uint32_t mode, uint16_t port, bool link = kUp) {
    port_ = port;
    return find_entry(mode, kPortSettings, 0, link, true);
  }

  // The reply that is held, or none, goes in and comes out.
  int find_entry(uint32_t mode, const EntryKind &kind, uint8_t selector, bool link, bool has_flag) {
    Reply reply(reply_);
    const bool is_found = find_base_port_entry(kind, static_cast<cmd_action>(mode), selector,
                                               {link, has_flag ? &is_down_ : nullptr}, &port_, &reply);
    reply_ = reply.detach();
    return is_found ? 0 : -1;
  }

  // The same without a variable for it.
  int find_index(bool link, bool has_flag) {
    return find_base_port_entry(kPortSettings, CMD_ACTION_GET, 0, {link, has_flag ? &is_down_ : nullptr},
                                &port_, nullptr)
               ? 0
               : -1;
  }

  // Takes the reply of a success.
  void take_reply() {
    ASSERT_NE(reply_, nullptr);
    release(reply_);
    reply_ = nullptr;
  }

  uint16_t port_ = 0;
  void *reply_ = nullptr;
  bool is_down_ = false;
};

// What is found.

TEST_F(VlanPortEntry, ExactPort) {
  serve_entries();
  EXPECT_EQ(look_up(kGet, 130), 0);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAre("stp_dot1dportnum2ifindex(130)", "stp_valid_if_index(0x1A000002)",
                  "pcm_get_pc_for_port(0x1A000002)", "malloc(16000)", "cmd_req_init(buffer, 16000)",
                  "cmd_req_cmdId_set(request, 119)", "cmd_req_action_set(request, 1)",
                  "token_type_2len(0x0C020105, value)", "cmd_req_attr_add(request, 0x0C020105, 0200001a)",
                  "get_snmp_sessionid(0)", "get_snmp_username(0)",
                  "cmd_snmp_req_send_recv(0xFE000000, 171, request, operator, 4711, 0)", "free(16000)",
                  "cmd_rsp_attr_get(0x0C02A001)",
                  logged("\\nget_stp_entry_from_if_index(LINE) return if_index id: 436207618\\n"),
                  "cmd_rsp_attr_get(0x1402A015)", "stp_ifindex2dot1dportnum(0x1A000002)"));
  EXPECT_EQ(port_, 130);
  EXPECT_FALSE(is_down_);
  take_reply();
}

TEST_F(VlanPortEntry, NextPortOfPortZeroIsTheLowestAndIsAskedForExactly) {
  serve_entries();
  EXPECT_EQ(look_up(kGetNext, 0), 0);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAre(
          "time(NULL)", "vlan_mgr_get_baseport_membership_range(1-4094)", "malloc(8196)", "time(NULL)",
          logged_rejection("validate_port_id_for_snmp_search_new:LINE Printing baseport bitset\\n"),
          logged_rejection("129-130,4099\\n"),
          logged_rejection("validate_port_id_for_snmp_search_new(LINE) found next port : 129\\n"),
          "stp_dot1dportnum2ifindex(129)",
          logged("validate_port_id_for_snmp_search_new(LINE) found next port ifindex: 436207617\\n"),
          "check_if_valid_base_port_ifindex(0x1A000001, 0)",
          logged_rejection(
              "validate_port_id_for_snmp_search_new(LINE) found what we wanted ifindex: 436207617\\n"),
          "free(8196)",
          logged("\\nvalidate_port_id_for_snmp_search_new(LINE): return SUCCESS with  port_id(129), "
                 "in_if_index(436207617), ret_if_index(436207617)\\n"),
          "malloc(16000)", "cmd_req_init(buffer, 16000)", "cmd_req_cmdId_set(request, 119)",
          "cmd_req_action_set(request, 1)", "token_type_2len(0x0C020105, value)",
          "cmd_req_attr_add(request, 0x0C020105, 0100001a)", "get_snmp_sessionid(0)", "get_snmp_username(0)",
          "cmd_snmp_req_send_recv(0xFE000000, 171, request, operator, 4711, 0)", "free(16000)",
          "cmd_rsp_attr_get(0x0C02A001)",
          logged("\\nget_stp_entry_from_if_index(LINE) return if_index id: 436207617\\n"),
          "cmd_rsp_attr_get(0x1402A015)", "stp_ifindex2dot1dportnum(0x1A000001)"));
  EXPECT_EQ(port_, 129);
  EXPECT_FALSE(is_down_);
  take_reply();
}

TEST_F(VlanPortEntry, WalkOfAllPortsFetchesThemOnce) {
  serve_entries();
  const std::string list = "129-130,4099";
  EXPECT_EQ(look_up(kGetNext, 0), 0);
  EXPECT_EQ(port_, 129);
  take_reply();
  EXPECT_EQ(look_up(kGetNext, 129), 0);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(base_ports_copied() + walked_to(130, kPort130, list) +
                               port_queried_and_found(protocol::kPortSettings, kKey, kPort130)));
  EXPECT_EQ(port_, 130);
  take_reply();
  EXPECT_EQ(look_up(kGetNext, 130), 0);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(base_ports_copied() + walked_to(4099, kChannel3, list) +
                               port_queried_and_found(protocol::kPortSettings, kKey, kChannel3)));
  EXPECT_EQ(port_, 4099);
  take_reply();
  EXPECT_EQ(look_up(kGetNext, 4099), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(base_ports_copied() + walked_to_the_end(list) + Trace{kFailure}));
  EXPECT_EQ(port_, 4099);
  EXPECT_EQ(reply_, nullptr);
}

TEST_F(VlanPortEntry, NextPortsAreMembersOfTheVlans1To4094) {
  serve_entries();
  set_interfaces({{.if_index = kPort129, .port = 129, .vlans = {0, 4095}},
                  {.if_index = kPort130, .port = 130, .vlans = {4095}},
                  {.if_index = kChannel3, .port = 4099, .type = 22, .vlans = {0}}});
  EXPECT_EQ(look_up(kGetNext, 0), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(base_ports_fetched() + walked_to_the_end("") + Trace{kFailure}));
}

TEST_F(VlanPortEntry, CommandKeyAndSelectorAreTheCallers) {
  serve_entries();
  port_ = 0;
  constexpr EntryKind kMstPorts = {STP_COMMAND_MST_PORTS, STP_KEY_MST_INTERFACE, std::nullopt};
  EXPECT_EQ(find_entry(kGetNext, kMstPorts, 1, kUp, false), 0);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(base_ports_fetched() + walked_to(129, kPort129, "129-130,4099", 1) +
                               port_queried_and_found(111, "0x0C02018B", kPort129)));
  take_reply();
}

TEST_F(VlanPortEntry, EveryModeButOneMeansNextAndAsksForTheExactEntry) {
  serve_entries();
  for (const uint32_t mode : {0U, 2U, 3U, 0xFFFFFFFFU}) {
    EXPECT_EQ(look_up(mode, 129), 0);
    EXPECT_EQ(port_, 130);
    EXPECT_THAT(fake::taken_trace(), Contains("cmd_req_action_set(request, 1)"));
    take_reply();
  }
}

// The row's port is that of the entry.
TEST_F(VlanPortEntry, EntryOfAnotherInterfaceIsAnsweredWithThatOnesPort) {
  fake::platform().attributes[protocol::kInterface] = fake::number(kChannel3);
  for (const uint32_t mode : {kGet, kGetNext}) {
    EXPECT_EQ(look_up(mode, 129), 0);
    EXPECT_EQ(fake::taken_trace().back(), "stp_ifindex2dot1dportnum(0x16000003)");
    EXPECT_EQ(port_, 4099);
    take_reply();
  }
}

TEST_F(VlanPortEntry, EntryThatNamesNoInterfaceIsThatOfThePort) {
  for (const uint32_t mode : {kGet, kGetNext}) {
    EXPECT_EQ(look_up(mode, 129), 0);
    EXPECT_EQ(port_, mode == kGet ? 129 : 130);
    take_reply();
  }
}

// Links.

TEST_F(VlanPortEntry, PortThatIsDownIsAnsweredWithDefaultsAndNotAskedFor) {
  fake::platform().interfaces[0].oper_status = 2;
  EXPECT_EQ(look_up(kGetNext, 0, kLook), 0);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(base_ports_fetched() + walked_to(129, kPort129, "129-130,4099") +
                               Trace{"im_get_ifindex_oper_status_list(0x1A000001, 1)",
                                     line(": Port 0x1a000001 is oper down, dont send the cmd to backend")}));
  EXPECT_EQ(port_, 129);
  EXPECT_TRUE(is_down_);
  EXPECT_EQ(reply_, nullptr);
  is_down_ = false;
  EXPECT_EQ(look_up(kGet, 129, kLook), 0);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(exact_port(129, kPort129) + link_asked(kPort129) + link_is_down(kPort129)));
  EXPECT_EQ(port_, 129);
  EXPECT_TRUE(is_down_);
  EXPECT_EQ(reply_, nullptr);
}

TEST_F(VlanPortEntry, ReplyHandleIsLeftAloneForAPortThatIsDown) {
  fake::platform().interfaces[0].oper_status = 2;
  void *const held = held_reply();
  reply_ = held;
  EXPECT_EQ(look_up(kGet, 129, kLook), 0);
  EXPECT_EQ(reply_, held);
  EXPECT_EQ(fake::live_replies(), 1U);
  take_reply();
}

TEST_F(VlanPortEntry, PortThatIsDownNeedsNoReplyHandle) {
  fake::platform().interfaces[0].oper_status = 2;
  port_ = 129;
  EXPECT_EQ(find_index(kLook, true), 0);
  EXPECT_TRUE(is_down_);
  EXPECT_EQ(fake::taken_trace().back(), line(": Port 0x1a000001 is oper down, dont send the cmd to backend"));
}

TEST_F(VlanPortEntry, PortThatIsDownIsAskedForWhereTheLinkIsNotLookedAt) {
  serve_entries();
  fake::platform().interfaces[0].oper_status = 2;
  EXPECT_EQ(look_up(kGet, 129, kUp), 0);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(exact_port(129, kPort129) +
                               port_queried_and_found(protocol::kPortSettings, kKey, kPort129)));
  EXPECT_FALSE(is_down_);
  take_reply();
}

TEST_F(VlanPortEntry, EveryStateButTwoIsUp) {
  serve_entries();
  for (const int status : {0, 1, 3, 7, 255}) {
    fake::platform().interfaces[0].oper_status = static_cast<uint8_t>(status);
    EXPECT_EQ(look_up(kGet, 129, kLook), 0);
    EXPECT_THAT(fake::taken_trace(),
                ElementsAreArray(exact_port(129, kPort129) + link_asked(kPort129) +
                                 port_queried_and_found(protocol::kPortSettings, kKey, kPort129)));
    EXPECT_FALSE(is_down_);
    take_reply();
  }
}

TEST_F(VlanPortEntry, PortWhoseLinkCannotBeToldIsUp) {
  serve_entries();
  fake::platform().interfaces[0].has_oper_status = false;
  fake::platform().interfaces[0].oper_status = 2;
  EXPECT_EQ(look_up(kGet, 129, kLook), 0);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(exact_port(129, kPort129) + link_asked(kPort129) +
                               Trace{logged_rejection(
                                   "stp_get_port_oper_state(LINE) : Failed to read ifdb for 436207617\\n")} +
                               port_queried_and_found(protocol::kPortSettings, kKey, kPort129)));
  EXPECT_FALSE(is_down_);
  take_reply();
}

TEST_F(VlanPortEntry, PortThatIsDownFailsWithoutAFlagForIt) {
  fake::platform().interfaces[0].oper_status = 2;
  port_ = 129;
  EXPECT_EQ(find_entry(kGet, kPortSettings, 0, kLook, false), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(exact_port(129, kPort129) + link_asked(kPort129) + link_is_down(kPort129) +
                               Trace{rejection(": Null pointer use_default")}));
  EXPECT_EQ(port_, 129);
  EXPECT_EQ(reply_, nullptr);
}

TEST_F(VlanPortEntry, PortThatIsUpNeedsNoFlag) {
  serve_entries();
  port_ = 129;
  for (const bool link : {kUp, kLook}) {
    EXPECT_EQ(find_entry(kGet, kPortSettings, 0, link, false), 0);
    take_reply();
  }
}

// Failures.

TEST_F(VlanPortEntry, MemberOfAChannelHasNoEntry) {
  fake::platform().interfaces[0].channel_if_index = kChannel3;
  EXPECT_EQ(look_up(kGet, 129, kLook), -1);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(
          exact_port(129, kPort129) +
          Trace{
              logged_rejection(
                  "stp_is_member_port_of_pc(LINE): 0x1a000001 is part of port-channel 0x16000003"),
              logged(
                  "validate_port_id_for_snmp_search_new(LINE): Port 0x1a000001 is a member of PC, return no "
                  "such inst\\n"),
              kFailure}));
  EXPECT_EQ(port_, 129);
  EXPECT_EQ(reply_, nullptr);
  EXPECT_FALSE(is_down_);
}

TEST_F(VlanPortEntry, PortZeroHasNoEntry) {
  EXPECT_EQ(look_up(kGet, 0), -1);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAre(logged_rejection("\\nvalidate_port_id_for_snmp_search_new(LINE): returning FAILURE.\\n"),
                  kFailure));
}

TEST_F(VlanPortEntry, VlanManagerWithoutAnAnswer) {
  fake::platform().next_base_ports = {{.is_null = true}};
  EXPECT_EQ(look_up(kGetNext, 5), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("time(NULL)", "vlan_mgr_get_baseport_membership_range(1-4094)",
                          logged_rejection("stp_get_cached_baseport_bitmap_all_vlans:LINE "
                                           "vlan_mgr_get_baseport_membership_range returns NULL \\n"),
                          logged_rejection("validate_port_id_for_snmp_search_new:LINE  Failed to get "
                                           "stp_get_cached_baseport_bitmap_all_vlans, baseport 0x0\\n"),
                          kFailure));
  EXPECT_EQ(port_, 5);
}

TEST_F(VlanPortEntry, PortThatTheProcessDoesNotKnow) {
  fake::platform().send_result = 19;
  EXPECT_EQ(look_up(kGet, 129), -1);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(
          exact_port(129, kPort129) + sent(protocol::kPortSettings, 1, kKey, "0100001a") +
          Trace{logged("\\nget_stp_entry_from_if_index(LINE) cmd_req_snmp_send_recv() failed for GET\\n"),
                "free(16000)", logged_rejection("get_stp_entry_from_if_index failed\\n")}));
  EXPECT_EQ(reply_, nullptr);
  EXPECT_EQ(port_, 129);
  EXPECT_FALSE(is_down_);
}

TEST_F(VlanPortEntry, NextPortThatTheProcessDoesNotKnowEndsTheSearch) {
  fake::platform().next_sends = {no_entry()};
  EXPECT_EQ(look_up(kGetNext, 129, kLook), -1);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(base_ports_fetched() + walked_to(130, kPort130, "129-130,4099") +
                       link_asked(kPort130) + port_queried_in_vain(protocol::kPortSettings, kKey, kPort130)));
  EXPECT_EQ(reply_, nullptr);
}

TEST_F(VlanPortEntry, EmptyReply) {
  fake::platform().answers_without_reply = true;
  EXPECT_EQ(look_up(kGet, 129), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(
                  exact_port(129, kPort129) + port_queried(protocol::kPortSettings, kKey, kPort129) +
                  Trace{"free(16000)", logged("\\nget_stp_entry_from_if_index(LINE): resp_h is NULL \\n"),
                        logged_rejection("get_stp_entry_from_if_index failed\\n")}));
}

TEST_F(VlanPortEntry, RequestThatCannotBeAllocated) {
  ledger::fail_next_malloc();
  EXPECT_EQ(look_up(kGet, 129), -1);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(exact_port(129, kPort129) +
                       Trace{"malloc(16000)", logged("get_stp_entry_from_if_index(LINE) malloc failed \\n"),
                             logged_rejection("get_stp_entry_from_if_index failed\\n")}));
}

TEST_F(VlanPortEntry, ReplyThatTheCallerHeldIsReleasedWhenTheQueryFails) {
  reply_ = held_reply();
  fake::platform().send_result = 19;
  EXPECT_EQ(look_up(kGet, 129), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(exact_port(129, kPort129) +
                               port_queried_in_vain(protocol::kPortSettings, kKey, kPort129) +
                               Trace{"cmd_snmp_free_rx_hndl"}));
  EXPECT_EQ(fake::live_replies(), 0U);
}

TEST_F(VlanPortEntry, EntryOfAnInterfaceWithoutAPortIsReleased) {
  fake::platform().attributes[protocol::kInterface] = fake::number(0xAB);
  EXPECT_EQ(look_up(kGet, 129), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(
                  exact_port(129, kPort129) + port_queried(protocol::kPortSettings, kKey, kPort129) +
                  Trace{"free(16000)", "cmd_rsp_attr_get(0x0C02A001)",
                        logged("\\nget_stp_entry_from_if_index(LINE) return if_index id: 171\\n"),
                        "cmd_rsp_attr_get(0x1402A015)", "stp_ifindex2dot1dportnum(0x000000AB)",
                        "cmd_snmp_free_rx_hndl",
                        logged("\\nget_stp_entry_with_port_id_from_vlan_mgr(LINE): returning FAILURE\\n")}));
  EXPECT_EQ(fake::live_replies(), 0U);
  EXPECT_EQ(reply_, nullptr);
  EXPECT_EQ(port_, 129);
}

// Without a variable for the reply.

class VlanPortEntryWithoutReply : public VlanPortEntry {
 protected:
  int look_up_index(uint16_t port) {
    port_ = port;
    return find_index(kUp, false);
  }
};

TEST_F(VlanPortEntryWithoutReply, FindsThePortAndKeepsNothing) {
  serve_entries();
  EXPECT_EQ(look_up_index(129), 0);
  const Trace trace = fake::taken_trace();
  EXPECT_EQ(trace.back(), logged("\\nget_stp_entry_with_port_id_from_vlan_mgr(LINE) resp_h is NULL\\n"));
  EXPECT_THAT(trace, Contains("stp_ifindex2dot1dportnum(0x1A000001)"));
  EXPECT_THAT(trace, Contains("cmd_snmp_free_rx_hndl"));
  EXPECT_EQ(port_, 129);
}

TEST_F(VlanPortEntryWithoutReply, FailsAsWithOne) {
  fake::platform().next_sends = {no_entry()};
  EXPECT_EQ(look_up_index(129), -1);
  EXPECT_EQ(fake::taken_trace().back(), logged_rejection("get_stp_entry_from_if_index failed\\n"));
  fake::platform().attributes[protocol::kInterface] = fake::number(0xAB);
  EXPECT_EQ(look_up_index(129), -1);
  EXPECT_EQ(fake::taken_trace().back(),
            logged("\\nget_stp_entry_with_port_id_from_vlan_mgr(LINE): returning FAILURE\\n"));
}

}  // namespace
