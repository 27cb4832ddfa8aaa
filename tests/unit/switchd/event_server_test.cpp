// Subscribers of every kind at the command socket. Server and clients share a thread: see packet_client.h.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <optional>
#include <tuple>
#include <vector>

#include "server/command_server.h"
#include "sources/scenario/loader.h"
#include "support/events.h"
#include "support/octets.h"
#include "support/packet_client.h"
#include "support/requests.h"
#include "support/temporary_folder.h"
#include "wire/events.h"

using namespace stpswitch;
namespace wire = stpplatform::wire;
using testing::MatchesRegex;

namespace {

constexpr uint32_t kPort = 0x1A000000;

constexpr InconsistencyEventKind kPortEvent = InconsistencyEventKind::kPvidAndType;
constexpr InconsistencyEventKind kLoopEvent = InconsistencyEventKind::kLoop;
constexpr InconsistencyEventKind kRootEvent = InconsistencyEventKind::kRoot;

// What the payload has in its last word tells events apart that are alike otherwise.
InconsistencyEvent event(InconsistencyEventKind kind, uint32_t tree, uint32_t number) {
  return {kind, tree, kPort, 1, static_cast<SpanningTreeMode>(number)};
}

struct Received {
  uint32_t sequence;
  uint32_t notification_class;
  uint32_t tree;
  uint32_t number;
  bool operator==(const Received &) const = default;
};

void PrintTo(const Received &received, std::ostream *out) {
  *out << "#" << received.sequence << " " << received.notification_class << " tree " << received.tree
       << " number " << received.number;
}

Received read_event(const Packet &packet) {
  wire::Event head{};
  stp_inconsistency_payload payload{};
  EXPECT_EQ(packet.size(), sizeof head + sizeof payload);
  if (packet.size() != sizeof head + sizeof payload) {
    return {};
  }
  std::memcpy(&head, packet.data(), sizeof head);
  std::memcpy(&payload, packet.data() + sizeof head, sizeof payload);
  EXPECT_EQ(head.header.type, static_cast<uint16_t>(wire::MessageType::kEvent));
  return {head.header.sequence, head.notification_class, ntohl(payload.tree), ntohl(payload.mode)};
}

class EventServers : public testing::Test {
 protected:
  PacketClient greeted() {
    PacketClient client(&loop_, path_);
    client.receive_hello();
    return client;
  }

  PacketClient subscriber(const std::vector<uint32_t> &classes = {protocol::kPortInconsistencyClass,
                                                                  protocol::kLoopInconsistencyClass,
                                                                  protocol::kRootInconsistencyClass}) {
    PacketClient client = greeted();
    client.send(make_subscription(classes));
    let_the_server_work();
    return client;
  }

  // Long enough for all that has arrived to be read.
  void let_the_server_work() {
    for (int turn = 0; turn < 4; ++turn) {
      event_base_loop(loop_.base(), EVLOOP_NONBLOCK);
    }
  }

  void tell(InconsistencyEventKind kind, uint32_t tree, uint32_t number) {
    server_->tell({event(kind, tree, number)});
  }

  static Packet request(uint32_t sequence) {
    return make_request({104, 1, {protocol::kGlobalSettingsKey}, "operator", sequence});
  }

