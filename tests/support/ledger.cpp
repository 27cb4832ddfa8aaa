#include "ledger.h"

#include <cstring>
#include <map>
#include <optional>
#include <string>

#include "fake_platform.h"

namespace {

bool running = false;
std::optional<size_t> mallocs_until_failure;

std::map<void *, size_t> &allocations() {
  static std::map<void *, size_t> live;
  return live;
}

constexpr int kFreedByte = 0xDD;

}  // namespace

extern "C" {
void *__real_malloc(size_t size);
void __real_free(void *memory);

void *__wrap_malloc(size_t size);
void __wrap_free(void *memory);

void *__wrap_malloc(size_t size) {
  if (!running) {
    return __real_malloc(size);
  }
  fake::trace("malloc(" + std::to_string(size) + ")");
  if (mallocs_until_failure && (*mallocs_until_failure)-- == 0) {
    mallocs_until_failure.reset();
    return nullptr;
  }
  void *memory = __real_malloc(size);
  allocations()[memory] = size;
  return memory;
}

void __wrap_free(void *memory) {
  const auto found = allocations().find(memory);
  if (found != allocations().end()) {
    fake::trace("free(" + std::to_string(found->second) + ")");
    std::memset(memory, kFreedByte, found->second);
    allocations().erase(found);
  } else if (running && memory != nullptr) {
    fake::trace("FREE OF UNKNOWN MEMORY");
    return;
  }
  __real_free(memory);
}
}

namespace ledger {

void start() {
  mallocs_until_failure.reset();
  running = true;
}

void stop() { running = false; }

void fail_next_malloc() { fail_malloc_after(0); }

void fail_malloc_after(size_t count) { mallocs_until_failure = count; }

size_t outstanding() { return allocations().size(); }

}  // namespace ledger
