#include "message_check.h"

#include <cstring>

#include "wire/attributes.h"
#include "wire/events.h"
#include "wire/message.h"

namespace stpplatform {
namespace {

bool is_message(const wire::MessageHeader &header, wire::MessageType type, size_t size, uint32_t sequence) {
  return header.magic == wire::kMagic && header.version == wire::kVersion &&
         header.type == static_cast<uint16_t>(type) && header.length == size && header.sequence == sequence;
}

// The codes below CMD_UNKNOWN_COMMAND are this library's own.
bool is_status_of_switch(uint32_t status) {
  return status == CMD_OK || (status >= CMD_UNKNOWN_COMMAND && status <= CMD_REFUSED);
}

bool values_are_short_enough(const ReplyAttributes &attributes) {
  wire::AttributeReader reader(attributes.begin, attributes.size);
  wire::Attribute attribute;
  while (reader.next(&attribute)) {
    if (attribute.length > CMD_ATTR_VALUE_MAX) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool check_hello(const void *packet, size_t size, uint32_t *image_size) {
  wire::Hello hello;
  if (size != sizeof hello) {
    return false;
  }
  std::memcpy(&hello, packet, sizeof hello);
  if (!is_message(hello.header, wire::MessageType::kHello, size, 0)) {
    return false;
  }
  *image_size = hello.image_size;
  return true;
}

cmd_result check_reply(const void *packet, size_t size, uint32_t sequence, cmd_result *status,
                       ReplyAttributes *attributes) {
  wire::Reply reply;
  if (size < sizeof reply) {
    return CMD_BAD_REPLY;
  }
  std::memcpy(&reply, packet, sizeof reply);
  const ReplyAttributes found{static_cast<const uint8_t *>(packet) + sizeof reply, size - sizeof reply};
  if (!is_message(reply.header, wire::MessageType::kReply, size, sequence) ||
      !is_status_of_switch(reply.status) || (reply.status != CMD_OK && reply.attribute_count != 0) ||
      !wire::attributes_are_well_formed(found.begin, found.size, reply.attribute_count) ||
      !values_are_short_enough(found)) {
    return CMD_BAD_REPLY;
  }
  *status = static_cast<cmd_result>(reply.status);
  *attributes = found;
  return CMD_OK;
}

bool check_event(const void *packet, size_t size, uint32_t sequence, ReceivedEvent *event) {
  wire::Event head;
  if (size < sizeof head) {
    return false;
  }
  std::memcpy(&head, packet, sizeof head);
  // Handlers take a payload's length for granted.
  if (!is_message(head.header, wire::MessageType::kEvent, size, sequence) || head.payload_length == 0 ||
      head.payload_length != wire::event_payload_length(head.notification_class) ||
      head.payload_length != size - sizeof head) {
    return false;
  }
  *event = {head.notification_class, static_cast<const uint8_t *>(packet) + sizeof head};
  return true;
}

}  // namespace stpplatform
