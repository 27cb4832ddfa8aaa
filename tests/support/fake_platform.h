// A platform that does what a test says and writes down, in order, what the module asks of it.
//
// It defines every function and data symbol of platform/include that the module uses, and owns two ledgers:
// request buffers (ledger.h) and replies. Its trace holds one line a call, with the arguments that matter.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/agent_ext.h"

namespace fake {

using Bytes = std::vector<uint8_t>;

// Interface indexes of the port-channels: this and their number.
inline constexpr uint32_t kChannelIfIndexes = 0x16000000;

// A number as a reply carries it.
Bytes number(uint32_t value);
Bytes octets(const std::string &text);

std::string hex(uint32_t value);
std::string hex(const void *data, size_t length);

using Attributes = std::map<uint32_t, Bytes>;  // by token

// A request as it was sent.
struct Request {
  uint32_t command = 0;
  uint32_t action = 0;
  Attributes keys;
};

// What becomes of one send. A reply holds the attributes given here, or else the platform's.
struct Send {
  int result = 0;
  bool has_reply = true;
  std::optional<Attributes> attributes = std::nullopt;
};

// An interface of the switch.
struct Interface {
  uint32_t if_index;
  uint16_t port;                     // bridge port number; 0: cannot be converted
  uint8_t type = 26;                 // 0: unknown
  bool is_usable = true;             // as stp_valid_if_index says
  bool is_base_port = true;          // as check_if_valid_base_port_ifindex says
  bool has_if_index_of_port = true;  // its bridge port number can be converted back
  uint8_t oper_status = 1;      // 2: down, and not accepted by check_if_valid_base_port_ifindex's selector 1
  bool has_oper_status = true;  // the interface manager can tell it
  uint32_t channel_if_index = 0;     // of the port-channel that it is a member of
  bool is_known_to_channels = true;  // the port-channel manager can tell
  std::vector<uint32_t> vlans = {};  // those that it is a member of
};

// A set of bridge ports as the VLAN manager hands it out.
struct BasePorts {
  std::vector<uint32_t> ports = {};
  uint32_t size = 8192;  // as the record says
  bool is_null = false;  // there is no record
};

// What the STP library finds in a reply; what is left out keeps what the caller put there.
struct MstVlans {
  int result = 0;
  std::optional<uint16_t> instance;
  std::optional<uint32_t> size;
  std::vector<uint32_t> vlans;
};

struct Platform {
  // What the spanning-tree process answers. The next sends fare as the queue says, later ones as the function
  // says, if there is one, or else as the values below it.
  std::deque<Send> next_sends;
  std::function<Send(const Request &)> answer;
  int send_result = 0;
  void *reply_of_failed_send = nullptr;  // what a failed send leaves where the reply would stand
  bool answers_without_reply = false;
  int missing_attribute_result = 7;
  Attributes attributes;
  std::map<uint32_t, uint32_t> attributes_without_value;  // token, and the length that is told all the same

  // Who asks.
  std::string user = "operator";
  uint32_t session = 4711;

  // What the two sinks answer when they are asked whether they take a level: the history keeps it at 0, the
  // print shows it at anything else.
  std::map<uint32_t, int> history_answers{{100, 0}, {101, 0}};
  std::map<uint32_t, int> print_answers{{100, 0}, {101, 0}};
  std::function<void()> before_level_check;  // called when either of them is asked

  // The byte lengths that the command library finds for a list of ranges, and for every other value.
  uint32_t range_list_length = 16;
  uint32_t value_length = 4;

  // What adding an attribute returns.
  int attr_add_result = 0;

  MstVlans mst_vlans;

  // The switch's interfaces, in the order in which the interface manager steps through them, and the one
  // behind which it cannot be asked.
  std::vector<Interface> interfaces;
  std::optional<uint32_t> no_step_behind;

  // What becomes of the next conversions of a port into an interface index, with nothing for a failure; later
  // ones go by the interfaces.
  std::deque<std::optional<uint32_t>> next_if_indexes;

  // What becomes of the next questions for the members of VLANs; later ones go by the interfaces' VLANs.
  std::deque<BasePorts> next_base_ports;

  // The VLANs of the MST instances that exist.
  std::map<uint16_t, std::vector<uint32_t>> mst_contexts;

  // What the next calls of time answer, and what later ones do; and what gettimeofday answers, one second
  // later each time.
  std::deque<int64_t> next_clocks;
  int64_t clock = 1000;
  uint32_t seconds = 1000;

  // The payload of every message, and whether a notification can be built of it.
  std::optional<Bytes> payload;
  bool build_varbind_fails = false;

  // What happened; where it does not matter, it need not be written down.
  bool writes_trace = true;
  std::vector<std::string> trace;
  std::function<void()> before_log;  // called when a text reaches the event history
  std::map<uint32_t, notification_handler> subscriptions;
  int unregister_result = 0;
};

Platform &platform();

// Forgets script, trace and replies.
void reset();

// Replies that were not released.
size_t live_replies();

void trace(const std::string &line);

// The trace of the latest calls, with the source line in "function(123)" and "function:123 " replaced by
// LINE.
std::vector<std::string> taken_trace();

// One line of text with its control characters spelled out.
std::string quoted(const std::string &text);

}  // namespace fake