  void expect_service() {
    PacketClient client = greeted();
    EXPECT_EQ(reply_head(client.ask(request(4711))).header.sequence, 4711U);
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

TEST_F(EventServers, TellASubscriberInOrder) {
  PacketClient client = subscriber();
  server_->tell({event(kPortEvent, 1, 7), event(kLoopEvent, 2, 1)});
  tell(kLoopEvent, 2, 2);
  EXPECT_EQ(read_event(client.receive()), (Received{1, protocol::kPortInconsistencyClass, 1, 7}));
  EXPECT_EQ(read_event(client.receive()), (Received{2, protocol::kLoopInconsistencyClass, 2, 1}));
  EXPECT_EQ(read_event(client.receive()), (Received{3, protocol::kLoopInconsistencyClass, 2, 2}));
  EXPECT_FALSE(client.receive_now().has_value());
}

TEST_F(EventServers, TellNobodyWhoHasNotSubscribed) {
  PacketClient client = greeted();
  tell(kRootEvent, 1, 1);
  EXPECT_EQ(reply_head(client.ask(request(1))).header.sequence, 1U);
  EXPECT_FALSE(client.receive_now().has_value());
}

TEST_F(EventServers, TellOnlyOfTheClassesSubscribedTo) {
  PacketClient client = subscriber({protocol::kRootInconsistencyClass, 1});
  for (const InconsistencyEventKind kind : {kPortEvent, kLoopEvent, kRootEvent}) {
    tell(kind, 9, 1);
  }
  EXPECT_EQ(read_event(client.receive()), (Received{1, protocol::kRootInconsistencyClass, 9, 1}));
  EXPECT_FALSE(client.receive_now().has_value());
}

TEST_F(EventServers, TellEachSubscriberWhatItWants) {
  PacketClient loops = subscriber({protocol::kLoopInconsistencyClass});
  PacketClient roots = subscriber({protocol::kRootInconsistencyClass});
  server_->tell({event(kLoopEvent, 1, 1), event(kRootEvent, 2, 1), event(kLoopEvent, 3, 1)});
  EXPECT_EQ(read_event(loops.receive()), (Received{1, protocol::kLoopInconsistencyClass, 1, 1}));
  EXPECT_EQ(read_event(loops.receive()), (Received{2, protocol::kLoopInconsistencyClass, 3, 1}));
  EXPECT_EQ(read_event(roots.receive()), (Received{1, protocol::kRootInconsistencyClass, 2, 1}));
}

TEST_F(EventServers, LetASubscriberChooseAnew) {
  PacketClient client = subscriber({protocol::kLoopInconsistencyClass});
  tell(kLoopEvent, 1, 1);
  client.send(make_subscription({protocol::kRootInconsistencyClass}));
  let_the_server_work();
  tell(kLoopEvent, 2, 1);
  tell(kRootEvent, 3, 1);
  EXPECT_EQ(read_event(client.receive()), (Received{1, protocol::kLoopInconsistencyClass, 1, 1}));
  EXPECT_EQ(read_event(client.receive()), (Received{2, protocol::kRootInconsistencyClass, 3, 1}))
      << "the numbers run on";
  EXPECT_FALSE(client.receive_now().has_value());
}

TEST_F(EventServers, AnswerRequestsBeforeASubscription) {
  PacketClient client = greeted();
  client.send(request(1));
  client.send(request(2));
  client.send(make_subscription({protocol::kLoopInconsistencyClass}));
  EXPECT_EQ(reply_head(client.receive()).header.sequence, 1U);
  EXPECT_EQ(reply_head(client.receive()).header.sequence, 2U);
  let_the_server_work();
  tell(kLoopEvent, 1, 1);
  EXPECT_EQ(read_event(client.receive()), (Received{1, protocol::kLoopInconsistencyClass, 1, 1}));
}

TEST_F(EventServers, SendALateReplyBeforeTheyTakeASubscription) {
  PacketClient client = greeted();
  faults_.order(FaultKind::kDelay, std::chrono::milliseconds(20), 1);
  client.send(request(1));
  client.send(make_subscription({protocol::kLoopInconsistencyClass}));
  EXPECT_EQ(reply_head(client.receive()).header.sequence, 1U);
  let_the_server_work();
  tell(kLoopEvent, 1, 1);
  EXPECT_EQ(read_event(client.receive()), (Received{1, protocol::kLoopInconsistencyClass, 1, 1}));
}

TEST_F(EventServers, DisconnectASubscriberThatAsks) {
  PacketClient client = subscriber();
  testing::internal::CaptureStderr();
  EXPECT_TRUE(client.ask(request(1)).empty());
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "stp-switchd: " + path_ +
                ": a subscriber sent 120 octets that are no subscription: disconnecting it\n");
  tell(kLoopEvent, 1, 1);
  expect_service();
}

TEST_F(EventServers, DisconnectWhoeverSubscribesMalformed) {
  PacketClient client = greeted();
  Packet malformed = make_subscription({protocol::kLoopInconsistencyClass});
  put(&malformed, offsetof(wire::Subscribe, class_count), uint32_t{2});
  testing::internal::CaptureStderr();
  EXPECT_TRUE(client.ask(malformed).empty());
  EXPECT_EQ(
      testing::internal::GetCapturedStderr(),
      "stp-switchd: " + path_ + ": a client sent a malformed subscription of 24 octets: disconnecting it\n");
  expect_service();
}

TEST_F(EventServers, DisconnectWhoeverSubscribesInMoreThanAMessage) {
  PacketClient client = greeted();
  Packet huge = make_subscription({protocol::kLoopInconsistencyClass});
  huge.resize(wire::kMaxMessageSize + 1);
  put(&huge, offsetof(wire::MessageHeader, length), static_cast<uint32_t>(huge.size()));
  testing::internal::CaptureStderr();
  EXPECT_TRUE(client.ask(huge).empty());
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "stp-switchd: " + path_ +
                ": a client sent a malformed subscription of 131073 octets: disconnecting it\n");
}

TEST_F(EventServers, SurviveSubscribersThatHangUpAtAnyPoint) {
  for (int round = 0; round < 100; ++round) {
    PacketClient at_once = greeted();
    at_once.send(make_subscription({protocol::kLoopInconsistencyClass}));
    at_once.hang_up();
    PacketClient with_events = subscriber();
    tell(kLoopEvent, 1, 1);
    with_events.hang_up();
    tell(kLoopEvent, 1, 2);
    PacketClient half = subscriber();
    half.stop_sending();
    tell(kLoopEvent, 1, 1);
    let_the_server_work();
    tell(kLoopEvent, 1, 2);
  }
  expect_service();
}

TEST_F(EventServers, TellTheOthersWhenOneIsGone) {
  constexpr size_t kSubscribers = 5;
  std::vector<PacketClient> clients;
  clients.reserve(kSubscribers);
  for (size_t i = 0; i < kSubscribers; ++i) {
    clients.push_back(subscriber());
  }
  // Nobody has noticed yet when the events come.
  for (const uint32_t gone : {0U, 2U, 4U}) {
    clients[gone].hang_up();
  }
  tell(kLoopEvent, 1, 1);
  tell(kLoopEvent, 1, 2);
  for (const uint32_t left : {1U, 3U}) {
    EXPECT_EQ(read_event(clients[left].receive()), (Received{1, protocol::kLoopInconsistencyClass, 1, 1}));
    EXPECT_EQ(read_event(clients[left].receive()), (Received{2, protocol::kLoopInconsistencyClass, 1, 2}));
  }
}

TEST_F(EventServers, CountSubscribersAmongTheConnections) {
  testing::internal::CaptureStderr();
  for (int round = 0; round < 2; ++round) {
    std::vector<PacketClient> clients;
    for (size_t i = 0; i < 32; ++i) {
      clients.push_back(subscriber());
    }
    for (size_t i = 0; i < 32; ++i) {
      clients.push_back(greeted());
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "round " << round;
    testing::internal::CaptureStderr();
    clients.push_back(greeted());
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "stp-switchd: " + path_ +
                  ": 64 connections are open: disconnecting the one least in use for another\n");
    testing::internal::CaptureStderr();
    tell(kLoopEvent, 1, 1);
    for (size_t i = 0; i < 32; ++i) {
      EXPECT_EQ(read_event(clients[i].receive()), (Received{1, protocol::kLoopInconsistencyClass, 1, 1}));
    }
    clients.clear();
    let_the_server_work();
  }
  testing::internal::GetCapturedStderr();
}

TEST_F(EventServers, SpareASubscriberForConnectionsThatAreInUse) {
  PacketClient client = subscriber();
  std::vector<PacketClient> others;
  for (uint32_t i = 0; i < 70; ++i) {
    others.push_back(greeted());
    EXPECT_EQ(reply_head(others.back().ask(request(i))).header.sequence, i);
  }
  tell(kLoopEvent, 1, 1);
  EXPECT_EQ(read_event(client.receive()), (Received{1, protocol::kLoopInconsistencyClass, 1, 1}));
}

TEST_F(EventServers, GiveThePlaceOfTheFirstOfTooManySubscribersToANewOne) {
  std::vector<PacketClient> clients;
  for (size_t i = 0; i < 32; ++i) {
    clients.push_back(subscriber());
  }
  testing::internal::CaptureStderr();
  clients.push_back(subscriber());
  EXPECT_EQ(
      testing::internal::GetCapturedStderr(),
      "stp-switchd: " + path_ + ": there are 32 subscribers: disconnecting the first of them for another\n");
  EXPECT_TRUE(clients[0].receive().empty());
  clients.erase(clients.begin());
  tell(kLoopEvent, 1, 1);
  for (PacketClient &client : clients) {
    EXPECT_EQ(read_event(client.receive()), (Received{1, protocol::kLoopInconsistencyClass, 1, 1}));
  }
}

// A storm on few keys, while the subscriber reads nothing.
TEST_F(EventServers, DoNotWaitForASubscriberThatDoesNotRead) {
  constexpr uint32_t kEvents = 20000;
  constexpr uint32_t kTrees = 10;
  PacketClient slow = subscriber();
  PacketClient fast = subscriber();
  testing::internal::CaptureStderr();
  std::map<uint32_t, uint32_t> told;
  for (uint32_t i = 1; i <= kEvents; ++i) {
    told[i % kTrees] = i;
    tell(kLoopEvent, i % kTrees, i);
    const Received received = read_event(fast.receive());
    ASSERT_EQ(received, (Received{i, protocol::kLoopInconsistencyClass, i % kTrees, i}));
  }
  expect_service();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

  testing::internal::CaptureStderr();
  std::map<uint32_t, uint32_t> seen;
  uint32_t count = 0;
  while (seen != told) {
    const Received received = read_event(slow.receive());
    ASSERT_EQ(received.sequence, ++count);
    ASSERT_GT(received.number, seen[received.tree]) << "order";
    seen[received.tree] = received.number;
  }
  let_the_server_work();
  EXPECT_FALSE(slow.receive_now().has_value());
  EXPECT_LT(count, kEvents);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "stp-switchd: " + path_ +
                ": a subscriber has caught up; events replaced by later ones while they waited: " +
                std::to_string(kEvents - count) + "\n");

