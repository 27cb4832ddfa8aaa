#include "support/loop_thread.h"

#include <sys/eventfd.h>

#include <utility>

LoopThread::LoopThread() : wakeup_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), thread_([this] { serve(); }) {
  is_up_.get_future().wait();
}

LoopThread::~LoopThread() {
  run([this] { loop_->stop(); });
  thread_.join();
}

void LoopThread::serve() {
  loop_ = std::make_unique<stpswitch::EventLoop>();
  stpswitch::Event woken = loop_->make_event<&LoopThread::run_job>(wakeup_.get(), EV_READ | EV_PERSIST, this);
  stpswitch::wait_for(woken);
  is_up_.set_value();
  loop_->run();
  woken.reset();  // it is the loop's
  loop_.reset();
}

void LoopThread::run_job() {
  eventfd_t woken = 0;
  ::eventfd_read(wakeup_.get(), &woken);
  // Whoever waits for the job may be gone when it is done.
  std::packaged_task<void()> job = std::move(job_);
  job();
}

void LoopThread::run(std::function<void()> job) {
  job_ = std::packaged_task<void()>(std::move(job));
  std::future<void> done = job_.get_future();
  ::eventfd_write(wakeup_.get(), 1);
  done.wait();
}
