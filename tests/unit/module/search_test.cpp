#include "search_test.h"

#include <cstdlib>
#include <utility>

#include "ledger.h"
#include "platform/cmd.h"
#include "search/base_port.h"

namespace {

std::string in_lookup(const std::string &text) {
  return logged("\\nget_stp_entry_from_if_index(LINE)" + text + "\\n");
}

std::string shown(uint32_t number) { return std::to_string(static_cast<int32_t>(number)); }

}  // namespace

std::string logged_rejection(const std::string &text) { return "log(0x00730000, 100) \"" + text + "\""; }

fake::Send entry(uint32_t tree, uint32_t if_index) {
  return {.attributes = fake::Attributes{{protocol::kPortTree, fake::number(tree)},
                                         {protocol::kInterface, fake::number(if_index)}}};
}

fake::Send no_entry() { return {.result = CMD_NO_ENTRY}; }

Trace queried(uint32_t command, uint32_t action, uint32_t tree, uint32_t if_index) {
  Trace lines;
  if (command == 111 || command == 120 || command == 121) {
    lines.push_back(in_lookup(": for command id " + std::to_string(command) + ", tree_id:" + shown(tree)));
  }
  return lines + Trace{"malloc(16000)",
                       "cmd_req_init(buffer, 16000)",
                       "cmd_req_cmdId_set(request, " + std::to_string(command) + ")",
                       "cmd_req_action_set(request, " + std::to_string(action) + ")",
                       in_lookup(": Searching for dual index: " + shown(if_index) + ", " + shown(tree)),
                       "token_type_2len(0x130200B4, value)",
                       "cmd_req_attr_add(request, 0x130200B4, " + bytes({0, 1, tree, tree}) + ")",
                       "token_type_2len(0x0C020105, value)",
                       "cmd_req_attr_add(request, 0x0C020105, " + bytes({if_index}) + ")",
                       "get_snmp_sessionid(0)",
                       "get_snmp_username(0)",
                       "cmd_snmp_req_send_recv(0xFE000000, 171, request, operator, 4711, 0)"};
}

Trace queried_and_found(uint32_t command, uint32_t action, uint32_t tree, uint32_t if_index,
                        uint32_t found_tree, uint32_t found_if_index) {
  return queried(command, action, tree, if_index) +
         Trace{"free(16000)",
               "cmd_rsp_attr_get(0x1402A006)",
               in_lookup(" dual index tree id: " + shown(found_tree)),
               "cmd_rsp_attr_get(0x0C02A001)",
               in_lookup(" return if_index id: " + shown(found_if_index)),
               "cmd_rsp_attr_get(0x1402A015)"};
}

Trace queried_in_vain(uint32_t command, uint32_t action, uint32_t tree, uint32_t if_index) {
  return queried(command, action, tree, if_index) +
         Trace{in_lookup(" cmd_req_snmp_send_recv() failed for GET"), "free(16000)"};
}

// A cache that is filled long after it was filled before, and stamped with the time 0, is empty.
void empty_base_port_cache() {
  constexpr int64_t kMuchLater = 1'000'000'000;
  fake::Platform script = std::exchange(fake::platform(), {});
  fake::platform().next_clocks = {kMuchLater, 0};
  const stp_vlan_bmp no_vlans{STP_VLAN_BITMAP_SIZE, {}};
  std::free(stpsnmp::search::cached_members(&no_vlans));
  fake::platform() = std::move(script);
}

void SearchTest::SetUp() {
  fake::reset();
  ledger::start();
}

void SearchTest::TearDown() {
  ledger::stop();
  EXPECT_EQ(ledger::outstanding(), 0U) << "request buffers left";
  EXPECT_EQ(fake::live_replies(), 0U) << "replies left";
  fake::reset();
}

void *SearchTest::held_reply() {
  void *reply = nullptr;
  fake::platform().next_sends.push_front(entry(0, 0));
  cmd_snmp_req_send_recv(0, 0, nullptr, "", 0, &reply, 0);
  fake::taken_trace();
  return reply;
}

void SearchTest::release(void *reply) {
  const size_t held = fake::live_replies();
  cmd_snmp_free_rx_hndl(reply);
  EXPECT_EQ(fake::live_replies(), held - 1) << "the reply is the caller's";
  fake::taken_trace();
}
