// One connection of the command socket that has subscribed to events.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <vector>

#include "base/event_loop.h"
#include "model/events.h"
#include "server/event_packet.h"
#include "server/event_queue.h"
#include "server/throttled_log.h"
#include "wire/owned_fd.h"

namespace stpswitch {

class SubscriberConnection {
 public:
  // `buffer` takes one packet and may serve all connections; `log` must outlive this one. `closed` is called
  // once, as the last thing, and may destroy the connection; an empty `why` is not worth a line in the log.
  SubscriberConnection(EventLoop *loop, stpplatform::OwnedFd fd, NotificationClasses classes,
                       std::span<uint8_t> buffer, ThrottledLog *log,
                       std::function<void(const std::string &why)> closed);
  SubscriberConnection(const SubscriberConnection &) = delete;
  SubscriberConnection &operator=(const SubscriberConnection &) = delete;

  // Sends those that the subscriber wants, as soon as it takes them.
  void tell(const std::vector<SwitchEvent> &events);

  // Ends it.
  void close(const std::string &why);

 private:
  void read_packet();
  void answer_subscription();
  void send_waiting();
  void log_replaced(const std::string &what);

  stpplatform::OwnedFd fd_;
  NotificationClasses classes_;
  std::span<uint8_t> buffer_;
  ThrottledLog &log_;
  std::function<void(const std::string &why)> closed_;
  EventQueue queue_;
  uint32_t sequence_ = 0;  // of the latest event that was sent
  Event readable_;
  Event writable_;
};

}  // namespace stpswitch
