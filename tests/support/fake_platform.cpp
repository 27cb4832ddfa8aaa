#include "fake_platform.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>

#include "platform/bitmap_print.h"
#include "platform/bridge_mib.h"
#include "platform/cmd.h"
#include "platform/evhist.h"
#include "platform/im.h"
#include "platform/pcm.h"
#include "platform/stp.h"
#include "platform/vlan_mgr.h"
#include "platform/xport.h"

namespace fake {
namespace {

struct Reply {
  // Every value stands at an odd address: replies promise no alignment.
  Attributes values;
};

// The request under construction; the module builds one at a time.
Request &request_in_progress() {
  static Request request;
  return request;
}

const Interface *find_interface(const std::function<bool(const Interface &)> &wanted) {
  const auto &interfaces = platform().interfaces;
  const auto found = std::find_if(interfaces.begin(), interfaces.end(), wanted);
  return found == interfaces.end() ? nullptr : &*found;
}

const Interface *find_if_index(uint32_t if_index) {
  return find_interface([if_index](const Interface &interface) { return interface.if_index == if_index; });
}

constexpr uint32_t kVlans = 8 * STP_VLAN_BITMAP_SIZE;

bool holds(const uint8_t *bitmap, uint32_t bit) { return (bitmap[bit / 8] & 0x80U >> bit % 8) != 0; }

void add_bit(uint8_t *bitmap, uint32_t bit) {
  bitmap[bit / 8] = static_cast<uint8_t>(bitmap[bit / 8] | 0x80U >> bit % 8);
}

// The VLANs as text: "1-4094", "10,12", "none".
std::string shown(const stp_vlan_bmp &vlans) {
  std::string text = vlans.size == STP_VLAN_BITMAP_SIZE ? "" : "SIZE " + std::to_string(vlans.size) + " ";
  std::string separator;
  for (uint32_t first = 0; first < kVlans; ++first) {
    if (!holds(vlans.bits, first)) {
      continue;
    }
    uint32_t last = first;
    while (last + 1 < kVlans && holds(vlans.bits, last + 1)) {
      ++last;
    }
    text += separator + std::to_string(first) + (last > first ? "-" + std::to_string(last) : "");
    separator = ",";
    first = last;
  }
  return separator.empty() ? text + "none" : text;
}

BasePorts next_base_ports(const stp_vlan_bmp &vlans) {
  Platform &script = platform();
  if (!script.next_base_ports.empty()) {
    BasePorts scripted = std::move(script.next_base_ports.front());
    script.next_base_ports.pop_front();
    return scripted;
  }
  BasePorts members;
  for (const Interface &interface : script.interfaces) {
    if (std::any_of(interface.vlans.begin(), interface.vlans.end(),
                    [&vlans](uint32_t vlan) { return holds(vlans.bits, vlan); })) {
      members.ports.push_back(interface.port);
    }
  }
  return members;
}

Send next_send() {
  Platform &script = platform();
  if (!script.next_sends.empty()) {
    Send send = std::move(script.next_sends.front());
    script.next_sends.pop_front();
    return send;
  }
  if (script.answer) {
    return script.answer(request_in_progress());
  }
  return {script.send_result, !script.answers_without_reply};
}

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
  if (platform().before_level_check) {
    platform().before_level_check();
  }
  const auto found = answers.find(level);
  if (found == answers.end()) {
    trace("UNKNOWN LEVEL " + std::to_string(level));
    return 0;
  }
  return found->second;
}

}  // namespace

