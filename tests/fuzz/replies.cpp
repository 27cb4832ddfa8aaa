// What arrives on the platform library's socket for requests: greetings, replies and confirmations of a
// renewed lease, in any order. A reply that is taken has well-formed attributes, and of each the first is
// found.
#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>

#include <cstddef>
#include <cstring>
#include <vector>

#include "connection.h"
#include "fake_clock.h"
#include "platform/cmd.h"
#include "platform/im.h"
#include "protocol_numbers.h"
#include "publisher/image_slot.h"
#include "publisher/shared_image.h"
#include "support/input.h"
#include "support/require.h"
#include "support/scripted_socket.h"
#include "support/switches.h"
#include "wire/image.h"

namespace wire = stpplatform::wire;

namespace {

// What an octet of the input says of a packet, bit by bit.
enum Kind : uint8_t {
  kSilence = 1,
  kEnd = 2,
  kOwnHeader = 4,
  kOtherDescriptor = 8,
  kOwnSize = 16,
  kNoRenewal = 32
};

class ReplySwitch {
 public:
  ReplySwitch(fuzz::Input *input, const StoppedClock *clock)
      : input_(*input), clock_(*clock), image_(slot().size(), 0) {
    image_.write(slot());
    image_.set_flags(wire::kAskMe);
  }

  fuzz::Arrival next(const wire::MessageHeader &sent) {
    const auto kind = input_.number<uint8_t>();
    if ((kind & kSilence) != 0) {
      return {CMD_TIMEOUT};
    }
    if ((kind & kEnd) != 0) {
      return {CMD_UNREACHABLE};
    }
    if ((kind & kNoRenewal) == 0) {
      image_.set_lease_end(clock_.now_ns() + wire::kLeaseNs);
    }
    const bool is_greeting = sent.type == 0;
    const uint8_t expected = is_greeting ? 0 : kOtherDescriptor;
    fuzz::Arrival arrival{CMD_OK, is_greeting ? greeting(kind) : input_.long_octets()};
    if ((kind & kOwnHeader) == 0) {
      fuzz::put_header(&arrival.octets, is_greeting ? wire::MessageType::kHello : wire::MessageType::kReply,
                       sent.sequence);
    }
    if ((kind & kOtherDescriptor) == expected) {
      arrival.descriptor = image_.fd();
    }
    latest_ = arrival.octets;
    return arrival;
  }

  // The packet that was received last, whatever it was.
  const std::vector<uint8_t> &latest() const { return latest_; }

 private:
  static const std::vector<uint8_t> &slot() {
    static const std::vector<uint8_t> octets = [] {
      std::vector<uint8_t> made;
      stpswitch::lay_out_slot(fuzz::any_switch(0), &made);
      return made;
    }();
    return octets;
  }

  std::vector<uint8_t> greeting(uint8_t kind) {
    if ((kind & kOwnHeader) != 0) {
      return input_.short_octets();
    }
    std::vector<uint8_t> hello(sizeof(wire::Hello));
    const uint32_t image_size = (kind & kOwnSize) != 0 ? input_.number<uint32_t>() : image_.size();
    std::memcpy(hello.data() + offsetof(wire::Hello, image_size), &image_size, sizeof image_size);
    return hello;
  }

  fuzz::Input &input_;
  const StoppedClock &clock_;
  stpswitch::SharedImage image_;
  std::vector<uint8_t> latest_;
};

// The first of that token in a reply that was taken.
wire::Attribute first_of(uint32_t token, const std::vector<uint8_t> &packet) {
  wire::AttributeReader reader(packet.data() + sizeof(wire::Reply), packet.size() - sizeof(wire::Reply));
  wire::Attribute attribute{};
  while (reader.next(&attribute) && attribute.token != token) {
  }
  return attribute;
}

void read_all(void *reply, const std::vector<uint8_t> &packet) {
  wire::AttributeReader reader(packet.data() + sizeof(wire::Reply), packet.size() - sizeof(wire::Reply));
  wire::Attribute attribute{};
  while (reader.next(&attribute)) {
    void *value = nullptr;
    uint32_t length = 0;
    fuzz::require(cmd_rsp_attr_get(reply, attribute.token, &value, &length) == CMD_OK,
                  "an attribute is found");
    const wire::Attribute first = first_of(attribute.token, packet);
    fuzz::require(length == first.length && std::memcmp(value, first.value, length) == 0,
                  "it is the first of its token");
    fuzz::require(length <= CMD_ATTR_VALUE_MAX, "a value is short enough for its readers");
  }
  fuzz::require(reader.at_end(), "attributes are well-formed to the end");
}

void ask_command(fuzz::Input *input, const ReplySwitch &the_switch) {
  constexpr size_t kRoom = 512;
  alignas(max_align_t) uint8_t buffer[kRoom];
  void *request = cmd_req_init(buffer, sizeof buffer);
  cmd_req_cmdId_set(request, protocol::kGlobalSettings);
  cmd_req_action_set(request, CMD_ACTION_GET);
  const auto token = input->number<uint32_t>();
  void *reply = nullptr;
  if (cmd_snmp_req_send_recv(protocol::kDestination, protocol::kService, request, "operator", 1, &reply, 0) ==
      CMD_OK) {
    read_all(reply, the_switch.latest());
    void *value = nullptr;
    uint32_t length = 0;
    cmd_rsp_attr_get(reply, token, &value, &length);
    cmd_snmp_free_rx_hndl(reply);
  }
}

// A manager's question, for which a lease may have to be renewed.
void ask_manager() {
  uint32_t next = 0;
  im_get_next_ifindex(0, &next);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int * /*argc*/, char *** /*argv*/) {
  netsnmp_register_loghandler(NETSNMP_LOGHANDLER_NONE, LOG_DEBUG);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  StoppedClock clock;
  ReplySwitch the_switch(&input, &clock);
  const fuzz::ScriptedSwitch script(
      [&the_switch](const wire::MessageHeader &sent) { return the_switch.next(sent); });
  stpplatform::connection().reset();
  while (!input.is_over()) {
    clock.pass_ms(input.number<uint16_t>());
    if (input.number<uint8_t>() % 2 == 0) {
      ask_command(&input, the_switch);
    } else {
      ask_manager();
    }
  }
  stpplatform::connection().reset();
  return 0;
}
