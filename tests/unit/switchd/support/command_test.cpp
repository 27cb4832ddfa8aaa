#include "support/command_test.h"

#include <cstring>

#include "keys/keys.h"
#include "protocol_numbers.h"
#include "server/command_reply.h"
#include "sources/scenario/consistency.h"
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

// Asks for the row after `from`, then for the one after that, to the end.
template <class Row, class RequestAfter, class RowIn>
std::vector<Row> rows_after(const stpplatform::answers::Image &image, Row from, RequestAfter request_after,
                            RowIn row_in) {
  std::vector<Row> rows;
  for (Row row = from;;) {
    const stpswitch::Packet request = make_request(request_after(row));
    const auto reply = stpswitch::answer_packet(image, request, request.size());
    const std::optional<Row> next = row_in(reply.value());
    if (!next) {
      EXPECT_EQ(reply_head(*reply).status, CMD_NO_ENTRY);
      return rows;
    }
    if (*next <= row) {
      ADD_FAILURE() << testing::PrintToString(*next) << " follows " << testing::PrintToString(row);
      return rows;
    }
    rows.push_back(*next);
    row = *next;
  }
}

}  // namespace

std::string CommandTest::reply_to_packet(const stpswitch::Packet &packet) const {
  const auto reply = stpswitch::answer_packet(publisher_.view(), packet, packet.size());
  return reply ? hex(*reply) : "none";
}

std::optional<uint32_t> CommandTest::number_in_reply_to(const RequestText &text, uint32_t token) const {
  const stpswitch::Packet request = make_request(text);
  return number_in(stpswitch::answer_packet(publisher_.view(), request, request.size()).value(), token);
}

uint32_t CommandTest::refusal_of_packet(const stpswitch::Packet &packet) const {
  const auto reply = stpswitch::answer_packet(publisher_.view(), packet, packet.size());
  EXPECT_TRUE(reply.has_value());
  const wire::Reply head = reply_head(reply.value_or(stpswitch::Packet()));
  EXPECT_EQ(reply->size(), sizeof head);
  EXPECT_EQ(head.header.sequence, 7U);
  EXPECT_EQ(head.header.length, sizeof head);
  EXPECT_EQ(head.attribute_count, 0U);
  return head.status;
}

std::vector<uint32_t> CommandTest::walk(const RequestAfter &request_after, uint32_t from,
                                        uint32_t token) const {
  return rows_after(publisher_.view(), from, request_after,
                    [token](const stpswitch::Packet &reply) { return number_in(reply, token); });
}

std::vector<CommandTest::TreePortRow> CommandTest::walk_tree_ports(RequestAfterTreePort request_after,
                                                                   TreePortRow from) const {
  return rows_after(publisher_.view(), from, request_after,
                    [](const stpswitch::Packet &reply) -> std::optional<TreePortRow> {
                      const auto tree = number_in(reply, protocol::kPortTree);
                      const auto if_index = number_in(reply, protocol::kInterface);
                      return tree && if_index ? std::optional(TreePortRow{*tree, *if_index}) : std::nullopt;
                    });
}

void CommandTest::set(const std::string &key, const std::string &text) {
  switch_.replace(with_value(switch_.state(), key, text));
}
