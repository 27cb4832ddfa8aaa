// One connection of the command socket: answers its requests one after the other, until it subscribes to
// events.
#pragma once

#include <chrono>
#include <functional>
#include <span>
#include <string>

#include "base/event_loop.h"
#include "base/packet.h"
#include "faults/faults.h"
#include "publisher/image_publisher.h"
#include "server/event_packet.h"
#include "wire/owned_fd.h"

namespace stpswitch {

class CommandConnection {
 public:
  // What ends the connection: a subscription, which takes the socket along, or anything else.
  struct Ends {
    std::function<void(stpplatform::OwnedFd, NotificationClasses)> subscribed;
    std::function<void(const std::string &why)> closed;  // an empty `why` is not worth a line in the log
  };

  // `buffer` takes one packet and may serve all connections. One of `ends` is called once, as the last thing,
  // and may destroy the connection.
  CommandConnection(EventLoop *loop, stpplatform::OwnedFd fd, ImagePublisher *publisher, Faults *faults,
                    std::span<uint8_t> buffer, Ends ends);
  CommandConnection(const CommandConnection &) = delete;
  CommandConnection &operator=(const CommandConnection &) = delete;

  // Orders connections by what their clients lose with them: least with one that has never asked for
  // anything, then with the one that has been silent longest.
  bool is_less_in_use_than(const CommandConnection &other) const;

  // Ends it.
  void close(const std::string &why);

 private:
  void read_packet();
  void subscribe(std::span<const uint8_t> packet, size_t sent_size);
  void deliver(Packet reply);
  void send_pending();
  void stop_reading();
  void hung_up();

  stpplatform::OwnedFd fd_;
  ImagePublisher &publisher_;
  Faults &faults_;
  std::span<uint8_t> buffer_;
  Ends ends_;
  bool has_asked_ = false;
  std::chrono::steady_clock::time_point heard_at_ = std::chrono::steady_clock::now();
  Packet pending_;  // the reply that is late, or that does not fit into the socket yet
  Event readable_;
  // While a reply is pending nothing is read, and a hang-up shows here.
  Event hung_up_;
  Event writable_;
  Event delay_over_;
};

}  // namespace stpswitch
