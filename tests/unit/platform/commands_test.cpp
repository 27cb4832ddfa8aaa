// Requests in the caller's buffer, replies as handles.
#include <cstddef>
#include <cstring>
#include <string>

#include "platform/cmd.h"
#include "platform_test.h"

namespace wire = stpplatform::wire;

namespace {

constexpr uint32_t kDestination = 0xFE000000;
constexpr uint32_t kService = 171;
constexpr uint32_t kNumberToken = 0x1402B00B;
constexpr uint32_t kOctetsToken = 0x3002B002;
constexpr uint32_t kMacToken = 0x0F020001;
constexpr uint32_t kRangesToken = 0x130201C1;
constexpr uint32_t kUnknownTypeToken = 0x7F020001;

struct alignas(max_align_t) Buffer {
  uint8_t bytes[16000];
};

// A range list of `count` ranges as a caller builds it.
std::vector<uint32_t> range_list(uint32_t count) {
  std::vector<uint32_t> words(2 + 2 * size_t{count}, 1);
  words[1] = count;
  return words;
}

class Requests : public testing::Test {
 protected:
  Requests() : request_(cmd_req_init(buffer_.bytes, sizeof buffer_.bytes)) {}

  Buffer buffer_;
  void *request_;
};

TEST(RequestBuffer, OneThatCannotHoldARequestIsRefused) {
  Buffer buffer;
  EXPECT_EQ(cmd_req_init(nullptr, sizeof buffer.bytes), nullptr);
  EXPECT_EQ(cmd_req_init(buffer.bytes, 0), nullptr);
  EXPECT_EQ(cmd_req_init(buffer.bytes + 4, sizeof buffer.bytes - 4), nullptr);
  uint32_t smallest = 0;
  while (cmd_req_init(buffer.bytes, smallest) == nullptr) {
    ++smallest;
  }
  EXPECT_GE(smallest, sizeof(wire::Request));
  EXPECT_LT(smallest, 200U);
  const uint32_t number = 0;
  EXPECT_EQ(cmd_req_attr_add(cmd_req_init(buffer.bytes, smallest), kNumberToken, &number, 4), CMD_NO_SPACE);
  EXPECT_EQ(cmd_req_attr_add(cmd_req_init(buffer.bytes, smallest + 11), kNumberToken, &number, 4),
            CMD_NO_SPACE);
  EXPECT_EQ(cmd_req_attr_add(cmd_req_init(buffer.bytes, smallest + 12), kNumberToken, &number, 4), CMD_OK);
}

TEST(RequestBuffer, NothingIsWrittenBehindItsEnd) {
  Buffer buffer;
  std::memset(buffer.bytes, 0xA5, sizeof buffer.bytes);
  constexpr uint32_t kSize = 300;
  void *request = cmd_req_init(buffer.bytes, kSize);
  const uint32_t number = 0;
  int added = 0;
  while (cmd_req_attr_add(request, kNumberToken, &number, 4) == CMD_OK) {
    ++added;
  }
  EXPECT_GT(added, 10);
  for (size_t i = kSize; i < sizeof buffer.bytes; ++i) {
    ASSERT_EQ(buffer.bytes[i], 0xA5) << i;
  }
}

TEST_F(Requests, NoCallTakesWhatIsNoRequest) {
  Buffer zeros{};
  void *reply = nullptr;
  const uint32_t number = 0;
  for (void *handle : {static_cast<void *>(nullptr), static_cast<void *>(zeros.bytes)}) {
    EXPECT_EQ(cmd_req_cmdId_set(handle, 104), CMD_INVALID_ARGUMENT);
    EXPECT_EQ(cmd_req_action_set(handle, CMD_ACTION_GET), CMD_INVALID_ARGUMENT);
    EXPECT_EQ(cmd_req_attr_add(handle, kNumberToken, &number, 4), CMD_INVALID_ARGUMENT);
    EXPECT_EQ(cmd_snmp_req_send_recv(kDestination, kService, handle, "", 0, &reply, 0), CMD_INVALID_ARGUMENT);
  }
}

TEST_F(Requests, AnAttributeMustFitItsType) {
  const std::string text(CMD_ATTR_VALUE_MAX + 1, 'x');
  const std::vector<uint32_t> ranges = range_list(2);
  EXPECT_EQ(cmd_req_attr_add(request_, kNumberToken, text.data(), 3), CMD_INVALID_ARGUMENT);
  EXPECT_EQ(cmd_req_attr_add(request_, kNumberToken, nullptr, 4), CMD_INVALID_ARGUMENT);
  EXPECT_EQ(cmd_req_attr_add(request_, kMacToken, text.data(), 4), CMD_INVALID_ARGUMENT);
  EXPECT_EQ(cmd_req_attr_add(request_, kOctetsToken, text.data(), CMD_ATTR_VALUE_MAX + 1),
            CMD_INVALID_ARGUMENT);
  EXPECT_EQ(cmd_req_attr_add(request_, kRangesToken, ranges.data(), 16), CMD_INVALID_ARGUMENT);
  EXPECT_EQ(cmd_req_attr_add(request_, kUnknownTypeToken, text.data(), 4), CMD_INVALID_ARGUMENT);
  EXPECT_EQ(cmd_req_attr_add(request_, kUnknownTypeToken, nullptr, 0), CMD_INVALID_ARGUMENT);

  EXPECT_EQ(cmd_req_attr_add(request_, kNumberToken, text.data(), 4), CMD_OK);
  EXPECT_EQ(cmd_req_attr_add(request_, kMacToken, text.data(), 6), CMD_OK);
  EXPECT_EQ(cmd_req_attr_add(request_, kOctetsToken, nullptr, 0), CMD_OK);
  EXPECT_EQ(cmd_req_attr_add(request_, kOctetsToken, text.data(), CMD_ATTR_VALUE_MAX), CMD_OK);
  EXPECT_EQ(cmd_req_attr_add(request_, kRangesToken, ranges.data(), 24), CMD_OK);
}

TEST(TokenType, EveryTypeHasItsLength) {
  for (const uint32_t type :
       {CMD_TYPE_PLAIN, CMD_TYPE_FLAG, CMD_TYPE_ENUM, CMD_TYPE_IF_INDEX, CMD_TYPE_NUMBER}) {
    EXPECT_EQ(token_type_2len(type << 24 | 0x020001, nullptr), 4U) << type;
  }
  EXPECT_EQ(token_type_2len(kMacToken, nullptr), 6U);
  EXPECT_EQ(token_type_2len(kOctetsToken, ""), 0U);
  EXPECT_EQ(token_type_2len(kOctetsToken, "region"), 6U);
  EXPECT_EQ(token_type_2len(kOctetsToken, nullptr), 0U);
  EXPECT_EQ(token_type_2len(kRangesToken, nullptr), 0U);
  EXPECT_EQ(token_type_2len(kRangesToken, range_list(0).data()), 8U);
  EXPECT_EQ(token_type_2len(kRangesToken, range_list(1).data()), 16U);
  EXPECT_EQ(token_type_2len(kRangesToken, range_list(CMD_RANGES_MAX).data()), 8U + 8U * CMD_RANGES_MAX);
  const uint32_t too_many[2] = {0, UINT32_MAX};
  EXPECT_EQ(token_type_2len(kRangesToken, too_many), 8U + 8U * CMD_RANGES_MAX);
  for (uint32_t type = 0; type < 256; ++type) {
    const bool known = type <= CMD_TYPE_ENUM || type == CMD_TYPE_IF_INDEX || type == CMD_TYPE_MAC ||
                       type == CMD_TYPE_RANGE_LIST || type == CMD_TYPE_NUMBER || type == CMD_TYPE_OCTETS;
    const uint32_t words[4] = {1, 1, 1, 1};
    EXPECT_EQ(token_type_2len(type << 24, words) != 0, known) << type;
  }
}

TEST(TokenType, ATextThatIsTooLongIsNotSentCut) {
  const std::string text(size_t{2} * CMD_ATTR_VALUE_MAX, 'x');
  Buffer buffer;
  void *request = cmd_req_init(buffer.bytes, sizeof buffer.bytes);
  const uint32_t length = token_type_2len(kOctetsToken, text.c_str());
  EXPECT_EQ(cmd_req_attr_add(request, kOctetsToken, text.c_str(), length), CMD_INVALID_ARGUMENT);
}

class Exchanges : public PlatformTest {
 protected:
  Exchanges() : request_(cmd_req_init(buffer_.bytes, sizeof buffer_.bytes)) {}

