#include "ledger.h"

#include <cstring>
#include <map>
#include <string>

#include "fake_platform.h"

namespace {

bool running = false;
bool fail_next = false;

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
  if (fail_next) {
    fail_next = false;
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
  fail_next = false;
  running = true;
}

void stop() { running = false; }

void fail_next_malloc() { fail_next = true; }

size_t outstanding() { return allocations().size(); }

}  // namespace ledger
