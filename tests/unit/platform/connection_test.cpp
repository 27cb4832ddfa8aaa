// When the connection to the switch is made, kept, dropped and made again.
#include <fcntl.h>
#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>
//
#include <net-snmp/library/fd_event_manager.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <fstream>
#include <functional>

#include "backoff.h"
#include "connection.h"
#include "failing_calls.h"
#include "full_descriptor_table.h"
#include "platform/im.h"
#include "platform_test.h"

namespace wire = stpplatform::wire;
using stpplatform::Backoff;

namespace {

class Connections : public PlatformTest {
 protected:
  // A switch that hears everything and says nothing.
  void silence() {
    switch_.answer_with([](const Bytes &) { return Answer{}; });
  }

  void answer_normally() { switch_.answer_with(FakeSwitch::echo); }
};

// How many times the process has an image in its memory.
size_t mapped_images() {
  std::ifstream maps("/proc/self/maps");
  size_t count = 0;
  for (std::string line; std::getline(maps, line);) {
    count += line.find("/memfd:image") == std::string::npos ? 0U : 1U;
  }
  return count;
}

TEST_F(Connections, OneConnectionServesAllRequests) {
  for (int i = 0; i < 5; ++i) {
    EXPECT_TRUE(switch_answers());
  }
  EXPECT_EQ(switch_.connections(), 1U);
  EXPECT_TRUE(LogCapture::take().empty());
}

TEST_F(Connections, ASilentSwitchCostsTheRequestATimeout) {
  EXPECT_TRUE(switch_answers());
  silence();
  set_deadline_ms(kShortMs);
  EXPECT_EQ(ask(1), CMD_TIMEOUT);
}

TEST_F(Connections, ASwitchThatDoesNotEvenGreetCostsATimeout) {
  switch_.greet_with({});
  set_deadline_ms(kShortMs);
  EXPECT_EQ(ask(1), CMD_TIMEOUT);
}

TEST_F(Connections, WithoutASwitchARequestFailsAtOnce) {
  switch_.stop();
  EXPECT_EQ(ask(1), CMD_UNREACHABLE);
  EXPECT_EQ(LogCapture::take(),
            std::vector<std::string>{"stpplatform: " + switch_.path() + ": No such file or directory\n"});
}

TEST_F(Connections, ASwitchWhoseQueueIsFullIsUnreachable) {
  // Nobody accepts here, and nobody waits to be accepted.
  const std::string path = switch_.path() + "-full";
  OwnedFd listener(socket(AF_UNIX, SOCK_SEQPACKET, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(bind(listener.get(), reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
  ASSERT_EQ(listen(listener.get(), 0), 0);
  std::vector<OwnedFd> waiting;
  do {
    waiting.emplace_back(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK, 0));
  } while (connect(waiting.back().get(), reinterpret_cast<sockaddr *>(&address), sizeof address) == 0);
  set_environment("STPPLATFORM_SOCKET", path);
  EXPECT_EQ(ask(1), CMD_UNREACHABLE);
}

TEST_F(Connections, ADeadSwitchIsLeftAloneUntilTheBackoffHasPassed) {
  ASSERT_TRUE(switch_answers());
  silence();
  set_deadline_ms(kShortMs);
  EXPECT_EQ(ask(1), CMD_TIMEOUT);
  answer_normally();
  set_deadline_ms(kPatientMs);
  uint32_t next = 0;
  clock_.pass_ms(Backoff::kFirstMs - 1);
  EXPECT_EQ(ask(1), CMD_UNREACHABLE);
  EXPECT_EQ(im_get_next_ifindex(0, &next), CMD_UNREACHABLE);
  EXPECT_EQ(switch_.connections(), 1U);
  clock_.pass_ms(1);
  EXPECT_TRUE(switch_answers());
  EXPECT_EQ(switch_.connections(), 2U);
}

TEST_F(Connections, BackoffDoublesUpToItsLimitAndAReplyResetsIt) {
  switch_.stop();
  for (const uint64_t wait : {100U, 200U, 400U, 800U, 1600U, 3200U, 5000U, 5000U}) {
    EXPECT_EQ(ask(1), CMD_UNREACHABLE);
    switch_.start();
    clock_.pass_ms(wait - 1);
    EXPECT_EQ(ask(1), CMD_UNREACHABLE) << wait;
    EXPECT_EQ(switch_.connections(), 0U) << wait;
    switch_.stop();
    clock_.pass_ms(1);
  }
  EXPECT_EQ(ask(1), CMD_UNREACHABLE);
  switch_.start();
  wait_for_backoff();
  EXPECT_TRUE(switch_answers());
  silence();
  set_deadline_ms(kShortMs);
  EXPECT_EQ(ask(1), CMD_TIMEOUT);
  answer_normally();
  set_deadline_ms(kPatientMs);
  clock_.pass_ms(Backoff::kFirstMs);
  EXPECT_TRUE(switch_answers());
}

TEST_F(Connections, AGreetingAloneDoesNotResetTheBackoff) {
  silence();
  set_deadline_ms(kShortMs);
  EXPECT_EQ(ask(1), CMD_TIMEOUT);
  clock_.pass_ms(Backoff::kFirstMs);
  EXPECT_EQ(ask(1), CMD_TIMEOUT);
  clock_.pass_ms(Backoff::kFirstMs);
  EXPECT_EQ(ask(1), CMD_UNREACHABLE);
  clock_.pass_ms(Backoff::kFirstMs);
  EXPECT_EQ(ask(1), CMD_TIMEOUT);
}

TEST_F(Connections, FailureAndRecoveryAreLoggedOnceEach) {
  silence();
  set_deadline_ms(kShortMs);
  for (int i = 0; i < 3; ++i) {
    EXPECT_NE(ask(1), CMD_OK);
    wait_for_backoff();
  }
  answer_normally();
  set_deadline_ms(kPatientMs);
  EXPECT_TRUE(switch_answers());
  EXPECT_TRUE(switch_answers());
  const std::string prefix = "stpplatform: " + switch_.path();
  EXPECT_EQ(LogCapture::take(), (std::vector<std::string>{prefix + ": the switch does not answer in time\n",
                                                          prefix + ": the switch answers again\n"}));
}

// Bad and good replies take turns, as a switch has them that answers some commands wrongly.
TEST_F(Connections, MalformedRepliesAreCountedAndNotLoggedOneByOne) {
  const std::string prefix = "stpplatform: " + switch_.path();
  const std::vector<std::string> one_and_its_end = {
      prefix + ": the switch has sent something that is not a valid message\n",
      prefix + ": the switch answers again\n"};
  const auto malformed = [&](int times) {
    for (int i = 0; i < times; ++i) {
      switch_.answer_with([](const Bytes &) { return Answer{{Bytes(7, 0xFF)}}; });
      EXPECT_EQ(ask(1), CMD_BAD_REPLY);
      answer_normally();
      clock_.pass_ms(Backoff::kFirstMs);
      EXPECT_TRUE(switch_answers());
    }
  };
  malformed(1);
  EXPECT_EQ(LogCapture::take(), one_and_its_end);
  malformed(5);
  clock_.pass_ms(59399);
  EXPECT_TRUE(switch_answers());
  EXPECT_TRUE(LogCapture::take().empty());
  clock_.pass_ms(1);
  EXPECT_TRUE(switch_answers());
  EXPECT_TRUE(switch_answers());
  EXPECT_EQ(LogCapture::take(), std::vector{prefix + ": 5 more messages were not valid\n"});
  malformed(1);
  EXPECT_EQ(LogCapture::take(), one_and_its_end);
  malformed(2);
  stpplatform::connection().reset();
  EXPECT_EQ(LogCapture::take(), std::vector{prefix + ": 2 more messages were not valid\n"});
}

TEST_F(Connections, MalformedRepliesAreCountedWhereNoGoodOneComesBetween) {
  const std::string prefix = "stpplatform: " + switch_.path();
  const std::string one = prefix + ": the switch has sent something that is not a valid message\n";
  const auto malformed = [&](int times) {
    switch_.answer_with([](const Bytes &) { return Answer{{Bytes(7, 0xFF)}}; });
    for (int i = 0; i < times; ++i) {
      clock_.pass_ms(Backoff::kLongestMs);
      EXPECT_EQ(ask(1), CMD_BAD_REPLY);
    }
  };
  malformed(1);
  EXPECT_EQ(LogCapture::take(), std::vector{one});
  malformed(5);
  EXPECT_TRUE(LogCapture::take().empty());
  clock_.pass_ms(60000);
  malformed(1);
  EXPECT_EQ(LogCapture::take(), (std::vector{prefix + ": 5 more messages were not valid\n", one}));
  malformed(5);
  clock_.pass_ms(60000);
  answer_normally();
  EXPECT_TRUE(switch_answers());
  EXPECT_EQ(LogCapture::take(), (std::vector{prefix + ": the switch answers again\n",
                                             prefix + ": 5 more messages were not valid\n"}));
}

TEST_F(Connections, AMalformedReplyIsLoggedAfterAnotherFailure) {
  const std::string prefix = "stpplatform: " + switch_.path();
  switch_.answer_with([](const Bytes &) { return Answer{{}, false, true}; });
  EXPECT_EQ(ask(1), CMD_UNREACHABLE);
  wait_for_backoff();
  switch_.answer_with([](const Bytes &) { return Answer{{Bytes(7, 0xFF)}}; });
  EXPECT_EQ(ask(1), CMD_BAD_REPLY);
  EXPECT_EQ(LogCapture::take(),
            (std::vector{prefix + ": the switch has closed the connection\n",
                         prefix + ": the switch has sent something that is not a valid message\n"}));
}

TEST_F(Connections, ASwitchThatGoesAwayIsLoggedWhateverItSentBefore) {
  switch_.answer_with([](const Bytes &) { return Answer{{Bytes(7, 0xFF)}}; });
  EXPECT_EQ(ask(1), CMD_BAD_REPLY);
  answer_normally();
  wait_for_backoff();
  EXPECT_TRUE(switch_answers());
  LogCapture::take();
  switch_.stop();
  EXPECT_EQ(ask(1), CMD_UNREACHABLE);
  EXPECT_EQ(LogCapture::take(),
            std::vector<std::string>{"stpplatform: " + switch_.path() + ": No such file or directory\n"});
}

TEST_F(Connections, ARestartBetweenTwoRequestsIsNotNoticedByTheUser) {
  EXPECT_TRUE(switch_answers());
  switch_.stop();
  switch_.start();
  EXPECT_TRUE(switch_answers());
  EXPECT_EQ(switch_.connections(), 2U);
  EXPECT_TRUE(LogCapture::take().empty());
}

TEST_F(Connections, ASwitchThatGoesAwayWhileIdleTakesTheImageAlongWithoutPenalty) {
  switch_.image().publish({{physical_port(1)}});
  uint32_t next = 0;
  const size_t mapped_by_the_test = mapped_images();
  ASSERT_EQ(im_get_next_ifindex(0, &next), CMD_OK);
  EXPECT_EQ(mapped_images(), mapped_by_the_test + 1);
  switch_.close_connections();
  EXPECT_EQ(run_main_loop_once(), 1);
  EXPECT_EQ(mapped_images(), mapped_by_the_test);
  EXPECT_EQ(watched_descriptors(), 0);
  EXPECT_EQ(im_get_next_ifindex(0, &next), CMD_OK);
  EXPECT_EQ(switch_.connections(), 2U);
  switch_.stop();
  EXPECT_EQ(run_main_loop_once(), 1);
  EXPECT_EQ(im_get_next_ifindex(0, &next), CMD_UNREACHABLE);
}

TEST_F(Connections, TheMainLoopWatchesOneConnectionAtMost) {
  EXPECT_EQ(watched_descriptors(), 0);
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(switch_answers());
    EXPECT_EQ(watched_descriptors(), 1);
    EXPECT_EQ(run_main_loop_once(), 0);
    switch_.stop();
    switch_.start();
  }
  stpplatform::connection().reset();
  EXPECT_EQ(watched_descriptors(), 0);
}

TEST_F(Connections, ASpuriousWakeupKeepsTheConnection) {
  EXPECT_TRUE(switch_answers());
  external_readfdfunc[0](external_readfd[0], external_readfd_data[0]);
  EXPECT_TRUE(switch_answers());
  EXPECT_EQ(switch_.connections(), 1U);
}

TEST_F(Connections, AWakeupThatASignalInterruptsKeepsTheConnection) {
  EXPECT_TRUE(switch_answers());
  failing_calls::fail_next_recv(EINTR);
  external_readfdfunc[0](external_readfd[0], external_readfd_data[0]);
  EXPECT_TRUE(switch_answers());
  EXPECT_EQ(switch_.connections(), 1U);
}

TEST_F(Connections, AnErrorDropsTheIdleConnection) {
  EXPECT_TRUE(switch_answers());
  failing_calls::fail_next_recv(ECONNRESET);
  external_readfdfunc[0](external_readfd[0], external_readfd_data[0]);
  EXPECT_EQ(watched_descriptors(), 0);
  EXPECT_TRUE(switch_answers());
  EXPECT_EQ(switch_.connections(), 2U);
}

TEST_F(Connections, ASwitchThatGoesOnceMoreJustAfterItsRestartIsUnreachable) {
  EXPECT_TRUE(switch_answers());
  failing_calls::fail_next_send(EPIPE, 2);
  EXPECT_EQ(ask(1), CMD_UNREACHABLE);
  EXPECT_EQ(switch_.connections(), 2U);
  EXPECT_EQ(watched_descriptors(), 0);
  wait_for_backoff();
  EXPECT_TRUE(switch_answers());
}

TEST_F(Connections, UnaskedInputDropsTheIdleConnection) {
  EXPECT_TRUE(switch_answers());
  switch_.send_late(0, make_reply_packet(99, CMD_OK));
  EXPECT_EQ(run_main_loop_once(), 1);
  EXPECT_TRUE(switch_answers());
  EXPECT_EQ(switch_.connections(), 2U);
}

TEST_F(Connections, ASwitchThatHangsUpDuringARequestIsUnreachable) {
  switch_.answer_with([](const Bytes &) { return Answer{{}, false, true}; });
  EXPECT_EQ(ask(1), CMD_UNREACHABLE);
  answer_normally();
  EXPECT_EQ(ask(1), CMD_UNREACHABLE) << "left alone";
  wait_for_backoff();
  EXPECT_TRUE(switch_answers());
}

TEST_F(Connections, ALateReplyNeverAnswersTheNextRequest) {
  ASSERT_TRUE(switch_answers());
  silence();
  set_deadline_ms(kShortMs);
  ASSERT_EQ(ask(77), CMD_TIMEOUT);
  ASSERT_TRUE(switch_.has_heard(2));
  const Bytes first = switch_.requests().back();
  answer_normally();
  set_deadline_ms(kPatientMs);
  wait_for_backoff();
  switch_.answer_with([&](const Bytes &request) {
    switch_.send_late(1, FakeSwitch::echo(first).packets.front());
    return FakeSwitch::echo(request);
  });
  EXPECT_TRUE(switch_answers());
}

TEST_F(Connections, AReplyToAnEarlierRequestIsRefused) {
  Bytes first;
  switch_.answer_with([&](const Bytes &request) {
    if (first.empty()) {
      first = request;
    }
    return FakeSwitch::echo(first);
  });
  EXPECT_EQ(ask(1), CMD_OK);
  EXPECT_EQ(ask(2), CMD_BAD_REPLY);
}

TEST_F(Connections, ASecondReplyToARequestDoesNotAnswerTheNextOne) {
  switch_.answer_with([](const Bytes &request) {
    const Bytes reply = FakeSwitch::echo(request).packets.front();
    return Answer{{reply, reply}};
  });
  EXPECT_EQ(ask(1), CMD_OK);
  EXPECT_EQ(ask(2), CMD_BAD_REPLY);
  answer_normally();
  wait_for_backoff();
  EXPECT_TRUE(switch_answers());
}

TEST_F(Connections, AReplyLongerThanAnyMessageIsRefused) {
  switch_.answer_with([](const Bytes &request) {
    Bytes reply = FakeSwitch::echo(request).packets.front();
    reply.resize(wire::kMaxMessageSize + 1);
    put32(&reply, offsetof(wire::MessageHeader, length), wire::kMaxMessageSize + 1);
    return Answer{{reply}};
  });
  EXPECT_EQ(ask(1), CMD_BAD_REPLY);
}

TEST_F(Connections, AReplyWithADescriptorIsRefusedAndTheDescriptorClosed) {
  EXPECT_TRUE(switch_answers());
  const size_t before = open_descriptors();
  switch_.answer_with([](const Bytes &request) { return Answer{FakeSwitch::echo(request).packets, true}; });
  EXPECT_EQ(ask(1), CMD_BAD_REPLY);
  EXPECT_EQ(open_descriptors(), before - 1) << "the connection alone was closed";
}

TEST_F(Connections, ARefusalIsPassedOnAndKeepsTheConnection) {
  for (uint32_t status = CMD_UNKNOWN_COMMAND; status <= CMD_REFUSED; ++status) {
    switch_.answer_with([=](const Bytes &request) {
      return Answer{{make_reply_packet(get32(request, offsetof(wire::MessageHeader, sequence)), status)}};
    });
    EXPECT_EQ(ask(1), static_cast<int>(status));
  }
  EXPECT_EQ(switch_.connections(), 1U);
}

struct BadGreeting {
  const char *name;
  std::function<Greeting(const Greeting &good, const ImageFile &other)> make;
};

void set_hello_field(Greeting *greeting, size_t offset, uint32_t value) {
  put32(&greeting->packet, offset, value);
}

// Keeps addresses out of the names of the tests.
void PrintTo(const BadGreeting &parameter, std::ostream *out) { *out << parameter.name; }

const BadGreeting kBadGreetings[] = {
    {"WithoutDescriptor",
     [](Greeting good, const ImageFile &) {
       good.descriptors.clear();
       return good;
     }},
    {"WithTwoDescriptors",
     [](Greeting good, const ImageFile &) {
       good.descriptors.push_back(good.descriptors.front());
       return good;
     }},
    {"WithManyDescriptors",
     [](Greeting good, const ImageFile &) {
       good.descriptors.resize(200, good.descriptors.front());
       return good;
     }},
    {"WithAnUnsealedImage",
     [](const Greeting &, const ImageFile &other) {
       return Greeting{make_hello(other.size()), {other.descriptor()}};
     }},
    {"WithAnImageThatMayShrink",
     [](const Greeting &, const ImageFile &other) {
       other.seal(F_SEAL_GROW);
       return Greeting{make_hello(other.size()), {other.descriptor()}};
     }},
    {"WithAFileOfAnotherSize",
     [](const Greeting &, const ImageFile &other) {
       other.seal(F_SEAL_GROW | F_SEAL_SHRINK);
       return Greeting{make_hello(other.size() - 8), {other.descriptor()}};
     }},
    {"WithAFileThatWasCutBehindItsHead",
     [](const Greeting &, const ImageFile &other) {
       EXPECT_EQ(ftruncate(other.descriptor(), 4096), 0);
       other.seal(F_SEAL_GROW | F_SEAL_SHRINK);
       return Greeting{make_hello(other.size()), {other.descriptor()}};
     }},
    {"WithAnEmptyFile",
     [](const Greeting &, const ImageFile &other) {
       EXPECT_EQ(ftruncate(other.descriptor(), 0), 0);
       other.seal(F_SEAL_GROW | F_SEAL_SHRINK);
       return Greeting{make_hello(0), {other.descriptor()}};
     }},
    {"WithAPipe",
     [](const Greeting &good, const ImageFile &) {
       return Greeting{good.packet, {STDERR_FILENO}};
     }},
    {"WithSlotsOfAnotherSize",
     [](const Greeting &, const ImageFile &other) {
       other.head()->slot_size += 8;
       other.seal(F_SEAL_GROW | F_SEAL_SHRINK);
       return Greeting{make_hello(other.size()), {other.descriptor()}};
     }},
    {"WithEnormousSlots",
     [](const Greeting &, const ImageFile &other) {
       other.head()->slot_size = 0x8000'0000U + ImageFile::kSlotSize;
       other.seal(F_SEAL_GROW | F_SEAL_SHRINK);
       return Greeting{make_hello(other.size()), {other.descriptor()}};
     }},
    {"WithAnotherSizeInTheImage",
     [](const Greeting &, const ImageFile &other) {
       other.head()->size += 8;
       other.seal(F_SEAL_GROW | F_SEAL_SHRINK);
       return Greeting{make_hello(other.size()), {other.descriptor()}};
     }},
    {"WithAnotherMagicInTheImage",
     [](const Greeting &, const ImageFile &other) {
       other.head()->magic ^= 1;
       other.seal(F_SEAL_GROW | F_SEAL_SHRINK);
       return Greeting{make_hello(other.size()), {other.descriptor()}};
     }},
    {"WithAnotherVersionInTheImage",
     [](const Greeting &, const ImageFile &other) {
       other.head()->version += 1;
       other.seal(F_SEAL_GROW | F_SEAL_SHRINK);
       return Greeting{make_hello(other.size()), {other.descriptor()}};
     }},
    {"OfAnotherMagic",
     [](Greeting good, const ImageFile &) {
       set_hello_field(&good, offsetof(wire::MessageHeader, magic), 0);
       return good;
     }},
    {"OfAnotherVersion",
     [](Greeting good, const ImageFile &) {
       good.packet[offsetof(wire::MessageHeader, version)] += 1;
       return good;
     }},
    {"OfAnotherType",
     [](Greeting good, const ImageFile &) {
       good.packet[offsetof(wire::MessageHeader, type)] = static_cast<uint8_t>(wire::MessageType::kReply);
       return good;
     }},
    {"OfAnotherLength",
     [](Greeting good, const ImageFile &) {
       set_hello_field(&good, offsetof(wire::MessageHeader, length), 24);
       return good;
     }},
    {"WithASequenceNumber",
     [](Greeting good, const ImageFile &) {
       set_hello_field(&good, offsetof(wire::MessageHeader, sequence), 1);
       return good;
     }},
    {"TooShort",
     [](Greeting good, const ImageFile &) {
       good.packet.pop_back();
       return good;
     }},
    {"TooLong",
     [](Greeting good, const ImageFile &) {
       good.packet.push_back(0);
       return good;
     }},
    {"LongerThanAnyMessage",
     [](Greeting good, const ImageFile &) {
       good.packet.resize(wire::kMaxMessageSize + 1);
       return good;
     }},
};

class BadGreetings : public Connections, public testing::WithParamInterface<BadGreeting> {};

TEST_P(BadGreetings, IsRefusedAndLeavesNothingBehind) {
  const ImageFile other;
  switch_.greet_with(GetParam().make(switch_.good_greeting(), other));
  const size_t before = open_descriptors();
  EXPECT_EQ(ask(1), CMD_BAD_REPLY);
  uint32_t next = 0;
  EXPECT_NE(im_get_next_ifindex(0, &next), CMD_OK);
  EXPECT_TRUE(switch_.requests().empty());
  EXPECT_EQ(watched_descriptors(), 0);
  switch_.close_connections();
  EXPECT_EQ(open_descriptors(), before);
  EXPECT_EQ(LogCapture::take().size(), 1U);
  switch_.greet_with(switch_.good_greeting());
  wait_for_backoff();
  EXPECT_TRUE(switch_answers());
}

INSTANTIATE_TEST_SUITE_P(Greetings, BadGreetings, testing::ValuesIn(kBadGreetings),
                         [](const auto &parameter) { return std::string(parameter.param.name); });

TEST_F(Connections, TheLargestImageOfAnySwitchIsTakenWhereAddressesHaveRoomForIt) {
  const ImageFile largest(wire::kMaxSlotSize);
  largest.seal(F_SEAL_GROW | F_SEAL_SHRINK);
  largest.head()->flags = wire::kAskMe;
  switch_.hand_out(largest);
  if (sizeof(void *) == sizeof(uint64_t)) {
    EXPECT_TRUE(switch_answers());
    return;
  }
  EXPECT_EQ(ask(1), CMD_BAD_REPLY);
  EXPECT_EQ(LogCapture::take(),
            std::vector<std::string>{"stpplatform: " + switch_.path() + ": the image cannot be mapped\n"});
}

TEST_F(Connections, AnImageLargerThanThatOfAnySwitchIsRefusedUnread) {
  const ImageFile enormous(wire::kMaxSlotSize + wire::kTableAlignment);
  enormous.seal(F_SEAL_GROW | F_SEAL_SHRINK);
  enormous.head()->magic = 0;
  switch_.hand_out(enormous);
  EXPECT_EQ(ask(1), CMD_BAD_REPLY);
  EXPECT_EQ(LogCapture::take(), std::vector<std::string>{"stpplatform: " + switch_.path() +
                                                         ": the image is larger than that of any switch\n"});
}

TEST_F(Connections, AnImageThatFindsNoFreeDescriptorIsNamedAsSuch) {
  {
    // For the two ends of the connection.
    const FullDescriptorTable full(2);
    if (!full.is_enforced()) {
      GTEST_SKIP() << "nothing here can bound the kernel's table";
    }
    EXPECT_EQ(ask(1), CMD_NO_MEMORY);
  }
  EXPECT_EQ(
      LogCapture::take(),
      std::vector<std::string>{"stpplatform: " + switch_.path() +
                               ": the agent cannot take the image's descriptor: too many open files, or a "
                               "security policy forbids it\n"});
  wait_for_backoff();
  EXPECT_TRUE(switch_answers());
}

TEST_F(Connections, NoDescriptorLeaksHoweverARequestEnds) {
  const size_t before = open_descriptors();
  for (int i = 0; i < 20; ++i) {
    answer_normally();
    set_deadline_ms(kPatientMs);
    EXPECT_TRUE(switch_answers());
    switch_.answer_with([](const Bytes &) { return Answer{{Bytes(7, 0xFF)}}; });
    EXPECT_EQ(ask(1), CMD_BAD_REPLY);
    wait_for_backoff();
    switch_.answer_with([](const Bytes &) { return Answer{{}, false, true}; });
    EXPECT_EQ(ask(1), CMD_UNREACHABLE);
    wait_for_backoff();
    silence();
    set_deadline_ms(1);
    EXPECT_EQ(ask(1), CMD_TIMEOUT);
    wait_for_backoff();
    switch_.close_connections();
    EXPECT_EQ(open_descriptors(), before);
  }
}

std::atomic<int> signals{0};

// Every signal has been handled before the reply is sent, so that none is left for those who come after.
TEST_F(Connections, SignalsDoNotDisturbARequest) {
  constexpr int kSignals = 5;
  struct sigaction action {};
  struct sigaction before {};
  action.sa_handler = [](int) { ++signals; };
  ASSERT_EQ(sigaction(SIGUSR1, &action, &before), 0);
  signals = 0;
  const pthread_t asking = pthread_self();
  switch_.answer_with([asking](const Bytes &request) {
    for (int sent = 1; sent <= kSignals; ++sent) {
      pthread_kill(asking, SIGUSR1);
      while (signals < sent) {
        std::this_thread::yield();
      }
    }
    return FakeSwitch::echo(request);
  });
  EXPECT_TRUE(switch_answers());
  // Where the request ended too early.
  EXPECT_TRUE(run_main_loop_until([] { return signals == kSignals; }));
  sigaction(SIGUSR1, &before, nullptr);
}

TEST_F(Connections, AForkedChildThatDropsTheConnectionDoesNotHurtItsParent) {
  EXPECT_TRUE(switch_answers());
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    stpplatform::connection().reset();
    // Not by exiting: what the test itself has allocated is nobody's leak.
    kill(getpid(), SIGKILL);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(WTERMSIG(status), SIGKILL);
  EXPECT_EQ(run_main_loop_once(), 0);
  EXPECT_TRUE(switch_answers());
  EXPECT_EQ(switch_.connections(), 1U);
}

TEST(Backoff, StartsOverAfterAReset) {
  Backoff backoff;
  EXPECT_TRUE(backoff.allows(0));
  backoff.failed(1000);
  backoff.failed(1100);
  EXPECT_FALSE(backoff.allows(1299));
  EXPECT_TRUE(backoff.allows(1300));
  backoff.reset();
  EXPECT_TRUE(backoff.allows(0));
  backoff.failed(0);
  EXPECT_TRUE(backoff.allows(Backoff::kFirstMs));
}

}  // namespace