Bytes number(uint32_t value) {
  Bytes bytes(sizeof value);
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

std::string hex(uint32_t value) {
  char text[16];
  snprintf(text, sizeof text, "0x%08X", value);
  return text;
}

std::string hex(const void *data, size_t length) {
  std::string text;
  for (size_t i = 0; i < length; ++i) {
    char digits[4];
    snprintf(digits, sizeof digits, "%02x", static_cast<const uint8_t *>(data)[i]);
    text += digits;
  }
  return text;
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

void trace(const std::string &line) {
  if (platform().writes_trace) {
    platform().trace.push_back(line);
  }
}

// Replaces the source line behind a name by LINE: the digits in "name(123)", "name[123]" and "name:123 ".
std::string without_source_line(const std::string &line) {
  const size_t open = line.find_first_of("([:", line.find('"'));
  const size_t close = line.find_first_not_of("0123456789", open + 1);
  if (open == std::string::npos || close == open + 1 || close == std::string::npos) {
    return line;
  }
  const char end = line[open] == '(' ? ')' : line[open] == '[' ? ']' : ' ';
  return line[close] == end ? line.substr(0, open + 1) + "LINE" + line.substr(close) : line;
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
  fake::request_in_progress() = {};
  return fake::handle_in(buffer);
}

int cmd_req_cmdId_set(void *request, uint32_t command_id) {
  trace("cmd_req_cmdId_set(" + fake::named(request) + ", " + std::to_string(command_id) + ")");
  fake::request_in_progress().command = command_id;
  return 0;
}

int cmd_req_action_set(void *request, uint32_t action) {
  trace("cmd_req_action_set(" + fake::named(request) + ", " + std::to_string(action) + ")");
  fake::request_in_progress().action = action;
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
  const auto *const octets = static_cast<const uint8_t *>(value);
  fake::request_in_progress().keys[token] = fake::Bytes(octets, octets + length);
  return platform().attr_add_result;
}

int cmd_snmp_req_send_recv(uint32_t destination, uint32_t service, void *request, const char *user,
                           uint32_t session, void **reply, uint32_t flags) {
  trace("cmd_snmp_req_send_recv(" + fake::hex(destination) + ", " + std::to_string(service) + ", " +
        fake::named(request) + ", " + user + ", " + std::to_string(session) + ", " + std::to_string(flags) +
        ")");
  const fake::Send send = fake::next_send();
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

// STP library, VLAN manager and bridge MIB helper.

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
    fake::add_bit(vlans->bits, vlan);
  }
  return found.result;
}

int stp_dot1d_bridgemib_get_mst_ctx(uint16_t instance, stp_vlan_bmp *vlans) {
  trace("stp_dot1d_bridgemib_get_mst_ctx(" + std::to_string(instance) + ")");
  const auto found = platform().mst_contexts.find(instance);
  if (found == platform().mst_contexts.end()) {
    return 1;
  }
  *vlans = {STP_VLAN_BITMAP_SIZE, {}};
  for (const uint32_t vlan : found->second) {
    fake::add_bit(vlans->bits, vlan);
  }
  return 0;
}

vlan_mgr_baseport_bmp *vlan_mgr_get_baseport_membership_range(const stp_vlan_bmp *vlans) {
  trace("vlan_mgr_get_baseport_membership_range(" + (vlans == nullptr ? "NULL" : fake::shown(*vlans)) + ")");
  if (vlans == nullptr) {
    return nullptr;
  }
  const fake::BasePorts members = fake::next_base_ports(*vlans);
  if (members.is_null) {
    return nullptr;
  }
  auto *record = static_cast<vlan_mgr_baseport_bmp *>(std::malloc(sizeof(vlan_mgr_baseport_bmp)));
  *record = {members.size, {}};
  for (const uint32_t port : members.ports) {
    fake::add_bit(record->bits, port);
  }
  return record;
}

int stp_ifindex2dot1dportnum(uint32_t if_index, uint16_t *port) {
  trace("stp_ifindex2dot1dportnum(" + fake::hex(if_index) + ")");
  const fake::Interface *found = fake::find_if_index(if_index);
  if (found == nullptr || found->port == 0) {
    return 1;
  }
  *port = found->port;
  return 0;
}

int stp_dot1dportnum2ifindex(uint16_t port, uint32_t *if_index) {
  trace("stp_dot1dportnum2ifindex(" + std::to_string(port) + ")");
  if (auto &scripted = platform().next_if_indexes; !scripted.empty()) {
    const std::optional<uint32_t> converted = scripted.front();
    scripted.pop_front();
    *if_index = converted.value_or(*if_index);
    return converted ? 0 : 1;
  }
  const fake::Interface *found = fake::find_interface([port](const fake::Interface &interface) {
    return interface.port == port && port != 0 && interface.has_if_index_of_port;
  });
  if (found == nullptr) {
    return 1;
  }
  *if_index = found->if_index;
  return 0;
}

int stp_valid_if_index(uint32_t if_index) {
  trace("stp_valid_if_index(" + fake::hex(if_index) + ")");
  const fake::Interface *found = fake::find_if_index(if_index);
  return found != nullptr && found->is_usable ? 1 : 0;
}

// Interface manager.

int im_get_next_ifindex(uint32_t if_index, uint32_t *next) {
  trace("im_get_next_ifindex(" + fake::hex(if_index) + ")");
  if (platform().no_step_behind == if_index) {
    return 1;
  }
  const auto &interfaces = platform().interfaces;
  auto at = interfaces.begin();
  if (if_index != 0) {
    at = std::find_if(at, interfaces.end(), [if_index](const fake::Interface &interface) {
      return interface.if_index == if_index;
    });
    at += at == interfaces.end() ? 0 : 1;
  }
  *next = at == interfaces.end() ? 0 : at->if_index;
  return 0;
}

int check_if_valid_base_port_ifindex(uint32_t if_index, uint8_t selector) {
  trace("check_if_valid_base_port_ifindex(" + fake::hex(if_index) + ", " + std::to_string(selector) + ")");
  const fake::Interface *found = fake::find_if_index(if_index);
  const bool is_accepted =
      selector == BASE_PORT_ALL || (found != nullptr && found->oper_status != IF_OPER_DOWN);
  return found != nullptr && found->is_base_port && is_accepted ? 1 : 0;
}

int im_get_ifindex_oper_status_list(im_oper_status_entry *entries, uint32_t count) {
  im_oper_status_entry expected{};
  expected.if_index = entries->if_index;
  const bool is_clear = std::memcmp(entries, &expected, sizeof expected) == 0;
  trace("im_get_ifindex_oper_status_list(" + fake::hex(entries->if_index) + ", " + std::to_string(count) +
        (is_clear ? ")" : ", USED)"));
  const fake::Interface *found = fake::find_if_index(entries->if_index);
  if (found == nullptr || !found->has_oper_status) {
    return 1;
  }
  entries->oper_status = found->oper_status;
  return 0;
}

int if_index_get_type(uint32_t if_index, uint8_t *type) {
  trace("if_index_get_type(" + fake::hex(if_index) + ")");
  const fake::Interface *found = fake::find_if_index(if_index);
  if (found == nullptr || found->type == 0) {
    return 1;
  }
  *type = found->type;
  return 0;
}

int if_index_eth_port_channel_init(uint32_t *if_index, uint32_t channel) {
  trace("if_index_eth_port_channel_init(" + std::to_string(channel) + ")");
  *if_index = fake::kChannelIfIndexes + channel;
  return 0;
}

// Port-channel manager. What the module does not look at holds junk.

int pcm_get_pc_for_port(uint32_t if_index, pcm_port_channel *record) {
  constexpr int kUnknownPort = 9;
  constexpr int kJunk = 0xA5;
  trace("pcm_get_pc_for_port(" + fake::hex(if_index) + ")");
  const fake::Interface *found = fake::find_if_index(if_index);
  if (found == nullptr || !found->is_known_to_channels) {
    return kUnknownPort;
  }
  std::memset(record, kJunk, sizeof *record);
  record->pc_if_index = found->channel_if_index;
  return 0;
}

// Message transport and bitmap printing.

int printf_curr_idx = 0;

void *xport_payload_get(void *message) {
  trace(std::string("xport_payload_get(") + (message == nullptr ? "NULL" : "message") + ")");
  return platform().payload ? platform().payload->data() : nullptr;
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
  if (platform().before_log) {
    platform().before_log();
  }
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
