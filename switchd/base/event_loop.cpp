#include "base/event_loop.h"

#include <sys/time.h>

#include <csignal>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <string>

#include "base/log.h"

namespace stpswitch {
namespace {

void log_from_libevent(int severity, const char *message) {
  if (severity >= EVENT_LOG_WARN) {
    log_line(std::string("event loop: ") + message);
  }
}

void die_from_libevent(int code) {
  log_line("event loop: fatal error " + std::to_string(code));
  std::abort();
}

struct FreeConfig {
  void operator()(event_config *config) const { event_config_free(config); }
};

}  // namespace

EventLoop::EventLoop() {
  // libevent writes to connections whose other end may be gone.
  ::signal(SIGPIPE, SIG_IGN);
  event_set_log_callback(log_from_libevent);
  event_set_fatal_callback(die_from_libevent);
  const std::unique_ptr<event_config, FreeConfig> config(event_config_new());
  // Hang-ups are noticed also while nothing is read from a connection.
  if (config && event_config_require_features(config.get(), EV_FEATURE_EARLY_CLOSE) == 0) {
    base_.reset(event_base_new_with_config(config.get()));
  }
  if (!base_) {
    throw std::runtime_error("cannot create an event loop");
  }
}

Event EventLoop::own(event *handle) {
  if (handle == nullptr) {
    throw std::bad_alloc();
  }
  return Event(handle);
}

void EventLoop::run() {
  if (event_base_dispatch(base()) < 0) {
    throw std::runtime_error("the event loop failed");
  }
}

void EventLoop::stop() { event_base_loopbreak(base()); }

void wait_for(const Event &event) {
  if (event_add(event.get(), nullptr) != 0) {
    throw std::runtime_error("cannot wait for an event");
  }
}

void wait_for(const Event &event, std::chrono::milliseconds time) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
  const auto microseconds = std::chrono::microseconds(time - seconds);
  const timeval delay{static_cast<time_t>(seconds.count()), static_cast<suseconds_t>(microseconds.count())};
  if (event_add(event.get(), &delay) != 0) {
    throw std::runtime_error("cannot wait for a time");
  }
}

void forget(const Event &event) { event_del(event.get()); }

}  // namespace stpswitch
