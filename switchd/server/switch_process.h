// The whole process: a switch from a scenario, served on its two sockets until a signal ends it.
#pragma once

#include <string>

namespace stpswitch {

struct ProcessOptions {
  std::string scenario;
  std::string socket;
  std::string control;
  std::string socket_group;  // empty: the process's own
};

// Returns when SIGTERM or SIGINT arrived. Throws std::runtime_error when the process cannot start.
void run_switch(const ProcessOptions &options);

}  // namespace stpswitch
