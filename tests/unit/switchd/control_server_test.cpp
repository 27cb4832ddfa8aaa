// The control socket with clients of every kind. Server and clients share a thread: see packet_client.h.
#include "server/control_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <random>
#include <string>
#include <vector>

#include "control/control_protocol.h"
#include "sources/scenario/scenario_source.h"
#include "support/packet_client.h"
#include "support/states.h"
#include "support/temporary_folder.h"
#include "wire/owned_fd.h"

using namespace stpswitch;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr char kPing[] = "{\"op\":\"ping\"}\n";
constexpr char kPong[] = "{\"ok\":true}\n";

class StreamClient {
 public:
  StreamClient(const EventLoop *loop, const std::string &path)
      : loop_(*loop), fd_(connect_to(*loop, path, SOCK_STREAM)) {}

  // Sends what the socket takes at once.
  size_t try_to_send(const std::string &text) {
    const ssize_t sent = ::send(fd_.get(), text.data(), text.size(), MSG_NOSIGNAL);
    EXPECT_TRUE(sent >= 0 || errno == EAGAIN || errno == EPIPE) << errno;
    return sent >= 0 ? static_cast<size_t>(sent) : 0;
  }

  void send(const std::string &text) {
    size_t sent = 0;
    EXPECT_TRUE(run_until(loop_, [&] {
      sent += try_to_send(text.substr(sent));
      return sent == text.size();
    }));
  }

  // One line with its end; less when the server hung up.
  std::string receive_line() {
    size_t searched = 0;
    size_t end = std::string::npos;
    EXPECT_TRUE(run_until(loop_, [&] {
      const bool is_connected = receive_more();
      end = waiting_.find('\n', searched);
      searched = waiting_.size();
      return !is_connected || end != std::string::npos;
    })) << "the server neither answers nor hangs up";
    std::string line = waiting_.substr(0, end == std::string::npos ? end : end + 1);
    waiting_.erase(0, line.size());
    return line;
  }

  // Exactly so many octets, whatever they are.
  void receive(size_t size) {
    std::vector<char> octets(size);
    size_t received = 0;
    EXPECT_TRUE(run_until(loop_, [&] {
      const ssize_t got = ::recv(fd_.get(), octets.data() + received, size - received, 0);
      received += got > 0 ? static_cast<size_t>(got) : 0;
      return received == size;
    })) << "the server does not go on";
  }

  std::string ask(const std::string &text) {
    send(text);
    return receive_line();
  }

 private:
  // False when the server hung up.
  bool receive_more() {
    std::array<char, 65536> block{};
    const ssize_t got = ::recv(fd_.get(), block.data(), block.size(), 0);
    if (got > 0) {
      waiting_.append(block.data(), static_cast<size_t>(got));
    }
    return got > 0 || (got < 0 && errno == EAGAIN);
  }

  const EventLoop &loop_;
  stpplatform::OwnedFd fd_;
  std::string waiting_;  // received, and not returned yet
};

class ControlServers : public testing::Test {
 protected:
  static SwitchState switch_with_ports(uint32_t count) {
    SwitchState state = empty_switch();
    for (uint32_t number = 1; number <= count; ++number) {
      port(state, number);
    }
    return state;
  }

  StreamClient connect() { return {&loop_, path_}; }

  // Long enough for all that has arrived to be read.
  void let_the_server_work() {
    for (int turn = 0; turn < 4; ++turn) {
      event_base_loop(loop_.base(), EVLOOP_NONBLOCK);
    }
  }

  TemporaryFolder folder_;
  std::string path_ = folder_.path("control.sock");
  EventLoop loop_;
  Switch switch_{switch_with_ports(3967)};
  Faults faults_;
  const ScenarioSource source_{SCENARIOS "/mst-small.toml"};
  ControlResponder responder_{&source_, &switch_, &faults_};
  ControlServer server_{&loop_, {path_, SOCK_STREAM, 0600, std::nullopt}, &responder_};
};

TEST_F(ControlServers, AnswerOneRequestAfterTheOther) {
  StreamClient client = connect();
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(client.ask(kPing), kPong);
  }
}

TEST_F(ControlServers, AnswerRequestsThatWereSentTogether) {
  StreamClient client = connect();
  client.send(std::string(kPing) + "nonsense\n" + kPing);
  EXPECT_EQ(client.receive_line(), kPong);
  EXPECT_EQ(client.receive_line(), "{\"error\":\"the request is not a JSON object\",\"ok\":false}\n");
  EXPECT_EQ(client.receive_line(), kPong);
}

