#include "one_mapping.h"

#include <sys/mman.h>

#include <atomic>
#include <cstddef>

namespace {

std::atomic<void *> shared_memory = nullptr;
std::atomic<void *> latest_writable = nullptr;

}  // namespace

OneMapping::OneMapping(void *memory) { shared_memory = memory; }
OneMapping::~OneMapping() { shared_memory = nullptr; }

void *latest_writable_mapping() { return latest_writable; }

// Files have offsets of 64 bits throughout, and so has mmap the name that says so.
extern "C" {

void *__real_mmap64(void *address, size_t size, int protection, int flags, int fd, off_t offset);
int __real_munmap(void *address, size_t size);

void *__wrap_mmap64(void *address, size_t size, int protection, int flags, int fd, off_t offset) {
  void *const shared = shared_memory;
  if (shared != nullptr && protection == PROT_READ) {
    return shared;
  }
  void *const memory = __real_mmap64(address, size, protection, flags, fd, offset);
  if ((protection & PROT_WRITE) != 0) {
    latest_writable = memory;
  }
  return memory;
}

int __wrap_munmap(void *address, size_t size) {
  return address == shared_memory ? 0 : __real_munmap(address, size);
}

}  // extern "C"
