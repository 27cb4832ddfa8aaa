// The command socket: greets each connection with the image, then serves its requests or, once it has
// subscribed, events.
#pragma once

#include <list>
#include <memory>
#include <string>
#include <vector>

#include "publisher/image_publisher.h"
#include "publisher/lease.h"
#include "server/acceptor.h"
#include "server/command_connection.h"
#include "server/subscriber_connection.h"
#include "server/throttled_log.h"
#include "wire/owned_fd.h"

namespace stpswitch {

class CommandServer {
 public:
  // All that is pointed to must outlive the server.
  CommandServer(EventLoop *loop, UnixSocketOptions options, ImagePublisher *publisher, Faults *faults);

  // Tells those who have subscribed.
  void tell(const std::vector<SwitchEvent> &events);

 private:
  void take(stpplatform::OwnedFd fd);
  void connection_closed(const std::string &why);
  void make_room();
  bool send_hello(int fd) const;
  void take_subscriber(stpplatform::OwnedFd fd, NotificationClasses classes);

  EventLoop &loop_;
  ImagePublisher &publisher_;
  Faults &faults_;
  std::vector<uint8_t> buffer_;
  ThrottledLog log_;
  Lease lease_;
  Acceptor acceptor_;
  std::list<std::unique_ptr<CommandConnection>> connections_;
  std::list<std::unique_ptr<SubscriberConnection>> subscribers_;  // as they subscribed
};

}  // namespace stpswitch