  int send(const char *user = "operator") {
    return cmd_snmp_req_send_recv(kDestination, kService, request_, user, 4711, &reply_, 0);
  }

  // What the switch answers from now on.
  void answer(const std::vector<AttributeValue> &attributes) {
    switch_.answer_with([attributes](const Bytes &request) {
      const uint32_t sequence = get32(request, offsetof(wire::MessageHeader, sequence));
      return Answer{{make_reply_packet(sequence, CMD_OK, attributes)}};
    });
  }

  std::optional<Bytes> attribute(uint32_t token) {
    void *value = nullptr;
    uint32_t length = 0;
    if (cmd_rsp_attr_get(reply_, token, &value, &length) != CMD_OK) {
      return std::nullopt;
    }
    const auto *bytes = static_cast<const uint8_t *>(value);
    return Bytes(bytes, bytes + length);
  }

  ~Exchanges() override { cmd_snmp_free_rx_hndl(reply_); }

  Buffer buffer_;
  void *request_;
  void *reply_ = nullptr;
};

TEST_F(Exchanges, TheSwitchGetsAllThatWasPutIntoTheRequest) {
  cmd_req_cmdId_set(request_, 112);
  cmd_req_action_set(request_, CMD_ACTION_GET_NEXT);
  const uint32_t number = 0x01020304;
  const std::vector<uint32_t> ranges = range_list(1);
  cmd_req_attr_add(request_, kNumberToken, &number, 4);
  cmd_req_attr_add(request_, kOctetsToken, "five5", 5);
  cmd_req_attr_add(request_, kRangesToken, ranges.data(), 16);
  ASSERT_EQ(send("alice"), CMD_OK);

  const Bytes packet = switch_.requests().front();
  ASSERT_EQ(packet.size(), sizeof(wire::Request) + 12 + 16 + 24);
  wire::Request sent;
  std::memcpy(&sent, packet.data(), sizeof sent);
  EXPECT_EQ(sent.header.magic, wire::kMagic);
  EXPECT_EQ(sent.header.version, wire::kVersion);
  EXPECT_EQ(sent.header.type, static_cast<uint16_t>(wire::MessageType::kRequest));
  EXPECT_EQ(sent.header.length, packet.size());
  EXPECT_NE(sent.header.sequence, 0U);
  EXPECT_EQ(sent.destination, kDestination);
  EXPECT_EQ(sent.service, kService);
  EXPECT_EQ(sent.command, 112U);
  EXPECT_EQ(sent.action, static_cast<uint32_t>(CMD_ACTION_GET_NEXT));
  EXPECT_EQ(sent.session, 4711U);
  EXPECT_EQ(sent.flags, 0U);
  EXPECT_EQ(sent.attribute_count, 3U);
  EXPECT_STREQ(sent.user, "alice");

  wire::AttributeReader reader(packet.data() + sizeof sent, packet.size() - sizeof sent);
  wire::Attribute attribute;
  ASSERT_TRUE(reader.next(&attribute));
  EXPECT_EQ(attribute.token, kNumberToken);
  EXPECT_EQ(std::memcmp(attribute.value, &number, 4), 0);
  ASSERT_TRUE(reader.next(&attribute));
  EXPECT_EQ(attribute.token, kOctetsToken);
  EXPECT_EQ(std::string(static_cast<const char *>(attribute.value), attribute.length), "five5");
  ASSERT_TRUE(reader.next(&attribute));
  EXPECT_EQ(attribute.token, kRangesToken);
  EXPECT_EQ(attribute.length, 16U);
  EXPECT_TRUE(reader.at_end());
}

TEST_F(Exchanges, ARequestCanBeSentAgainForAnotherUser) {
  ASSERT_EQ(send("a-long-user-name"), CMD_OK);
  cmd_snmp_free_rx_hndl(reply_);
  reply_ = nullptr;
  ASSERT_EQ(send("bob"), CMD_OK);
  const std::vector<Bytes> requests = switch_.requests();
  EXPECT_NE(get32(requests[0], offsetof(wire::MessageHeader, sequence)),
            get32(requests[1], offsetof(wire::MessageHeader, sequence)));
  const Bytes user(requests[1].begin() + offsetof(wire::Request, user), requests[1].end());
  Bytes expected(CMD_USER_MAX + 1);
  std::memcpy(expected.data(), "bob", 3);
  EXPECT_EQ(user, expected);
}

TEST_F(Exchanges, UserNamesAreTakenUpToTheirLimitAndNeverCut) {
  const std::string longest(CMD_USER_MAX, 'u');
  ASSERT_EQ(send(longest.c_str()), CMD_OK);
  cmd_snmp_free_rx_hndl(reply_);
  reply_ = nullptr;
  EXPECT_EQ(send((longest + "u").c_str()), CMD_INVALID_ARGUMENT);
  EXPECT_EQ(switch_.requests().size(), 1U);
  ASSERT_EQ(send(nullptr), CMD_OK);
  EXPECT_EQ(switch_.requests().back()[offsetof(wire::Request, user)], 0);
}

TEST_F(Exchanges, WithoutAPlaceForTheReplyNothingIsSent) {
  EXPECT_EQ(cmd_snmp_req_send_recv(kDestination, kService, request_, "", 0, nullptr, 0),
            CMD_INVALID_ARGUMENT);
  EXPECT_EQ(switch_.connections(), 0U);
}

TEST_F(Exchanges, EveryTypeOfAttributeArrivesAsItWasSent) {
  const std::vector<uint32_t> ranges = range_list(3);
  const auto *range_bytes = reinterpret_cast<const uint8_t *>(ranges.data());
  const std::vector<AttributeValue> attributes = {
      {0x00020001, bytes_of(1)},
      {0x01020002, bytes_of(0)},
      {0x02020003, bytes_of(4)},
      {0x0C020004, bytes_of(0x1A000001)},
      {0x0F020005, {1, 2, 3, 4, 5, 6}},
      {0x13020006, Bytes(range_bytes, range_bytes + 32)},
      {0x14020007, bytes_of(UINT32_MAX)},
      {0x30020008, {}},
      {0x30020009, Bytes(CMD_ATTR_VALUE_MAX, 0x5A)},
  };
  answer(attributes);
  ASSERT_EQ(send(), CMD_OK);
  for (const AttributeValue &sent : attributes) {
    EXPECT_EQ(attribute(sent.token), sent.value) << std::hex << sent.token;
  }
}

TEST_F(Exchanges, TheFirstOfTwoEqualAttributesIsFoundAndAMissingOneLeavesTheOutputs) {
  answer({{kOctetsToken, {1}}, {kNumberToken, bytes_of(5)}, {kNumberToken, bytes_of(6)}});
  ASSERT_EQ(send(), CMD_OK);
  EXPECT_EQ(attribute(kNumberToken), bytes_of(5));
  int mark = 0;
  void *value = &mark;
  uint32_t length = 99;
  EXPECT_EQ(cmd_rsp_attr_get(reply_, kMacToken, &value, &length), CMD_NO_ATTRIBUTE);
  EXPECT_EQ(value, &mark);
  EXPECT_EQ(length, 99U);
  EXPECT_EQ(cmd_rsp_attr_get(reply_, kNumberToken, nullptr, &length), CMD_INVALID_ARGUMENT);
  EXPECT_EQ(cmd_rsp_attr_get(reply_, kNumberToken, &value, nullptr), CMD_INVALID_ARGUMENT);
  EXPECT_EQ(cmd_rsp_attr_get(nullptr, kNumberToken, &value, &length), CMD_INVALID_ARGUMENT);
  EXPECT_EQ(cmd_rsp_attr_get(request_, kNumberToken, &value, &length), CMD_INVALID_ARGUMENT);
}

TEST_F(Exchanges, AReplyWithoutAttributesIsAReply) {
  answer({});
  ASSERT_EQ(send(), CMD_OK);
  ASSERT_NE(reply_, nullptr);
  EXPECT_EQ(attribute(kNumberToken), std::nullopt);
}

TEST_F(Exchanges, RepliesLiveUntilTheyAreReleased) {
  answer({{kNumberToken, bytes_of(5)}});
  ASSERT_EQ(send(), CMD_OK);
  void *first = std::exchange(reply_, nullptr);
  answer({{kNumberToken, bytes_of(6)}});
  ASSERT_EQ(send(), CMD_OK);
  std::swap(first, reply_);
  EXPECT_EQ(attribute(kNumberToken), bytes_of(5));
  cmd_snmp_free_rx_hndl(first);
}

TEST_F(Exchanges, AFailureLeavesTheReplyPointer) {
  switch_.answer_with([](const Bytes &request) {
    return Answer{{make_reply_packet(get32(request, offsetof(wire::MessageHeader, sequence)), CMD_REFUSED)}};
  });
  int mark = 0;
  void *reply = &mark;
  EXPECT_EQ(cmd_snmp_req_send_recv(kDestination, kService, request_, "guest", 0, &reply, 0), CMD_REFUSED);
  EXPECT_EQ(reply, &mark);
}

TEST(ReplyRelease, NullIsAllowed) { cmd_snmp_free_rx_hndl(nullptr); }

}  // namespace
