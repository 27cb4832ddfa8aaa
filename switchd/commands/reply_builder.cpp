#include "commands/reply_builder.h"

#include <cstring>
#include <utility>

#include "wire/attributes.h"
#include "wire/message.h"

namespace stpswitch {

namespace wire = stpplatform::wire;

ReplyBuilder::ReplyBuilder() : packet_(sizeof(wire::Reply)) {}

void ReplyBuilder::add_number(stp_attribute attribute, std::optional<uint32_t> value) {
  if (value) {
    add(attribute, &*value, sizeof *value);
  }
}

void ReplyBuilder::add_octets(stp_attribute attribute, std::span<const uint8_t> octets) {
  add(attribute, octets.data(), static_cast<uint32_t>(octets.size()));
}

void ReplyBuilder::add_octets(stp_attribute attribute, std::string_view octets) {
  add(attribute, octets.data(), static_cast<uint32_t>(octets.size()));
}

void ReplyBuilder::add(stp_attribute attribute, const void *value, uint32_t length) {
  const size_t used = packet_.size();
  const size_t room = sizeof(wire::AttributeHead) + wire::padded(length);
  packet_.resize(used + room);
  wire::write_attribute(packet_.data() + used, room, {attribute, length, value});
  ++attribute_count_;
}

Packet ReplyBuilder::finish(uint32_t sequence, cmd_result status) && {
  if (status != CMD_OK) {
    packet_.resize(sizeof(wire::Reply));
    attribute_count_ = 0;
  }
  const wire::Reply head{{wire::kMagic, wire::kVersion, static_cast<uint16_t>(wire::MessageType::kReply),
                          static_cast<uint32_t>(packet_.size()), sequence},
                         static_cast<uint32_t>(status),
                         attribute_count_};
  std::memcpy(packet_.data(), &head, sizeof head);
  return std::move(packet_);
}

}  // namespace stpswitch
