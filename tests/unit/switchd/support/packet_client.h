// A client of the command socket, in the same thread as the server: while it waits, it lets the loop run.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "base/event_loop.h"
#include "base/packet.h"
#include "wire/owned_fd.h"

// Runs the loop until the condition holds. False when that takes so long that something must hang.
bool run_until(const stpswitch::EventLoop &loop, const std::function<bool()> &condition);

// A nonblocking connection to a local socket that the loop serves.
stpplatform::OwnedFd connect_to(const stpswitch::EventLoop &loop, const std::string &path, int type);

class PacketClient {
 public:
  // Connects, but does not wait for the hello.
  PacketClient(const stpswitch::EventLoop *loop, const std::string &path);

  void send(const stpswitch::Packet &packet);

  // Sends as long as the socket takes it; true when this packet was taken.
  bool try_to_send(const stpswitch::Packet &packet);

  // The next packet; an empty one when the server hung up. Fails the test when neither comes.
  stpswitch::Packet receive();

  // What receive() would return, if it is there already.
  std::optional<stpswitch::Packet> receive_now();

  // Receives the hello and returns the file descriptor that comes with it.
  stpplatform::OwnedFd receive_hello();

  // Sends a request and receives its reply.
  stpswitch::Packet ask(const stpswitch::Packet &request);

  void hang_up() { fd_ = {}; }
  void stop_sending();

 private:
  const stpswitch::EventLoop *loop_;
  stpplatform::OwnedFd fd_;
};
