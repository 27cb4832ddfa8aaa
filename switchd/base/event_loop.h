// libevent's loop and events, owned.
#pragma once

#include <event2/event-config.h>
#include <event2/event.h>

#include <chrono>
#include <ctime>
#include <memory>

namespace stpswitch {

static_assert(sizeof(std::time_t) == EVENT__SIZEOF_TIME_T, "libevent was built with another struct timeval");

struct FreeEvent {
  void operator()(event *handle) const { event_free(handle); }
};
using Event = std::unique_ptr<event, FreeEvent>;

class EventLoop {
 public:
  EventLoop();

  event_base *base() const { return base_.get(); }

  // An event that calls `(object.*kMethod)()`; it waits until event_add. `fd` -1 makes a timer of it.
  template <auto kMethod, class Object>
  Event make_event(int fd, short what, Object *object) {
    return own(event_new(base(), fd, what, &call<kMethod, Object>, object));
  }

  // Calls back when one of these signals arrives.
  template <auto kMethod, class Object>
  Event make_signal(int number, Object *object) {
    return own(event_new(base(), number, EV_SIGNAL | EV_PERSIST, &call<kMethod, Object>, object));
  }

  void run();
  void stop();

 private:
  struct FreeBase {
    void operator()(event_base *base) const { event_base_free(base); }
  };

  // An exception here would be a bug or the end of memory; libevent's frames must not be unwound.
  template <auto kMethod, class Object>
  static void call(int /*fd*/, short /*what*/, void *object) noexcept {
    (static_cast<Object *>(object)->*kMethod)();
  }

  static Event own(event *handle);

  std::unique_ptr<event_base, FreeBase> base_;
};

void wait_for(const Event &event);
void wait_for(const Event &event, std::chrono::milliseconds time);
void forget(const Event &event);

}  // namespace stpswitch
