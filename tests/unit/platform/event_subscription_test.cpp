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

#include <csignal>
#include <cstddef>
#include <cstring>
#include <functional>

#include "agent_session.h"
#include "backoff.h"
#include "connection.h"
#include "failing_alarms.h"
#include "full_descriptor_table.h"
#include "mutation.h"
#include "platform/agent_ext.h"
#include "platform/xport.h"
#include "platform_test.h"

namespace wire = stpplatform::wire;
using stpplatform::Backoff;

namespace {

constexpr uint32_t kPortClass = 17421;
constexpr uint32_t kLoopClass = 17422;
constexpr uint32_t kRootClass = 17423;
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

class EventSubscriptionTest : public PlatformTest {
 protected:
  EventSubscriptionTest() {
    handled.clear();
    in_handler = nullptr;
  }

  ~EventSubscriptionTest() override {
    unsubscribe_all();
    EXPECT_FALSE(has_alarm());
  }

  template <uint32_t kClass = kLoopClass>
  static void subscribe() {
    ASSERT_EQ(register_for_notification(kClass, handle<kClass>), 0);
    ASSERT_EQ(set_notification_enable_disable_status(kClass, 1), 0);
  }

  static void unsubscribe_all() {
    for (const uint32_t notification_class : {kPortClass, kLoopClass, kRootClass}) {
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
            uint32_t notification_class = kLoopClass) {
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

TEST_F(EventSubscriptionTest, nothing_is_done_without_a_subscription) {
  EXPECT_TRUE(switch_answers());
  EXPECT_FALSE(has_alarm());
  EXPECT_EQ(switch_.connections(), 1U);
}

TEST_F(EventSubscriptionTest, nothing_is_done_before_the_main_loop_runs) {
  const size_t descriptors = open_descriptors();
  subscribe();
  EXPECT_EQ(open_descriptors(), descriptors);
  EXPECT_EQ(watched_descriptors(), 0);
  EXPECT_EQ(ring_next_alarm(), 1U);
  EXPECT_EQ(watched_descriptors(), 1);
}

TEST_F(EventSubscriptionTest, one_subscription_names_all_classes) {
  subscribe<kPortClass>();
  subscribe<kLoopClass>();
  subscribe<kRootClass>();
  ASSERT_TRUE(connects());
  EXPECT_EQ(switch_.connections(), 1U);
  ASSERT_EQ(switch_.subscriptions().size(), 1U);
  EXPECT_EQ(classes_of(switch_.subscriptions()[0]), (std::vector{kPortClass, kLoopClass, kRootClass}));
  EXPECT_FALSE(has_alarm()) << "nothing is left to do";
  EXPECT_TRUE(LogCapture::take().empty());
}

TEST_F(EventSubscriptionTest, a_subscription_has_the_form_of_the_wire) {
  subscribe_and_connect();
  EXPECT_EQ(switch_.subscriptions()[0],
            (Bytes{'W', 'P', 'T', 'S', 1, 0, 4, 0, 24, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0x0E, 0x44, 0, 0}));
}

TEST_F(EventSubscriptionTest, appearing_and_vanishing_are_delivered_in_order_with_their_payload) {
  subscribe<kPortClass>();
  subscribe<kLoopClass>();
  ASSERT_TRUE(connects());
  constexpr EventWords kBits = {4094, 0x16000000, 0x03000000, 4};
  tell(1, kAppeared);
  tell(2, kVanished);
  tell(3, kBits, kPortClass);
  ASSERT_TRUE(is_handled(3));
  EXPECT_EQ(handled, (std::vector{expected(kLoopClass, kAppeared), expected(kLoopClass, kVanished),
                                  expected(kPortClass, kBits)}));
  EXPECT_EQ(handled[2].payload, (Bytes{0, 0, 0x0F, 0xFE, 0x16, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 4}));
}

TEST_F(EventSubscriptionTest, an_event_of_a_class_that_is_not_enabled_is_dropped) {
  subscribe_and_connect();
  ASSERT_EQ(set_notification_enable_disable_status(kLoopClass, 0), 0);
  tell(1, kAppeared);
  EXPECT_EQ(run_main_loop_once(), 1);
  EXPECT_TRUE(handled.empty());
  ASSERT_EQ(set_notification_enable_disable_status(kLoopClass, 1), 0);
  tell(2, kVanished);
  ASSERT_TRUE(is_handled(1));
  EXPECT_EQ(handled, std::vector{expected(kLoopClass, kVanished)});
}

TEST_F(EventSubscriptionTest, an_event_of_a_class_without_handler_is_dropped) {
  subscribe_and_connect();
  tell(1, kAppeared, kRootClass);
  tell(2, kVanished);
  ASSERT_TRUE(is_handled(1));
  EXPECT_EQ(handled, std::vector{expected(kLoopClass, kVanished)});
  EXPECT_TRUE(LogCapture::take().empty());
}

TEST_F(EventSubscriptionTest, a_class_more_or_less_is_a_new_subscription_on_the_same_connection) {
  subscribe_and_connect();
  subscribe<kRootClass>();
  ASSERT_TRUE(connects());
  EXPECT_EQ(classes_of(switch_.subscriptions()[1]), (std::vector{kLoopClass, kRootClass}));
  ASSERT_EQ(unregister_for_notification(kLoopClass), 0);
  ASSERT_TRUE(connects());
  EXPECT_EQ(classes_of(switch_.subscriptions()[2]), (std::vector{kRootClass}));
  EXPECT_EQ(switch_.connections(), 1U);
  tell(1, kAppeared, kRootClass);
  ASSERT_TRUE(is_handled(1));
}

TEST_F(EventSubscriptionTest, another_handler_of_a_class_is_no_new_subscription) {
  subscribe_and_connect();
  subscribe();
  EXPECT_FALSE(has_alarm());
}

TEST_F(EventSubscriptionTest, a_class_that_is_subscribed_to_while_the_connection_is_made_is_named) {
  subscribe();
  ASSERT_TRUE(ring_next_alarm());
  subscribe<kRootClass>();
  ASSERT_TRUE(is_subscribed(1));
  EXPECT_EQ(classes_of(switch_.subscriptions()[0]), (std::vector{kLoopClass, kRootClass}));
}

TEST_F(EventSubscriptionTest, the_last_class_takes_everything_along) {
  const size_t descriptors = open_descriptors();
  size_t made = 0;
  for (int i = 0; i < 100; ++i) {
    subscribe<kPortClass>();
    subscribe<kRootClass>();
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

TEST_F(EventSubscriptionTest, a_wakeup_hands_out_so_many_events_and_no_more) {
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

TEST_F(EventSubscriptionTest, a_spurious_wakeup_is_nothing) {
  subscribe_and_connect();
  external_readfdfunc[0](external_readfd[0], external_readfd_data[0]);
  tell(1);
  EXPECT_TRUE(is_handled(1));
}

TEST_F(EventSubscriptionTest, requests_do_not_depend_on_it) {
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

TEST_F(EventSubscriptionTest, it_does_not_depend_on_requests) {
  subscribe_and_connect();
  switch_.answer_with([](const Bytes &) { return Answer{{Bytes(7, 0xFF)}}; });
  EXPECT_EQ(ask(1), CMD_BAD_REPLY);
  EXPECT_EQ(ask(1), CMD_UNREACHABLE) << "left alone";
  tell(1);
  EXPECT_TRUE(is_handled(1));
}

TEST_F(EventSubscriptionTest, a_switch_that_restarts_is_subscribed_to_again) {
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

TEST_F(EventSubscriptionTest, what_was_sent_before_the_switch_went_is_delivered) {
  subscribe_and_connect();
  tell(1);
  tell(2);
  switch_.stop();
  ASSERT_TRUE(is_lost());
  EXPECT_EQ(handled.size(), 2U);
}

TEST_F(EventSubscriptionTest, an_absent_switch_is_tried_less_and_less_and_logged_once) {
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

TEST_F(EventSubscriptionTest, a_connection_that_stood_long_starts_the_backoff_over) {
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

TEST_F(EventSubscriptionTest, a_switch_that_does_not_greet_is_given_up_after_the_deadline) {
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

TEST_F(EventSubscriptionTest, a_main_loop_without_room_is_tried_again) {
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

TEST_F(EventSubscriptionTest, requests_bring_a_lost_connection_back_where_no_alarm_can_be_set) {
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

TEST_F(EventSubscriptionTest, a_request_sets_the_alarm_that_could_not_be_set) {
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

TEST_F(EventSubscriptionTest, a_switch_that_does_not_greet_is_given_up_without_an_alarm) {
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

TEST_F(EventSubscriptionTest, a_subscription_that_ends_needs_no_alarm_any_more) {
  {
    const FailingAlarms failing;
    subscribe();
    unsubscribe_all();
  }
  request_comes();
  EXPECT_FALSE(has_alarm());
}

TEST_F(EventSubscriptionTest, a_hello_that_finds_no_free_descriptor_is_named_as_such) {
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
                        "the agent cannot take the snapshot's descriptor: too many open files, or a security "
                        "policy forbids it\n"});
  EXPECT_TRUE(connects());
}

TEST_F(EventSubscriptionTest, a_handler_may_end_the_subscription) {
  subscribe_and_connect();
  in_handler = [] { unsubscribe_all(); };
  tell(1);
  tell(2);
  ASSERT_TRUE(is_handled(1));
  EXPECT_EQ(watched_descriptors(), 0);
  EXPECT_FALSE(has_alarm());
  EXPECT_EQ(handled.size(), 1U);
}

TEST_F(EventSubscriptionTest, a_handler_may_subscribe_anew) {
  subscribe_and_connect();
  in_handler = [] {
    unsubscribe_all();
    subscribe<kRootClass>();
    in_handler = nullptr;
  };
  tell(1);
  tell(2);
  ASSERT_TRUE(is_handled(1));
  EXPECT_EQ(handled.size(), 1U);
  ASSERT_TRUE(connects());
  EXPECT_EQ(classes_of(switch_.subscriptions()[1]), std::vector{kRootClass});
  tell(1, kAppeared, kRootClass);
  EXPECT_TRUE(is_handled(2));
}

TEST_F(EventSubscriptionTest, a_handler_may_ask_the_switch) {
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
    {"without_descriptor", [](Greeting *greeting) { greeting->descriptors.clear(); }},
    {"with_two_descriptors",
     [](Greeting *greeting) { greeting->descriptors.push_back(greeting->descriptors.front()); }},
    {"of_another_magic", [](Greeting *greeting) { put32(&greeting->packet, 0, 0); }},
    {"of_another_version",
     [](Greeting *greeting) { greeting->packet[offsetof(wire::MessageHeader, version)] += 1; }},
    {"that_is_an_event",
     [](Greeting *greeting) { greeting->packet = make_event_packet(1, kLoopClass, kAppeared); }},
    {"too_short", [](Greeting *greeting) { greeting->packet.pop_back(); }},
    {"too_long", [](Greeting *greeting) { greeting->packet.push_back(0); }},
    {"longer_than_any_event", [](Greeting *greeting) { greeting->packet.resize(4096); }},
};

class BadEventGreetingTest : public EventSubscriptionTest,
                             public testing::WithParamInterface<BadEventGreeting> {};

TEST_P(BadEventGreetingTest, is_refused_and_leaves_nothing_behind) {
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

INSTANTIATE_TEST_SUITE_P(greetings, BadEventGreetingTest, testing::ValuesIn(kBadEventGreetings),
                         [](const auto &parameter) { return std::string(parameter.param.name); });

// What must not come instead of the second event.
struct BadSecond {
  const char *name;
  std::function<Bytes()> make;
};

// Keeps addresses out of the names of the tests.
void PrintTo(const BadSecond &parameter, std::ostream *out) { *out << parameter.name; }

const BadSecond kBadSeconds[] = {
    {"the_first_one_again", [] { return make_event_packet(1, kLoopClass, kAppeared); }},
    {"the_third_one", [] { return make_event_packet(3, kLoopClass, kAppeared); }},
    {"an_unknown_class", [] { return make_event_packet(2, 4711, kAppeared); }},
    {"a_reply", [] { return make_reply_packet(2, CMD_OK); }},
    {"a_hello", [] { return make_hello(4096); }},
    {"a_part_of_it",
     [] {
       Bytes packet = make_event_packet(2, kLoopClass, kAppeared);
       packet.resize(packet.size() / 2);
       return packet;
     }},
    {"more_than_any_event",
     [] {
       Bytes packet = make_event_packet(2, kLoopClass, kAppeared);
       packet.resize(1000);
       put32(&packet, offsetof(wire::MessageHeader, length), 1000);
       return packet;
     }},
};

class BadSecondTest : public EventSubscriptionTest, public testing::WithParamInterface<BadSecond> {};

TEST_P(BadSecondTest, ends_the_connection_with_one_line) {
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
  EXPECT_EQ(handled[1], expected(kLoopClass, kVanished));
}

INSTANTIATE_TEST_SUITE_P(events, BadSecondTest, testing::ValuesIn(kBadSeconds),
                         [](const auto &parameter) { return std::string(parameter.param.name); });

TEST_F(EventSubscriptionTest, malformed_events_are_counted_and_not_logged_one_by_one) {
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

// EventCheckTest tries many more; these go all the way to the handlers.
TEST_F(EventSubscriptionTest, no_damaged_event_is_believed) {
  constexpr uint32_t kSeed = 815;
  constexpr int kRandomCases = 100;
  RecordProperty("seed", kSeed);
  Random random = seeded(kSeed);
  const Bytes good = make_event_packet(1, kLoopClass, kAppeared);
  std::vector<Bytes> cases = damaged_everywhere(good);
  for (int i = 0; i < kRandomCases; ++i) {
    cases.push_back(good);
    mutate(&cases.back(), &random);
  }
  const size_t descriptors = open_descriptors();
  subscribe<kPortClass>();
  subscribe<kLoopClass>();
  subscribe<kRootClass>();
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
TEST_F(EventSubscriptionTest, a_subscription_from_before_a_fork_works_behind_it) {
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
    const bool works = rang && is_handled(1) && handled[0] == expected(kLoopClass, kAppeared);
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

TEST_F(EventSubscriptionTest, a_forked_child_that_drops_it_does_not_hurt_its_parent) {
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