  // It is told of everything again.
  tell(kRootEvent, 1, 1);
  tell(kRootEvent, 1, 2);
  EXPECT_EQ(read_event(slow.receive()), (Received{count + 1, protocol::kRootInconsistencyClass, 1, 1}));
  EXPECT_EQ(read_event(slow.receive()), (Received{count + 2, protocol::kRootInconsistencyClass, 1, 2}));
}

TEST_F(EventServers, ForgetASubscriberThatNeitherReadsNorStays) {
  constexpr uint32_t kEvents = 5000;
  PacketClient slow = subscriber();
  for (uint32_t i = 1; i <= kEvents; ++i) {
    tell(kLoopEvent, 1, i);
  }
  testing::internal::CaptureStderr();
  slow.hang_up();
  let_the_server_work();
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              MatchesRegex("stp-switchd: " + path_ +
                           ": a subscriber has left; events replaced by later ones while they "
                           "waited: [0-9]+\n"));
  tell(kLoopEvent, 1, 1);
  expect_service();
}

TEST_F(EventServers, DoNotFillTheLogWithWhatSubscribersMissed) {
  constexpr uint32_t kEvents = 5000;
  constexpr size_t kSubscribers = 12;
  std::vector<PacketClient> slow;
  slow.reserve(kSubscribers);
  for (size_t i = 0; i < kSubscribers; ++i) {
    slow.push_back(subscriber());
  }
  for (uint32_t i = 1; i <= kEvents; ++i) {
    tell(kLoopEvent, 1, i);
  }
  testing::internal::CaptureStderr();
  slow.clear();
  let_the_server_work();
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              MatchesRegex("(stp-switchd: " + path_ +
                           ": a subscriber has left; events replaced by later ones while they "
                           "waited: [0-9]+\n){10}"));
  testing::internal::CaptureStderr();
  server_.reset();
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "stp-switchd: " + path_ + ": lines about clients that were left out: 2\n");
}

