#include "support/refused_lock.h"

#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace {

RefusedLock *watching = nullptr;

}  // namespace

RefusedLock::RefusedLock(std::function<void()> when_refused) : when_refused_(std::move(when_refused)) {
  watching = this;
}

RefusedLock::~RefusedLock() { watching = nullptr; }

void RefusedLock::refuse() {
  if (++refusals_ == 1) {
    when_refused_();
  }
}

// Takes the place of the C library's.
extern "C" int flock(int fd, int operation) noexcept {
  const auto result = static_cast<int>(::syscall(SYS_flock, fd, operation));
  if (result != 0 && errno == EWOULDBLOCK && watching != nullptr) {
    watching->refuse();
    errno = EWOULDBLOCK;
  }
  return result;
}
