#include "support/failing_accept.h"

#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace {

bool accept_fails = false;

}  // namespace

FailingAccept::FailingAccept() { accept_fails = true; }

FailingAccept::~FailingAccept() { accept_fails = false; }

// Takes the place of the C library's, for libevent too.
extern "C" int accept4(int fd, sockaddr *address, socklen_t *length, int flags) {
  if (accept_fails) {
    errno = EMFILE;
    return -1;
  }
  return static_cast<int>(::syscall(SYS_accept4, fd, address, length, flags));
}
