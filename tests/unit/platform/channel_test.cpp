// Which questions the image answers, and which ones the switch is asked by socket.
#include "channel.h"

#include <fcntl.h>

#include <cstddef>
#include <cstring>
#include <utility>
#include <vector>

#include "backoff.h"
#include "connection.h"
#include "failing_calls.h"
#include "platform/cmd.h"
#include "platform/im.h"
#include "platform/stp.h"
#include "platform_test.h"
#include "protocol_numbers.h"
#include "replies.h"

namespace wire = stpplatform::wire;
using stpplatform::Backoff;

namespace {

constexpr uint32_t kPort1 = 0x1A000001;
constexpr uint32_t kPort2 = 0x1A000002;
constexpr size_t kMoreThanThePool = 20;
constexpr uint32_t kText = 0x3002'0001;

struct Asked {
  uint32_t command = protocol::kRootGuard;
  uint32_t action = CMD_ACTION_GET;
  uint32_t key = protocol::kInterfaceKey;
  uint32_t key_value = kPort1;
  uint32_t destination = protocol::kDestination;
  const char *user = "operator";
};

// Ports 1 and 2 with root guard, in an image that answers.
class Channels : public PlatformTest {
 protected:
  Channels() {
    switch_.image().publish(with_root_guard(STP_GUARD_ENABLED));
    switch_.want_to_be_asked(false);
  }

  static ImageContent with_root_guard(uint8_t guard) {
    ImagePort one = physical_port(1, {10});
    ImagePort two = physical_port(2, {10});
    one.root_guard = guard;
    two.root_guard = guard;
    ImageContent content{{one, two}};
    content.refused_users = {"guest", "mallory"};
    return content;
  }

  // Asks for root guard, or something else, and returns the result; sets `*guard` where the reply holds it.
  static int ask_guard(const Asked &asked, uint32_t *guard = nullptr) {
    alignas(max_align_t) uint8_t buffer[512];
    void *request = cmd_req_init(buffer, sizeof buffer);
    cmd_req_cmdId_set(request, asked.command);
    cmd_req_action_set(request, asked.action);
    EXPECT_EQ(cmd_req_attr_add(request, asked.key, &asked.key_value, sizeof asked.key_value), CMD_OK);
    void *reply = nullptr;
    const int result =
        cmd_snmp_req_send_recv(asked.destination, protocol::kService, request, asked.user, 1, &reply, 0);
    void *value = nullptr;
    uint32_t length = 0;
    if (guard != nullptr && cmd_rsp_attr_get(reply, protocol::kGuard, &value, &length) == CMD_OK) {
      std::memcpy(guard, value, sizeof *guard);
    }
    cmd_snmp_free_rx_hndl(reply);
    return result;
  }

  // Root guard of port 1 as a command tells it; 0 when it fails.
  static uint32_t guard() {
    uint32_t found = 0;
    ask_guard({}, &found);
    return found;
  }

  // What the interface manager answers.
  static int ask_manager() {
    uint32_t next = 0;
    const int result = im_get_next_ifindex(0, &next);
    EXPECT_EQ(result == CMD_OK ? next : kPort1, kPort1);
    return result;
  }

  void let_lease_run_out() { clock_.pass_ns(wire::kLeaseNs); }

  // A switch that hears everything and says nothing.
  void hang() {
    switch_.neglect_lease();
    switch_.answer_with([](const Bytes &) { return Answer{}; });
    switch_.answer_renewals_with([](const Bytes &) { return Answer{}; });
    set_deadline_ms(kShortMs);
  }

