// Answers the packets that arrive on the command socket.
#pragma once

#include <optional>
#include <span>

#include "commands/packet.h"
#include "model/switch.h"

namespace stpswitch {

// The reply to a packet of `sent_size` octets, of which `packet` holds those that were received. Nothing when
// the packet is so short or strange that no reply could name the request.
std::optional<Packet> answer_packet(const Switch &the_switch, std::span<const uint8_t> packet,
                                    size_t sent_size);

}  // namespace stpswitch
