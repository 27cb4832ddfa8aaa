// The command socket with clients of every kind. Server and clients share a thread: see packet_client.h.
#include "server/command_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <algorithm>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "sources/scenario/loader.h"
#include "support/failing_accept.h"
#include "support/mapped_image.h"
#include "support/octets.h"
#include "support/packet_client.h"
#include "support/requests.h"
#include "support/states.h"
#include "support/temporary_folder.h"

using namespace stpswitch;
using namespace std::chrono_literals;
namespace wire = stpplatform::wire;

namespace {

constexpr std::chrono::milliseconds kLongDelay{3'600'000};

class CommandServers : public testing::Test {
 protected:
  CommandServers() {
    switch_.on_change([this] { publisher_.publish(); });
  }

  PacketClient connect() { return {&loop_, path_}; }

  // A connection whose hello is read.
  PacketClient greeted() {
    PacketClient client = connect();
    client.receive_hello();
    return client;
  }

  static uint32_t sequence_of(const Packet &reply) { return reply_head(reply).header.sequence; }

  static Packet request(uint32_t sequence) {
    return make_request({104, 1, {protocol::kGlobalSettingsKey}, "operator", sequence});
  }

  void expect_service() {
    PacketClient client = greeted();
    EXPECT_EQ(sequence_of(client.ask(request(4711))), 4711U);
  }

  // What is logged when so many connections are given to others.
  std::string disconnected(int count) const {
    std::string text;
    for (int i = 0; i < count; ++i) {
      text += "stp-switchd: " + path_ +
              ": 64 connections are open: disconnecting the one least in use for another\n";
    }
    return text;
  }

  TemporaryFolder folder_;
  std::string path_ = folder_.path("switch.sock");
  EventLoop loop_;
  Switch switch_{load_scenario(SCENARIOS "/mst-small.toml")};
  ImagePublisher publisher_{&switch_};
  Faults faults_;
  std::optional<CommandServer> server_{std::in_place, &loop_,
                                       UnixSocketOptions{path_, SOCK_SEQPACKET, 0660, std::nullopt},
                                       &publisher_, &faults_};
};

TEST_F(CommandServers, GreetWithTheImage) {
  PacketClient client = connect();
  const stpplatform::OwnedFd fd = client.receive_hello();
  struct stat received {};
  struct stat published {};
  ASSERT_EQ(::fstat(fd.get(), &received), 0);
  ASSERT_EQ(::fstat(publisher_.fd(), &published), 0);
  EXPECT_EQ(received.st_ino, published.st_ino);
}

TEST_F(CommandServers, SayHelloWithTheImagesSize) {
  PacketClient client = connect();
  const uint32_t size = publisher_.size();
  Packet hello = octets("57505453 0100 0100 14000000 00000000 00000000");
  put(&hello, 16, size);
  EXPECT_EQ(hex(client.receive()), hex(hello));
}

TEST_F(CommandServers, AnswerOneRequestAfterTheOther) {
  PacketClient client = greeted();
  for (uint32_t sequence = 1; sequence <= 100; ++sequence) {
    EXPECT_EQ(sequence_of(client.ask(request(sequence))), sequence);
  }
}

TEST_F(CommandServers, AnswerRequestsThatWereSentTogether) {
  PacketClient client = greeted();
  for (uint32_t sequence = 1; sequence <= 5; ++sequence) {
    client.send(request(sequence));
  }
  for (uint32_t sequence = 1; sequence <= 5; ++sequence) {
    EXPECT_EQ(sequence_of(client.receive()), sequence);
  }
}

TEST_F(CommandServers, AnswerARequestOfTheLargestSize) {
  PacketClient client = greeted();
  Packet largest = request(9);
  largest.resize(wire::kMaxMessageSize);
  put(&largest, offsetof(wire::MessageHeader, length), static_cast<uint32_t>(largest.size()));
  const Packet reply = client.ask(largest);
  EXPECT_EQ(reply_head(reply).status, CMD_BAD_REQUEST);
  EXPECT_EQ(sequence_of(reply), 9U);
}

TEST_F(CommandServers, RefuseALargerRequestAndGoOn) {
  PacketClient client = greeted();
  Packet too_large = request(9);
  too_large.resize(wire::kMaxMessageSize + 1);
  put(&too_large, offsetof(wire::MessageHeader, length), static_cast<uint32_t>(too_large.size()));
  const Packet reply = client.ask(too_large);
  EXPECT_EQ(reply_head(reply).status, CMD_BAD_REQUEST);
  EXPECT_EQ(sequence_of(reply), 9U);
  EXPECT_EQ(sequence_of(client.ask(request(10))), 10U);
}

TEST_F(CommandServers, DisconnectWhoeverSendsNoMessage) {
  PacketClient client = greeted();
  testing::internal::CaptureStderr();
  EXPECT_TRUE(client.ask(octets("00112233445566778899")).empty());
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "stp-switchd: " + path_ + ": a client sent 10 octets that are no message: disconnecting it\n");
  expect_service();
}

