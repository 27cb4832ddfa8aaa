#include "served_switch.h"

#include <sys/eventfd.h>
#include <sys/socket.h>

#include <utility>

#include "server/tree_event_limiter.h"

struct ServedSwitch::Parts {
  explicit Parts(const std::string &path)
      : server(&loop, {path, SOCK_SEQPACKET, 0660, std::nullopt}, &publisher, &faults) {
    the_switch.on_change([this] { publisher.publish(); });
    the_switch.on_inconsistencies([this](const auto &events) {
      server.tell({events.begin(), events.end()});
    });
    the_switch.on_tree_events([this](const auto &events) { limiter.take(events); });
    // No fault at all, so often that it counts.
    faults.order(stpswitch::FaultKind::kNone, {}, UINT32_MAX);
  }

  stpswitch::EventLoop loop;
  stpswitch::Switch the_switch{stpswitch::SwitchState{}};
  stpswitch::ImagePublisher publisher{&the_switch};
  stpswitch::Faults faults;
  stpswitch::CommandServer server;
  stpswitch::TreeEventLimiter limiter{&loop, [this](const auto &events) { server.tell(events); }};
};

ServedSwitch::ServedSwitch(std::string path)
    : path_(std::move(path)),
      wakeup_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      thread_([this] { serve(); }) {
  is_up_.get_future().wait();
}

ServedSwitch::~ServedSwitch() {
  run([this] { is_over_ = true; });
  thread_.join();
}

void ServedSwitch::serve() {
  parts_ = std::make_unique<Parts>(path_);
  stpswitch::Event woken =
      parts_->loop.make_event<&ServedSwitch::run_job>(wakeup_.get(), EV_READ | EV_PERSIST, this);
  stpswitch::wait_for(woken);
  is_up_.set_value();
  parts_->loop.run();
  woken.reset();  // it is the loop's
  parts_.reset();
}

void ServedSwitch::run_job() {
  eventfd_t woken = 0;
  ::eventfd_read(wakeup_.get(), &woken);
  // Whoever waits for the job may be gone when it is done.
  std::packaged_task<void()> job = std::move(job_);
  job();
  if (is_over_) {
    parts_->loop.stop();
  }
}

void ServedSwitch::run(std::function<void()> job) {
  job_ = std::packaged_task<void()>(std::move(job));
  std::future<void> done = job_.get_future();
  ::eventfd_write(wakeup_.get(), 1);
  done.wait();
}

void ServedSwitch::replace(stpswitch::SwitchState state) {
  run([this, &state] { parts_->the_switch.replace(std::move(state)); });
}

void ServedSwitch::ask_me(bool wanted) {
  run([this, wanted] { parts_->publisher.ask_me(wanted); });
}

uint32_t ServedSwitch::answered_by_socket() {
  uint32_t left = 0;
  run([this, &left] { left = parts_->faults.left().value(); });
  return UINT32_MAX - left;
}

uint32_t ServedSwitch::image_size() {
  uint32_t size = 0;
  run([this, &size] { size = parts_->publisher.size(); });
  return size;
}
