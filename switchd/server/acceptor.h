// Accepts the connections of one listening socket, up to a limit.
#pragma once

#include <event2/listener.h>

#include <functional>
#include <memory>
#include <string>

#include "base/event_loop.h"
#include "server/unix_listener.h"
#include "wire/owned_fd.h"

namespace stpswitch {

// The most connections that one socket serves at a time.
inline constexpr size_t kMaxConnections = 64;

class Acceptor {
 public:
  // Gives each connection, nonblocking, to `take`, and counts it until connection_closed is called. At the
  // limit `make_room` may close one before; without it, further connections are refused.
  Acceptor(EventLoop *loop, UnixSocketOptions options, std::function<void(stpplatform::OwnedFd)> take,
           std::function<void()> make_room = {});

  void connection_closed();

  const std::string &path() const { return listener_.path(); }

 private:
  struct FreeListener {
    void operator()(evconnlistener *handle) const { evconnlistener_free(handle); }
  };

  static void on_connection(evconnlistener *handle, int fd, sockaddr *address, int length,
                            void *self) noexcept;
  static void on_error(evconnlistener *handle, void *self) noexcept;
  void accept(stpplatform::OwnedFd fd);
  void pause();
  void resume();

  UnixListener listener_;
  std::function<void(stpplatform::OwnedFd)> take_;
  std::function<void()> make_room_;
  std::unique_ptr<evconnlistener, FreeListener> accepting_;
  Event resume_timer_;
  size_t open_connections_ = 0;
  // What has been logged already.
  bool is_refusing_ = false;
  bool is_failing_ = false;
};

}  // namespace stpswitch
