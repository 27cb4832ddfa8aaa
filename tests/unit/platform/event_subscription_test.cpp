// The switch's events: when their connection is made, what becomes of them, and what is left of it.
#include "event_subscription.h"

#include <arpa/inet.h>
#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>
//
#include <net-snmp/agent/net-snmp-agent-includes.h>
//
#include <net-snmp/agent/agent_callbacks.h>
#include <net-snmp/library/fd_event_manager.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <functional>

#include "agent_session.h"
#include "backoff.h"
#include "connection.h"
#include "failing_alarms.h"
#include "failing_calls.h"
#include "full_descriptor_table.h"
#include "mutation.h"
#include "platform/agent_ext.h"
#include "platform/xport.h"
#include "platform_test.h"
#include "protocol_numbers.h"

namespace wire = stpplatform::wire;
using stpplatform::Backoff;

namespace {

constexpr EventWords kAppeared = {100, 0x1A000000, 1, 5};
constexpr EventWords kVanished = {100, 0x1A000000, 2, 5};

// What handlers have got, with the payload as it is in memory, and what they are to do besides.
struct Handled {
  uint32_t notification_class;
  Bytes payload;
  bool operator==(const Handled &) const = default;
};
std::vector<Handled> handled;
std::function<void()> in_handler;

template <uint32_t kClass>
netsnmp_variable_list *handle(void *message, oid *, size_t *, int *status) {
  constexpr size_t kPayloadLength = 16;
  const auto *payload = static_cast<const uint8_t *>(xport_payload_get(message));
  handled.push_back({kClass, Bytes(payload, payload + kPayloadLength)});
  *status = 0;
  if (in_handler) {
    in_handler();
  }
  return nullptr;
}

Handled expected(uint32_t notification_class, const EventWords &words) {
  const Bytes packet = make_event_packet(1, notification_class, words);
  return {notification_class, Bytes(packet.begin() + sizeof(wire::Event), packet.end())};
}

uint32_t tree_of(const Handled &event) { return ntohl(get32(event.payload, 0)); }

std::vector<uint32_t> classes_of(const Bytes &subscription) {
  EXPECT_GE(subscription.size(), sizeof(wire::Subscribe));
  EXPECT_EQ(get32(subscription, offsetof(wire::MessageHeader, magic)), wire::kMagic);
  EXPECT_EQ(get32(subscription, offsetof(wire::MessageHeader, length)), subscription.size());
  const uint32_t count = get32(subscription, offsetof(wire::Subscribe, class_count));
  EXPECT_EQ(subscription.size(), sizeof(wire::Subscribe) + count * sizeof(uint32_t));
  std::vector<uint32_t> classes;
  for (size_t at = sizeof(wire::Subscribe); at < subscription.size(); at += sizeof(uint32_t)) {
    classes.push_back(get32(subscription, at));
  }
  return classes;
}

class EventSubscriptions : public PlatformTest {
 protected:
  EventSubscriptions() {
    handled.clear();
    in_handler = nullptr;
  }

  ~EventSubscriptions() override {
    unsubscribe_all();
    EXPECT_FALSE(has_alarm());
  }

  template <uint32_t kClass = protocol::kLoopInconsistencyClass>
  static void subscribe() {
    ASSERT_EQ(register_for_notification(kClass, handle<kClass>), 0);
    ASSERT_EQ(set_notification_enable_disable_status(kClass, 1), 0);
  }

  static void unsubscribe_all() {
    for (const uint32_t notification_class :
         {protocol::kPortInconsistencyClass, protocol::kLoopInconsistencyClass,
          protocol::kRootInconsistencyClass}) {
      unregister_for_notification(notification_class);
    }
  }

  // Runs the main loop until the switch has as many subscriptions.
  testing::AssertionResult is_subscribed(size_t subscriptions) {
    if (!run_main_loop_until([&] { return switch_.subscriptions().size() >= subscriptions; })) {
      return testing::AssertionFailure() << switch_.subscriptions().size() << " subscriptions";
    }
    return testing::AssertionSuccess();
  }

  // Lets the alarm ring that is due, and the connection be made.
  testing::AssertionResult connects() {
    const size_t before = switch_.subscriptions().size();
    if (!ring_next_alarm()) {
      return testing::AssertionFailure() << "nothing is due";
    }
    return is_subscribed(before + 1);
  }

  void subscribe_and_connect() {
    subscribe();
    ASSERT_TRUE(connects());
  }

