// What the switch calls beyond the agent's side, failing: the C++ heap, libevent, netlink, shared memory.
//
// Left out is what OpenSSL takes for itself, and what only the end of the process follows: the calls of
// libevent that make the loop.
#include <event2/event.h>
#include <libmnl/libmnl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdlib>
#include <ctime>
#include <new>

#include "wrapper.h"

using faults::fail;
using faults::kMemory;
using faults::kSystem;

MAY_FAIL(kMemory, event *, event_new,
         (event_base * base, evutil_socket_t fd, short what, event_callback_fn callback, void *argument),
         (base, fd, what, callback, argument), nullptr)
MAY_FAIL(kMemory, int, event_add, (event * handle, const timeval *time), (handle, time), -1)

MAY_FAIL(kSystem, int, memfd_create, (const char *name, unsigned flags), (name, flags), fail(EMFILE, -1))
MAY_FAIL(kSystem, long, sysconf, (int name), (name), fail<long>(EINVAL, -1))
MAY_FAIL(kSystem, int, clock_getres, (clockid_t clock, timespec *resolution), (clock, resolution),
         fail(EINVAL, -1))
MAY_FAIL(kSystem, mnl_socket *, mnl_socket_open2, (int bus, int flags), (bus, flags),
         fail<mnl_socket *>(EMFILE, nullptr))
MAY_FAIL(kSystem, int, mnl_socket_bind, (mnl_socket * socket, unsigned groups, pid_t pid),
         (socket, groups, pid), fail(EADDRINUSE, -1))
MAY_FAIL(kSystem, ssize_t, mnl_socket_sendto, (const mnl_socket *socket, const void *octets, size_t size),
         (socket, octets, size), fail<ssize_t>(ENOBUFS, -1))

extern "C" {

int __real_ioctl(int fd, unsigned long request, ...);
int __wrap_ioctl(int fd, unsigned long request, ...);

int __wrap_ioctl(int fd, unsigned long request, ...) {
  if (faults::strikes(kSystem, "ioctl")) {
    return fail(EPERM, -1);
  }
  va_list arguments;
  va_start(arguments, request);
  void *const argument = va_arg(arguments, void *);
  va_end(arguments);
  return __real_ioctl(fd, request, argument);
}

void *__real_malloc(size_t size);
}

// These take the place of the language's own, in the libraries as well.

void *operator new(size_t size, const std::nothrow_t & /*tag*/) noexcept {
  return faults::strikes(kMemory, "new") ? nullptr : __real_malloc(size != 0 ? size : 1);
}

void *operator new(size_t size) {
  void *const memory = operator new(size, std::nothrow);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

void *operator new[](size_t size) { return operator new(size); }
void *operator new[](size_t size, const std::nothrow_t &tag) noexcept { return operator new(size, tag); }

void operator delete(void *memory) noexcept { std::free(memory); }
void operator delete(void *memory, size_t /*size*/) noexcept { std::free(memory); }
void operator delete(void *memory, const std::nothrow_t & /*tag*/) noexcept { std::free(memory); }
void operator delete[](void *memory) noexcept { std::free(memory); }
void operator delete[](void *memory, size_t /*size*/) noexcept { std::free(memory); }
void operator delete[](void *memory, const std::nothrow_t & /*tag*/) noexcept { std::free(memory); }
