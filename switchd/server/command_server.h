// The command socket: greets each connection with the snapshot, then serves its requests.
#pragma once

#include <list>
#include <memory>
#include <vector>

#include "server/acceptor.h"
#include "server/command_connection.h"
#include "server/snapshot_publisher.h"

namespace stpswitch {

class CommandServer {
 public:
  // All that is pointed to must outlive the server.
  CommandServer(EventLoop *loop, UnixSocketOptions options, const Switch *the_switch,
                const SnapshotPublisher *snapshot, Faults *faults);

 private:
  void take(FileDescriptor fd);
  bool send_hello(int fd) const;

  EventLoop &loop_;
  const Switch &switch_;
  const SnapshotPublisher &snapshot_;
  Faults &faults_;
  std::vector<uint8_t> buffer_;
  Acceptor acceptor_;
  std::list<std::unique_ptr<CommandConnection>> connections_;
};

}  // namespace stpswitch
