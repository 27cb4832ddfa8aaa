#include "sources/linux_bridge/netlink_socket.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>

#include "base/system_failure.h"

namespace stpswitch {
namespace {

// The kernel fills at most half of it with one part of a dump.
constexpr size_t kLongestDatagram = size_t{64} * 1024;

constexpr uint32_t kKernel = 0;  // as a netlink address

}  // namespace

NetlinkSocket::NetlinkSocket(uint32_t groups)
    : socket_(mnl_socket_open2(NETLINK_ROUTE, SOCK_CLOEXEC | SOCK_NONBLOCK)), buffer_(kLongestDatagram) {
  if (!socket_ || mnl_socket_bind(socket_.get(), groups, MNL_SOCKET_AUTOPID) != 0) {
    throw system_failure("cannot open a netlink socket, by which the kernel tells about its bridges");
  }
}

void NetlinkSocket::set_receive_buffer(int octets) {
  // The first exceeds the system's limit, and needs CAP_NET_ADMIN; the second keeps to it. Less is no error:
  // what does not fit is noticed.
  if (::setsockopt(fd(), SOL_SOCKET, SO_RCVBUFFORCE, &octets, sizeof octets) != 0) {
    ::setsockopt(fd(), SOL_SOCKET, SO_RCVBUF, &octets, sizeof octets);
  }
}

NetlinkSocket::Receipt NetlinkSocket::receive(std::chrono::milliseconds wait) {
  pollfd arrival{fd(), POLLIN, 0};
  if (wait.count() > 0 && ::poll(&arrival, 1, static_cast<int>(wait.count())) <= 0) {
    return Receipt::kNothing;
  }
  sockaddr_nl sender{};
  iovec room{buffer_.data(), buffer_.size()};
  msghdr head{};
  head.msg_name = &sender;
  head.msg_namelen = sizeof sender;
  head.msg_iov = &room;
  head.msg_iovlen = 1;
  const ssize_t length = ::recvmsg(fd(), &head, 0);
  if (length < 0) {
    return errno == EAGAIN || errno == EINTR ? Receipt::kNothing : Receipt::kLost;
  }
  if ((head.msg_flags & MSG_TRUNC) != 0) {
    return Receipt::kLost;
  }
  length_ = sender.nl_pid == kKernel ? static_cast<size_t>(length) : 0;
  return Receipt::kDatagram;
}

void NetlinkSocket::send(const nlmsghdr &message) {
  if (mnl_socket_sendto(socket_.get(), &message, message.nlmsg_len) < 0) {
    throw system_failure("cannot ask the kernel about its bridges");
  }
}

}  // namespace stpswitch