TEST_F(EventServers, FollowASubscriptionToTreesByOneEventOfThem) {
  PacketClient client = subscriber({protocol::kTreesClass, protocol::kNewRootClass});
  EXPECT_EQ(read_event(client.receive()), (Received{1, protocol::kTreesClass, 0, 0}));
  client.send(make_subscription({protocol::kNewRootClass}));
  let_the_server_work();
  server_->tell({TreeEvent{TreeEventKind::kTrees, 0, 0, 0, std::nullopt},
                 TreeEvent{TreeEventKind::kNewRoot, 5, 0, 0, SpanningTreeMode::kMst}});
  EXPECT_EQ(read_event(client.receive()), (Received{2, protocol::kNewRootClass, 5, 4}));
  client.send(make_subscription({protocol::kTreesClass}));
  let_the_server_work();
  EXPECT_EQ(read_event(client.receive()), (Received{3, protocol::kTreesClass, 0, 0}));
}

TEST_F(EventServers, TellOfMoreThanTheSocketTakesAtOnce) {
  constexpr uint32_t kTrees = 4094;
  PacketClient client = subscriber();
  std::vector<SwitchEvent> events;
  for (uint32_t tree = 1; tree <= kTrees; ++tree) {
    events.emplace_back(event(kRootEvent, tree, 1));
  }
  server_->tell(events);
  for (uint32_t tree = 1; tree <= kTrees; ++tree) {
    ASSERT_EQ(read_event(client.receive()), (Received{tree, protocol::kRootInconsistencyClass, tree, 1}));
  }
}

}  // namespace
