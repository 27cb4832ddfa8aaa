// One connection of the command socket: answers its requests one after the other.
#pragma once

#include <functional>
#include <span>
#include <string_view>

#include "base/file_descriptor.h"
#include "commands/packet.h"
#include "faults/faults.h"
#include "model/switch.h"
#include "server/event_loop.h"

namespace stpswitch {

// Logs why a message could not be sent, as errno says, unless the client is simply gone.
void log_send_failure(std::string_view what);

class CommandConnection {
 public:
  // `buffer` takes one packet and may serve all connections. `closed` is called once, as the last thing, and
  // may destroy the connection.
  CommandConnection(EventLoop *loop, FileDescriptor fd, const Switch *the_switch, Faults *faults,
                    std::span<uint8_t> buffer, std::function<void()> closed);
  CommandConnection(const CommandConnection &) = delete;
  CommandConnection &operator=(const CommandConnection &) = delete;

 private:
  void read_packet();
  void deliver(Packet reply);
  void send_pending();
  void stop_reading();
  void close();

  FileDescriptor fd_;
  const Switch &switch_;
  Faults &faults_;
  std::span<uint8_t> buffer_;
  std::function<void()> closed_;
  Packet pending_;  // the reply that is late, or that does not fit into the socket yet
  Event readable_;
  // While a reply is pending nothing is read, and a hang-up shows here.
  Event hung_up_;
  Event writable_;
  Event delay_over_;
};

}  // namespace stpswitch
