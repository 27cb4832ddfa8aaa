// One packet sent or received: what interrupts it, what it waits for, and what comes with it.
#include "packet_socket.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>

#include "deadline.h"
#include "failing_calls.h"
#include "wire/owned_fd.h"

using stpplatform::Deadline;
using stpplatform::OwnedFd;

namespace {

constexpr uint64_t kPatientNs = 30'000'000'000;
constexpr char kText[] = "packet";

class PacketSockets : public testing::Test {
 protected:
  PacketSockets() {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK, 0, ends) != 0) {
      throw std::runtime_error("no sockets");
    }
    ours_.reset(ends[0]);
    theirs_.reset(ends[1]);
  }

  cmd_result send_text(uint64_t ns = kPatientNs) const {
    return stpplatform::send_packet(ours_.get(), kText, sizeof kText, Deadline(ns));
  }

  // Sends until there is no room.
  size_t fill() const {
    size_t sent = 0;
    while (send(ours_.get(), kText, sizeof kText, 0) >= 0) {
      ++sent;
    }
    EXPECT_EQ(errno, EAGAIN);
    return sent;
  }

  // What the other end has got, without waiting.
  std::string heard() const {
    char text[sizeof kText];
    const ssize_t size = recv(theirs_.get(), text, sizeof text, 0);
    return size < 0 ? "" : std::string(text, static_cast<size_t>(size));
  }

  OwnedFd ours_;
  OwnedFd theirs_;
};

TEST_F(PacketSockets, ASendThatASignalInterruptsIsMadeAgain) {
  failing_calls::fail_next_send(EINTR);
  EXPECT_EQ(send_text(), CMD_OK);
  EXPECT_EQ(heard(), std::string(kText, sizeof kText));
  EXPECT_EQ(heard(), "") << "once";
}

TEST_F(PacketSockets, ASendWithoutRoomEndsWithTheDeadline) {
  fill();
  EXPECT_EQ(send_text(0), CMD_TIMEOUT);
}

TEST_F(PacketSockets, ASendWaitsForRoom) {
  const size_t sent = fill();
  std::thread reader([&] {
    for (size_t i = 0; i < sent; ++i) {
      EXPECT_EQ(heard(), std::string(kText, sizeof kText));
    }
  });
  EXPECT_EQ(send_text(), CMD_OK);
  reader.join();
  EXPECT_EQ(heard(), std::string(kText, sizeof kText));
}

TEST_F(PacketSockets, AReceiveThatIsInterruptedOrComesTooLateIsMadeAgain) {
  for (const int error : {EINTR, EAGAIN}) {
    ASSERT_EQ(send(theirs_.get(), kText, sizeof kText, 0), static_cast<ssize_t>(sizeof kText));
    failing_calls::fail_next_recvmsg(error);
    char packet[64];
    size_t size = 0;
    EXPECT_EQ(
        stpplatform::receive_packet(ours_.get(), packet, sizeof packet, Deadline(kPatientNs), &size, nullptr),
        CMD_OK);
    EXPECT_EQ(std::string(packet, size), std::string(kText, sizeof kText));
  }
}

TEST_F(PacketSockets, AnEmptyPacketWithADescriptorIsNoEnd) {
  iovec nothing{nullptr, 0};
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
  msghdr message{};
  message.msg_iov = &nothing;
  message.msg_iovlen = 1;
  message.msg_control = control;
  message.msg_controllen = sizeof control;
  cmsghdr *const header = CMSG_FIRSTHDR(&message);
  header->cmsg_level = SOL_SOCKET;
  header->cmsg_type = SCM_RIGHTS;
  header->cmsg_len = CMSG_LEN(sizeof(int));
  const int sent = theirs_.get();
  std::memcpy(CMSG_DATA(header), &sent, sizeof sent);
  ASSERT_EQ(sendmsg(theirs_.get(), &message, 0), 0);
  char packet[64];
  size_t size = sizeof packet;
  OwnedFd descriptor;
  EXPECT_EQ(stpplatform::receive_packet(ours_.get(), packet, sizeof packet, Deadline(kPatientNs), &size,
                                        &descriptor),
            CMD_OK);
  EXPECT_EQ(size, 0U);
  EXPECT_TRUE(descriptor.is_open());
}

TEST_F(PacketSockets, APathThatIsTooLongHasNoSocket) {
  errno = 0;
  EXPECT_FALSE(
      stpplatform::connect_packet_socket(std::string(sizeof(sockaddr_un::sun_path), 's').c_str()).is_open());
  EXPECT_EQ(errno, ENAMETOOLONG);
}

}  // namespace
