// Ports that the kernel's root guard keeps from forwarding.
#include "sources/linux_bridge/root_guard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/recorded_links.h"

using namespace stpswitch;
using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;

namespace {

constexpr uint32_t kPort = 7;
constexpr seconds kMaxAge{6};
constexpr uint64_t kHeard = 600;  // ticks of the message age timer
constexpr uint64_t kNothingHeard = 0;

class RootGuard : public testing::Test {
 protected:
  void see(PortState state, uint64_t message_age_timer, bool guarded = true) {
    BridgePortAttributes port;
    port.state = state;
    port.root_block = guarded;
    port.message_age_timer = message_age_timer;
    watch_.see(kPort, port, now_);
  }

  bool is_inconsistent() const { return watch_.inconsistent(kMaxAge, now_).contains(kPort); }

  // A better root is heard of by a port that forwards.
  void fall_back() {
    see(PortState::kForwarding, kNothingHeard);
    see(PortState::kListening, kHeard);
    EXPECT_TRUE(is_inconsistent());
  }

  RootGuardWatch watch_;
  RootGuardWatch::Time now_{};
};

TEST_F(RootGuard, FindsAPortThatFallsBackToListening) {
  see(PortState::kForwarding, kNothingHeard);
  EXPECT_FALSE(is_inconsistent());
  see(PortState::kListening, kHeard);
  EXPECT_TRUE(is_inconsistent());
}

// As at the start of the process, when nothing is known of what came before.
TEST_F(RootGuard, FindsAPortThatHasFallenBackAlready) {
  see(PortState::kListening, kNothingHeard);
  EXPECT_FALSE(is_inconsistent());
  see(PortState::kListening, kHeard);
  EXPECT_TRUE(is_inconsistent());
}

TEST_F(RootGuard, FindsNoPortThatIsOnItsWayToForwarding) {
  see(PortState::kDisabled, kNothingHeard);
  see(PortState::kListening, kNothingHeard);
  see(PortState::kListening, kNothingHeard);  // somebody has configured it meanwhile
  EXPECT_FALSE(is_inconsistent());
  see(PortState::kLearning, kNothingHeard);
  see(PortState::kForwarding, kNothingHeard);
  EXPECT_FALSE(is_inconsistent());
}

TEST_F(RootGuard, FindsNoAlternatePort) {
  see(PortState::kListening, kNothingHeard);
  see(PortState::kBlocking, kHeard);
  see(PortState::kBlocking, kHeard);
  EXPECT_FALSE(is_inconsistent());
}

TEST_F(RootGuard, FindsNoPortThatIsNotGuarded) {
  see(PortState::kForwarding, kNothingHeard, false);
  see(PortState::kListening, kHeard, false);
  EXPECT_FALSE(is_inconsistent());
}

TEST_F(RootGuard, FindsNothingInWhatTellsTooLittle) {
  watch_.see(kPort, {}, now_);
  EXPECT_FALSE(is_inconsistent());
  fall_back();
  watch_.see(kPort, {}, now_);
  EXPECT_TRUE(is_inconsistent());
}

// A better way to the same root: the port blocks between the hellos.
TEST_F(RootGuard, LastsWhileThePortFallsBackAgainAndAgain) {
  fall_back();
  for (int hello = 0; hello < 20; ++hello) {
    see(PortState::kBlocking, kHeard);
    EXPECT_TRUE(is_inconsistent());
    now_ += seconds(2);
    see(PortState::kListening, kHeard);
    EXPECT_TRUE(is_inconsistent());
  }
}

TEST_F(RootGuard, EndsWhenThePortLearnsOrForwards) {
  for (const PortState state : {PortState::kLearning, PortState::kForwarding}) {
    fall_back();
    see(PortState::kListening, kNothingHeard);
    EXPECT_TRUE(is_inconsistent());
    see(state, kNothingHeard);
    EXPECT_FALSE(is_inconsistent());
  }
}

TEST_F(RootGuard, EndsAfterTheMaximumAgeInSilence) {
  fall_back();
  now_ += kMaxAge;
  EXPECT_TRUE(is_inconsistent());
  now_ += milliseconds(1);
  EXPECT_FALSE(is_inconsistent());
}

TEST_F(RootGuard, EndsWithTheGuardAndWithTheLink) {
  fall_back();
  see(PortState::kListening, kNothingHeard, false);
  EXPECT_FALSE(is_inconsistent());
  fall_back();
  see(PortState::kDisabled, kNothingHeard);
  EXPECT_FALSE(is_inconsistent());
}

TEST_F(RootGuard, EndsWithThePort) {
  fall_back();
  watch_.forget(kPort);
  EXPECT_FALSE(is_inconsistent());
}

TEST_F(RootGuard, KeepsPortsApart) {
  fall_back();
  BridgePortAttributes other;
  other.state = PortState::kForwarding;
  other.root_block = true;
  watch_.see(kPort + 1, other, now_);
  EXPECT_THAT(watch_.inconsistent(kMaxAge, now_), ElementsAre(kPort));
}

// Port 7 forwards until br1 behind it becomes the better root, and learns two seconds after br1's last word.
TEST(RecordedRootGuard, FollowsTheKernel) {
  RootGuardWatch watch;
  std::vector<std::pair<int64_t, bool>> changes;
  bool is_inconsistent = false;
  for (const RecordedMessage &message : recorded("notifications")) {
    const auto news = parse(message.octets);
    ASSERT_TRUE(news);
    const RootGuardWatch::Time time(message.time);
    if (news->link.bridge_port) {
      watch.see(news->link.if_index, *news->link.bridge_port, time);
    }
    if (watch.inconsistent(kMaxAge, time).contains(kPort) != is_inconsistent) {
      is_inconsistent = !is_inconsistent;
      changes.emplace_back(message.time.count(), is_inconsistent);
    }
  }
  EXPECT_THAT(changes, ElementsAre(std::pair(1329, true), std::pair(9583, false)));
}

}  // namespace