TEST_F(CommandServers, DoNotFillTheLogWithWhatClientsSend) {
  testing::internal::CaptureStderr();
  for (int i = 0; i < 100; ++i) {
    EXPECT_TRUE(greeted().ask(octets("00112233445566778899")).empty());
  }
  std::string expected;
  for (int i = 0; i < 10; ++i) {
    expected += "stp-switchd: " + path_ + ": a client sent 10 octets that are no message: disconnecting it\n";
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), expected);
  testing::internal::CaptureStderr();
  server_.reset();
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "stp-switchd: " + path_ + ": lines about clients that were left out: 90\n");
}

TEST_F(CommandServers, AnswerAClientThatOnlyReceivesAnyMore) {
  PacketClient client = greeted();
  client.send(request(1));
  client.send(request(2));
  client.stop_sending();
  EXPECT_EQ(sequence_of(client.receive()), 1U);
  EXPECT_EQ(sequence_of(client.receive()), 2U);
  EXPECT_TRUE(client.receive().empty());
}

TEST_F(CommandServers, SurviveClientsThatHangUpAtAnyPoint) {
  for (int round = 0; round < 100; ++round) {
    PacketClient at_once = connect();
    at_once.hang_up();
    PacketClient after_a_request = connect();
    after_a_request.send(request(1));
    after_a_request.hang_up();
  }
  expect_service();
}

TEST_F(CommandServers, GiveTheConnectionThatIsSilentLongestToANewClient) {
  std::vector<PacketClient> clients;
  for (size_t i = 0; i < 64; ++i) {
    clients.push_back(greeted());
  }
  for (PacketClient &client : clients) {
    EXPECT_EQ(sequence_of(client.ask(request(1))), 1U);
  }
  EXPECT_EQ(sequence_of(clients[0].ask(request(2))), 2U);
  testing::internal::CaptureStderr();
  clients.push_back(greeted());
  EXPECT_EQ(testing::internal::GetCapturedStderr(), disconnected(1));
  EXPECT_TRUE(clients[1].receive().empty());
  clients.erase(clients.begin() + 1);
  for (PacketClient &client : clients) {
    EXPECT_EQ(sequence_of(client.ask(request(3))), 3U);
  }
}

TEST_F(CommandServers, SpareAClientThatHasAskedForThoseThatNeverDid) {
  PacketClient agent = greeted();
  EXPECT_EQ(sequence_of(agent.ask(request(1))), 1U);
  std::vector<PacketClient> idle;
  for (size_t i = 0; i < 63; ++i) {
    idle.push_back(greeted());
  }
  testing::internal::CaptureStderr();
  for (int i = 0; i < 3; ++i) {
    idle.push_back(greeted());
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), disconnected(3));
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_TRUE(idle[i].receive().empty());
  }
  EXPECT_FALSE(idle[3].receive_now().has_value());
  EXPECT_EQ(sequence_of(agent.ask(request(2))), 2U);
}

TEST_F(CommandServers, GiveAConnectionThatWaitsForALateReplyToANewClient) {
  std::vector<PacketClient> clients;
  faults_.order(FaultKind::kDelay, kLongDelay, 64);
  for (size_t i = 0; i < 64; ++i) {
    clients.push_back(greeted());
    clients.back().send(request(1));
    ASSERT_TRUE(run_until(loop_, [turns = 0]() mutable { return ++turns > 3; }));
  }
  testing::internal::CaptureStderr();
  expect_service();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), disconnected(1));
  EXPECT_TRUE(clients[0].receive().empty());
}

