#include "server/command_server.h"

#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "server/send_failure.h"
#include "wire/message.h"
#include "wire/owned_fd.h"

namespace stpswitch {

namespace wire = stpplatform::wire;

// The other connections are for commands, whatever subscribers there are.
constexpr size_t kMaxSubscribers = kMaxConnections / 2;

CommandServer::CommandServer(EventLoop *loop, UnixSocketOptions options, ImagePublisher *publisher,
                             Faults *faults)
    : loop_(*loop),
      publisher_(*publisher),
      faults_(*faults),
      buffer_(wire::kMaxMessageSize),
      log_(loop, options.path),
      lease_(loop, publisher),
      acceptor_(
          loop, std::move(options), [this](stpplatform::OwnedFd fd) { take(std::move(fd)); },
          [this] { make_room(); }) {}

void CommandServer::take(stpplatform::OwnedFd fd) {
  lease_.renew();
  if (!send_hello(fd.get())) {
    connection_closed(describe_send_failure("cannot greet a client"));
    return;
  }
  const auto position = connections_.emplace(connections_.end());
  CommandConnection::Ends ends;
  ends.subscribed = [this, position](stpplatform::OwnedFd socket, NotificationClasses classes) {
    connections_.erase(position);
    take_subscriber(std::move(socket), std::move(classes));
  };
  ends.closed = [this, position](const std::string &why) {
    connections_.erase(position);
    connection_closed(why);
  };
  *position = std::make_unique<CommandConnection>(&loop_, std::move(fd), &publisher_, &faults_, buffer_,
                                                  std::move(ends));
}

// Whoever keeps connections that it does not use must not lock out an agent that comes later. Subscribers,
// which are silent by nature, are never so many that there is nobody else.
void CommandServer::make_room() {
  const auto least_in_use =
      std::min_element(connections_.begin(), connections_.end(),
                       [](const auto &one, const auto &other) { return one->is_less_in_use_than(*other); });
  (*least_in_use)
      ->close(std::to_string(kMaxConnections) +
              " connections are open: disconnecting the one least in use for another");
}

void CommandServer::connection_closed(const std::string &why) {
  acceptor_.connection_closed();
  if (connections_.empty() && subscribers_.empty()) {
    lease_.leave();
  }
  if (!why.empty()) {
    log_.log(why);
  }
}

void CommandServer::take_subscriber(stpplatform::OwnedFd fd, NotificationClasses classes) {
  if (subscribers_.size() == kMaxSubscribers) {
    subscribers_.front()->close("there are " + std::to_string(kMaxSubscribers) +
                                " subscribers: disconnecting the first of them for another");
  }
  const auto position = subscribers_.emplace(subscribers_.end());
  *position = std::make_unique<SubscriberConnection>(&loop_, std::move(fd), std::move(classes), buffer_,
                                                     &log_, [this, position](const std::string &why) {
                                                       subscribers_.erase(position);
                                                       connection_closed(why);
                                                     });
}

void CommandServer::tell(const std::vector<SwitchEvent> &events) {
  for (auto next = subscribers_.begin(); next != subscribers_.end();) {
    // A subscriber that is gone goes out of the list.
    SubscriberConnection &subscriber = **next;
    ++next;
    subscriber.tell(events);
  }
}

bool CommandServer::send_hello(int fd) const {
  wire::Hello hello{{wire::kMagic, wire::kVersion, static_cast<uint16_t>(wire::MessageType::kHello),
                     sizeof(wire::Hello), 0},
                    publisher_.size()};
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
  const int image = publisher_.fd();
  std::memcpy(CMSG_DATA(descriptor), &image, sizeof image);
  return ::sendmsg(fd, &message, MSG_NOSIGNAL | MSG_DONTWAIT) == static_cast<ssize_t>(sizeof hello);
}

}  // namespace stpswitch
