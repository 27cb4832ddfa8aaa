#include "server/subscriber_connection.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <utility>

#include "server/send_failure.h"
#include "wire/message.h"
#include "wire/owned_fd.h"

namespace stpswitch {

SubscriberConnection::SubscriberConnection(EventLoop *loop, stpplatform::OwnedFd fd,
                                           NotificationClasses classes, std::span<uint8_t> buffer,
                                           ThrottledLog *log,
                                           std::function<void(const std::string &why)> closed)
    : fd_(std::move(fd)),
      classes_(std::move(classes)),
      buffer_(buffer),
      log_(*log),
      closed_(std::move(closed)),
      readable_(loop->make_event<&SubscriberConnection::read_packet>(fd_.get(), EV_READ | EV_PERSIST, this)),
      writable_(loop->make_event<&SubscriberConnection::send_waiting>(fd_.get(), EV_WRITE, this)) {
  wait_for(readable_);
  answer_subscription();
}

// Whoever follows the trees has them looked for once, since nobody has told of earlier changes.
void SubscriberConnection::answer_subscription() {
  if (classes_.contains(STP_NOTIFICATION_TREES)) {
    queue_.push(TreeEvent{TreeEventKind::kTrees, 0, 0, 0, std::nullopt});
    wait_for(writable_);
  }
}

void SubscriberConnection::tell(const std::vector<SwitchEvent> &events) {
  for (const SwitchEvent &event : events) {
    if (classes_.contains(class_of(event))) {
      queue_.push(event);
    }
  }
  send_waiting();
}

// Only another subscription is due here.
void SubscriberConnection::read_packet() {
  const ssize_t got = ::recv(fd_.get(), buffer_.data(), buffer_.size(), MSG_TRUNC | MSG_DONTWAIT);
  if (got < 0 && (errno == EAGAIN || errno == EINTR)) {
    return;
  }
  if (got <= 0) {
    close({});
    return;
  }
  const auto sent_size = static_cast<size_t>(got);
  auto classes = read_subscription(buffer_.first(std::min(sent_size, buffer_.size())), sent_size);
  if (!classes) {
    close("a subscriber sent " + std::to_string(sent_size) +
          " octets that are no subscription: disconnecting it");
    return;
  }
  classes_ = std::move(*classes);
  answer_subscription();
}

void SubscriberConnection::send_waiting() {
  while (!queue_.is_empty()) {
    const uint32_t sequence = stpplatform::wire::next_sequence(sequence_);
    const Packet packet = make_event_packet(queue_.front(), sequence);
    if (::send(fd_.get(), packet.data(), packet.size(), MSG_NOSIGNAL | MSG_DONTWAIT) < 0) {
      if (errno == EAGAIN || errno == EINTR) {
        wait_for(writable_);
      } else {
        close(describe_send_failure("cannot send an event"));
      }
      return;
    }
    queue_.pop();
    sequence_ = sequence;
  }
  log_replaced("has caught up");
}

void SubscriberConnection::log_replaced(const std::string &what) {
  const uint64_t replaced = queue_.take_replaced();
  if (replaced != 0) {
    log_.log("a subscriber " + what +
             "; events replaced by later ones while they waited: " + std::to_string(replaced));
  }
}

void SubscriberConnection::close(const std::string &why) {
  log_replaced("has left");
  const auto closed = std::move(closed_);
  closed(why);
}

}  // namespace stpswitch
