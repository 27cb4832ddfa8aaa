#include "support/network_namespace.h"

#include <fcntl.h>
#include <sched.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>

NetworkNamespace::NetworkNamespace() : before_(::open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC)) {
  if (!before_.is_open() || ::unshare(CLONE_NEWNET) != 0) {
    refusal_ = "no network namespace can be made here: " + std::generic_category().message(errno);
  } else if (!run("ip link set lo up")) {
    refusal_ = "there is no ip(8) here, or it may not change a network namespace";
  }
}

NetworkNamespace::~NetworkNamespace() {
  if (before_.is_open() && ::setns(before_.get(), CLONE_NEWNET) != 0) {
    std::perror("cannot return from a network namespace");
    std::abort();
  }
}

bool NetworkNamespace::run(const std::string &command) {
  // NOLINTNEXTLINE(cert-env33-c): commands of tests, written out in them
  return std::system((command + " >&2").c_str()) == 0;
}

bool NetworkNamespace::run_ip(const std::string &lines) {
  // NOLINTNEXTLINE(cert-env33-c): the same
  std::FILE *const ip = ::popen("ip -batch - >&2", "we");
  if (ip == nullptr) {
    return false;
  }
  std::fwrite(lines.data(), 1, lines.size(), ip);
  return ::pclose(ip) == 0;
}
