#include "server/control_connection.h"

#include <event2/buffer.h>
#include <sys/time.h>

#include <cstdlib>
#include <new>
#include <string>
#include <utility>

#include "control/control_protocol.h"

namespace stpswitch {
namespace {

// Whoever says nothing, or takes nothing, for so long makes room for others.
constexpr timeval kPatience{60, 0};

struct FreeLine {
  void operator()(char *line) const { std::free(line); }
};

}  // namespace

ControlConnection::ControlConnection(EventLoop *loop, stpplatform::OwnedFd fd, ControlResponder *responder,
                                     std::function<void()> closed)
    : responder_(*responder),
      closed_(std::move(closed)),
      stream_(bufferevent_socket_new(loop->base(), fd.get(), BEV_OPT_CLOSE_ON_FREE)) {
  if (!stream_) {
    throw std::bad_alloc();
  }
  fd.release();
  bufferevent_setcb(stream_.get(), &ControlConnection::on_read, &ControlConnection::on_written,
                    &ControlConnection::on_event, this);
  bufferevent_setwatermark(stream_.get(), EV_READ, 0, control::kMaxRequestSize);
  bufferevent_set_timeouts(stream_.get(), &kPatience, &kPatience);
  if (bufferevent_enable(stream_.get(), EV_READ | EV_WRITE) != 0) {
    throw std::bad_alloc();
  }
}

void ControlConnection::on_read(bufferevent * /*stream*/, void *self) noexcept {
  static_cast<ControlConnection *>(self)->answer_next();
}

void ControlConnection::on_written(bufferevent * /*stream*/, void *self) noexcept {
  static_cast<ControlConnection *>(self)->all_is_written();
}

// The end of the stream, an error or a timeout.
void ControlConnection::on_event(bufferevent * /*stream*/, short /*what*/, void *self) noexcept {
  static_cast<ControlConnection *>(self)->close();
}

void ControlConnection::answer_next() {
  if (is_answering_) {
    return;
  }
  evbuffer *const input = bufferevent_get_input(stream_.get());
  size_t length = 0;
  const std::unique_ptr<char, FreeLine> line(evbuffer_readln(input, &length, EVBUFFER_EOL_LF));
  if (line) {
    send_line(responder_.answer({line.get(), length}));
  } else if (evbuffer_get_length(input) >= control::kMaxRequestSize) {
    is_closing_ = true;
    send_line(
        error_answer("the request is longer than " + std::to_string(control::kMaxRequestSize) + " octets"));
  }
}

void ControlConnection::all_is_written() {
  is_answering_ = false;
  if (is_closing_) {
    close();
  } else {
    answer_next();
  }
}

void ControlConnection::send_line(const std::string &text) {
  is_answering_ = true;
  evbuffer *const output = bufferevent_get_output(stream_.get());
  if (evbuffer_add(output, text.data(), text.size()) != 0 || evbuffer_add(output, "\n", 1) != 0) {
    throw std::bad_alloc();
  }
}

void ControlConnection::close() {
  const auto closed = std::move(closed_);
  closed();
}

}  // namespace stpswitch
