// A socket of rtnetlink(7), and what arrives there.
#pragma once

#include <libmnl/libmnl.h>
#include <linux/netlink.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace stpswitch {

class NetlinkSocket {
 public:
  // What a try to receive has come to.
  enum class Receipt {
    kDatagram,
    kNothing,  // there is none, or none came in time
    kLost      // the kernel had more to tell than fits: something is missing from here on
  };

  // Listens to these groups (RTMGRP_...), and may be asked. Throws std::runtime_error.
  explicit NetlinkSocket(uint32_t groups);

  int fd() const { return mnl_socket_get_fd(socket_.get()); }
  uint32_t port_id() const { return mnl_socket_get_portid(socket_.get()); }

  // The kernel puts what arrives into as much memory as this, where the process may have that much.
  void set_receive_buffer(int octets);

  // `wait`: how long for a datagram that is not there yet.
  Receipt receive(std::chrono::milliseconds wait);

  // What has been received last, aligned as netlink messages are.
  std::span<const uint8_t> datagram() const { return {buffer_.data(), length_}; }

  // Throws std::runtime_error.
  void send(const nlmsghdr &message);

 private:
  struct CloseSocket {
    void operator()(mnl_socket *socket) const { mnl_socket_close(socket); }
  };

  std::unique_ptr<mnl_socket, CloseSocket> socket_;
  std::vector<uint8_t> buffer_;
  size_t length_ = 0;
};

// Calls the visitor with each message that lies within the datagram. libmnl's own check takes a length of
// more than 31 bits for a negative one, which is short enough.
template <class Visitor>
void for_each_message(std::span<const uint8_t> datagram, Visitor &&visitor) {
  while (datagram.size() >= sizeof(nlmsghdr)) {
    const void *const begin = datagram.data();
    const auto &message = *static_cast<const nlmsghdr *>(begin);
    if (message.nlmsg_len < sizeof(nlmsghdr) || message.nlmsg_len > datagram.size()) {
      return;
    }
    visitor(message);
    datagram = datagram.subspan(std::min<size_t>(NLMSG_ALIGN(message.nlmsg_len), datagram.size()));
  }
}

}  // namespace stpswitch