  std::string line(const std::string &what) const {
    return "stpplatform: " + switch_.path() + ": " + what + "\n";
  }
};

TEST_F(Channels, CommandsAreAnsweredFromTheImage) {
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
  switch_.image().publish(with_root_guard(STP_GUARD_DISABLED));
  EXPECT_EQ(guard(), STP_GUARD_DISABLED);
  EXPECT_TRUE(switch_.requests().empty());
  EXPECT_EQ(switch_.connections(), 1U);
}

TEST_F(Channels, WithoutMemoryForAReplyNobodyIsAsked) {
  std::vector<void *> pool;
  for (size_t i = 0; i < kMoreThanThePool; ++i) {
    pool.push_back(stpplatform::prepare_reply());
  }
  failing_calls::fail_next_malloc();
  EXPECT_EQ(ask_guard({}), CMD_NO_MEMORY);
  EXPECT_EQ(switch_.connections(), 0U);
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
  for (void *reply : pool) {
    cmd_snmp_free_rx_hndl(reply);
  }
}

TEST_F(Channels, AReplyOfTheSwitchThatThereIsNoMemoryForIsLost) {
  switch_.want_to_be_asked(true);
  switch_.answer_with([](const Bytes &request) {
    // Longer than the pool has them.
    const uint32_t sequence = get32(request, offsetof(wire::MessageHeader, sequence));
    return Answer{{make_reply_packet(sequence, CMD_OK, {{kText, Bytes(CMD_ATTR_VALUE_MAX)}})}};
  });
  failing_calls::fail_next_malloc();
  EXPECT_EQ(ask_guard({}), CMD_NO_MEMORY);
  EXPECT_EQ(ask_guard({}), CMD_OK);
  EXPECT_EQ(switch_.connections(), 1U);
}

TEST_F(Channels, TheImageRefusesWhatTheSwitchRefuses) {
  const auto result_of = [](const std::function<void(Asked *)> &change) {
    Asked asked;
    change(&asked);
    return ask_guard(asked);
  };
  EXPECT_EQ(result_of([](Asked *asked) { asked->key_value = 0x1A000003; }), CMD_NO_ENTRY);
  EXPECT_EQ(result_of([](Asked *asked) {
              asked->action = CMD_ACTION_GET_NEXT;
              asked->key_value = kPort2;
            }),
            CMD_NO_ENTRY);
  EXPECT_EQ(result_of([](Asked *asked) { asked->command = 199; }), CMD_UNKNOWN_COMMAND);
  EXPECT_EQ(result_of([](Asked *asked) { asked->key = protocol::kGlobalSettingsKey; }), CMD_UNKNOWN_KEY);
  EXPECT_EQ(result_of([](Asked *asked) { asked->action = 2; }), CMD_BAD_REQUEST);
  EXPECT_EQ(result_of([](Asked *asked) { asked->destination = 1; }), CMD_BAD_REQUEST);
  EXPECT_EQ(result_of([](Asked *asked) { asked->user = "guest"; }), CMD_REFUSED);
  EXPECT_EQ(result_of([](Asked *asked) { asked->user = "guest2"; }), CMD_OK);
  EXPECT_EQ(result_of([](Asked *asked) { asked->user = nullptr; }), CMD_OK);
  EXPECT_TRUE(switch_.requests().empty());
}

TEST_F(Channels, ASwitchThatWantsToBeAskedIsAsked) {
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
  switch_.want_to_be_asked(true);
  EXPECT_TRUE(switch_answers());
  EXPECT_EQ(switch_.requests().size(), 1U);
  EXPECT_EQ(ask_manager(), CMD_OK);
  EXPECT_EQ(switch_.renewals(), 0U) << "what managers know is in the image";
  switch_.want_to_be_asked(false);
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
  EXPECT_EQ(switch_.requests().size(), 1U);
}

TEST_F(Channels, WhatTheLeaseDoesNotCoverIsAskedBySocketAndTheReplyRenewsIt) {
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
  let_lease_run_out();
  EXPECT_TRUE(switch_answers());
  EXPECT_EQ(switch_.requests().size(), 1U);
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
  EXPECT_EQ(switch_.requests().size(), 1U);
  EXPECT_EQ(switch_.connections(), 1U);
}

TEST_F(Channels, ManagersHaveTheLeaseRenewed) {
  EXPECT_EQ(ask_manager(), CMD_OK);
  for (size_t renewals = 1; renewals <= 3; ++renewals) {
    let_lease_run_out();
    EXPECT_EQ(ask_manager(), CMD_OK);
    EXPECT_EQ(ask_manager(), CMD_OK);
    EXPECT_EQ(switch_.renewals(), renewals);
  }
  EXPECT_EQ(switch_.connections(), 1U);
  EXPECT_TRUE(LogCapture::take().empty());
}

TEST_F(Channels, ALeaseThatIsRenewedHoldsHoweverTheCoarseClockLags) {
  constexpr uint64_t kLagNs = 20'000'000;
  EXPECT_EQ(ask_manager(), CMD_OK);
  clock_.set_lag_ns(kLagNs);
  clock_.pass_ns(wire::kLeaseNs + kLagNs);
  EXPECT_EQ(ask_manager(), CMD_OK);
  EXPECT_EQ(switch_.renewals(), 1U);
  EXPECT_TRUE(LogCapture::take().empty());
}

TEST_F(Channels, NothingThatAHungSwitchHasLeftIsBelieved) {
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
  hang();
  EXPECT_EQ(guard(), STP_GUARD_ENABLED) << "it still vouches for it";
  let_lease_run_out();
  EXPECT_EQ(ask_guard({}), CMD_TIMEOUT);
  EXPECT_EQ(ask_manager(), CMD_UNREACHABLE) << "left alone";
  EXPECT_EQ(LogCapture::take(), std::vector{line("the switch does not answer in time")});
}

TEST_F(Channels, ManagersOfAHungSwitchFailInTime) {
  EXPECT_EQ(ask_manager(), CMD_OK);
  hang();
  EXPECT_EQ(ask_manager(), CMD_OK);
  let_lease_run_out();
  EXPECT_EQ(ask_manager(), CMD_TIMEOUT);
  EXPECT_EQ(ask_manager(), CMD_UNREACHABLE) << "left alone";
  EXPECT_EQ(ask_guard({}), CMD_UNREACHABLE);
  EXPECT_EQ(LogCapture::take(), std::vector{line("the switch does not answer in time")});
}

TEST_F(Channels, ASwitchThatRefusesToRenewTheLeaseIsNotRead) {
  EXPECT_EQ(ask_manager(), CMD_OK);
  let_lease_run_out();
  switch_.neglect_lease();
  switch_.answer_renewals_with([](const Bytes &renewal) {
    return Answer{{make_reply_packet(get32(renewal, offsetof(wire::MessageHeader, sequence)), CMD_REFUSED)}};
  });
  EXPECT_EQ(ask_manager(), CMD_REFUSED);
}

TEST_F(Channels, ALeaseThatIsRenewedAndDoesNotHoldIsNotRead) {
  EXPECT_EQ(ask_manager(), CMD_OK);
  switch_.neglect_lease();
  switch_.image().head()->lease_end = UINT64_MAX;
  EXPECT_EQ(ask_manager(), CMD_BAD_REPLY);
  EXPECT_EQ(switch_.renewals(), 8U);
  EXPECT_EQ(LogCapture::take(), std::vector{line("the switch has renewed a lease that does not hold")});
  EXPECT_EQ(ask_manager(), CMD_UNREACHABLE) << "left alone";
}

// As where the machine stands still between the reply and the next look.
TEST_F(Channels, ALeaseThatRunsOutBeforeItIsLookedAtIsRenewedAgain) {
  EXPECT_EQ(ask_manager(), CMD_OK);
  let_lease_run_out();
  switch_.neglect_lease();
  bool is_first = true;
  switch_.answer_renewals_with([&](const Bytes &renewal) {
    switch_.image().renew_lease();
    if (std::exchange(is_first, false)) {
      clock_.pass_ns(wire::kLeaseNs);
    }
    return FakeSwitch::confirm(renewal);
  });
  EXPECT_EQ(ask_manager(), CMD_OK);
  EXPECT_EQ(switch_.renewals(), 2U);
  EXPECT_TRUE(LogCapture::take().empty());
}

TEST_F(Channels, WithALeaseOfAnotherClockCommandsAreAskedBySocket) {
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
  switch_.neglect_lease();
  switch_.image().head()->lease_end = UINT64_MAX;
  EXPECT_TRUE(switch_answers());
  EXPECT_EQ(switch_.requests().size(), 1U);
}

TEST_F(Channels, ManagersGiveUpAnImageThatNeverStandsStill) {
  int looks = 0;
  const auto look = [&](const stpplatform::answers::Image &) {
    ++looks;
    switch_.image().publish(with_root_guard(STP_GUARD_ENABLED));
    return CMD_OK;
  };
  EXPECT_EQ(stpplatform::ask_image(stpplatform::Vouching::kNow, look), CMD_TIMEOUT);
  EXPECT_GT(looks, 1);
  EXPECT_EQ(ask_manager(), CMD_OK);
  EXPECT_EQ(switch_.connections(), 1U) << "nothing is wrong with it";
  EXPECT_TRUE(LogCapture::take().empty());
}

class MovedImages : public Channels {
 protected:
  MovedImages() {
    larger_.publish(with_root_guard(STP_GUARD_DISABLED));
    larger_.seal(F_SEAL_GROW | F_SEAL_SHRINK);
  }

