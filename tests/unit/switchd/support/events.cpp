#include "support/events.h"

#include <cstring>

#include "wire/message.h"

namespace wire = stpplatform::wire;

stpswitch::Packet make_subscription(const std::vector<uint32_t> &classes) {
  stpswitch::Packet packet(sizeof(wire::Subscribe) + classes.size() * sizeof(uint32_t));
  const wire::Subscribe head{
      {wire::kMagic, wire::kVersion, static_cast<uint16_t>(wire::MessageType::kSubscribe),
       static_cast<uint32_t>(packet.size()), 0},
      static_cast<uint32_t>(classes.size())};
  std::memcpy(packet.data(), &head, sizeof head);
  if (!classes.empty()) {
    std::memcpy(packet.data() + sizeof head, classes.data(), classes.size() * sizeof(uint32_t));
  }
  return packet;
}