TEST_F(ControlServers, AnswerARequestThatComesInPieces) {
  StreamClient client = connect();
  for (const char octet : std::string(kPing)) {
    client.send(std::string(1, octet));
    event_base_loop(loop_.base(), EVLOOP_NONBLOCK);
  }
  EXPECT_EQ(client.receive_line(), kPong);
}

TEST_F(ControlServers, AnswerAtAnyLength) {
  StreamClient client = connect();
  const std::string everything = client.ask("{\"op\":\"show\"}\n");
  EXPECT_GT(everything.size(), 500'000U);
  EXPECT_THAT(everything, HasSubstr("[\"port.3967.switchport\",true]"));
  EXPECT_THAT(everything, EndsWith("]}\n"));
  EXPECT_EQ(client.ask(kPing), kPong);
}

TEST_F(ControlServers, RefuseALineWithoutEndAndDisconnect) {
  StreamClient client = connect();
  client.send(std::string(control::kMaxRequestSize, 'x'));
  EXPECT_EQ(client.receive_line(), "{\"error\":\"the request is longer than 65536 octets\",\"ok\":false}\n");
  EXPECT_EQ(client.receive_line(), "");
}

TEST_F(ControlServers, DoNotWaitForAClientThatDoesNotRead) {
  StreamClient lazy = connect();
  std::string requests;
  for (int i = 0; i < 1000; ++i) {
    requests += "{\"op\":\"show\"}\n";
  }
  lazy.try_to_send(requests);
  StreamClient client = connect();
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(client.ask(kPing), kPong);
  }
}

TEST_F(ControlServers, SurviveClientsThatHangUpAtAnyPointOfARequest) {
  const std::string request = kPing;
  for (size_t length = 0; length <= request.size(); ++length) {
    connect().try_to_send(request.substr(0, length));
    let_the_server_work();
    StreamClient noticed = connect();
    noticed.try_to_send(request.substr(0, length));
    let_the_server_work();
  }
  EXPECT_EQ(connect().ask(kPing), kPong);
}

// The answer is longer than what the socket takes at once.
TEST_F(ControlServers, SurviveClientsThatHangUpAtAnyPointOfAnAnswer) {
  constexpr uint32_t kPorts = 600;
  constexpr size_t kMoreThanASocketTakes = 400'000;
  const std::string request = "{\"op\":\"show\"}\n";
  switch_.replace(switch_with_ports(kPorts));
  const size_t size = connect().ask(request).size();
  ASSERT_GT(size, kMoreThanASocketTakes);
  connect().try_to_send(request);
  let_the_server_work();
  for (const size_t length : {size_t{0}, size_t{1}, size / 2, size - 1, size}) {
    StreamClient client = connect();
    client.send(request);
    let_the_server_work();
    client.receive(length);
  }
  let_the_server_work();
  EXPECT_EQ(connect().ask(kPing), kPong);
}

TEST_F(ControlServers, RefuseConnectionsAboveTheLimit) {
  std::vector<StreamClient> clients;
  for (size_t i = 0; i < 64; ++i) {
    clients.push_back(connect());
    EXPECT_EQ(clients.back().ask(kPing), kPong);
  }
  testing::internal::CaptureStderr();
  EXPECT_EQ(connect().receive_line(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "stp-switchd: " + path_ + ": refusing further connections: 64 are open\n");
  clients.clear();
  let_the_server_work();
  EXPECT_EQ(connect().ask(kPing), kPong);
}

class ControlServersUnderJunk : public ControlServers, public testing::WithParamInterface<uint32_t> {};

TEST_P(ControlServersUnderJunk, AnswerWithErrors) {
  std::mt19937 numbers(GetParam());
  StreamClient client = connect();
  for (int i = 0; i < 2000; ++i) {
    std::string line(numbers() % 200, ' ');
    for (char &octet : line) {
      octet = static_cast<char>(numbers());
      octet = octet == '\n' ? ' ' : octet;
    }
    ASSERT_THAT(client.ask(line + "\n"), StartsWith("{\"error\":"))
        << "seed " << GetParam() << ", line " << i;
  }
  EXPECT_EQ(client.ask(kPing), kPong);
}

INSTANTIATE_TEST_SUITE_P(Seeds, ControlServersUnderJunk, testing::Values(20U, 21U),
                         testing::PrintToStringParamName());

}  // namespace
