// Calls of the C library that fail: memory, files, sockets.
//
// Left out is what cannot fail when it is called as it is: the clocks, munmap of a whole mapping, umask,
// getenv.
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "wrapper.h"

using faults::fail;
using faults::kMemory;
using faults::kSystem;

MAY_FAIL(kMemory, void *, malloc, (size_t size), (size), fail<void *>(ENOMEM, nullptr))
MAY_FAIL(kMemory, char *, strdup, (const char *text), (text), fail<char *>(ENOMEM, nullptr))
MAY_FAIL(kMemory, int, vasprintf, (char **text, const char *format, va_list arguments),
         (text, format, arguments), fail(ENOMEM, -1))
MAY_FAIL(kMemory, void *, mmap64,
         (void *address, size_t size, int protection, int flags, int fd, off_t offset),
         (address, size, protection, flags, fd, offset), fail(ENOMEM, MAP_FAILED))
MAY_FAIL(kMemory, FILE *, fdopen, (int fd, const char *mode), (fd, mode), fail<FILE *>(ENOMEM, nullptr))

MAY_FAIL(kSystem, int, socket, (int domain, int type, int protocol), (domain, type, protocol),
         fail(EMFILE, -1))
MAY_FAIL(kSystem, int, fstat64, (int fd, struct stat *status), (fd, status), fail(EIO, -1))
MAY_FAIL(kSystem, int, ftruncate64, (int fd, off_t size), (fd, size), fail(ENOSPC, -1))
MAY_FAIL(kSystem, FILE *, fopen64, (const char *path, const char *mode), (path, mode),
         fail<FILE *>(EMFILE, nullptr))

extern "C" {

int __real_connect(int fd, const sockaddr *address, socklen_t size);
ssize_t __real_send(int fd, const void *octets, size_t size, int flags);
ssize_t __real_recv(int fd, void *octets, size_t size, int flags);
ssize_t __real_recvmsg(int fd, msghdr *message, int flags);
int __real_poll(pollfd *entries, nfds_t count, int ms);
int __real_close(int fd);
int __real_fclose(FILE *file);
size_t __real_fread(void *octets, size_t size, size_t count, FILE *file);
int __real_ferror(FILE *file);
int __real_fcntl64(int fd, int command, ...);
int __real_open64(const char *path, int flags, ...);

int __wrap_connect(int fd, const sockaddr *address, socklen_t size);
ssize_t __wrap_send(int fd, const void *octets, size_t size, int flags);
ssize_t __wrap_recv(int fd, void *octets, size_t size, int flags);
ssize_t __wrap_recvmsg(int fd, msghdr *message, int flags);
int __wrap_poll(pollfd *entries, nfds_t count, int ms);
int __wrap_close(int fd);
int __wrap_fclose(FILE *file);
size_t __wrap_fread(void *octets, size_t size, size_t count, FILE *file);
int __wrap_ferror(FILE *file);
int __wrap_fcntl64(int fd, int command, ...);
int __wrap_open64(const char *path, int flags, ...);

// The other end does not listen, or its queue is full.
int __wrap_connect(int fd, const sockaddr *address, socklen_t size) {
  constexpr int kErrors[] = {ECONNREFUSED, EAGAIN};
  const auto way = faults::strikes(kSystem, "connect", std::size(kErrors));
  return way ? fail(kErrors[*way], -1) : __real_connect(fd, address, size);
}

ssize_t __wrap_send(int fd, const void *octets, size_t size, int flags) {
  constexpr int kErrors[] = {EPIPE, ENOBUFS};
  const auto way = faults::strikes(kSystem, "send", std::size(kErrors));
  return way ? fail<ssize_t>(kErrors[*way], -1) : __real_send(fd, octets, size, flags);
}

// An error, or the other end has hung up.
ssize_t __wrap_recv(int fd, void *octets, size_t size, int flags) {
  const auto way = faults::strikes(kSystem, "recv", 2);
  if (!way) {
    return __real_recv(fd, octets, size, flags);
  }
  return *way == 0 ? fail<ssize_t>(ECONNRESET, -1) : 0;
}

// An error, a hang-up, or a packet of which half is missing.
ssize_t __wrap_recvmsg(int fd, msghdr *message, int flags) {
  const auto way = faults::strikes(kSystem, "recvmsg", 3);
  if (way == 0) {
    return fail<ssize_t>(ECONNRESET, -1);
  }
  if (way == 1) {
    message->msg_controllen = 0;
    message->msg_flags = 0;
    return 0;
  }
  const ssize_t received = __real_recvmsg(fd, message, flags);
  if (way && received > 0) {
    message->msg_flags |= MSG_TRUNC;
    return received / 2;
  }
  return received;
}

// An error, or time is over.
int __wrap_poll(pollfd *entries, nfds_t count, int ms) {
  const auto way = faults::strikes(kSystem, "poll", 2);
  if (!way) {
    return __real_poll(entries, count, ms);
  }
  return *way == 0 ? fail(ENOMEM, -1) : 0;
}

// The descriptor is gone all the same.
int __wrap_close(int fd) {
  const bool is_meant = faults::strikes(kSystem, "close").has_value();
  const int result = __real_close(fd);
  return is_meant ? fail(EIO, -1) : result;
}

// The stream whose reading has failed, until it is closed.
static thread_local const FILE *unreadable = nullptr;

// The stream is gone all the same, too.
int __wrap_fclose(FILE *file) {
  unreadable = unreadable == file ? nullptr : unreadable;
  const bool is_meant = faults::strikes(kSystem, "fclose").has_value();
  const int result = __real_fclose(file);
  return is_meant ? fail(ENOSPC, EOF) : result;
}

// Ends in the middle, before the last line of what is there.
size_t __wrap_fread(void *octets, size_t size, size_t count, FILE *file) {
  const bool is_meant = faults::strikes(kSystem, "fread").has_value();
  const size_t got = __real_fread(octets, size, count, file);
  unreadable = is_meant ? file : unreadable;
  if (!is_meant || got < 2) {
    return got;
  }
  const void *const end = memrchr(octets, '\n', got - 2);
  return fail<size_t>(
      EIO,
      end != nullptr ? static_cast<size_t>(static_cast<const char *>(end) - static_cast<char *>(octets)) : 0);
}

int __wrap_ferror(FILE *file) { return file == unreadable ? 1 : __real_ferror(file); }

// Of the commands that are used, each takes an argument of a pointer's size or less.
int __wrap_fcntl64(int fd, int command, ...) {
  if (faults::strikes(kSystem, "fcntl")) {
    return fail(EINVAL, -1);
  }
  va_list arguments;
  va_start(arguments, command);
  void *const argument = va_arg(arguments, void *);
  va_end(arguments);
  return __real_fcntl64(fd, command, argument);
}

int __wrap_open64(const char *path, int flags, ...) {
  if (faults::strikes(kSystem, "open")) {
    return fail(EMFILE, -1);
  }
  va_list arguments;
  va_start(arguments, flags);
  const auto mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : mode_t{0};
  va_end(arguments);
  return __real_open64(path, flags, mode);
}
}
