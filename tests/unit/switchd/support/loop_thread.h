// An event loop in a thread of its own, and what a test has done there.
#pragma once

#include <functional>
#include <future>
#include <memory>
#include <thread>

#include "base/event_loop.h"
#include "wire/owned_fd.h"

class LoopThread {
 public:
  LoopThread();
  ~LoopThread();
  LoopThread(const LoopThread &) = delete;
  LoopThread &operator=(const LoopThread &) = delete;

  // The thread's: for jobs, and what they make.
  stpswitch::EventLoop &loop() { return *loop_; }

  // Does a job between two events of the loop. It is done when this returns.
  void run(std::function<void()> job);

 private:
  void serve();
  void run_job();

  stpplatform::OwnedFd wakeup_;
  std::unique_ptr<stpswitch::EventLoop> loop_;  // as long as the thread runs
  std::packaged_task<void()> job_;
  std::promise<void> is_up_;
  std::thread thread_;
};
