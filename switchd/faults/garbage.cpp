#include "faults/garbage.h"

#include <algorithm>
#include <cstring>
#include <random>

#include "platform/stp_protocol.h"
#include "wire/attributes.h"
#include "wire/message.h"

namespace stpswitch {
namespace {

namespace wire = stpplatform::wire;

constexpr uint32_t kTooMuch = 4096;
constexpr uint32_t kNumberLengthDoubled = 2 * sizeof(uint32_t);
constexpr size_t kRandomSize = 100;

// Applies `change` to the reply's head.
template <class Change>
Packet with_head(Packet reply, Change change) {
  wire::Reply head;
  std::memcpy(&head, reply.data(), sizeof head);
  change(&head);
  std::memcpy(reply.data(), &head, sizeof head);
  return reply;
}

// The reply's head, and one attribute that claims a length and has `given` octets.
Packet with_only_attribute(Packet reply, stp_attribute token, uint32_t claimed, uint32_t given) {
  const wire::AttributeHead attribute{token, claimed};
  reply.resize(sizeof(wire::Reply));
  reply.resize(sizeof(wire::Reply) + sizeof attribute + wire::padded(given));
  std::memcpy(reply.data() + sizeof(wire::Reply), &attribute, sizeof attribute);
  const auto length = static_cast<uint32_t>(reply.size());
  return with_head(std::move(reply), [length](wire::Reply *head) {
    head->header.length = length;
    head->status = CMD_OK;
    head->attribute_count = 1;
  });
}

Packet random_octets() {
  Packet octets(kRandomSize);
  // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp): the same numbers every time are what is wanted.
  std::minstd_rand numbers;
  std::generate(octets.begin(), octets.end(), [&numbers] { return static_cast<uint8_t>(numbers()); });
  return octets;
}

}  // namespace

Packet spoil(Packet reply, Garbage kind) {
  switch (kind) {
    case Garbage::kTruncated:
      reply.resize(sizeof(wire::MessageHeader) / 2);
      return reply;
    case Garbage::kWrongMagic:
      return with_head(std::move(reply), [](wire::Reply *head) { head->header.magic = ~wire::kMagic; });
    case Garbage::kWrongSequence:
      return with_head(std::move(reply), [](wire::Reply *head) { ++head->header.sequence; });
    case Garbage::kLengthTooBig:
      return with_head(std::move(reply), [](wire::Reply *head) { head->header.length += kTooMuch; });
    case Garbage::kAttributeOverrun:
      return with_only_attribute(std::move(reply), STP_ATTRIBUTE_MST_REGION_NAME, CMD_ATTR_VALUE_MAX, 0);
    case Garbage::kNumberTooLong:
      return with_only_attribute(std::move(reply), STP_ATTRIBUTE_MODE, kNumberLengthDoubled,
                                 kNumberLengthDoubled);
    case Garbage::kOctetsTooLong:
      return with_only_attribute(std::move(reply), STP_ATTRIBUTE_MST_REGION_NAME, CMD_ATTR_VALUE_MAX + 1,
                                 CMD_ATTR_VALUE_MAX + 1);
    case Garbage::kRandom:
    case Garbage::kCount:
      break;
  }
  return random_octets();
}

}  // namespace stpswitch