// They try again, and say so once, however long it takes.
TEST_F(CommandServers, AcceptLaterWhatTheyCannotAcceptNow) {
  PacketClient known = greeted();
  PacketClient waiting = connect();
  testing::internal::CaptureStderr();
  {
    const FailingAccept no_descriptor_left;
    EXPECT_EQ(sequence_of(known.ask(request(1))), 1U);
    ASSERT_TRUE(run_until(loop_, [&] { return no_descriptor_left.failures() > 1; }));
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "stp-switchd: " + path_ + ": cannot accept a connection: Too many open files\n");
  waiting.receive_hello();
  EXPECT_EQ(sequence_of(waiting.ask(request(2))), 2U);
}

TEST_F(CommandServers, DoNotWaitForAClientThatDoesNotRead) {
  PacketClient lazy = greeted();
  uint32_t sent = 0;
  // The server stops taking its requests, or this would never end.
  ASSERT_TRUE(run_until(loop_, [&] {
    const bool was_taken = lazy.try_to_send(request(sent + 1));
    sent += was_taken ? 1 : 0;
    for (int i = 0; i < 3; ++i) {
      event_base_loop(loop_.base(), EVLOOP_NONBLOCK);
    }
    return !was_taken;
  }));
  expect_service();
  for (uint32_t sequence = 1; sequence <= sent; ++sequence) {
    ASSERT_EQ(sequence_of(lazy.receive()), sequence);
  }
}

