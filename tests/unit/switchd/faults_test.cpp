#include "faults/faults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "faults/garbage.h"
#include "publisher/image_publisher.h"
#include "server/command_reply.h"
#include "support/octets.h"
#include "support/requests.h"
#include "wire/attributes.h"

using namespace stpswitch;
using namespace std::chrono_literals;
namespace wire = stpplatform::wire;
using testing::ElementsAre;

namespace {

TEST(Faults, AreNoneUntilOrdered) { EXPECT_EQ(Faults().next().kind, FaultKind::kNone); }

TEST(Faults, StayUntilOtherOnesAreOrdered) {
  Faults faults;
  faults.order(FaultKind::kDelay, 250ms, std::nullopt);
  for (int i = 0; i < 100; ++i) {
    const Fault fault = faults.next();
    EXPECT_EQ(fault.kind, FaultKind::kDelay);
    EXPECT_EQ(fault.delay, 250ms);
  }
  faults.order(FaultKind::kNone, {}, std::nullopt);
  EXPECT_EQ(faults.next().kind, FaultKind::kNone);
}

TEST(Faults, EndAfterTheirCount) {
  Faults faults;
  faults.order(FaultKind::kDrop, {}, 2);
  EXPECT_EQ(faults.next().kind, FaultKind::kDrop);
  EXPECT_EQ(faults.next().kind, FaultKind::kDrop);
  EXPECT_EQ(faults.next().kind, FaultKind::kNone);
  EXPECT_EQ(faults.next().kind, FaultKind::kNone);
}

TEST(Faults, CountAnewWhenOrderedAnew) {
  Faults faults;
  faults.order(FaultKind::kDrop, {}, 5);
  faults.next();
  faults.order(FaultKind::kDisconnect, {}, 1);
  EXPECT_EQ(faults.next().kind, FaultKind::kDisconnect);
  EXPECT_EQ(faults.next().kind, FaultKind::kNone);
}

TEST(Faults, TakeTurns) {
  Faults faults;
  faults.order(FaultKind::kGarbage, {}, std::nullopt);
  EXPECT_EQ(faults.next().turn, 0U);
  EXPECT_EQ(faults.next().turn, 1U);
  faults.order(FaultKind::kGarbage, {}, std::nullopt);
  EXPECT_EQ(faults.next().turn, 0U);
}

TEST(Faults, TellWhetherOneIsOrdered) {
  Faults faults;
  std::vector<bool> told;
  faults.on_change([&told](bool is_ordered) { told.push_back(is_ordered); });
  faults.order(FaultKind::kDrop, {}, 2);
  faults.next();
  EXPECT_THAT(told, ElementsAre(true));
  faults.next();
  EXPECT_THAT(told, ElementsAre(true, false));
  faults.order(FaultKind::kDrop, {}, std::nullopt);
  faults.next();
  faults.order(FaultKind::kNone, {}, std::nullopt);
  EXPECT_THAT(told, ElementsAre(true, false, true, false));
}

class GarbageReplies : public testing::Test {
 protected:
  Packet spoilt(Garbage kind) const { return spoil(good_, kind); }

  // How the attributes behind the head read.
  static bool has_good_attributes(const Packet &packet) {
    return wire::attributes_are_well_formed(packet.data() + sizeof(wire::Reply),
                                            packet.size() - sizeof(wire::Reply),
                                            reply_head(packet).attribute_count);
  }

  Switch switch_{SwitchState{}};
  ImagePublisher publisher_{&switch_};
  Packet good_ = answer_packet(publisher_.view(), make_request({}), make_request({}).size()).value();
};

TEST_F(GarbageReplies, AreEachWrongInOneWay) {
  EXPECT_EQ(spoilt(Garbage::kTruncated).size(), 8U);
  EXPECT_EQ(reply_head(spoilt(Garbage::kWrongMagic)).header.magic, ~uint32_t{0x53545057});
  EXPECT_EQ(reply_head(spoilt(Garbage::kWrongSequence)).header.sequence, 8U);
  EXPECT_EQ(reply_head(spoilt(Garbage::kLengthTooBig)).header.length, good_.size() + 4096);
  EXPECT_EQ(hex(spoilt(Garbage::kAttributeOverrun)),
            hex(octets("57505453 0100 0300 20000000 07000000 00000000 01000000 02b00230 00040000")));
  EXPECT_EQ(hex(spoilt(Garbage::kNumberTooLong)),
            hex(octets("57505453 0100 0300 28000000 07000000 00000000 01000000 01b00202 08000000"
                       "00000000 00000000")));
  const Packet long_octets = spoilt(Garbage::kOctetsTooLong);
  EXPECT_EQ(long_octets.size(), 24U + 8U + 1028U);
  EXPECT_EQ(hex(std::span(long_octets).subspan(24, 8)), "02b0023001040000");
  EXPECT_EQ(reply_head(long_octets).header.length, long_octets.size());
}

TEST_F(GarbageReplies, HaveHeadsThatDoNotGiveTheAttributesAway) {
  for (const Garbage kind : {Garbage::kAttributeOverrun, Garbage::kNumberTooLong, Garbage::kOctetsTooLong}) {
    const Packet packet = spoilt(kind);
    EXPECT_EQ(reply_head(packet).header.length, packet.size());
    EXPECT_EQ(reply_head(packet).status, CMD_OK);
    EXPECT_FALSE(has_good_attributes(packet));
  }
}

TEST_F(GarbageReplies, AreTheSameEveryTime) {
  std::set<std::string> different;
  for (unsigned turn = 0; turn < 8; ++turn) {
    const std::string once = hex(spoilt(garbage_of_turn(turn)));
    EXPECT_EQ(hex(spoilt(garbage_of_turn(turn + 8))), once);
    EXPECT_NE(once, hex(good_));
    different.insert(once);
  }
  EXPECT_EQ(different.size(), 8U);
}

}  // namespace
