#include "support/failing_accept.h"

#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace {

FailingAccept *failing = nullptr;

}  // namespace

FailingAccept::FailingAccept() { failing = this; }

FailingAccept::~FailingAccept() { failing = nullptr; }

int FailingAccept::fail() {
  ++failures_;
  errno = EMFILE;
  return -1;
}

// Takes the place of the C library's, for libevent too.
extern "C" int accept4(int fd, sockaddr *address, socklen_t *length, int flags) {
  return failing != nullptr ? failing->fail()
                            : static_cast<int>(::syscall(SYS_accept4, fd, address, length, flags));
}
