#include "tree_walk_test.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace {

constexpr char kPortSearch[] = "validate_port_id_for_snmp_search_new";

// "failed at 123" and "failed in 123" name a source line.
std::string without_trailing_source_line(const std::string &text) {
  constexpr std::string_view kEnd = "\\n\"";
  for (const std::string_view before : {"failed at ", "failed in "}) {
    const size_t at = text.find(before);
    if (at == std::string::npos || !text.ends_with(kEnd)) {
      continue;
    }
    const size_t digits = at + before.size();
    const size_t end = text.size() - kEnd.size();
    if (digits < end && text.find_first_not_of("0123456789", digits) == end) {
      return text.substr(0, digits) + "LINE" + std::string(kEnd);
    }
  }
  return text;
}

std::string replaced(std::string text, const std::string &what, const std::string &by) {
  const size_t at = text.find(what);
  return at == std::string::npos ? text : text.replace(at, what.size(), by);
}

Trace port_search_begun(const std::string &vlans, const std::string &listing, int port) {
  return {members_of(vlans), "malloc(8196)",
          logged_rejection(std::string(kPortSearch) + ":LINE Printing baseport bitset\\n"),
          logged_rejection(listing + "\\n"),
          logged_rejection(std::string(kPortSearch) + "(LINE) found next port : " + std::to_string(port) +
                           "\\n")};
}

}  // namespace

Trace taken_lines() {
  Trace lines = fake::taken_trace();
  std::transform(lines.begin(), lines.end(), lines.begin(), without_trailing_source_line);
  return lines;
}

std::string members_of(const std::string &vlans) {
  return "vlan_mgr_get_baseport_membership_range(" + vlans + ")";
}

std::string looked_at(uint32_t if_index, uint32_t selector) {
  return "check_if_valid_base_port_ifindex(" + fake::hex(if_index) + ", " + std::to_string(selector) + ")";
}

Trace with_mst_keys(Trace lines) {
  for (std::string &line : lines) {
    line = replaced(replaced(line, fake::hex(protocol::kInterfaceKey), fake::hex(protocol::kMstInterfaceKey)),
                    fake::hex(protocol::kVlanTreeKey), fake::hex(protocol::kMstTreeKey));
  }
  return lines;
}

Trace port_found(const std::string &vlans, const std::string &listing, int port, uint32_t if_index) {
  const std::string name = kPortSearch;
  return port_search_begun(vlans, listing, port) +
         Trace{"stp_dot1dportnum2ifindex(" + std::to_string(port) + ")",
               logged(name + "(LINE) found next port ifindex: " + shown(if_index) + "\\n"),
               looked_at(if_index),
               logged_rejection(name + "(LINE) found what we wanted ifindex: " + shown(if_index) + "\\n"),
               "free(8196)",
               logged("\\n" + name + "(LINE): return SUCCESS with  port_id(" + std::to_string(port) +
                      "), in_if_index(" + shown(if_index) + "), ret_if_index(" + shown(if_index) + ")\\n")};
}

Trace no_port_found(const std::string &vlans, const std::string &listing) {
  return port_search_begun(vlans, listing, -1) +
         Trace{logged_rejection(std::string(kPortSearch) +
                                "(LINE) No next port available in bitmap, return FAILURE\\n"),
               "free(8196)"};
}

void TreeWalkTest::SetUp() {
  SearchTest::SetUp();
  fake::platform().interfaces = {
      {.if_index = kPort1, .port = 129, .vlans = {10, 20}},
      {.if_index = kPort2, .port = 130, .vlans = {10}},
      {.if_index = kDownPort, .port = 131, .oper_status = 2, .vlans = {10, 20}},
      {.if_index = kMember, .port = 132, .is_base_port = false, .vlans = {10, 20}},
      {.if_index = kChannel, .port = 4097, .type = 22, .vlans = {20}},
  };
  fake::platform().answer = [this](const fake::Request &request) { return process_.answer(request); };
}

void TreeWalkTest::TearDown() {
  EXPECT_TRUE(process_.is_done()) << "answers that nobody asked for";
  SearchTest::TearDown();
}

Trace TreeWalkTest::story() const {
  const auto is_told = [this](const std::string &line) {
    for (const char *start : {"asked", kReleased, "FREED", "vlan_mgr_get_baseport_membership_range",
                              "check_if_valid_base_port_ifindex", "stp_dot1d_bridgemib_get_mst_ctx"}) {
      if (line.starts_with(start)) {
        return true;
      }
    }
    for (const char *part : {routine_, "\"Found next tree id", "failed at", "failed in"}) {
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

std::string TreeWalkTest::line(const std::string &text) const {
  return logged("\\n" + std::string(routine_) + "(LINE)" + text + "\\n");
}

std::string TreeWalkTest::rejection(const std::string &text) const {
  return logged_rejection("\\n" + std::string(routine_) + "(LINE)" + text + "\\n");
}

Trace TreeWalkTest::returned(uint32_t if_index, uint32_t tree, int port) const {
  return {row_of(tree, if_index), line(" Get Successful"),
          line(": returning tree_index: " + shown(tree) + ", port_index: " + std::to_string(port))};
}

void TreeWalkTest::expect_row(uint32_t tree, uint16_t port) const {
  EXPECT_EQ(tree_, tree);
  EXPECT_EQ(port_, port);
}

void TreeWalkTest::expect_nothing(uint32_t tree, uint16_t port) const {
  expect_row(tree, port);
  EXPECT_EQ(reply_, &marker_);
}

void TreeWalkTest::take_reply() {
  ASSERT_NE(reply_, &marker_);
  EXPECT_EQ(fake::live_replies(), 1U);
  release(reply_);
  reply_ = &marker_;
}
