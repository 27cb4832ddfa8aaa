// A packet on the switch's command socket: a request, which gets a reply that the platform library takes, or
// a subscription.
#include <cstring>
#include <vector>

#include "message_check.h"
#include "publisher/image_publisher.h"
#include "server/command_reply.h"
#include "server/event_packet.h"
#include "support/input.h"
#include "support/require.h"
#include "support/switches.h"
#include "wire/message.h"

namespace wire = stpplatform::wire;

namespace {

const stpplatform::answers::Image &any_image(uint8_t choice) {
  static const stpswitch::ImagePublisher publishers[] = {stpswitch::ImagePublisher(&fuzz::any_switch(0)),
                                                         stpswitch::ImagePublisher(&fuzz::any_switch(1))};
  return publishers[choice % std::size(publishers)].view();
}

void check_reply(const stpswitch::Packet &request, const stpswitch::Packet &reply) {
  wire::MessageHeader header;
  std::memcpy(&header, request.data(), sizeof header);
  cmd_result status = CMD_OK;
  stpplatform::ReplyAttributes attributes;
  fuzz::require(
      stpplatform::check_reply(reply.data(), reply.size(), header.sequence, &status, &attributes) == CMD_OK,
      "a reply is well-formed");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  const auto &image = any_image(input.number<uint8_t>());
  const auto cut_off = input.number<uint8_t>();  // behind what was received
  const stpswitch::Packet packet = input.rest();
  const size_t sent_size = packet.size() + cut_off;
  const bool is_renewal = stpswitch::is_renewal(packet, sent_size);
  const bool claims_to_be_subscription = stpswitch::claims_to_be_subscription(packet);
  fuzz::require(!(is_renewal && claims_to_be_subscription), "a packet is of one type");
  const auto classes = stpswitch::read_subscription(packet, sent_size);
  fuzz::require(!classes || (claims_to_be_subscription && !classes->empty() &&
                             classes->size() <= wire::kMaxSubscribedClasses),
                "a subscription names some classes");
  if (const auto reply = stpswitch::answer_packet(image, packet, sent_size)) {
    check_reply(packet, *reply);
  }
  return 0;
}
