// How long the questions of one SNMP request may wait for the switch.
#include "waiting_time.h"

#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>
//
#include <net-snmp/agent/net-snmp-agent-includes.h>
//
#include <net-snmp/agent/agent_callbacks.h>

#include "agent_session.h"
#include "backoff.h"
#include "connection.h"
#include "platform/im.h"
#include "platform_test.h"

namespace wire = stpplatform::wire;
using stpplatform::Backoff;
using stpplatform::Deadline;
using stpplatform::waiting_time;

namespace {

constexpr uint32_t kDeadlineMs = 2000;

class WaitingTimes : public PlatformTest {
 protected:
  WaitingTimes() { set_deadline_ms(kDeadlineMs); }
  ~WaitingTimes() override { stpplatform::end_of_request(); }

  // A manager's request comes in.
  static void begin_request() {
    static long transid = 0;
    netsnmp_pdu pdu{};
    pdu.transid = ++transid;
    view_parameters parameters{};
    parameters.pdu = &pdu;
    snmp_call_callbacks(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_ACM_CHECK, &parameters);
  }

  // Waits for the switch for so long, with success. Returns how long it might have waited; -1 when it might
  // not.
  int wait(uint64_t ms) {
    int remaining = -1;
    const cmd_result result = waiting_time().spend([&](const Deadline &deadline) {
      remaining = deadline.remaining_ms();
      clock_.pass_ms(ms);
      return CMD_OK;
    });
    EXPECT_EQ(result, remaining < 0 ? CMD_TIMEOUT : CMD_OK);
    return remaining;
  }
};

TEST_F(WaitingTimes, EachQuestionOutsideARequestHasAllOfIt) {
  for (int i = 0; i < 3; ++i) {
    waiting_time().begin_question();
    EXPECT_EQ(wait(1500), 2000);
  }
  EXPECT_EQ(wait(300), 500) << "the same question";
  EXPECT_EQ(wait(200), 200);
  EXPECT_EQ(wait(0), -1);
}

TEST_F(WaitingTimes, TheQuestionsOfARequestShareIt) {
  begin_request();
  EXPECT_EQ(wait(300), 2000);
  waiting_time().begin_question();
  EXPECT_EQ(wait(0), 1700);
  EXPECT_EQ(wait(1600), 1700);
  EXPECT_EQ(wait(99), 100);
  EXPECT_EQ(wait(1), 1);
  EXPECT_EQ(wait(0), -1);
  EXPECT_EQ(wait(0), -1);
}

TEST_F(WaitingTimes, WaitingShorterThanAMillisecondAddsUp) {
  begin_request();
  for (int i = 0; i < 4; ++i) {
    waiting_time().spend([&](const Deadline &) {
      clock_.pass_ns(500'000);
      return CMD_OK;
    });
  }
  EXPECT_EQ(wait(0), 1998);
}

TEST_F(WaitingTimes, ATimeoutIsTheEndOfIt) {
  begin_request();
  EXPECT_EQ(waiting_time().spend([](const Deadline &) { return CMD_TIMEOUT; }), CMD_TIMEOUT);
  EXPECT_EQ(wait(0), -1);
}

TEST_F(WaitingTimes, TheNextRequestHasAllOfItAgain) {
  begin_request();
  EXPECT_EQ(wait(2500), 2000);
  EXPECT_EQ(wait(0), -1);
  begin_request();
  EXPECT_EQ(wait(0), 2000);
}

TEST_F(WaitingTimes, WhatFollowsTheEndOfARequestIsNoPartOfIt) {
  begin_request();
  EXPECT_EQ(wait(2500), 2000);
  stpplatform::end_of_request();
  for (int i = 0; i < 2; ++i) {
    waiting_time().begin_question();
    EXPECT_EQ(wait(2500), 2000);
  }
}

TEST_F(WaitingTimes, AClockThatGoesBackCostsNothing) {
  begin_request();
  const uint64_t now = clock_.now_ns();
  waiting_time().spend([&](const Deadline &) {
    clock_.set_ns(now - 1);
    return CMD_OK;
  });
  EXPECT_EQ(wait(0), 2000);
}

TEST_F(WaitingTimes, ASlowSwitchIsNotAskedAnyMoreWhenTheRequestHasWaitedLongEnough) {
  set_deadline_ms(kPatientMs);
  ASSERT_TRUE(switch_answers());
  switch_.answer_with([this](const Bytes &request) {
    clock_.pass_ms(9000);
    return FakeSwitch::echo(request);
  });
  begin_request();
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(switch_answers());
  }
  EXPECT_EQ(wait(3000), 3000);
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(ask(1), CMD_TIMEOUT);
  }
  EXPECT_EQ(switch_.requests().size(), 4U);
  EXPECT_TRUE(LogCapture::take().empty());
  begin_request();
  EXPECT_TRUE(switch_answers()) << "neither the connection nor the backoff was touched";
  EXPECT_EQ(switch_.connections(), 1U);
}

