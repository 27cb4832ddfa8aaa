// One connection of the control socket.
#pragma once

#include <event2/bufferevent.h>

#include <functional>
#include <memory>

#include "base/event_loop.h"
#include "control/responder.h"
#include "wire/owned_fd.h"

namespace stpswitch {

class ControlConnection {
 public:
  // `closed` is called once, as the last thing, and may destroy the connection.
  ControlConnection(EventLoop *loop, stpplatform::OwnedFd fd, ControlResponder *responder,
                    std::function<void()> closed);
  ControlConnection(const ControlConnection &) = delete;
  ControlConnection &operator=(const ControlConnection &) = delete;

 private:
  struct FreeStream {
    void operator()(bufferevent *stream) const { bufferevent_free(stream); }
  };

  static void on_read(bufferevent *stream, void *self) noexcept;
  static void on_written(bufferevent *stream, void *self) noexcept;
  static void on_event(bufferevent *stream, short what, void *self) noexcept;

  void answer_next();
  void all_is_written();
  void send_line(const std::string &text);
  void close();

  ControlResponder &responder_;
  std::function<void()> closed_;
  std::unique_ptr<bufferevent, FreeStream> stream_;
  bool is_answering_ = false;  // an answer is on its way: one at a time is kept in memory
  bool is_closing_ = false;    // after that answer
};

}  // namespace stpswitch
