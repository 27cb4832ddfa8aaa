#include "failing_calls.h"

#include <sys/socket.h>

#include <cerrno>
#include <utility>

namespace {

// 0: none.
thread_local int next_of_send = 0;
thread_local int next_of_recv = 0;
thread_local int next_of_recvmsg = 0;

bool fails(int *next) {
  const int error = std::exchange(*next, 0);
  if (error != 0) {
    errno = error;
  }
  return error != 0;
}

}  // namespace

extern "C" {

ssize_t __real_send(int fd, const void *octets, size_t size, int flags);
ssize_t __real_recv(int fd, void *octets, size_t size, int flags);
ssize_t __real_recvmsg(int fd, msghdr *message, int flags);

ssize_t __wrap_send(int fd, const void *octets, size_t size, int flags);
ssize_t __wrap_recv(int fd, void *octets, size_t size, int flags);
ssize_t __wrap_recvmsg(int fd, msghdr *message, int flags);

ssize_t __wrap_send(int fd, const void *octets, size_t size, int flags) {
  return fails(&next_of_send) ? -1 : __real_send(fd, octets, size, flags);
}

ssize_t __wrap_recv(int fd, void *octets, size_t size, int flags) {
  return fails(&next_of_recv) ? -1 : __real_recv(fd, octets, size, flags);
}

ssize_t __wrap_recvmsg(int fd, msghdr *message, int flags) {
  return fails(&next_of_recvmsg) ? -1 : __real_recvmsg(fd, message, flags);
}
}

namespace failing_calls {

void fail_next_send(int error) { next_of_send = error; }

void fail_next_recv(int error) { next_of_recv = error; }

void fail_next_recvmsg(int error) { next_of_recvmsg = error; }

}  // namespace failing_calls
