#include "table_test.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "fake_platform.h"
#include "ledger.h"
#include "stpsnmp/object_table.h"

namespace {

constexpr size_t kStaleLength = 999;

const variable7 &entry_of(uint8_t magic) {
  return *std::find_if(std::begin(stp_extensions_mib_variables), std::end(stp_extensions_mib_variables),
                       [magic](const variable7 &entry) { return entry.magic == magic; });
}

}  // namespace

Trace operator+(Trace first, const Trace &second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

Trace sent(uint32_t command, uint32_t action, const std::string &token, const std::string &key) {
  Trace lines{"malloc(16000)", "cmd_req_init(buffer, 16000)",
              "cmd_req_cmdId_set(request, " + std::to_string(command) + ")",
              "cmd_req_action_set(request, " + std::to_string(action) + ")"};
  if (!token.empty()) {
    lines.push_back("token_type_2len(" + token + ", value)");
    lines.push_back("cmd_req_attr_add(request, " + token + ", " + key + ")");
  }
  return lines + Trace{"get_snmp_sessionid(0)", "get_snmp_username(0)",
                       "cmd_snmp_req_send_recv(0xFE000000, 171, request, operator, 4711, 0)"};
}

std::string logged(const std::string &text) { return "log(0x00730000, 101) \"" + text + "\""; }

std::string bytes(std::initializer_list<uint32_t> numbers) {
  std::string text;
  for (const uint32_t number : numbers) {
    for (const uint8_t byte : fake::number(number)) {
      char digits[3];
      snprintf(digits, sizeof digits, "%02x", byte);
      text += digits;
    }
  }
  return text;
}

std::optional<int32_t> number(const std::optional<std::string> &value) {
  int32_t result = 0;
  if (!value || value->size() != sizeof result) {
    return std::nullopt;
  }
  std::memcpy(&result, value->data(), sizeof result);
  return result;
}

void TableTest::SetUp() {
  fake::reset();
  ledger::start();
}

void TableTest::TearDown() {
  ledger::stop();
  EXPECT_EQ(ledger::outstanding(), 0U) << "request buffers left";
  EXPECT_EQ(fake::live_replies(), kept_replies_) << "replies left";
  fake::reset();
}

std::optional<std::string> TableTest::ask(uint8_t magic, const std::vector<oid> &arcs, int exact) {
  const variable7 &entry = entry_of(magic);
  std::vector<oid> below_root(entry.name, entry.name + entry.namelen);
  below_root.insert(below_root.end(), arcs.begin(), arcs.end());
  return ask_below_root(magic, below_root, exact);
}

std::optional<std::string> TableTest::ask_below_root(uint8_t magic, const std::vector<oid> &below_root,
                                                     int exact) {
  const variable7 &entry = entry_of(magic);
  variable vp{};
  vp.magic = magic;
  vp.namelen = static_cast<u_char>(STP_EXTENSIONS_MIB_ROOT_LENGTH + entry.namelen);
  oid *const suffix = std::copy_n(stp_extensions_mib_variables_oid, STP_EXTENSIONS_MIB_ROOT_LENGTH, vp.name);
  std::copy_n(entry.name, entry.namelen, suffix);

  oid *const below =
      std::copy_n(stp_extensions_mib_variables_oid, STP_EXTENSIONS_MIB_ROOT_LENGTH, std::begin(name_));
  name_length_ = static_cast<size_t>(std::copy(below_root.begin(), below_root.end(), below) - name_);

  size_t length = kStaleLength;
  auto *const untouched = reinterpret_cast<WriteMethod *>(this);
  WriteMethod *write_method = untouched;
  const u_char *value = handler_(&vp, name_, &name_length_, exact, &length, &write_method);
  EXPECT_EQ(write_method, untouched) << "a write method is offered";
  if (value == nullptr) {
    return std::nullopt;
  }
  return std::string(reinterpret_cast<const char *>(value), length);
}

std::string TableTest::answered() const {
  std::string text;
  for (size_t i = STP_EXTENSIONS_MIB_ROOT_LENGTH; i < name_length_; ++i) {
    text += "." + std::to_string(name_[i]);
  }
  return text;
}

void TableTest::reply_holds(uint32_t token, uint32_t number) {
  fake::platform().attributes[token] = fake::number(number);
}

void TableTest::reply_lacks(uint32_t token) { fake::platform().attributes.erase(token); }
