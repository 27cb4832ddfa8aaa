#include "tree_table_test.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr uint32_t kGlobalSettings = 104;
constexpr uint32_t kSpanningTreeType = 0x0202B001;
constexpr char kTypeAsked[] = "asked for the mode";

}  // namespace

void TreeTableTest::SetUp() {
  TableTest::SetUp();
  fake::platform().interfaces = {
      {.if_index = kPort1, .port = 129, .vlans = {10, 20}},
      {.if_index = kPort2, .port = 130, .vlans = {10}},
      {.if_index = kDownPort, .port = 131, .oper_status = 2, .vlans = {10, 20}},
      {.if_index = kChannel, .port = 4097, .type = 22, .vlans = {20}},
  };
  fake::platform().answer = [this](const fake::Request &request) {
    if (request.command != kGlobalSettings) {
      return process_.answer(request);
    }
    fake::trace(kTypeAsked);
    return fake::Send{.result = type_result_,
                      .attributes = fake::Attributes{{kSpanningTreeType, fake::number(type_)}}};
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

std::string TreeTableTest::parse_failure() const {
  return logged("parse_reply_" + std::string(name_) + " failed\\n");
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
