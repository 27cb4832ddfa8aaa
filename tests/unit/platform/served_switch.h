// The switch's own server, in a thread of the test's.
#pragma once

#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "base/event_loop.h"
#include "faults/faults.h"
#include "model/switch.h"
#include "publisher/image_publisher.h"
#include "server/command_server.h"
#include "wire/owned_fd.h"

class ServedSwitch {
 public:
  // Listens at `path` when it returns.
  explicit ServedSwitch(std::string path);
  ~ServedSwitch();
  ServedSwitch(const ServedSwitch &) = delete;
  ServedSwitch &operator=(const ServedSwitch &) = delete;

  // Have taken effect when they return.
  void replace(stpswitch::SwitchState state);
  void ask_me(bool wanted);

  // How many requests have been answered by socket.
  uint32_t answered_by_socket();

  // What a client that connects now maps.
  uint32_t image_size();

 private:
  struct Parts;

  void serve();
  void run_job();
  void run(std::function<void()> job);

  std::string path_;
  stpplatform::OwnedFd wakeup_;
  std::unique_ptr<Parts> parts_;  // the thread's, as long as it runs
  std::packaged_task<void()> job_;
  std::promise<void> is_up_;
  bool is_over_ = false;
  std::thread thread_;
};
