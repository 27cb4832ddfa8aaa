// Whether a packet from the switch is what it should be. Nothing in it is trusted before.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/cmd.h"

namespace stpplatform {

// True for a hello; sets the size of the image that comes with it.
bool check_hello(const void *packet, size_t size, uint32_t *image_size);

// A reply's attributes: a part of the packet.
struct ReplyAttributes {
  const void *begin;
  size_t size;
};

// Returns CMD_OK with `*attributes` set for a well-formed reply to request `sequence`, with `*status` what
// the switch answered; CMD_BAD_REPLY otherwise.
cmd_result check_reply(const void *packet, size_t size, uint32_t sequence, cmd_result *status,
                       ReplyAttributes *attributes);

// An event; its payload is a part of the packet, as long as its class says.
struct ReceivedEvent {
  uint32_t notification_class;
  const void *payload;
};

// True for a well-formed event `sequence` of a class that is known.
bool check_event(const void *packet, size_t size, uint32_t sequence, ReceivedEvent *event);

}  // namespace stpplatform
