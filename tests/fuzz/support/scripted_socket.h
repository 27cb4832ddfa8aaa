// The switch's end of the platform library's sockets: what arrives there is what a target says. Takes the
// place of platform/client/packet_socket.cpp.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "platform/cmd.h"
#include "wire/message.h"

namespace fuzz {

// What comes of an attempt to receive a packet.
struct Arrival {
  cmd_result result = CMD_OK;
  std::vector<uint8_t> octets = {};
  int descriptor = -1;  // a copy of it comes with the packet
};

// Called with the header that was sent last on the connection, which is zero when none was.
using Switch = std::function<Arrival(const stpplatform::wire::MessageHeader &sent)>;

// The switch, for as long as this lives.
class ScriptedSwitch {
 public:
  explicit ScriptedSwitch(Switch the_switch);
  ~ScriptedSwitch();
  ScriptedSwitch(const ScriptedSwitch &) = delete;
  ScriptedSwitch &operator=(const ScriptedSwitch &) = delete;
};

// Overwrites the header, if the packet is long enough for one, by a good one.
void put_header(std::vector<uint8_t> *packet, stpplatform::wire::MessageType type, uint32_t sequence);

}  // namespace fuzz
