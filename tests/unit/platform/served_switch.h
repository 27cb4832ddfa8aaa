// The switch's own server, in a thread of the test's.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "model/switch_state.h"
#include "support/loop_thread.h"

class ServedSwitch {
 public:
  // Listens at `path` when it returns.
  explicit ServedSwitch(const std::string &path);
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

  LoopThread thread_;
  std::unique_ptr<Parts> parts_;  // the thread's
};
