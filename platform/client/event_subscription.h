// The connection on which the switch tells of events, as long as somebody has subscribed to any
// (notification_registry.h).
//
// Everything happens in the agent's main loop: the connection is made by an alarm, read when there is input,
// and made again by an alarm (backoff.h) when it was lost. Nothing here waits, and requests, which have a
// connection of their own (connection.h), cost the same with it and without. Nothing is done before the main
// loop runs: an agent may still fork then.
//
// Where the agent has no memory for an alarm, the requests that managers send take its place.
#pragma once

#include <cstddef>
#include <cstdint>

#include "backoff.h"
#include "malformed_messages.h"
#include "platform/cmd.h"

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

  // To be called for every request of a manager: does what no alarm could be set for.
  void on_request() {
    if (is_alarm_missing_) {
      stand_in_for_alarm();
    }
  }

  // Drops connection and alarm, and forgets that anything ever failed.
  void reset();

 private:
  static void on_alarm(unsigned int alarm, void *connection);
  static void on_input(int socket, void *connection);
  void on_due();
  void stand_in_for_alarm();
  void open();
  bool receive_one();
  bool take_hello(const void *packet, size_t size);
  bool take_event(void *packet, size_t size);
  bool subscribe();
  void failed(cmd_result result, const char *what);
  void drop();
  void schedule(uint64_t ms);
  void unschedule();

  bool is_open() const { return socket_ >= 0; }

  int socket_ = -1;  // no owner with a destructor: at exit, that would run before the library's unloading
  unsigned int alarm_ = 0;         // 0: none. Due to connect; to give up waiting for a hello; or to subscribe
  bool is_alarm_missing_ = false;  // it could not be set
  bool alarm_failure_reported_ = false;  // since the latest that could
  uint64_t due_at_ms_ = 0;               // when the latest alarm, set or missing, is due
  bool is_greeted_ = false;              // the hello has come
  uint32_t sequence_ = 0;                // of the latest event
  uint64_t greeted_at_ms_ = 0;           // of the present connection
  uint32_t losses_ = 0;                  // connections that had been greeted
  Backoff backoff_;
  bool failure_reported_ = false;
  MalformedMessages malformed_{"events: "};
};

EventSubscription &event_subscription();

}  // namespace stpplatform
