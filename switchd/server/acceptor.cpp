#include "server/acceptor.h"

#include <chrono>
#include <new>
#include <utility>

#include "base/log.h"
#include "base/system_failure.h"
#include "wire/owned_fd.h"

namespace stpswitch {
namespace {

constexpr std::chrono::milliseconds kPauseAfterError{1000};

}  // namespace

Acceptor::Acceptor(EventLoop *loop, UnixSocketOptions options, std::function<void(stpplatform::OwnedFd)> take,
                   std::function<void()> make_room)
    : listener_(std::move(options)),
      take_(std::move(take)),
      make_room_(std::move(make_room)),
      accepting_(evconnlistener_new(loop->base(), &Acceptor::on_connection, this, LEV_OPT_CLOSE_ON_EXEC, 0,
                                    listener_.fd())),
      resume_timer_(loop->make_event<&Acceptor::resume>(-1, 0, this)) {
  if (!accepting_) {
    throw std::bad_alloc();
  }
  evconnlistener_set_error_cb(accepting_.get(), &Acceptor::on_error);
}

void Acceptor::connection_closed() {
  --open_connections_;
  is_refusing_ = false;
}

void Acceptor::on_connection(evconnlistener * /*handle*/, int fd, sockaddr * /*address*/, int /*length*/,
                             void *self) noexcept {
  static_cast<Acceptor *>(self)->accept(stpplatform::OwnedFd(fd));
}

void Acceptor::on_error(evconnlistener * /*handle*/, void *self) noexcept {
  static_cast<Acceptor *>(self)->pause();
}

void Acceptor::accept(stpplatform::OwnedFd fd) {
  is_failing_ = false;
  if (open_connections_ == kMaxConnections && make_room_) {
    make_room_();
  }
  if (open_connections_ == kMaxConnections) {
    if (!is_refusing_) {
      log_line(path() + ": refusing further connections: " + std::to_string(kMaxConnections) + " are open");
      is_refusing_ = true;
    }
    return;
  }
  ++open_connections_;
  take_(std::move(fd));
}

// Most likely this process is out of file descriptors: trying again at once would only spin.
void Acceptor::pause() {
  if (!is_failing_) {
    log_line(system_failure(path() + ": cannot accept a connection").what());
    is_failing_ = true;
  }
  evconnlistener_disable(accepting_.get());
  wait_for(resume_timer_, kPauseAfterError);
}

void Acceptor::resume() { evconnlistener_enable(accepting_.get()); }

}  // namespace stpswitch