  void move() {
    switch_.hand_out(larger_);
    switch_.image().head()->lease_end = 0;
    switch_.image().head()->flags |= wire::kMoved;
  }

  const ImageFile larger_{2 * ImageFile::kSlotSize};
};

TEST_F(MovedImages, AreFollowedByCommands) {
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
  move();
  EXPECT_EQ(guard(), STP_GUARD_DISABLED);
  EXPECT_EQ(guard(), STP_GUARD_DISABLED);
  EXPECT_EQ(switch_.connections(), 2U);
  EXPECT_TRUE(switch_.requests().empty());
  EXPECT_TRUE(LogCapture::take().empty());
}

TEST_F(MovedImages, AreFollowedByManagers) {
  EXPECT_EQ(ask_manager(), CMD_OK);
  move();
  EXPECT_EQ(ask_manager(), CMD_OK);
  EXPECT_EQ(switch_.connections(), 2U);
  EXPECT_EQ(switch_.renewals(), 0U);
  EXPECT_TRUE(LogCapture::take().empty());
}

TEST_F(MovedImages, AreFollowedWhereTheSwitchWantsToBeAsked) {
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
  switch_.want_to_be_asked(true);
  larger_.head()->flags = wire::kAskMe;
  move();
  EXPECT_TRUE(switch_answers());
  EXPECT_EQ(switch_.connections(), 2U);
  EXPECT_EQ(switch_.requests().size(), 1U);
}

TEST_F(MovedImages, OfASwitchThatHasGoneAreAFailure) {
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
  move();
  switch_.stop();
  EXPECT_EQ(ask_guard({}), CMD_UNREACHABLE);
  EXPECT_EQ(LogCapture::take(), std::vector{line("No such file or directory")});
}

TEST_F(MovedImages, ThatMoveAgainAndAgainAreGivenUp) {
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
  larger_.head()->flags = wire::kMoved;
  move();
  EXPECT_EQ(ask_guard({}), CMD_TIMEOUT);
  EXPECT_EQ(ask_manager(), CMD_TIMEOUT);
  larger_.head()->flags = 0;
  EXPECT_EQ(guard(), STP_GUARD_DISABLED);
}

TEST_F(Channels, AnImageThatContradictsItselfIsDroppedAsAMalformedMessageIs) {
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
  std::vector<uint8_t> unsound = lay_out(with_root_guard(STP_GUARD_ENABLED));
  put32(&unsound, offsetof(ImageSlot, interfaces), UINT32_MAX);
  switch_.image().publish(unsound);
  EXPECT_EQ(ask_guard({}), CMD_BAD_REPLY);
  EXPECT_EQ(watched_descriptors(), 0);
  EXPECT_EQ(ask_guard({}), CMD_UNREACHABLE) << "left alone";
  EXPECT_EQ(LogCapture::take(), std::vector{line("the image contradicts itself")});
  clock_.pass_ms(Backoff::kFirstMs);
  EXPECT_EQ(ask_manager(), CMD_BAD_REPLY);
  EXPECT_TRUE(LogCapture::take().empty()) << "counted";
  switch_.image().publish(with_root_guard(STP_GUARD_ENABLED));
  wait_for_backoff();
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
  EXPECT_EQ(LogCapture::take(), std::vector{line("the switch answers again")});
  clock_.pass_ms(60000);
  switch_.image().renew_lease();
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
  EXPECT_EQ(LogCapture::take(), std::vector{line("1 more messages were not valid")});
}

TEST_F(Channels, RecoveryIsLoggedOnceACommandIsAnswered) {
  switch_.stop();
  EXPECT_EQ(ask_guard({}), CMD_UNREACHABLE);
  EXPECT_EQ(LogCapture::take(), std::vector{line("No such file or directory")});
  switch_.start();
  wait_for_backoff();
  EXPECT_EQ(ask_manager(), CMD_OK);
  EXPECT_TRUE(LogCapture::take().empty()) << "whether commands are answered is not known yet";
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
  EXPECT_EQ(LogCapture::take(), std::vector{line("the switch answers again")});
}

TEST_F(Channels, AnAnswerFromTheImageResetsTheBackoff) {
  switch_.stop();
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(ask_guard({}), CMD_UNREACHABLE);
    wait_for_backoff();
  }
  switch_.start();
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
  switch_.stop();
  run_main_loop_once();
  EXPECT_EQ(ask_guard({}), CMD_UNREACHABLE);
  switch_.start();
  clock_.pass_ms(Backoff::kFirstMs);
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
}

TEST_F(Channels, ARestartBetweenTwoQuestionsIsNotNoticedByTheUser) {
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
  switch_.stop();
  switch_.hand_out(switch_.image());
  switch_.start();
  let_lease_run_out();
  EXPECT_EQ(ask_manager(), CMD_OK);
  EXPECT_EQ(switch_.connections(), 2U);
  EXPECT_EQ(guard(), STP_GUARD_ENABLED);
  EXPECT_TRUE(LogCapture::take().empty());
}

}  // namespace
