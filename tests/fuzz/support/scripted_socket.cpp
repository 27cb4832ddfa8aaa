#include "support/scripted_socket.h"

#include <fcntl.h>
#include <sanitizer/asan_interface.h>

#include <cstring>
#include <utility>

#include "packet_socket.h"

namespace wire = stpplatform::wire;

namespace {

fuzz::Switch the_switch;
wire::MessageHeader latest_sent{};

// What lies behind a packet in the receiver's memory must not be read.
class BehindPacket {
 public:
  void close(const uint8_t *begin, size_t size) {
    open();
    begin_ = begin;
    size_ = size;
    ASAN_POISON_MEMORY_REGION(begin_, size_);
  }
  void open() {
    ASAN_UNPOISON_MEMORY_REGION(begin_, size_);
    size_ = 0;
  }

 private:
  const uint8_t *begin_ = nullptr;
  size_t size_ = 0;
};

BehindPacket behind_packet;

}  // namespace

namespace fuzz {

ScriptedSwitch::ScriptedSwitch(Switch script) { the_switch = std::move(script); }

ScriptedSwitch::~ScriptedSwitch() {
  the_switch = nullptr;
  behind_packet.open();
}

void put_header(std::vector<uint8_t> *packet, wire::MessageType type, uint32_t sequence) {
  const wire::MessageHeader header{wire::kMagic, wire::kVersion, static_cast<uint16_t>(type),
                                   static_cast<uint32_t>(packet->size()), sequence};
  if (packet->size() >= sizeof header) {
    std::memcpy(packet->data(), &header, sizeof header);
  }
}

}  // namespace fuzz

namespace stpplatform {

OwnedFd connect_packet_socket(const char * /*path*/) {
  latest_sent = {};
  return OwnedFd(::open("/dev/null", O_RDWR | O_CLOEXEC));
}

cmd_result send_packet(int /*socket*/, const void *packet, size_t /*size*/, const Deadline & /*deadline*/) {
  std::memcpy(&latest_sent, packet, sizeof latest_sent);
  return CMD_OK;
}

cmd_result receive_packet(int /*socket*/, void *packet, size_t capacity, const Deadline & /*deadline*/,
                          size_t *size, OwnedFd *descriptor) {
  behind_packet.open();
  const fuzz::Arrival arrival = the_switch(latest_sent);
  if (arrival.result != CMD_OK) {
    return arrival.result;
  }
  if (arrival.octets.empty()) {
    return CMD_UNREACHABLE;
  }
  if (arrival.octets.size() > capacity || (arrival.descriptor >= 0) != (descriptor != nullptr)) {
    return CMD_BAD_REPLY;
  }
  if (descriptor != nullptr) {
    descriptor->reset(::fcntl(arrival.descriptor, F_DUPFD_CLOEXEC, 0));
  }
  *size = arrival.octets.size();
  auto *const octets = static_cast<uint8_t *>(packet);
  std::memcpy(octets, arrival.octets.data(), *size);
  behind_packet.close(octets + *size, capacity - *size);
  return CMD_OK;
}

const char *describe_failure(cmd_result /*result*/) { return "failed"; }

}  // namespace stpplatform