  // The connection is gone, and due again.
  testing::AssertionResult is_lost() {
    return run_main_loop_until([] { return watched_descriptors() == 0 && has_alarm(); })
               ? testing::AssertionSuccess()
               : testing::AssertionFailure() << watched_descriptors() << " descriptors watched";
  }

  void tell(uint32_t sequence, const EventWords &words = kAppeared,
            uint32_t notification_class = protocol::kLoopInconsistencyClass) {
    switch_.tell(make_event_packet(sequence, notification_class, words));
  }

  bool is_handled(size_t events) {
    return run_main_loop_until([=] { return handled.size() >= events; });
  }

  // Lets a manager ask the agent for anything.
  static void request_comes() {
    netsnmp_pdu pdu{};
    view_parameters parameters{};
    parameters.pdu = &pdu;
    snmp_call_callbacks(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_ACM_CHECK, &parameters);
    stpplatform::end_of_request();
  }

  std::string no_alarm() const {
    return log_prefix() + "the agent cannot set an alarm; requests take its place\n";
  }

  std::string log_prefix() const { return "stpplatform: " + switch_.path() + ": events: "; }
};

TEST_F(EventSubscriptions, NothingIsDoneWithoutASubscription) {
  EXPECT_TRUE(switch_answers());
  EXPECT_FALSE(has_alarm());
  EXPECT_EQ(switch_.connections(), 1U);
}

TEST_F(EventSubscriptions, NothingIsDoneBeforeTheMainLoopRuns) {
  const size_t descriptors = open_descriptors();
  subscribe();
  EXPECT_EQ(open_descriptors(), descriptors);
  EXPECT_EQ(watched_descriptors(), 0);
  EXPECT_EQ(ring_next_alarm(), 1U);
  EXPECT_EQ(watched_descriptors(), 1);
}

TEST_F(EventSubscriptions, OneSubscriptionNamesAllClasses) {
  subscribe<protocol::kPortInconsistencyClass>();
  subscribe<protocol::kLoopInconsistencyClass>();
  subscribe<protocol::kRootInconsistencyClass>();
  ASSERT_TRUE(connects());
  EXPECT_EQ(switch_.connections(), 1U);
  ASSERT_EQ(switch_.subscriptions().size(), 1U);
  EXPECT_EQ(classes_of(switch_.subscriptions()[0]),
            (std::vector{protocol::kPortInconsistencyClass, protocol::kLoopInconsistencyClass,
                         protocol::kRootInconsistencyClass}));
  EXPECT_FALSE(has_alarm()) << "nothing is left to do";
  EXPECT_TRUE(LogCapture::take().empty());
}

TEST_F(EventSubscriptions, ASubscriptionHasTheFormOfTheWire) {
  subscribe_and_connect();
  EXPECT_EQ(switch_.subscriptions()[0],
            (Bytes{'W', 'P', 'T', 'S', 1, 0, 4, 0, 24, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0x0E, 0x44, 0, 0}));
}

TEST_F(EventSubscriptions, AppearingAndVanishingAreDeliveredInOrderWithTheirPayload) {
  subscribe<protocol::kPortInconsistencyClass>();
  subscribe<protocol::kLoopInconsistencyClass>();
  ASSERT_TRUE(connects());
  constexpr EventWords kBits = {4094, 0x16000000, 0x03000000, 4};
  tell(1, kAppeared);
  tell(2, kVanished);
  tell(3, kBits, protocol::kPortInconsistencyClass);
  ASSERT_TRUE(is_handled(3));
  EXPECT_EQ(handled, (std::vector{expected(protocol::kLoopInconsistencyClass, kAppeared),
                                  expected(protocol::kLoopInconsistencyClass, kVanished),
                                  expected(protocol::kPortInconsistencyClass, kBits)}));
  EXPECT_EQ(handled[2].payload, (Bytes{0, 0, 0x0F, 0xFE, 0x16, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 4}));
}

TEST_F(EventSubscriptions, AnEventOfAClassThatIsNotEnabledIsDropped) {
  subscribe_and_connect();
  ASSERT_EQ(set_notification_enable_disable_status(protocol::kLoopInconsistencyClass, 0), 0);
  tell(1, kAppeared);
  EXPECT_EQ(run_main_loop_once(), 1);
  EXPECT_TRUE(handled.empty());
  ASSERT_EQ(set_notification_enable_disable_status(protocol::kLoopInconsistencyClass, 1), 0);
  tell(2, kVanished);
  ASSERT_TRUE(is_handled(1));
  EXPECT_EQ(handled, std::vector{expected(protocol::kLoopInconsistencyClass, kVanished)});
}

TEST_F(EventSubscriptions, AnEventOfAClassWithoutHandlerIsDropped) {
  subscribe_and_connect();
  tell(1, kAppeared, protocol::kRootInconsistencyClass);
  tell(2, kVanished);
  ASSERT_TRUE(is_handled(1));
  EXPECT_EQ(handled, std::vector{expected(protocol::kLoopInconsistencyClass, kVanished)});
  EXPECT_TRUE(LogCapture::take().empty());
}

TEST_F(EventSubscriptions, AClassMoreOrLessIsANewSubscriptionOnTheSameConnection) {
  subscribe_and_connect();
  subscribe<protocol::kRootInconsistencyClass>();
  ASSERT_TRUE(connects());
  EXPECT_EQ(classes_of(switch_.subscriptions()[1]),
            (std::vector{protocol::kLoopInconsistencyClass, protocol::kRootInconsistencyClass}));
  ASSERT_EQ(unregister_for_notification(protocol::kLoopInconsistencyClass), 0);
  ASSERT_TRUE(connects());
  EXPECT_EQ(classes_of(switch_.subscriptions()[2]), (std::vector{protocol::kRootInconsistencyClass}));
  EXPECT_EQ(switch_.connections(), 1U);
  tell(1, kAppeared, protocol::kRootInconsistencyClass);
  ASSERT_TRUE(is_handled(1));
}

TEST_F(EventSubscriptions, AnotherHandlerOfAClassIsNoNewSubscription) {
  subscribe_and_connect();
  subscribe();
  EXPECT_FALSE(has_alarm());
}

TEST_F(EventSubscriptions, AClassThatIsSubscribedToWhileTheConnectionIsMadeIsNamed) {
  subscribe();
  ASSERT_TRUE(ring_next_alarm());
  subscribe<protocol::kRootInconsistencyClass>();
  ASSERT_TRUE(is_subscribed(1));
  EXPECT_EQ(classes_of(switch_.subscriptions()[0]),
            (std::vector{protocol::kLoopInconsistencyClass, protocol::kRootInconsistencyClass}));
}

TEST_F(EventSubscriptions, TheLastClassTakesEverythingAlong) {
  const size_t descriptors = open_descriptors();
  size_t made = 0;
  for (int i = 0; i < 100; ++i) {
    subscribe<protocol::kPortInconsistencyClass>();
    subscribe<protocol::kRootInconsistencyClass>();
    if (i % 3 != 0) {
      ++made;
      ASSERT_TRUE(ring_next_alarm());
    }
    if (i % 3 == 1) {
      ASSERT_TRUE(run_main_loop_until([] { return !has_alarm(); })) << "greeted";
    }
    unsubscribe_all();
    ASSERT_FALSE(has_alarm());
    ASSERT_EQ(watched_descriptors(), 0);
    // Wait for the switch to have taken the connection before its end is closed.
    ASSERT_TRUE(run_main_loop_until([&] { return switch_.connections() >= made; }));
    switch_.close_connections();
    ASSERT_EQ(open_descriptors(), descriptors);
  }
  EXPECT_TRUE(LogCapture::take().empty());
}

TEST_F(EventSubscriptions, AWakeupHandsOutSoManyEventsAndNoMore) {
  constexpr uint32_t kEvents = 150;
  subscribe_and_connect();
  for (uint32_t i = 1; i <= kEvents; ++i) {
    tell(i, {i, 1, 1, 4});
  }
  for (const size_t so_far : {64U, 128U, 150U}) {
    EXPECT_EQ(run_main_loop_once(), 1);
    EXPECT_EQ(handled.size(), so_far);
    EXPECT_TRUE(switch_answers()) << "a request gets its turn";
  }
  EXPECT_EQ(run_main_loop_once(), 0);
  for (uint32_t i = 1; i <= kEvents; ++i) {
    EXPECT_EQ(tree_of(handled[i - 1]), i);
  }
}

TEST_F(EventSubscriptions, ASpuriousWakeupIsNothing) {
  subscribe_and_connect();
  external_readfdfunc[0](external_readfd[0], external_readfd_data[0]);
  tell(1);
  EXPECT_TRUE(is_handled(1));
}

TEST_F(EventSubscriptions, RequestsDoNotDependOnIt) {
  subscribe();
  EXPECT_TRUE(switch_answers()) << "while it is not made yet";
  ASSERT_TRUE(ring_next_alarm());
  EXPECT_TRUE(switch_answers()) << "while it is being made";
  ASSERT_TRUE(is_subscribed(1));
  EXPECT_TRUE(switch_answers());
  tell(99);
  ASSERT_TRUE(run_main_loop_until([] { return has_alarm(); }));
  EXPECT_TRUE(switch_answers()) << "while it is lost";
  EXPECT_EQ(switch_.connections(), 2U) << "one of each";
}

TEST_F(EventSubscriptions, ItDoesNotDependOnRequests) {
  subscribe_and_connect();
  switch_.answer_with([](const Bytes &) { return Answer{{Bytes(7, 0xFF)}}; });
  EXPECT_EQ(ask(1), CMD_BAD_REPLY);
  EXPECT_EQ(ask(1), CMD_UNREACHABLE) << "left alone";
  tell(1);
  EXPECT_TRUE(is_handled(1));
}

TEST_F(EventSubscriptions, ASwitchThatRestartsIsSubscribedToAgain) {
  subscribe_and_connect();
  for (uint32_t restart = 1; restart <= 5; ++restart) {
    tell(1);
    tell(2);
    ASSERT_TRUE(is_handled(handled.size() + 2));
    switch_.stop();
    ASSERT_TRUE(is_lost());
    EXPECT_EQ(LogCapture::take(), std::vector{log_prefix() + "the switch has closed the connection\n"});
    switch_.start();
    ASSERT_TRUE(connects());
    EXPECT_EQ(LogCapture::take(),
              std::vector{log_prefix() + "the switch is connected; connections lost so far: " +
                          std::to_string(restart) + "\n"});
  }
  EXPECT_EQ(switch_.subscriptions().size(), 6U);
}

TEST_F(EventSubscriptions, WhatWasSentBeforeTheSwitchWentIsDelivered) {
  subscribe_and_connect();
  tell(1);
  tell(2);
  switch_.stop();
  ASSERT_TRUE(is_lost());
  EXPECT_EQ(handled.size(), 2U);
}

TEST_F(EventSubscriptions, AnAbsentSwitchIsTriedLessAndLessAndLoggedOnce) {
  switch_.stop();
  subscribe();
  EXPECT_EQ(ring_next_alarm(), 1U);
  for (const uint64_t wait : {100U, 200U, 400U, 800U, 1600U, 3200U, 5000U, 5000U}) {
    EXPECT_EQ(ring_next_alarm(), wait);
  }
  EXPECT_EQ(LogCapture::take(), std::vector{log_prefix() + "No such file or directory\n"});
  switch_.start();
  ASSERT_TRUE(connects());
  EXPECT_EQ(LogCapture::take(),
            std::vector{log_prefix() + "the switch is connected; connections lost so far: 0\n"});
}

TEST_F(EventSubscriptions, AConnectionThatStoodLongStartsTheBackoffOver) {
  subscribe_and_connect();
  for (const uint64_t wait : {100U, 200U, 400U}) {
    clock_.pass_ms(Backoff::kLongestMs - 1);
    switch_.close_connections();
    ASSERT_TRUE(is_lost());
    const size_t before = switch_.subscriptions().size();
    EXPECT_EQ(ring_next_alarm(), wait);
    ASSERT_TRUE(is_subscribed(before + 1));
  }
  clock_.pass_ms(Backoff::kLongestMs);
  switch_.close_connections();
  ASSERT_TRUE(is_lost());
  EXPECT_EQ(ring_next_alarm(), Backoff::kFirstMs);
}

TEST_F(EventSubscriptions, ASwitchThatGoesBeforeItIsSubscribedToIsTriedAgain) {
  subscribe();
  ring_next_alarm();
  failing_calls::fail_next_send(EPIPE);
  ASSERT_TRUE(is_lost());
  EXPECT_EQ(LogCapture::take(),
            std::vector<std::string>{log_prefix() + "the switch does not take the subscription\n"});
  EXPECT_TRUE(connects());
}

TEST_F(EventSubscriptions, ASwitchThatDoesNotGreetIsGivenUpAfterTheDeadline) {
  set_deadline_ms(1234);
  switch_.greet_with({});
  subscribe();
  EXPECT_EQ(ring_next_alarm(), 1U);
  EXPECT_EQ(watched_descriptors(), 1);
  EXPECT_EQ(ring_next_alarm(), 1234U);
  EXPECT_EQ(watched_descriptors(), 0);
  EXPECT_EQ(LogCapture::take(), std::vector{log_prefix() + "the switch does not greet in time\n"});
  switch_.greet_with(switch_.good_greeting());
  EXPECT_TRUE(connects());
}

TEST_F(EventSubscriptions, AMainLoopWithoutRoomIsTriedAgain) {
  const auto nothing = [](int, void *) {};
  int others = 0;
  while (register_readfd(1000 + others, nothing, nullptr) == FD_REGISTERED_OK) {
    ++others;
  }
  LogCapture::take();
  const size_t descriptors = open_descriptors();
  subscribe();
  ASSERT_TRUE(ring_next_alarm());
  switch_.close_connections();
  EXPECT_EQ(open_descriptors(), descriptors);
  const std::vector<std::string> log = LogCapture::take();
  ASSERT_FALSE(log.empty());
  EXPECT_EQ(log.back(), log_prefix() + "the agent cannot watch any more connections\n");
  while (others > 0) {
    unregister_readfd(1000 + --others);
  }
  EXPECT_TRUE(connects());
}

TEST_F(EventSubscriptions, RequestsBringALostConnectionBackWhereNoAlarmCanBeSet) {
  subscribe_and_connect();
  {
    const FailingAlarms failing;
    switch_.close_connections();
    ASSERT_TRUE(run_main_loop_until([] { return watched_descriptors() == 0; }));
    EXPECT_EQ(LogCapture::take(),
              (std::vector{log_prefix() + "the switch has closed the connection\n", no_alarm()}));
    clock_.pass_ms(Backoff::kFirstMs - 1);
    request_comes();
    EXPECT_EQ(watched_descriptors(), 0) << "the switch is left alone";
    clock_.pass_ms(1);
    request_comes();
    ASSERT_TRUE(is_subscribed(2));
  }
  EXPECT_EQ(LogCapture::take(),
            std::vector{log_prefix() + "the switch is connected; connections lost so far: 1\n"});
  tell(1);
  EXPECT_TRUE(is_handled(1));
}

TEST_F(EventSubscriptions, ARequestSetsTheAlarmThatCouldNotBeSet) {
  {
    const FailingAlarms failing;
    subscribe();
  }
  EXPECT_EQ(LogCapture::take(), std::vector{no_alarm()});
  EXPECT_FALSE(has_alarm());
  request_comes();
  EXPECT_TRUE(has_alarm());
  EXPECT_TRUE(connects());
  request_comes();
  EXPECT_FALSE(has_alarm());
}

TEST_F(EventSubscriptions, ASwitchThatDoesNotGreetIsGivenUpWithoutAnAlarm) {
  const FailingAlarms failing;
  set_deadline_ms(1234);
  switch_.greet_with({});
  subscribe();
  clock_.pass_ms(1);
  request_comes();
  EXPECT_EQ(watched_descriptors(), 1);
  clock_.pass_ms(1233);
  request_comes();
  EXPECT_EQ(watched_descriptors(), 1);
  clock_.pass_ms(1);
  request_comes();
  EXPECT_EQ(watched_descriptors(), 0);
  EXPECT_EQ(LogCapture::take(),
            (std::vector{no_alarm(), log_prefix() + "the switch does not greet in time\n"}));
}

TEST_F(EventSubscriptions, AnotherSubscriptionDoesNotHurryASwitchThatHasNoAlarmForItsHello) {
  set_deadline_ms(1234);
  switch_.greet_with({});
  subscribe<protocol::kPortInconsistencyClass>();
  {
    const FailingAlarms failing;
    ASSERT_TRUE(ring_next_alarm());
  }
  subscribe<protocol::kLoopInconsistencyClass>();
  EXPECT_EQ(watched_descriptors(), 1);
  EXPECT_FALSE(has_alarm());
  EXPECT_EQ(LogCapture::take(), std::vector{no_alarm()});
  clock_.pass_ms(234);
  request_comes();
  EXPECT_EQ(ring_next_alarm(), 1000U);
}

TEST_F(EventSubscriptions, AnotherSubscriptionDoesNotEndTheBackoffThatHasNoAlarm) {
  subscribe<protocol::kPortInconsistencyClass>();
  ASSERT_TRUE(connects());
  {
    const FailingAlarms failing;
    switch_.close_connections();
    ASSERT_TRUE(run_main_loop_until([] { return watched_descriptors() == 0; }));
  }
  subscribe<protocol::kLoopInconsistencyClass>();
  EXPECT_FALSE(has_alarm());
  clock_.pass_ms(40);
  request_comes();
  EXPECT_EQ(ring_next_alarm(), 60U);
  ASSERT_TRUE(is_subscribed(2));
}

TEST_F(EventSubscriptions, ASubscriptionThatEndsNeedsNoAlarmAnyMore) {
  {
    const FailingAlarms failing;
    subscribe();
    unsubscribe_all();
  }
  request_comes();
  EXPECT_FALSE(has_alarm());
}

TEST_F(EventSubscriptions, AHelloThatFindsNoFreeDescriptorIsNamedAsSuch) {
  subscribe();
  {
    // For the two ends of the connection.
    const FullDescriptorTable full(2);
    if (!full.is_enforced()) {
      GTEST_SKIP() << "nothing here can bound the kernel's table";
    }
    ASSERT_TRUE(ring_next_alarm());
    ASSERT_TRUE(is_lost());
  }
  EXPECT_EQ(LogCapture::take(),
            std::vector{log_prefix() +
                        "the agent cannot take the image's descriptor: too many open files, or a security "
                        "policy forbids it\n"});
  EXPECT_TRUE(connects());
}

TEST_F(EventSubscriptions, AHandlerMayEndTheSubscription) {
  subscribe_and_connect();
  in_handler = [] { unsubscribe_all(); };
  tell(1);
  tell(2);
  ASSERT_TRUE(is_handled(1));
  EXPECT_EQ(watched_descriptors(), 0);
  EXPECT_FALSE(has_alarm());
  EXPECT_EQ(handled.size(), 1U);
}

TEST_F(EventSubscriptions, AHandlerMaySubscribeAnew) {
  subscribe_and_connect();
  in_handler = [] {
    unsubscribe_all();
    subscribe<protocol::kRootInconsistencyClass>();
    in_handler = nullptr;
  };
  tell(1);
  tell(2);
  ASSERT_TRUE(is_handled(1));
  EXPECT_EQ(handled.size(), 1U);
  ASSERT_TRUE(connects());
  EXPECT_EQ(classes_of(switch_.subscriptions()[1]), std::vector{protocol::kRootInconsistencyClass});
  tell(1, kAppeared, protocol::kRootInconsistencyClass);
  EXPECT_TRUE(is_handled(2));
}

TEST_F(EventSubscriptions, AHandlerMayAskTheSwitch) {
  subscribe_and_connect();
  in_handler = [] { EXPECT_TRUE(switch_answers()); };
  tell(1);
  tell(2);
  EXPECT_TRUE(is_handled(2));
}

struct BadEventGreeting {
  const char *name;
  std::function<void(Greeting *)> damage;
};

// Keeps addresses out of the names of the tests.
void PrintTo(const BadEventGreeting &parameter, std::ostream *out) { *out << parameter.name; }

const BadEventGreeting kBadEventGreetings[] = {
    {"WithoutDescriptor", [](Greeting *greeting) { greeting->descriptors.clear(); }},
    {"WithTwoDescriptors",
     [](Greeting *greeting) { greeting->descriptors.push_back(greeting->descriptors.front()); }},
    {"OfAnotherMagic", [](Greeting *greeting) { put32(&greeting->packet, 0, 0); }},
    {"OfAnotherVersion",
     [](Greeting *greeting) { greeting->packet[offsetof(wire::MessageHeader, version)] += 1; }},
    {"ThatIsAnEvent",
     [](Greeting *greeting) {
       greeting->packet = make_event_packet(1, protocol::kLoopInconsistencyClass, kAppeared);
     }},
    {"TooShort", [](Greeting *greeting) { greeting->packet.pop_back(); }},
    {"TooLong", [](Greeting *greeting) { greeting->packet.push_back(0); }},
    {"LongerThanAnyEvent", [](Greeting *greeting) { greeting->packet.resize(4096); }},
};

class BadEventGreetings : public EventSubscriptions, public testing::WithParamInterface<BadEventGreeting> {};

TEST_P(BadEventGreetings, IsRefusedAndLeavesNothingBehind) {
  Greeting greeting = switch_.good_greeting();
  GetParam().damage(&greeting);
  switch_.greet_with(greeting);
  const size_t descriptors = open_descriptors();
  subscribe();
  ASSERT_TRUE(ring_next_alarm());
  ASSERT_TRUE(is_lost());
  switch_.close_connections();
  EXPECT_EQ(open_descriptors(), descriptors);
  EXPECT_TRUE(switch_.subscriptions().empty());
  EXPECT_EQ(LogCapture::take(),
            std::vector{log_prefix() + "the switch has sent something that is not a valid message\n"});
  switch_.greet_with(switch_.good_greeting());
  EXPECT_TRUE(connects());
}

INSTANTIATE_TEST_SUITE_P(Greetings, BadEventGreetings, testing::ValuesIn(kBadEventGreetings),
                         [](const auto &parameter) { return std::string(parameter.param.name); });

// What must not come instead of the second event.
struct BadSecond {
  const char *name;
  std::function<Bytes()> make;
};

// Keeps addresses out of the names of the tests.
void PrintTo(const BadSecond &parameter, std::ostream *out) { *out << parameter.name; }

const BadSecond kBadSeconds[] = {
    {"TheFirstOneAgain", [] { return make_event_packet(1, protocol::kLoopInconsistencyClass, kAppeared); }},
    {"TheThirdOne", [] { return make_event_packet(3, protocol::kLoopInconsistencyClass, kAppeared); }},
    {"AnUnknownClass", [] { return make_event_packet(2, 4711, kAppeared); }},
    {"AReply", [] { return make_reply_packet(2, CMD_OK); }},
    {"AHello", [] { return make_hello(4096); }},
    {"APartOfIt",
     [] {
       Bytes packet = make_event_packet(2, protocol::kLoopInconsistencyClass, kAppeared);
       packet.resize(packet.size() / 2);
       return packet;
     }},
    {"MoreThanAnyEvent",
     [] {
       Bytes packet = make_event_packet(2, protocol::kLoopInconsistencyClass, kAppeared);
       packet.resize(1000);
       put32(&packet, offsetof(wire::MessageHeader, length), 1000);
       return packet;
     }},
};

class BadSecondEvents : public EventSubscriptions, public testing::WithParamInterface<BadSecond> {};

TEST_P(BadSecondEvents, EndsTheConnectionWithOneLine) {
  subscribe_and_connect();
  tell(1);
  switch_.tell(GetParam().make());
  tell(2);
  ASSERT_TRUE(is_lost());
  EXPECT_EQ(handled.size(), 1U);
  EXPECT_EQ(LogCapture::take(),
            std::vector{log_prefix() + "the switch has sent something that is not a valid message\n"});
  ASSERT_TRUE(connects());
  tell(1, kVanished);
  ASSERT_TRUE(is_handled(2));
  EXPECT_EQ(handled[1], expected(protocol::kLoopInconsistencyClass, kVanished));
}

INSTANTIATE_TEST_SUITE_P(Events, BadSecondEvents, testing::ValuesIn(kBadSeconds),
                         [](const auto &parameter) { return std::string(parameter.param.name); });

TEST_F(EventSubscriptions, MalformedEventsAreCountedAndNotLoggedOneByOne) {
  constexpr uint32_t kNotDue = 99;
  const auto malformed = [&](int times) {
    for (int i = 0; i < times; ++i) {
      tell(kNotDue);
      ASSERT_TRUE(is_lost());
      ASSERT_TRUE(connects());
    }
  };
  subscribe_and_connect();
  malformed(1);
  EXPECT_EQ(LogCapture::take(),
            (std::vector{log_prefix() + "the switch has sent something that is not a valid message\n",
                         log_prefix() + "the switch is connected; connections lost so far: 1\n"}));
  malformed(4);
  clock_.pass_ms(59999);
  tell(1);
  ASSERT_TRUE(is_handled(1));
  EXPECT_TRUE(LogCapture::take().empty());
  clock_.pass_ms(1);
  tell(2);
  tell(3);
  ASSERT_TRUE(is_handled(3));
  EXPECT_EQ(LogCapture::take(), std::vector{log_prefix() + "4 more messages were not valid\n"});
  malformed(3);
  LogCapture::take();
  unsubscribe_all();
  EXPECT_EQ(LogCapture::take(), std::vector{log_prefix() + "2 more messages were not valid\n"});
}

TEST_F(EventSubscriptions, MalformedHellosAreCountedWhereNoGoodOneComesBetween) {
  const std::string one = log_prefix() + "the switch has sent something that is not a valid message\n";
  const auto malformed = [&](int times) {
    for (int i = 0; i < times; ++i) {
      ASSERT_TRUE(ring_next_alarm());
      ASSERT_TRUE(is_lost());
    }
  };
  switch_.greet_with({Bytes(7, 0xFF), {}});
  subscribe();
  malformed(1);
  EXPECT_EQ(LogCapture::take(), std::vector{one});
  malformed(5);
  EXPECT_TRUE(LogCapture::take().empty());
  clock_.pass_ms(60000);
  malformed(1);
  EXPECT_EQ(LogCapture::take(), (std::vector{log_prefix() + "5 more messages were not valid\n", one}));
  malformed(5);
  clock_.pass_ms(60000);
  switch_.greet_with(switch_.good_greeting());
  ASSERT_TRUE(connects());
  EXPECT_EQ(LogCapture::take(),
            (std::vector{log_prefix() + "the switch is connected; connections lost so far: 0\n",
                         log_prefix() + "5 more messages were not valid\n"}));
}

// EventCheck tries many more; these go all the way to the handlers.
TEST_F(EventSubscriptions, NoDamagedEventIsBelieved) {
  constexpr uint32_t kSeed = 815;
  constexpr int kRandomCases = 100;
  RecordProperty("seed", kSeed);
  Random random = seeded(kSeed);
  const Bytes good = make_event_packet(1, protocol::kLoopInconsistencyClass, kAppeared);
  std::vector<Bytes> cases = damaged_everywhere(good);
  for (int i = 0; i < kRandomCases; ++i) {
    cases.push_back(good);
    mutate(&cases.back(), &random);
  }
  const size_t descriptors = open_descriptors();
  subscribe<protocol::kPortInconsistencyClass>();
  subscribe<protocol::kLoopInconsistencyClass>();
  subscribe<protocol::kRootInconsistencyClass>();
  ASSERT_TRUE(connects());
  for (size_t i = 0; i < cases.size(); ++i) {
    SCOPED_TRACE("seed " + std::to_string(kSeed) + ", case " + std::to_string(i));
    const Bytes &damaged = cases[i];
    handled.clear();
    switch_.tell(damaged);
    tell(2);
    // Either the first one was good enough, and the second one follows; or neither is of any use.
    ASSERT_TRUE(run_main_loop_until([] { return handled.size() == 2 || has_alarm(); }));
    if (has_alarm()) {
      ASSERT_TRUE(handled.empty());
    } else {
      ASSERT_EQ(damaged.size(), good.size());
      ASSERT_TRUE(std::equal(good.begin(), good.begin() + sizeof(wire::MessageHeader), damaged.begin()));
      ASSERT_EQ(handled[0].notification_class, get32(damaged, offsetof(wire::Event, notification_class)));
      ASSERT_EQ(handled[0].payload, Bytes(damaged.begin() + sizeof(wire::Event), damaged.end()));
      switch_.close_connections();
      ASSERT_TRUE(is_lost());
    }
    switch_.close_connections();
    ASSERT_EQ(open_descriptors(), descriptors);
    ASSERT_TRUE(connects());
  }
}

// What an agent does when it goes into the background: the subscription is the parent's, the main loop the
// child's.
//
// The switch runs in a thread of its own, and a thread that allocates while the process forks may leave the
// child a locked heap: it is stopped meanwhile.
TEST_F(EventSubscriptions, ASubscriptionFromBeforeAForkWorksBehindIt) {
  subscribe();
  switch_.stop();
  int started[2];
  ASSERT_EQ(pipe(started), 0);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    char octet = 0;
    const bool is_started = read(started[0], &octet, 1) == 1;
    const bool rang = is_started && ring_next_alarm().has_value();
    const bool works =
        rang && is_handled(1) && handled[0] == expected(protocol::kLoopInconsistencyClass, kAppeared);
    // Not by exiting: what the test itself has allocated is nobody's leak.
    kill(getpid(), works ? SIGKILL : SIGTERM);
  }
  switch_.start();
  EXPECT_EQ(write(started[1], "", 1), 1);
  close(started[0]);
  close(started[1]);
  EXPECT_TRUE(run_main_loop_until([this] { return !switch_.subscriptions().empty(); }));
  tell(1);
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(WTERMSIG(status), SIGKILL);
  EXPECT_TRUE(handled.empty());
}

TEST_F(EventSubscriptions, AForkedChildThatDropsItDoesNotHurtItsParent) {
  subscribe_and_connect();
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    stpplatform::event_subscription().reset();
    kill(getpid(), SIGKILL);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  tell(1);
  EXPECT_TRUE(is_handled(1));
  EXPECT_EQ(switch_.connections(), 1U);
}

}  // namespace
