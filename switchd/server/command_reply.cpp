#include "server/command_reply.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "answers/answers.h"
#include "wire/message.h"

namespace stpswitch {
namespace {

namespace answers = stpplatform::answers;
namespace wire = stpplatform::wire;

bool is_message(const wire::MessageHeader &header, wire::MessageType type, size_t size) {
  return header.version == wire::kVersion && header.type == static_cast<uint16_t>(type) &&
         header.length == size;
}

cmd_result answer_request(const answers::Image &image, std::span<const uint8_t> packet, size_t sent_size,
                          answers::Answer *answer) {
  wire::Request request;
  if (is_renewal(packet, sent_size)) {
    return CMD_OK;
  }
  if (sent_size != packet.size() || packet.size() < sizeof request) {
    return CMD_BAD_REQUEST;
  }
  std::memcpy(&request, packet.data(), sizeof request);
  if (!is_message(request.header, wire::MessageType::kRequest, packet.size()) ||
      std::find(std::begin(request.user), std::end(request.user), '\0') == std::end(request.user)) {
    return CMD_BAD_REQUEST;
  }
  const auto attributes = packet.subspan(sizeof request);
  return answers::answer_request(image, request, attributes.data(), attributes.size(), answer);
}

}  // namespace

bool is_renewal(std::span<const uint8_t> packet, size_t sent_size) {
  wire::MessageHeader header;
  if (sent_size != sizeof header || packet.size() != sizeof header) {
    return false;
  }
  std::memcpy(&header, packet.data(), sizeof header);
  return header.magic == wire::kMagic && is_message(header, wire::MessageType::kRenewal, sizeof header);
}

std::optional<Packet> answer_packet(const answers::Image &image, std::span<const uint8_t> packet,
                                    size_t sent_size) {
  wire::MessageHeader header;
  if (packet.size() < sizeof header) {
    return std::nullopt;
  }
  std::memcpy(&header, packet.data(), sizeof header);
  if (header.magic != wire::kMagic) {
    return std::nullopt;
  }
  answers::Answer answer;
  const cmd_result status = answer_request(image, packet, sent_size, &answer);
  if (status != CMD_OK) {
    answer.clear();
  }
  Packet reply(sizeof(wire::Reply) + answer.size());
  const wire::Reply head{{wire::kMagic, wire::kVersion, static_cast<uint16_t>(wire::MessageType::kReply),
                          static_cast<uint32_t>(reply.size()), header.sequence},
                         static_cast<uint32_t>(status),
                         answer.attribute_count()};
  std::memcpy(reply.data(), &head, sizeof head);
  std::copy_n(answer.attributes(), answer.size(), reply.begin() + sizeof head);
  return reply;
}

}  // namespace stpswitch
