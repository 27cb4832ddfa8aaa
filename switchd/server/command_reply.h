// Answers the packets that arrive on the command socket, from the switch's own image.
#pragma once

#include <optional>
#include <span>

#include "answers/image.h"
#include "base/packet.h"

namespace stpswitch {

// Whether a packet asks for nothing but that the image's lease is renewed.
bool is_renewal(std::span<const uint8_t> packet, size_t sent_size);

// The reply to a packet of `sent_size` octets, of which `packet` holds those that were received. Nothing when
// the packet is so short or strange that no reply could name the request.
std::optional<Packet> answer_packet(const stpplatform::answers::Image &image, std::span<const uint8_t> packet,
                                    size_t sent_size);

}  // namespace stpswitch
