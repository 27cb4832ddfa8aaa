#include "server/command_connection.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <tuple>
#include <utility>

#include "faults/garbage.h"
#include "server/command_reply.h"
#include "server/send_failure.h"

namespace stpswitch {

CommandConnection::CommandConnection(EventLoop *loop, stpplatform::OwnedFd fd, ImagePublisher *publisher,
                                     Faults *faults, std::span<uint8_t> buffer, Ends ends)
    : fd_(std::move(fd)),
      publisher_(*publisher),
      faults_(*faults),
      buffer_(buffer),
      ends_(std::move(ends)),
      readable_(loop->make_event<&CommandConnection::read_packet>(fd_.get(), EV_READ | EV_PERSIST, this)),
      hung_up_(loop->make_event<&CommandConnection::hung_up>(fd_.get(), EV_CLOSED, this)),
      writable_(loop->make_event<&CommandConnection::send_pending>(fd_.get(), EV_WRITE, this)),
      delay_over_(loop->make_event<&CommandConnection::send_pending>(-1, 0, this)) {
  wait_for(readable_);
}

bool CommandConnection::is_less_in_use_than(const CommandConnection &other) const {
  return std::tie(has_asked_, heard_at_) < std::tie(other.has_asked_, other.heard_at_);
}

void CommandConnection::read_packet() {
  const ssize_t got = ::recv(fd_.get(), buffer_.data(), buffer_.size(), MSG_TRUNC | MSG_DONTWAIT);
  if (got < 0 && (errno == EAGAIN || errno == EINTR)) {
    return;
  }
  if (got <= 0) {
    hung_up();
    return;
  }
  const auto sent_size = static_cast<size_t>(got);
  const auto packet = buffer_.first(std::min(sent_size, buffer_.size()));
  if (claims_to_be_subscription(packet)) {
    subscribe(packet, sent_size);
    return;
  }
  auto reply = answer_packet(publisher_.view(), packet, sent_size);
  if (!reply) {
    close("a client sent " + std::to_string(sent_size) + " octets that are no message: disconnecting it");
    return;
  }
  has_asked_ = true;
  heard_at_ = std::chrono::steady_clock::now();
  if (is_renewal(packet, sent_size)) {
    pending_ = std::move(*reply);
    send_pending();
  } else {
    deliver(std::move(*reply));
  }
}

void CommandConnection::subscribe(std::span<const uint8_t> packet, size_t sent_size) {
  auto classes = read_subscription(packet, sent_size);
  if (!classes) {
    close("a client sent a malformed subscription of " + std::to_string(sent_size) +
          " octets: disconnecting it");
    return;
  }
  // The socket goes to somebody else, who must not find this connection's events on it.
  readable_.reset();
  hung_up_.reset();
  writable_.reset();
  const auto subscribed = std::move(ends_.subscribed);
  subscribed(std::move(fd_), std::move(*classes));
}

void CommandConnection::deliver(Packet reply) {
  const Fault fault = faults_.next();
  switch (fault.kind) {
    case FaultKind::kDrop:
      return;
    case FaultKind::kDisconnect:
      close({});
      return;
    case FaultKind::kDelay:
      pending_ = std::move(reply);
      stop_reading();
      wait_for(delay_over_, fault.delay);
      return;
    case FaultKind::kGarbage:
      reply = spoil(std::move(reply), garbage_of_turn(fault.turn));
      break;
    case FaultKind::kNone:
      break;
  }
  pending_ = std::move(reply);
  send_pending();
}

void CommandConnection::send_pending() {
  publisher_.renew_lease();
  const ssize_t sent = ::send(fd_.get(), pending_.data(), pending_.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  if (sent >= 0) {
    forget(hung_up_);
    wait_for(readable_);
  } else if (errno == EAGAIN || errno == EINTR) {
    stop_reading();
    wait_for(writable_);
  } else {
    close(describe_send_failure("cannot send a reply"));
  }
}

// A client that does not take its replies does not get more of them into memory.
void CommandConnection::stop_reading() {
  forget(readable_);
  wait_for(hung_up_);
}

void CommandConnection::hung_up() { close({}); }

void CommandConnection::close(const std::string &why) {
  const auto closed = std::move(ends_.closed);
  closed(why);
}

}  // namespace stpswitch
