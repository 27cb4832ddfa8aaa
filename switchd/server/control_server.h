// The control socket: reads requests line by line and writes their answers.
#pragma once

#include <list>
#include <memory>

#include "control/responder.h"
#include "server/acceptor.h"
#include "server/control_connection.h"

namespace stpswitch {

class ControlServer {
 public:
  // All that is pointed to must outlive the server.
  ControlServer(EventLoop *loop, UnixSocketOptions options, ControlResponder *responder);

 private:
  void take(stpplatform::OwnedFd fd);

  EventLoop &loop_;
  ControlResponder &responder_;
  Acceptor acceptor_;
  std::list<std::unique_ptr<ControlConnection>> connections_;
};

}  // namespace stpswitch
