// The connection on which the switch tells of events, as long as somebody has subscribed to any
// (notification_registry.h).
//
// Everything happens in the agent's main loop: the connection is made by an alarm, read when there is input,
// and made again by an alarm (backoff.h) when it was lost. Nothing here waits, and requests, which have a
// connection of their own (connection.h), cost the same with it and without. Nothing is done before the main
// loop runs: an agent may still fork then.
#pragma once

#include <cstddef>
#include <cstdint>

#include "backoff.h"

namespace stpplatform {

class EventSubscription {
 public:
  constexpr EventSubscription() = default;
  EventSubscription(const EventSubscription &) = delete;
  EventSubscription &operator=(const EventSubscription &) = delete;

  // The most events that are handed out before the main loop turns to requests.
  static constexpr int kEventsPerWakeup = 64;

  // Sees to it that the switch is told, soon, what is subscribed to now.
  void follow_subscriptions();

  // Drops connection and alarm, and forgets that anything ever failed.
  void reset();

 private:
  static void on_alarm(unsigned int alarm, void *connection);
  static void on_input(int socket, void *connection);
  void open();
  bool receive_one();
  bool take_hello(const void *packet, size_t size);
  bool take_event(void *packet, size_t size);
  bool subscribe();
  void failed(const char *what);
  void drop();
  void schedule(uint64_t ms);
  void unschedule();

  bool is_open() const { return socket_ >= 0; }

  int socket_ = -1;  // no owner with a destructor: at exit, that would run before the library's unloading
  unsigned int alarm_ = 0;      // 0: none. Due to connect; to give up waiting for a hello; or to subscribe
  bool is_greeted_ = false;     // the hello has come
  uint32_t sequence_ = 0;       // of the latest event
  uint64_t greeted_at_ms_ = 0;  // of the present connection
  uint32_t losses_ = 0;         // connections that had been greeted
  Backoff backoff_;
  bool failure_reported_ = false;
};

EventSubscription &event_subscription();

}  // namespace stpplatform