TEST_F(CommandServers, ForgetAClientThatNeitherReadsNorStays) {
  {
    PacketClient lazy = greeted();
    ASSERT_TRUE(run_until(loop_, [&] {
      const bool was_taken = lazy.try_to_send(request(1));
      event_base_loop(loop_.base(), EVLOOP_NONBLOCK);
      return !was_taken;
    }));
  }
  testing::internal::CaptureStderr();
  std::vector<PacketClient> clients;
  for (size_t i = 0; i < 64; ++i) {
    clients.push_back(greeted());
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "the lazy one still counts";
}

TEST_F(CommandServers, ReplyLateWhenOrderedAndServeOthersMeanwhile) {
  PacketClient late = greeted();
  faults_.order(FaultKind::kDelay, kLongDelay, 1);
  late.send(request(1));
  for (int i = 0; i < 10; ++i) {
    expect_service();
  }
  EXPECT_FALSE(late.receive_now().has_value());
}

TEST_F(CommandServers, ReplyAfterTheDelayInOrder) {
  PacketClient client = greeted();
  faults_.order(FaultKind::kDelay, 20ms, 1);
  client.send(request(1));
  client.send(request(2));
  EXPECT_EQ(sequence_of(client.receive()), 1U);
  EXPECT_EQ(sequence_of(client.receive()), 2U);
}

TEST_F(CommandServers, AnswerAClientThatOnlyReceivesAnyMoreAfterALateReply) {
  PacketClient client = greeted();
  faults_.order(FaultKind::kDelay, 20ms, 1);
  EXPECT_EQ(sequence_of(client.ask(request(1))), 1U);
  for (uint32_t sequence = 2; sequence <= 9; ++sequence) {
    client.send(request(sequence));
  }
  client.stop_sending();
  for (uint32_t sequence = 2; sequence <= 9; ++sequence) {
    ASSERT_EQ(sequence_of(client.receive()), sequence);
  }
}

TEST_F(CommandServers, ForgetClientsThatDoNotWaitForALateReply) {
  faults_.order(FaultKind::kDelay, kLongDelay, 200);
  testing::internal::CaptureStderr();
  for (int i = 0; i < 200; ++i) {
    PacketClient impatient = greeted();
    impatient.send(request(1));
    ASSERT_TRUE(run_until(loop_, [turns = 0]() mutable { return ++turns > 3; }));
  }
  expect_service();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "those who are gone still count";
}

TEST_F(CommandServers, DropRepliesWhenOrdered) {
  PacketClient client = greeted();
  faults_.order(FaultKind::kDrop, {}, 2);
  client.send(request(1));
  client.send(request(2));
  EXPECT_EQ(sequence_of(client.ask(request(3))), 3U);
}

TEST_F(CommandServers, DisconnectWhenOrdered) {
  PacketClient client = greeted();
  faults_.order(FaultKind::kDisconnect, {}, 1);
  EXPECT_TRUE(client.ask(request(1)).empty());
  expect_service();
}

TEST_F(CommandServers, SendGarbageWhenOrdered) {
  PacketClient client = greeted();
  const Packet good = client.ask(request(1));
  faults_.order(FaultKind::kGarbage, {}, 8);
  for (int i = 0; i < 8; ++i) {
    const Packet bad = client.ask(request(1));
    EXPECT_FALSE(bad.empty());
    EXPECT_NE(hex(bad), hex(good));
  }
  EXPECT_EQ(hex(client.ask(request(1))), hex(good));
}

// More of the longest replies than the socket has room for.
TEST_F(CommandServers, AnswerWithTheLongestReplies) {
  constexpr size_t kLongest = 24 + 12 + (8 + 32) + 24 + 24;
  constexpr uint32_t kMoreThanFit = 400;
  SwitchState state = switch_.state();
  state.mst.name = std::string(32, 'n');
  switch_.replace(state);
  PacketClient client = greeted();
  for (uint32_t sequence = 1; sequence <= kMoreThanFit; ++sequence) {
    client.send(make_request({112, 1, {}, "operator", sequence}));
  }
  for (uint32_t sequence = 1; sequence <= kMoreThanFit; ++sequence) {
    const Packet reply = client.receive();
    ASSERT_EQ(reply.size(), kLongest);
    ASSERT_EQ(sequence_of(reply), sequence);
  }
}

constexpr char kRenewal[] = "57505453 0100 0600 10000000 2a000000";

// Without attributes, and whatever fault is ordered.
TEST_F(CommandServers, AnswerARenewalOfTheLease) {
  PacketClient client = greeted();
  faults_.order(FaultKind::kDrop, {}, 1);
  EXPECT_EQ(hex(client.ask(octets(kRenewal))),
            hex(octets("57505453 0100 0300 18000000 2a000000 00000000 00000000")));
  EXPECT_EQ(faults_.left(), 1U);
}

TEST_F(CommandServers, RefuseARenewalThatIsMoreThanAHead) {
  PacketClient client = greeted();
  Packet longer = octets(kRenewal);
  longer.resize(20);
  put(&longer, offsetof(wire::MessageHeader, length), uint32_t{20});
  EXPECT_EQ(reply_head(client.ask(longer)).status, CMD_BAD_REQUEST);
}

// What the image's lease does with connections and replies.
class Leases : public CommandServers {
 protected:
  uint64_t lease_end() const { return shared_.head().lease_end.load(); }

  static uint64_t now() {
    return static_cast<uint64_t>(
        std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count());
  }

  // Lets the server work until the lease ends at another time.
  bool is_renewed(uint64_t end) {
    return run_until(loop_, [&] { return lease_end() != end; });
  }

  bool waits_for_a_timer() const {
    const auto is_timer = [](const event_base *, const event *pending, void *) {
      return event_pending(pending, EV_TIMEOUT, nullptr);
    };
    return event_base_foreach_event(loop_.base(), is_timer, nullptr) != 0;
  }

  MappedImage shared_{publisher_.fd(), publisher_.size()};
};

TEST_F(Leases, AreNoneBeforeSomebodyConnects) { EXPECT_EQ(lease_end(), 0U); }

TEST_F(Leases, HoldForHalfASecondFromTheHelloOn) {
  const uint64_t before = now();
  const PacketClient client = greeted();
  EXPECT_GE(lease_end(), before + 500'000'000);
  EXPECT_LE(lease_end(), now() + 500'000'000);
}

TEST_F(Leases, AreRenewedWhileSomebodyIsConnected) {
  const PacketClient client = greeted();
  const uint64_t first = lease_end();
  ASSERT_TRUE(is_renewed(first));
  const uint64_t second = lease_end();
  EXPECT_GT(second, first);
  EXPECT_TRUE(is_renewed(second));
}

TEST_F(Leases, AreRenewedBeforeEachReply) {
  PacketClient client = greeted();
  for (const Packet &packet : {request(1), octets(kRenewal)}) {
    const uint64_t before = now();
    EXPECT_EQ(client.ask(packet).empty(), false);
    EXPECT_GE(lease_end(), before + 500'000'000);
  }
}

// A switch that nobody asks sleeps.
TEST_F(Leases, AreLeftToRunOutWhenEverybodyHasGone) {
  std::vector<PacketClient> clients;
  clients.push_back(greeted());
  clients.push_back(greeted());
  clients.pop_back();
  ASSERT_TRUE(is_renewed(lease_end()));
  ASSERT_TRUE(is_renewed(lease_end()));
  clients.pop_back();
  EXPECT_TRUE(run_until(loop_, [&] { return !waits_for_a_timer(); }));
}

TEST_F(CommandServers, ServeTheStateOfTheMoment) {
  PacketClient client = greeted();
  const Packet before = client.ask(request(1));
  SwitchState changed = switch_.state();
  changed.mst.max_hops = 33;
  switch_.replace(changed);
  const Packet after = client.ask(request(1));
  EXPECT_EQ(before.at(before.size() - 4), 20);
  EXPECT_EQ(after.at(after.size() - 4), 33);
}

// Whatever arrives, the answer is a well-formed refusal, a right reply, or the end of the connection.
class Junk {
 public:
  explicit Junk(uint32_t seed) : numbers_(seed) {}

  Packet next() {
    switch (number_below(4)) {
      case 0:
        return random_octets(number_below(300));
      case 1:
        return with_good_header(random_octets(sizeof(wire::MessageHeader) + number_below(300)));
      default:
        return mutated(make_request({100 + number_below(30), number_below(5), random_keys()}));
    }
  }

 private:
  uint32_t number_below(size_t limit) { return static_cast<uint32_t>(numbers_() % limit); }

  std::vector<KeyText> random_keys() {
    std::vector<KeyText> keys;
    const uint32_t count = 1 + number_below(2);
    for (uint32_t i = 0; i < count; ++i) {
      keys.push_back(random_key());
    }
    return keys;
  }

  KeyText random_key() {
    switch (number_below(5)) {
      case 0:
        return protocol::kGlobalSettingsKey;
      case 1:
        return {protocol::kInterfaceKey, {number_below(SIZE_MAX)}};
      case 3:
        return {protocol::kMstInterfaceKey, {number_below(SIZE_MAX)}};
      case 2:
        return one_tree(protocol::kVlanTreeKey, number_below(5000));
      default:
        return one_tree(protocol::kMstTreeKey, number_below(5000));
    }
  }

  Packet random_octets(size_t size) {
    Packet packet(std::max<size_t>(size, 1));
    std::generate(packet.begin(), packet.end(), [this] { return static_cast<uint8_t>(numbers_()); });
    return packet;
  }

  static Packet with_good_header(Packet packet) {
    const wire::MessageHeader header{wire::kMagic, wire::kVersion,
                                     static_cast<uint16_t>(wire::MessageType::kRequest),
                                     static_cast<uint32_t>(packet.size()), 1};
    put(&packet, 0, header);
    return packet;
  }

  Packet mutated(Packet packet) {
    const uint32_t changes = 1 + number_below(4);
    for (uint32_t i = 0; i < changes; ++i) {
      packet[number_below(packet.size())] = static_cast<uint8_t>(numbers_());
    }
    return packet;
  }

  std::mt19937 numbers_;
};

class CommandServersUnderJunk : public CommandServers, public testing::WithParamInterface<uint32_t> {};

TEST_P(CommandServersUnderJunk, KeepAnswering) {
  testing::internal::CaptureStderr();
  Junk junk(GetParam());
  PacketClient client = greeted();
  for (int i = 0; i < 2000; ++i) {
    const Packet packet = junk.next();
    const Packet reply = client.ask(packet);
    if (reply.empty()) {
      client = greeted();
      continue;
    }
    const wire::Reply head = reply_head(reply);
    ASSERT_EQ(head.header.magic, wire::kMagic)
        << "seed " << GetParam() << ", packet " << i << ": " << hex(packet);
    ASSERT_EQ(head.header.length, reply.size())
        << "seed " << GetParam() << ", packet " << i << ": " << hex(packet);
  }
  expect_service();
  testing::internal::GetCapturedStderr();
}

INSTANTIATE_TEST_SUITE_P(Seeds, CommandServersUnderJunk, testing::Values(1U, 2U, 3U),
                         testing::PrintToStringParamName());

}  // namespace
