// Replies and events that are not what they should be, one by one and by the thousand.
#include "message_check.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <random>
#include <string>

#include "mutation.h"
#include "platform_test.h"

namespace wire = stpplatform::wire;
using stpplatform::ReplyAttributes;

namespace {

constexpr uint32_t kSequence = 7;
constexpr uint32_t kEventClass = 17422;
constexpr size_t kFirstHead = sizeof(wire::Reply);
constexpr size_t kFirstValue = kFirstHead + sizeof(wire::AttributeHead);
constexpr size_t kLengthInHead = offsetof(wire::AttributeHead, length);

Bytes ranges_of(uint32_t count, size_t present) {
  Bytes value(8 + 8 * present);
  put32(&value, 4, count);
  return value;
}

Bytes typical_reply() {
  return make_reply_packet(kSequence, CMD_OK,
                           {{0x1402B00B, bytes_of(1)},
                            {0x3002B002, {'r', 'e', 'g', 'i', 'o', 'n', '1'}},
                            {0x0F020001, {1, 2, 3, 4, 5, 6}},
                            {0x13020002, ranges_of(2, 2)},
                            {0x3002B005, {}}});
}

// Checks a copy in memory of just that size, so that reading beyond it is caught.
cmd_result check(const Bytes &packet, cmd_result *status, ReplyAttributes *attributes) {
  static std::unique_ptr<uint8_t[]> copy;
  copy = std::make_unique<uint8_t[]>(packet.size());
  std::copy(packet.begin(), packet.end(), copy.get());
  return stpplatform::check_reply(copy.get(), packet.size(), kSequence, status, attributes);
}

cmd_result check(const Bytes &packet) {
  cmd_result status = CMD_OK;
  ReplyAttributes attributes{};
  return check(packet, &status, &attributes);
}

void fix_length(Bytes *packet) {
  put32(packet, offsetof(wire::MessageHeader, length), static_cast<uint32_t>(packet->size()));
}

struct BadReply {
  const char *name;
  std::function<void(Bytes *)> damage;
};

// Keeps addresses out of the names of the tests.
void PrintTo(const BadReply &parameter, std::ostream *out) { *out << parameter.name; }

const BadReply kBadReplies[] = {
    {"Empty", [](Bytes *reply) { reply->clear(); }},
    {"ShorterThanAHead", [](Bytes *reply) { reply->resize(sizeof(wire::Reply) - 1); }},
    {"AnotherMagic", [](Bytes *reply) { put32(reply, 0, 0); }},
    {"AnotherVersion", [](Bytes *reply) { (*reply)[offsetof(wire::MessageHeader, version)] = 2; }},
    {"AnotherType", [](Bytes *reply) { (*reply)[offsetof(wire::MessageHeader, type)] = 2; }},
    {"LengthTooSmall",
     [](Bytes *reply) {
       put32(reply, offsetof(wire::MessageHeader, length), static_cast<uint32_t>(reply->size() - 4));
     }},
    {"LengthTooLarge", [](Bytes *reply) { reply->pop_back(); }},
    {"AnotherSequence",
     [](Bytes *reply) { put32(reply, offsetof(wire::MessageHeader, sequence), kSequence - 1); }},
    {"StatusOfTheLibrary", [](Bytes *reply) { *reply = make_reply_packet(kSequence, CMD_TIMEOUT); }},
    {"UnknownStatus", [](Bytes *reply) { *reply = make_reply_packet(kSequence, CMD_REFUSED + 1); }},
    {"RefusalWithAttributes",
     [](Bytes *reply) { put32(reply, offsetof(wire::Reply, status), CMD_NO_ENTRY); }},
    {"RefusalWithACountAlone",
     [](Bytes *reply) {
       *reply = make_reply_packet(kSequence, CMD_NO_ENTRY);
       put32(reply, offsetof(wire::Reply, attribute_count), 1);
     }},
    {"MoreAttributesCounted", [](Bytes *reply) { put32(reply, offsetof(wire::Reply, attribute_count), 6); }},
    {"FewerAttributesCounted", [](Bytes *reply) { put32(reply, offsetof(wire::Reply, attribute_count), 4); }},
    {"CountlessAttributes",
     [](Bytes *reply) { put32(reply, offsetof(wire::Reply, attribute_count), UINT32_MAX); }},
    {"UnknownTokenType", [](Bytes *reply) { put32(reply, kFirstHead, 0x7F020001); }},
    {"NumberTooLong", [](Bytes *reply) { put32(reply, kFirstHead + kLengthInHead, 8); }},
    {"NumberTooShort", [](Bytes *reply) { put32(reply, kFirstHead + kLengthInHead, 3); }},
    {"ValueLongerThanTheMessage",
     [](Bytes *reply) {
       *reply = make_reply_packet(kSequence, CMD_OK, {{0x30020001, {1, 2, 3, 4}}});
       put32(reply, kFirstHead + kLengthInHead, 5);
     }},
    {"ValueOfWrappingLength",
     [](Bytes *reply) {
       *reply = make_reply_packet(kSequence, CMD_OK, {{0x30020001, {1, 2, 3, 4}}});
       put32(reply, kFirstHead + kLengthInHead, UINT32_MAX);
     }},
    {"MissingPadding",
     [](Bytes *reply) {
       *reply = make_reply_packet(kSequence, CMD_OK, {{0x30020001, {1, 2, 3, 4, 5}}});
       reply->resize(kFirstValue + 5);
       fix_length(reply);
     }},
    {"OctetsBeyondTheLimit",
     [](Bytes *reply) {
       *reply = make_reply_packet(kSequence, CMD_OK, {{0x30020001, Bytes(CMD_ATTR_VALUE_MAX + 1)}});
     }},
    {"RangesBeyondTheLimit",
     [](Bytes *reply) {
       *reply = make_reply_packet(kSequence, CMD_OK, {{0x13020001, ranges_of(128, 128)}});
     }},
    {"FewerRangesThanCounted",
     [](Bytes *reply) {
       *reply = make_reply_packet(kSequence, CMD_OK, {{0x13020001, ranges_of(3, 2)}});
     }},
    {"MoreRangesThanCounted",
     [](Bytes *reply) {
       *reply = make_reply_packet(kSequence, CMD_OK, {{0x13020001, ranges_of(1, 2)}});
     }},
    {"CountlessRanges",
     [](Bytes *reply) {
       *reply = make_reply_packet(kSequence, CMD_OK, {{0x13020001, ranges_of(0x20000000, 0)}});
     }},
    {"HalfARangeList",
     [](Bytes *reply) {
       *reply = make_reply_packet(kSequence, CMD_OK, {{0x13020001, Bytes(4)}});
     }},
    {"OctetsBehindTheLastAttribute",
     [](Bytes *reply) {
       reply->resize(reply->size() + 4);
       fix_length(reply);
     }},
};

class BadReplies : public testing::TestWithParam<BadReply> {};

TEST_P(BadReplies, IsRefused) {
  Bytes reply = typical_reply();
  GetParam().damage(&reply);
  EXPECT_EQ(check(reply), CMD_BAD_REPLY);
}

INSTANTIATE_TEST_SUITE_P(Replies, BadReplies, testing::ValuesIn(kBadReplies),
                         [](const auto &parameter) { return std::string(parameter.param.name); });

TEST(ReplyCheck, AGoodReplyIsTakenWhole) {
  const Bytes reply = typical_reply();
  cmd_result status = CMD_REFUSED;
  ReplyAttributes attributes{};
  ASSERT_EQ(check(reply, &status, &attributes), CMD_OK);
  EXPECT_EQ(status, CMD_OK);
  EXPECT_EQ(attributes.size, reply.size() - sizeof(wire::Reply));
}

TEST(ReplyCheck, ValuesOfTheLongestLengthAreTaken) {
  EXPECT_EQ(check(make_reply_packet(kSequence, CMD_OK, {{0x30020001, Bytes(CMD_ATTR_VALUE_MAX)}})), CMD_OK);
  EXPECT_EQ(check(make_reply_packet(kSequence, CMD_OK, {{0x13020001, ranges_of(127, 127)}})), CMD_OK);
}

TEST(ReplyCheck, NoDamagedReplyIsReadBeyondItsEnd) {
  constexpr uint32_t kSeed = 20817;
  constexpr int kCases = 50000;
  RecordProperty("seed", kSeed);
  Random random = seeded(kSeed);
  int taken = 0;
  for (int i = 0; i < kCases; ++i) {
    SCOPED_TRACE("seed " + std::to_string(kSeed) + ", case " + std::to_string(i));
    Bytes reply = typical_reply();
    mutate(&reply, &random);
    cmd_result status = CMD_OK;
    ReplyAttributes attributes{};
    if (check(reply, &status, &attributes) != CMD_OK) {
      continue;
    }
    ++taken;
    wire::AttributeReader reader(attributes.begin, attributes.size);
    wire::Attribute attribute;
    while (reader.next(&attribute)) {
      ASSERT_LE(attribute.length, static_cast<uint32_t>(CMD_ATTR_VALUE_MAX));
      ASSERT_TRUE(wire::length_fits_type(attribute.token, attribute.value, attribute.length));
    }
    ASSERT_TRUE(reader.at_end());
  }
  EXPECT_GT(taken, 0);
  EXPECT_LT(taken, kCases / 2);
}

Bytes typical_event() { return make_event_packet(kSequence, kEventClass, {100, 0x1A000000, 1, 5}); }

bool check_as_event(const Bytes &packet, stpplatform::ReceivedEvent *event) {
  static std::unique_ptr<uint8_t[]> copy;
  copy = std::make_unique<uint8_t[]>(packet.size());
  std::copy(packet.begin(), packet.end(), copy.get());
  return stpplatform::check_event(copy.get(), packet.size(), kSequence, event);
}

bool check_as_event(const Bytes &packet) {
  stpplatform::ReceivedEvent event{};
  return check_as_event(packet, &event);
}

struct BadEvent {
  const char *name;
  std::function<void(Bytes *)> damage;
};

// Keeps addresses out of the names of the tests.
void PrintTo(const BadEvent &parameter, std::ostream *out) { *out << parameter.name; }

const BadEvent kBadEvents[] = {
    {"Empty", [](Bytes *event) { event->clear(); }},
    {"ShorterThanAHeader", [](Bytes *event) { event->resize(sizeof(wire::MessageHeader) - 1); }},
    {"ShorterThanAHead",
     [](Bytes *event) {
       event->resize(sizeof(wire::Event) - 1);
       fix_length(event);
     }},
    {"HeadAlone",
     [](Bytes *event) {
       event->resize(sizeof(wire::Event));
       fix_length(event);
     }},
    {"HeadAloneThatSaysSo",
     [](Bytes *event) {
       event->resize(sizeof(wire::Event));
       fix_length(event);
       put32(event, offsetof(wire::Event, payload_length), 0);
     }},
    {"AnotherMagic", [](Bytes *event) { put32(event, 0, 0); }},
    {"AnotherVersion", [](Bytes *event) { (*event)[offsetof(wire::MessageHeader, version)] = 2; }},
    {"AnotherType", [](Bytes *event) { (*event)[offsetof(wire::MessageHeader, type)] = 3; }},
    {"LengthTooSmall",
     [](Bytes *event) {
       put32(event, offsetof(wire::MessageHeader, length), static_cast<uint32_t>(event->size() - 4));
     }},
    {"LengthTooLarge", [](Bytes *event) { event->pop_back(); }},
    {"TheSequenceBefore",
     [](Bytes *event) { put32(event, offsetof(wire::MessageHeader, sequence), kSequence - 1); }},
    {"TheSequenceBehind",
     [](Bytes *event) { put32(event, offsetof(wire::MessageHeader, sequence), kSequence + 1); }},
    {"NoSequence", [](Bytes *event) { put32(event, offsetof(wire::MessageHeader, sequence), 0); }},
    {"UnknownClass", [](Bytes *event) { put32(event, offsetof(wire::Event, notification_class), 17420); }},
    {"UnknownClassWithoutPayload",
     [](Bytes *event) {
       put32(event, offsetof(wire::Event, notification_class), 17424);
       put32(event, offsetof(wire::Event, payload_length), 0);
       event->resize(sizeof(wire::Event));
       fix_length(event);
     }},
    {"PayloadLengthTooSmall", [](Bytes *event) { put32(event, offsetof(wire::Event, payload_length), 12); }},
    {"PayloadLengthTooLarge", [](Bytes *event) { put32(event, offsetof(wire::Event, payload_length), 20); }},
    {"PayloadLengthBeyondAll",
     [](Bytes *event) { put32(event, offsetof(wire::Event, payload_length), UINT32_MAX); }},
    {"PayloadTooShort",
     [](Bytes *event) {
       event->resize(event->size() - 4);
       put32(event, offsetof(wire::Event, payload_length), 12);
       fix_length(event);
     }},
    {"PayloadTooLong",
     [](Bytes *event) {
       event->resize(event->size() + 4);
       put32(event, offsetof(wire::Event, payload_length), 20);
       fix_length(event);
     }},
    {"PayloadCut",
     [](Bytes *event) {
       event->resize(event->size() - 4);
       fix_length(event);
     }},
    {"OctetsBehindThePayload",
     [](Bytes *event) {
       event->resize(event->size() + 4);
       fix_length(event);
     }},
};

class BadEvents : public testing::TestWithParam<BadEvent> {};

TEST_P(BadEvents, IsRefused) {
  Bytes event = typical_event();
  ASSERT_TRUE(check_as_event(event));
  GetParam().damage(&event);
  EXPECT_FALSE(check_as_event(event));
}

INSTANTIATE_TEST_SUITE_P(Events, BadEvents, testing::ValuesIn(kBadEvents),
                         [](const auto &parameter) { return std::string(parameter.param.name); });

TEST(EventCheck, AGoodEventOfAnyClassIsTakenWhole) {
  for (const uint32_t notification_class : {17421U, 17422U, 17423U}) {
    const Bytes packet = make_event_packet(kSequence, notification_class, {1, 2, 3, 4});
    stpplatform::ReceivedEvent event{};
    ASSERT_TRUE(check_as_event(packet, &event));
    EXPECT_EQ(event.notification_class, notification_class);
    const auto *payload = static_cast<const uint8_t *>(event.payload);
    EXPECT_EQ(Bytes(payload, payload + 16), (Bytes{0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 4}));
  }
}

TEST(EventCheck, NoDamagedEventIsReadBeyondItsEnd) {
  constexpr uint32_t kSeed = 17421;
  constexpr int kCases = 50000;
  RecordProperty("seed", kSeed);
  Random random = seeded(kSeed);
  int taken = 0;
  for (int i = 0; i < kCases; ++i) {
    SCOPED_TRACE("seed " + std::to_string(kSeed) + ", case " + std::to_string(i));
    Bytes packet = typical_event();
    mutate(&packet, &random);
    stpplatform::ReceivedEvent event{};
    if (!check_as_event(packet, &event)) {
      continue;
    }
    ++taken;
    ASSERT_EQ(packet.size(), sizeof(wire::Event) + 16);
    const auto *payload = static_cast<const uint8_t *>(event.payload);
    ASSERT_TRUE(std::equal(packet.begin() + sizeof(wire::Event), packet.end(), payload, payload + 16));
  }
  EXPECT_GT(taken, 0);
  EXPECT_LT(taken, kCases / 2);
}

class DamagedReplies : public PlatformTest {};

// ReplyCheck tries many more; these go all the way through the connection.
TEST_F(DamagedReplies, NoneConfusesTheNextRequest) {
  constexpr uint32_t kSeed = 4711;
  constexpr size_t kRandomCases = 200;
  RecordProperty("seed", kSeed);
  Random random = seeded(kSeed);
  size_t systematic_cases = 1;  // known with the first reply
  const size_t descriptors = open_descriptors();
  for (size_t i = 0; i < systematic_cases + kRandomCases; ++i) {
    SCOPED_TRACE("seed " + std::to_string(kSeed) + ", case " + std::to_string(i));
    switch_.answer_with([&](const Bytes &request) {
      Bytes reply = FakeSwitch::echo(request).packets.front();
      const std::vector<Bytes> cases = damaged_everywhere(reply);
      systematic_cases = cases.size();
      if (i < cases.size()) {
        return Answer{{cases[i]}};
      }
      mutate(&reply, &random);
      return Answer{{reply}};
    });
    const int result = ask(1);
    ASSERT_TRUE(result == CMD_OK || result == CMD_BAD_REPLY || result == CMD_UNREACHABLE ||
                (result >= CMD_UNKNOWN_COMMAND && result <= CMD_REFUSED))
        << result;
    switch_.answer_with(FakeSwitch::echo);
    wait_for_backoff();
    ASSERT_TRUE(switch_answers());
    if (i % 100 == 0) {
      // This end of dropped connections is kept, and counts.
      switch_.close_connections();
      run_main_loop_once();
      ASSERT_EQ(open_descriptors(), descriptors);
    }
  }
  EXPECT_GT(systematic_cases, 1U);
}

TEST_F(DamagedReplies, NoDamagedGreetingIsBelieved) {
  constexpr uint32_t kSeed = 99;
  constexpr size_t kRandomCases = 200;
  RecordProperty("seed", kSeed);
  Random random = seeded(kSeed);
  const Greeting good = switch_.good_greeting();
  std::vector<Bytes> cases = damaged_everywhere(good.packet);
  for (size_t i = 0; i < kRandomCases; ++i) {
    Bytes damaged = good.packet;
    while (damaged == good.packet || damaged.empty()) {
      damaged = good.packet;
      mutate(&damaged, &random);
    }
    cases.push_back(damaged);
  }
  for (size_t i = 0; i < cases.size(); ++i) {
    SCOPED_TRACE("seed " + std::to_string(kSeed) + ", case " + std::to_string(i));
    switch_.greet_with({cases[i], good.descriptors});
    ASSERT_EQ(ask(1), CMD_BAD_REPLY);
    wait_for_backoff();
    switch_.close_connections();
  }
  switch_.greet_with(good);
  EXPECT_TRUE(switch_answers());
}

}  // namespace
