#include "fake_platform.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <set>

#include "platform/bridge_mib.h"
#include "platform/cmd.h"
#include "platform/evhist.h"
#include "platform/stp.h"

namespace fake {
namespace {

struct Reply {
  // Every value stands at an odd address: replies promise no alignment.
  Attributes values;
};

std::set<const Reply *> &replies() {
  static std::set<const Reply *> live;
  return live;
}

bool is_alive(const void *reply) { return replies().contains(static_cast<const Reply *>(reply)); }

// The handle of a request is another address than its buffer's, and valid while the buffer holds its cookie.
constexpr uint32_t kCookie = 0xC0FFEE;
constexpr size_t kHandleOffset = 16;

void *handle_in(void *buffer) {
  auto *handle = static_cast<uint8_t *>(buffer) + kHandleOffset;
  std::memcpy(handle, &kCookie, sizeof kCookie);
  return handle;
}

// Joins the trace line of every call that takes a request.
std::string named(const void *request) {
  if (request == nullptr) {
    return "NULL REQUEST";
  }
  return std::memcmp(request, &kCookie, sizeof kCookie) == 0 ? "request" : "WRONG OR FREED REQUEST";
}

int answer_of(const std::map<uint32_t, int> &answers, uint32_t level) {
  const auto found = answers.find(level);
  if (found == answers.end()) {
    trace("UNKNOWN LEVEL " + std::to_string(level));
    return 0;
  }
  return found->second;
}

std::string hex(uint32_t value) {
  char text[16];
  snprintf(text, sizeof text, "0x%08X", value);
  return text;
}

std::string hex(const void *data, uint32_t length) {
  std::string text;
  for (uint32_t i = 0; i < length; ++i) {
    char digits[4];
    snprintf(digits, sizeof digits, "%02x", static_cast<const uint8_t *>(data)[i]);
    text += digits;
  }
  return text;
}

}  // namespace

Bytes number(uint32_t value) {
  Bytes bytes(sizeof value);
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

Bytes octets(const std::string &text) { return Bytes(text.begin(), text.end()); }

Platform &platform() {
  static Platform instance;
  return instance;
}

void reset() {
  platform() = Platform();
  for (const Reply *reply : replies()) {
    delete reply;
  }
  replies().clear();
}

size_t live_replies() { return replies().size(); }

void trace(const std::string &line) { platform().trace.push_back(line); }

// Replaces the digits between the first "(" that follows a name and its ")" by LINE.
std::string without_source_line(const std::string &line) {
  const size_t open = line.find('(', line.find('"'));
  const size_t close = line.find_first_not_of("0123456789", open + 1);
  if (open == std::string::npos || close == open + 1 || close == std::string::npos || line[close] != ')') {
    return line;
  }
  return line.substr(0, open + 1) + "LINE" + line.substr(close);
}

std::vector<std::string> taken_trace() {
  std::vector<std::string> lines;
  for (const std::string &line : platform().trace) {
    lines.push_back(line.starts_with("log") ? without_source_line(line) : line);
  }
  platform().trace.clear();
  return lines;
}

std::string quoted(const std::string &text) {
  std::string result = "\"";
  for (const char character : text) {
    result += character == '\n' ? std::string("\\n") : std::string(1, character);
  }
  return result + "\"";
}

}  // namespace fake

using fake::platform;
using fake::trace;

// Command library.

void *cmd_req_init(void *buffer, uint32_t size) {
  trace("cmd_req_init(buffer, " + std::to_string(size) + ")");
  return fake::handle_in(buffer);
}

int cmd_req_cmdId_set(void *request, uint32_t command_id) {
  trace("cmd_req_cmdId_set(" + fake::named(request) + ", " + std::to_string(command_id) + ")");
  return 0;
}

int cmd_req_action_set(void *request, uint32_t action) {
  trace("cmd_req_action_set(" + fake::named(request) + ", " + std::to_string(action) + ")");
  return 0;
}

uint32_t token_type_2len(uint32_t token, const void *value) {
  trace("token_type_2len(" + fake::hex(token) + (value == nullptr ? ", NULL" : ", value") + ")");
  return CMD_TOKEN_TYPE(token) == CMD_TYPE_RANGE_LIST ? platform().range_list_length
                                                      : platform().value_length;
}

int cmd_req_attr_add(void *request, uint32_t token, const void *value, uint32_t length) {
  trace("cmd_req_attr_add(" + fake::named(request) + ", " + fake::hex(token) + ", " +
        fake::hex(value, length) + ")");
  return platform().attr_add_result;
}

int cmd_snmp_req_send_recv(uint32_t destination, uint32_t service, void *request, const char *user,
                           uint32_t session, void **reply, uint32_t flags) {
  trace("cmd_snmp_req_send_recv(" + fake::hex(destination) + ", " + std::to_string(service) + ", " +
        fake::named(request) + ", " + user + ", " + std::to_string(session) + ", " + std::to_string(flags) +
        ")");
  fake::Send send{platform().send_result, !platform().answers_without_reply};
  if (!platform().next_sends.empty()) {
    send = platform().next_sends.front();
    platform().next_sends.pop_front();
  }
  if (send.result != 0 && platform().reply_of_failed_send != nullptr) {
    *reply = platform().reply_of_failed_send;
  }
  if (send.result != 0 || !send.has_reply) {
    return send.result;
  }
  auto *answer = new fake::Reply;
  for (const auto &[token, value] : send.attributes.value_or(platform().attributes)) {
    fake::Bytes unaligned(1);
    unaligned.insert(unaligned.end(), value.begin(), value.end());
    answer->values[token] = unaligned;
  }
  fake::replies().insert(answer);
  *reply = answer;
  return 0;
}

int cmd_rsp_attr_get(void *reply, uint32_t token, void **value, uint32_t *length) {
  const bool alive = fake::is_alive(reply);
  trace(std::string(alive ? "" : "FREED REPLY ") + "cmd_rsp_attr_get(" + fake::hex(token) + ")");
  if (!alive) {
    return platform().missing_attribute_result;
  }
  if (const auto bare = platform().attributes_without_value.find(token);
      bare != platform().attributes_without_value.end()) {
    if (bare->second != 0) {
      *length = bare->second;
    }
    return 0;
  }
  auto &values = static_cast<fake::Reply *>(reply)->values;
  const auto found = values.find(token);
  if (found == values.end()) {
    return platform().missing_attribute_result;
  }
  *value = found->second.data() + 1;
  *length = static_cast<uint32_t>(found->second.size() - 1);
  return 0;
}

void cmd_snmp_free_rx_hndl(void *reply) {
  if (!fake::is_alive(reply)) {
    trace("FREED REPLY cmd_snmp_free_rx_hndl");
    return;
  }
  trace("cmd_snmp_free_rx_hndl");
  auto *released = static_cast<fake::Reply *>(reply);
  fake::replies().erase(released);
  delete released;
}

// Agent extensions.

char and_context_name[AND_CONTEXT_NAME_MAX + 1] = "";
uint32_t and_context_name_len = 0;

const char *get_snmp_username(int index) {
  trace("get_snmp_username(" + std::to_string(index) + ")");
  return platform().user.c_str();
}

uint32_t get_snmp_sessionid(int index) {
  trace("get_snmp_sessionid(" + std::to_string(index) + ")");
  return platform().session;
}

int register_for_notification(uint32_t notification_class, notification_handler handler) {
  trace("register_for_notification(" + std::to_string(notification_class) + ")");
  platform().subscriptions[notification_class] = handler;
  return 0;
}

int unregister_for_notification(uint32_t notification_class) {
  trace("unregister_for_notification(" + std::to_string(notification_class) + ")");
  platform().subscriptions.erase(notification_class);
  return platform().unregister_result == 0 ? 0 : platform().unregister_result++;
}

int set_notification_enable_disable_status(uint32_t notification_class, int enable) {
  trace("set_notification_enable_disable_status(" + std::to_string(notification_class) + ", " +
        std::to_string(enable) + ")");
  return 0;
}

// STP library and bridge MIB helper.

int stp_get_mst_vlan_bmp(void *reply, uint32_t action, uint16_t *instance, stp_vlan_bmp *vlans) {
  const bool is_empty =
      std::all_of(std::begin(vlans->bits), std::end(vlans->bits), [](uint8_t octet) { return octet == 0; });
  trace(std::string(fake::is_alive(reply) ? "" : "FREED REPLY ") + "stp_get_mst_vlan_bmp(" +
        std::to_string(action) + ", " + std::to_string(*instance) + ", " + (is_empty ? "empty " : "USED ") +
        std::to_string(vlans->size) + ")");
  const fake::MstVlans &found = platform().mst_vlans;
  *instance = found.instance.value_or(*instance);
  vlans->size = found.size.value_or(vlans->size);
  for (const uint32_t vlan : found.vlans) {
    vlans->bits[vlan / 8] = static_cast<uint8_t>(vlans->bits[vlan / 8] | 0x80U >> vlan % 8);
  }
  return found.result;
}

int dot1d_stringNonZeroLength(const uint8_t *octets, int length) {
  trace("dot1d_stringNonZeroLength(" + std::to_string(length) + ")");
  const auto *const end = octets + length;
  const auto *last = end;
  while (last != octets && last[-1] == 0) {
    --last;
  }
  return static_cast<int>(last - octets);
}

// Event history and debug print.

int evhist_hist_event_subtype_check(uint32_t event_class, uint32_t level) {
  if (event_class != 0x730000) {
    trace("UNKNOWN EVENT CLASS " + fake::hex(event_class));
  }
  return fake::answer_of(platform().history_answers, level);
}

int evhist_hist_event(uint32_t event_class, uint32_t length, const void *record) {
  const auto *event = static_cast<const evhist_record *>(record);
  const std::string text(event->text, strnlen(event->text, sizeof event->text));
  trace("log(" + fake::hex(event_class) + ", " + std::to_string(event->level) + ") " + fake::quoted(text));
  if (length != text.size() + 5) {
    trace("RECORD OF " + std::to_string(length) + " BYTES");
  }
  return 0;
}

int evhist_chk_int(uint32_t level, uint32_t a, uint32_t b, uint32_t c) {
  if (a != 0 || b != 0 || c != 1) {
    trace("UNKNOWN evhist_chk_int ARGUMENTS");
  }
  return fake::answer_of(platform().print_answers, level);
}

char evhist_dbg_modname[] = "FAKE";

void dbgprint(int first, const char *module, int third, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  char text[32768];
  vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  trace("dbgprint(" + std::to_string(first) + ", " + module + ", " + std::to_string(third) + ") " +
        fake::quoted(text));
}
