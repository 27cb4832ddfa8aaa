#include "server/command_server.h"

#include <sys/socket.h>
#include <sys/uio.h>

#include <array>
#include <cstring>
#include <utility>

#include "base/log.h"
#include "wire/message.h"

namespace stpswitch {

namespace wire = stpplatform::wire;

CommandServer::CommandServer(EventLoop *loop, UnixSocketOptions options, const Switch *the_switch,
                             const SnapshotPublisher *snapshot, Faults *faults)
    : loop_(*loop),
      switch_(*the_switch),
      snapshot_(*snapshot),
      faults_(*faults),
      buffer_(wire::kMaxMessageSize),
      acceptor_(loop, std::move(options), [this](FileDescriptor fd) { take(std::move(fd)); }) {}

void CommandServer::take(FileDescriptor fd) {
  if (!send_hello(fd.get())) {
    log_send_failure("cannot greet a client");
    acceptor_.connection_closed();
    return;
  }
  const auto position = connections_.emplace(connections_.end());
  *position = std::make_unique<CommandConnection>(&loop_, std::move(fd), &switch_, &faults_, buffer_,
                                                  [this, position] {
                                                    connections_.erase(position);
                                                    acceptor_.connection_closed();
                                                  });
}

bool CommandServer::send_hello(int fd) const {
  wire::Hello hello{{wire::kMagic, wire::kVersion, static_cast<uint16_t>(wire::MessageType::kHello),
                     sizeof(wire::Hello), 0},
                    snapshot_.size()};
  iovec octets{&hello, sizeof hello};
  alignas(cmsghdr) std::array<uint8_t, CMSG_SPACE(sizeof(int))> ancillary{};
  msghdr message{};
  message.msg_iov = &octets;
  message.msg_iovlen = 1;
  message.msg_control = ancillary.data();
  message.msg_controllen = ancillary.size();
  cmsghdr *const descriptor = CMSG_FIRSTHDR(&message);
  descriptor->cmsg_level = SOL_SOCKET;
  descriptor->cmsg_type = SCM_RIGHTS;
  descriptor->cmsg_len = CMSG_LEN(sizeof(int));
  const int snapshot_fd = snapshot_.fd();
  std::memcpy(CMSG_DATA(descriptor), &snapshot_fd, sizeof snapshot_fd);
  return ::sendmsg(fd, &message, MSG_NOSIGNAL | MSG_DONTWAIT) == static_cast<ssize_t>(sizeof hello);
}

}  // namespace stpswitch
