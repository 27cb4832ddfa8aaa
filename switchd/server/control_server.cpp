#include "server/control_server.h"

#include <utility>

namespace stpswitch {

ControlServer::ControlServer(EventLoop *loop, UnixSocketOptions options, ControlResponder *responder)
    : loop_(*loop),
      responder_(*responder),
      acceptor_(loop, std::move(options), [this](stpplatform::OwnedFd fd) { take(std::move(fd)); }) {}

void ControlServer::take(stpplatform::OwnedFd fd) {
  const auto position = connections_.emplace(connections_.end());
  *position = std::make_unique<ControlConnection>(&loop_, std::move(fd), &responder_, [this, position] {
    connections_.erase(position);
    acceptor_.connection_closed();
  });
}

}  // namespace stpswitch
