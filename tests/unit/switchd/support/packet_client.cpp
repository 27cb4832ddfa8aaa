#include "support/packet_client.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>

#include "wire/message.h"

namespace wire = stpplatform::wire;

bool run_until(const stpswitch::EventLoop &loop, const std::function<bool()> &condition) {
  constexpr std::chrono::seconds kMustHang{60};
  const auto give_up = std::chrono::steady_clock::now() + kMustHang;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > give_up) {
      return false;
    }
    event_base_loop(loop.base(), EVLOOP_NONBLOCK);
  }
  return true;
}

stpplatform::OwnedFd connect_to(const stpswitch::EventLoop &loop, const std::string &path, int type) {
  stpplatform::OwnedFd fd(::socket(AF_UNIX, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  // While the server's queue is full, it must get a chance to accept.
  int result = 0;
  EXPECT_TRUE(run_until(loop, [&] {
    result = ::connect(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address);
    return result == 0 || errno != EAGAIN;
  }));
  EXPECT_EQ(result, 0) << path << ": " << std::strerror(errno);
  return fd;
}

PacketClient::PacketClient(const stpswitch::EventLoop *loop, const std::string &path)
    : loop_(loop), fd_(connect_to(*loop, path, SOCK_SEQPACKET)) {}

void PacketClient::send(const stpswitch::Packet &packet) {
  EXPECT_TRUE(run_until(*loop_, [&] { return try_to_send(packet); })) << "the packet is not taken";
}

bool PacketClient::try_to_send(const stpswitch::Packet &packet) {
  const ssize_t sent = ::send(fd_.get(), packet.data(), packet.size(), MSG_NOSIGNAL);
  EXPECT_TRUE(sent >= 0 || errno == EAGAIN || errno == EPIPE || errno == ECONNRESET) << std::strerror(errno);
  return sent >= 0 || errno != EAGAIN;
}

std::optional<stpswitch::Packet> PacketClient::receive_now() {
  stpswitch::Packet packet(wire::kMaxMessageSize);
  const ssize_t got = ::recv(fd_.get(), packet.data(), packet.size(), 0);
  if (got < 0 && errno == EAGAIN) {
    return std::nullopt;
  }
  packet.resize(got > 0 ? static_cast<size_t>(got) : 0);
  return packet;
}

stpswitch::Packet PacketClient::receive() {
  std::optional<stpswitch::Packet> packet;
  const auto has_arrived = [&] {
    packet = receive_now();
    return packet.has_value();
  };
  EXPECT_TRUE(run_until(*loop_, has_arrived)) << "the server neither answers nor hangs up";
  return packet.value_or(stpswitch::Packet());
}

stpplatform::OwnedFd PacketClient::receive_hello() {
  wire::Hello hello{};
  iovec octets{&hello, sizeof hello};
  alignas(cmsghdr) std::array<uint8_t, CMSG_SPACE(sizeof(int))> ancillary{};
  msghdr message{};
  message.msg_iov = &octets;
  message.msg_iovlen = 1;
  message.msg_control = ancillary.data();
  message.msg_controllen = ancillary.size();
  ssize_t got = 0;
  EXPECT_TRUE(run_until(*loop_, [&] {
    got = ::recvmsg(fd_.get(), &message, MSG_CMSG_CLOEXEC);
    return got >= 0 || errno != EAGAIN;
  })) << "no hello";
  EXPECT_EQ(got, static_cast<ssize_t>(sizeof hello));
  const cmsghdr *const descriptor = CMSG_FIRSTHDR(&message);
  if (descriptor == nullptr || descriptor->cmsg_type != SCM_RIGHTS) {
    ADD_FAILURE() << "the hello brings no file descriptor";
    return {};
  }
  int fd = -1;
  std::memcpy(&fd, CMSG_DATA(descriptor), sizeof fd);
  return stpplatform::OwnedFd(fd);
}

stpswitch::Packet PacketClient::ask(const stpswitch::Packet &request) {
  send(request);
  return receive();
}

void PacketClient::stop_sending() { ::shutdown(fd_.get(), SHUT_WR); }
