// Subscriptions and events, octet by octet.
#include "server/event_packet.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "support/events.h"
#include "support/octets.h"
#include "support/requests.h"
#include "wire/message.h"

using namespace stpswitch;
namespace wire = stpplatform::wire;
using testing::ElementsAre;

namespace {

// Reads a copy in memory of just that size, so that reading beyond it is caught.
std::optional<NotificationClasses> read(const Packet &packet) {
  const auto copy = std::make_unique<uint8_t[]>(packet.size());
  std::copy(packet.begin(), packet.end(), copy.get());
  return read_subscription({copy.get(), packet.size()}, packet.size());
}

std::vector<uint32_t> classes_up_to(uint32_t count) {
  std::vector<uint32_t> classes(count);
  std::iota(classes.begin(), classes.end(), 1);
  return classes;
}

void set_length(Packet *packet) {
  put(packet, offsetof(wire::MessageHeader, length), static_cast<uint32_t>(packet->size()));
}

TEST(Subscriptions, NameTheirClasses) {
  const Packet packet = octets("57505453 0100 0400 20000000 00000000 03000000 0d440000 0e440000 0f440000");
  EXPECT_EQ(hex(packet), hex(make_subscription({17421, 17422, 17423})));
  EXPECT_TRUE(claims_to_be_subscription(packet));
  const auto classes = read(packet);
  ASSERT_TRUE(classes.has_value());
  EXPECT_THAT(*classes, ElementsAre(17421U, 17422U, 17423U));
}

TEST(Subscriptions, MayBeOfAnyClassAndOrderAndNumber) {
  EXPECT_THAT(read(make_subscription({5, 0, UINT32_MAX, 5})).value(), ElementsAre(0U, 5U, UINT32_MAX));
  for (uint32_t count = 1; count <= 32; ++count) {
    EXPECT_EQ(read(make_subscription(classes_up_to(count))).value().size(), count);
  }
}

TEST(Subscriptions, MayHaveAnySequenceNumber) {
  Packet packet = make_subscription({protocol::kLoopInconsistencyClass});
  put(&packet, offsetof(wire::MessageHeader, sequence), uint32_t{4711});
  EXPECT_TRUE(read(packet).has_value());
}

struct BadSubscription {
  const char *name;
  std::function<void(Packet *)> damage;
};

// Keeps addresses out of the names of the tests.
void PrintTo(const BadSubscription &parameter, std::ostream *out) { *out << parameter.name; }

const BadSubscription kBadSubscriptions[] = {
    {"Empty", [](Packet *packet) { packet->clear(); }},
    {"ShorterThanAHeader", [](Packet *packet) { packet->resize(sizeof(wire::MessageHeader) - 1); }},
    {"HeaderAlone",
     [](Packet *packet) {
       packet->resize(sizeof(wire::MessageHeader));
       set_length(packet);
     }},
    {"ShorterThanAHead",
     [](Packet *packet) {
       packet->resize(sizeof(wire::Subscribe) - 1);
       set_length(packet);
     }},
    {"AnotherMagic", [](Packet *packet) { put(packet, offsetof(wire::MessageHeader, magic), uint32_t{0}); }},
    {"AnotherVersion",
     [](Packet *packet) { put(packet, offsetof(wire::MessageHeader, version), uint16_t{2}); }},
    {"AnotherType", [](Packet *packet) { put(packet, offsetof(wire::MessageHeader, type), uint16_t{5}); }},
    {"LengthTooSmall",
     [](Packet *packet) { put(packet, offsetof(wire::MessageHeader, length), uint32_t{24}); }},
    {"LengthTooLarge",
     [](Packet *packet) { put(packet, offsetof(wire::MessageHeader, length), uint32_t{32}); }},
    {"NoClass", [](Packet *packet) { *packet = make_subscription({}); }},
    {"NoClassCounted",
     [](Packet *packet) { put(packet, offsetof(wire::Subscribe, class_count), uint32_t{0}); }},
    {"FewerClassesCounted",
     [](Packet *packet) { put(packet, offsetof(wire::Subscribe, class_count), uint32_t{1}); }},
    {"MoreClassesCounted",
     [](Packet *packet) { put(packet, offsetof(wire::Subscribe, class_count), uint32_t{3}); }},
    {"CountlessClasses",
     [](Packet *packet) { put(packet, offsetof(wire::Subscribe, class_count), UINT32_MAX); }},
    {"ClassesCountedAroundTheCorner",
     [](Packet *packet) { put(packet, offsetof(wire::Subscribe, class_count), uint32_t{0x40000002}); }},
    {"MoreClassesThanAllowed", [](Packet *packet) { *packet = make_subscription(classes_up_to(33)); }},
    {"HalfAClass",
     [](Packet *packet) {
       packet->pop_back();
       packet->pop_back();
       set_length(packet);
     }},
    {"OctetsBehindTheLastClass",
     [](Packet *packet) {
       packet->push_back(0);
       set_length(packet);
     }},
};

class BadSubscriptions : public testing::TestWithParam<BadSubscription> {};

TEST_P(BadSubscriptions, AreRefused) {
  Packet packet = make_subscription({protocol::kPortInconsistencyClass, protocol::kLoopInconsistencyClass});
  GetParam().damage(&packet);
  EXPECT_FALSE(read(packet).has_value()) << hex(packet);
}

INSTANTIATE_TEST_SUITE_P(Packets, BadSubscriptions, testing::ValuesIn(kBadSubscriptions),
                         [](const auto &parameter) { return std::string(parameter.param.name); });

TEST(Subscriptions, AreRefusedWhenTheyWereReceivedInPart) {
  const Packet packet =
      make_subscription({protocol::kPortInconsistencyClass, protocol::kLoopInconsistencyClass});
  EXPECT_FALSE(read_subscription(packet, packet.size() + 4).has_value());
}

TEST(Subscriptions, AreToldFromOtherPackets) {
  EXPECT_FALSE(claims_to_be_subscription(make_request({})));
  EXPECT_FALSE(claims_to_be_subscription(octets("57505453 0100 0400 20000000 000000")));
  EXPECT_FALSE(claims_to_be_subscription({}));
  EXPECT_TRUE(claims_to_be_subscription(octets("57505453 ffff 0400 ffffffff ffffffff")))
      << "malformed, but a subscription";
}

class DamagedSubscriptions : public testing::TestWithParam<uint32_t> {};

TEST_P(DamagedSubscriptions, AreNeverReadBeyondTheirEnd) {
  constexpr int kCases = 50000;
  std::mt19937 numbers(GetParam());
  int taken = 0;
  for (int i = 0; i < kCases; ++i) {
    Packet packet = make_subscription(classes_up_to(static_cast<uint32_t>(numbers() % 40)));
    const auto changes = static_cast<uint32_t>(numbers() % 3);
    for (uint32_t change = 0; change < changes; ++change) {
      packet[numbers() % packet.size()] = static_cast<uint8_t>(numbers());
    }
    if (numbers() % 4 == 0) {
      packet.resize(numbers() % (2 * packet.size()));
    }
    const auto classes = read(packet);
    if (classes) {
      ++taken;
      ASSERT_GE(classes->size(), 1U) << hex(packet);
      ASSERT_LE(classes->size(), 32U) << hex(packet);
      ASSERT_LE(sizeof(wire::Subscribe) + classes->size() * sizeof(uint32_t), packet.size()) << hex(packet);
    }
  }
  EXPECT_GT(taken, 0);
  EXPECT_LT(taken, kCases);
}

INSTANTIATE_TEST_SUITE_P(Seeds, DamagedSubscriptions, testing::Values(1U, 2U, 3U),
                         testing::PrintToStringParamName());

TEST(EventPackets, HaveTheirPayloadInNetworkByteOrder) {
  EXPECT_EQ(hex(make_event_packet(InconsistencyEvent{InconsistencyEventKind::kRoot, 4094, 0x1A001000, 0,
                                                     SpanningTreeMode::kRapidPvst},
                                  7)),
            hex(octets("57505453 0100 0500 28000000 07000000"
                       "0f440000 10000000"
                       "00000ffe 1a001000 00000002 00000005")));
}

TEST(EventPackets, TellThatALoopInconsistencyAppeared) {
  EXPECT_EQ(
      hex(make_event_packet(
          InconsistencyEvent{InconsistencyEventKind::kLoop, 7, 0x1A000000, 1, SpanningTreeMode::kMst}, 1)),
      hex(octets("57505453 0100 0500 28000000 01000000"
                 "0e440000 10000000"
                 "00000007 1a000000 00000001 00000004")));
}

TEST(EventPackets, HaveThePortsInconsistenciesInTheirStatesFirstOctet) {
  EXPECT_EQ(hex(make_event_packet(InconsistencyEvent{InconsistencyEventKind::kPvidAndType, 1, 0x16000000, 3,
                                                     SpanningTreeMode::kMst},
                                  UINT32_MAX)),
            hex(octets("57505453 0100 0500 28000000 ffffffff"
                       "0d440000 10000000"
                       "00000001 16000000 03000000 00000004")));
}

TEST(EventPackets, TellOfTrees) {
  EXPECT_EQ(hex(make_event_packet(
                TreeEvent{TreeEventKind::kTopologyChange, 4094, 129, 7, SpanningTreeMode::kRapidPvst}, 1)),
            hex(octets("57505453 0100 0500 28000000 01000000"
                       "11440000 10000000"
                       "00000ffe 00000081 00000007 00000005")));
  EXPECT_EQ(hex(make_event_packet(TreeEvent{TreeEventKind::kNewRoot, 1, 0, 0, SpanningTreeMode::kMst}, 2)),
            hex(octets("57505453 0100 0500 28000000 02000000"
                       "10440000 10000000"
                       "00000001 00000000 00000000 00000004")));
  EXPECT_EQ(hex(make_event_packet(TreeEvent{TreeEventKind::kTrees, 0, 0, 0, std::nullopt}, 3)),
            hex(octets("57505453 0100 0500 28000000 03000000"
                       "12440000 10000000"
                       "00000000 00000000 00000000 00000000")));
}

}  // namespace