TEST_F(WaitingTimes, ASilentSwitchCostsARequestOneDeadlineAndTheNextOnesNone) {
  ASSERT_TRUE(switch_answers());
  switch_.answer_with([](const Bytes &) { return Answer{}; });
  set_deadline_ms(kShortMs);
  begin_request();
  EXPECT_EQ(ask(1), CMD_TIMEOUT);
  EXPECT_EQ(ask(1), CMD_TIMEOUT);
  clock_.pass_ms(Backoff::kFirstMs);
  EXPECT_EQ(ask(1), CMD_TIMEOUT) << "not tried again by the same request";
  uint32_t next = 0;
  EXPECT_EQ(im_get_next_ifindex(0, &next), CMD_TIMEOUT);
  ASSERT_TRUE(switch_.has_heard(2));
  EXPECT_EQ(switch_.requests().size(), 2U);
  EXPECT_EQ(switch_.connections(), 1U);
  EXPECT_EQ(LogCapture::take(),
            std::vector{"stpplatform: " + switch_.path() + ": the switch does not answer in time\n"});
  begin_request();
  EXPECT_EQ(ask(1), CMD_TIMEOUT) << "tried again";
  EXPECT_EQ(switch_.connections(), 2U);
  begin_request();
  EXPECT_EQ(ask(1), CMD_UNREACHABLE) << "left alone";
  clock_.pass_ms(2 * Backoff::kFirstMs - 1);
  begin_request();
  EXPECT_EQ(ask(1), CMD_UNREACHABLE) << "left alone";
  switch_.answer_with(FakeSwitch::echo);
  set_deadline_ms(kPatientMs);
  clock_.pass_ms(1);
  begin_request();
  EXPECT_TRUE(switch_answers());
}

TEST_F(WaitingTimes, WhatTheImageAnswersNeedsNone) {
  switch_.image().publish({{physical_port(1)}});
  switch_.want_to_be_asked(false);
  begin_request();
  EXPECT_EQ(ask(1), CMD_UNKNOWN_COMMAND);
  EXPECT_EQ(wait(kDeadlineMs), 2000);
  switch_.image().renew_lease();
  uint32_t next = 0;
  EXPECT_EQ(ask(1), CMD_UNKNOWN_COMMAND);
  EXPECT_EQ(im_get_next_ifindex(0, &next), CMD_OK);
  clock_.pass_ns(wire::kLeaseNs);
  EXPECT_EQ(ask(1), CMD_TIMEOUT);
  EXPECT_EQ(im_get_next_ifindex(0, &next), CMD_TIMEOUT);
  switch_.image().head()->flags |= wire::kMoved;
  EXPECT_EQ(ask(1), CMD_TIMEOUT);
  switch_.image().head()->flags = 0;
  switch_.image().renew_lease();
  EXPECT_EQ(ask(1), CMD_UNKNOWN_COMMAND) << "the connection still stands";
  EXPECT_EQ(switch_.connections(), 1U);
  EXPECT_TRUE(LogCapture::take().empty());
}

}  // namespace
