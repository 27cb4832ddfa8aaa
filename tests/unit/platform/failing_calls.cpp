#include "failing_calls.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace {

struct Failure {
  int error = 0;
  int times = 0;  // that are still to come
};

thread_local Failure of_send;
thread_local Failure of_recv;
thread_local Failure of_recvmsg;
thread_local Failure of_ftruncate;
thread_local Failure of_malloc;

bool fails(Failure *failure) {
  if (failure->times == 0) {
    return false;
  }
  --failure->times;
  errno = failure->error;
  return true;
}

}  // namespace

extern "C" {

ssize_t __real_send(int fd, const void *octets, size_t size, int flags);
ssize_t __real_recv(int fd, void *octets, size_t size, int flags);
ssize_t __real_recvmsg(int fd, msghdr *message, int flags);
int __real_ftruncate64(int fd, off_t size);
void *__real_malloc(size_t size);

ssize_t __wrap_send(int fd, const void *octets, size_t size, int flags);
ssize_t __wrap_recv(int fd, void *octets, size_t size, int flags);
ssize_t __wrap_recvmsg(int fd, msghdr *message, int flags);
int __wrap_ftruncate64(int fd, off_t size);
void *__wrap_malloc(size_t size);

ssize_t __wrap_send(int fd, const void *octets, size_t size, int flags) {
  return fails(&of_send) ? -1 : __real_send(fd, octets, size, flags);
}

ssize_t __wrap_recv(int fd, void *octets, size_t size, int flags) {
  return fails(&of_recv) ? -1 : __real_recv(fd, octets, size, flags);
}

ssize_t __wrap_recvmsg(int fd, msghdr *message, int flags) {
  return fails(&of_recvmsg) ? -1 : __real_recvmsg(fd, message, flags);
}

int __wrap_ftruncate64(int fd, off_t size) {
  return fails(&of_ftruncate) ? -1 : __real_ftruncate64(fd, size);
}

void *__wrap_malloc(size_t size) { return fails(&of_malloc) ? nullptr : __real_malloc(size); }
}

namespace failing_calls {

void fail_next_send(int error, int times) { of_send = {error, times}; }

void fail_next_recv(int error) { of_recv = {error, 1}; }

void fail_next_recvmsg(int error) { of_recvmsg = {error, 1}; }

void fail_next_ftruncate(int error) { of_ftruncate = {error, 1}; }

void fail_next_malloc() { of_malloc = {ENOMEM, 1}; }

}  // namespace failing_calls
