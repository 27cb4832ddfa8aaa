// A network namespace of a test's own, in which the calling thread lives meanwhile: whatever interfaces are
// made there vanish with it.
#pragma once

#include <string>

#include "wire/owned_fd.h"

class NetworkNamespace {
 public:
  NetworkNamespace();
  ~NetworkNamespace();
  NetworkNamespace(const NetworkNamespace &) = delete;
  NetworkNamespace &operator=(const NetworkNamespace &) = delete;

  // Why there is none; empty when there is.
  const std::string &refusal() const { return refusal_; }

  // Runs a shell's command there, or ip(8) with a command a line. False when it fails.
  static bool run(const std::string &command);
  static bool run_ip(const std::string &lines);

 private:
  stpplatform::OwnedFd before_;
  std::string refusal_;
};
