// The whole process: a switch from its source, served on its two sockets until a signal ends it.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/event_loop.h"
#include "sources/source.h"

namespace stpswitch {

struct ProcessOptions {
  std::function<std::unique_ptr<Source>(EventLoop *)> make_source;
  std::string socket;
  std::string control;
  std::string socket_group;  // empty: the process's own
};

// Returns when SIGTERM or SIGINT arrived. Throws std::runtime_error when the process cannot start.
void run_switch(const ProcessOptions &options);

}  // namespace stpswitch
