#include "support/command_test.h"

#include <cstring>
#include <optional>

#include "commands/dispatch.h"
#include "scenario/keys.h"
#include "support/octets.h"
#include "wire/attributes.h"

namespace wire = stpplatform::wire;

namespace {

std::optional<uint32_t> number_in(const stpswitch::Packet &reply, uint32_t token) {
  wire::AttributeReader reader(reply.data() + sizeof(wire::Reply), reply.size() - sizeof(wire::Reply));
  for (wire::Attribute attribute; reader.next(&attribute);) {
    if (attribute.token == token) {
      uint32_t number = 0;
      std::memcpy(&number, attribute.value, sizeof number);
      return number;
    }
  }
  return std::nullopt;
}

}  // namespace

std::string CommandTest::reply_to_packet(const stpswitch::Packet &packet) const {
  const auto reply = answer_packet(switch_, packet, packet.size());
  return reply ? hex(*reply) : "none";
}

uint32_t CommandTest::refusal_of_packet(const stpswitch::Packet &packet) const {
  const auto reply = answer_packet(switch_, packet, packet.size());
  EXPECT_TRUE(reply.has_value());
  const wire::Reply head = reply_head(reply.value_or(stpswitch::Packet()));
  EXPECT_EQ(reply->size(), sizeof head);
  EXPECT_EQ(head.header.sequence, 7U);
  EXPECT_EQ(head.header.length, sizeof head);
  EXPECT_EQ(head.attribute_count, 0U);
  return head.status;
}

std::vector<uint32_t> CommandTest::walk(RequestAfter request_after, uint32_t from, uint32_t token) const {
  std::vector<uint32_t> rows;
  for (uint32_t row = from;;) {
    const stpswitch::Packet request = make_request(request_after(row));
    const auto reply = answer_packet(switch_, request, request.size());
    const auto next = number_in(reply.value(), token);
    if (!next) {
      EXPECT_EQ(reply_head(*reply).status, CMD_NO_ENTRY);
      return rows;
    }
    if (*next <= row) {
      ADD_FAILURE() << *next << " follows " << row;
      return rows;
    }
    rows.push_back(*next);
    row = *next;
  }
}

void CommandTest::set(const std::string &key, const std::string &text) {
  switch_.replace(with_value(switch_.state(), key, text));
}
