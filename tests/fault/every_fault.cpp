#include "every_fault.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <ostream>
#include <string>
#include <string_view>

#include "comes_true.h"
#include "open_descriptors.h"

// Of the sanitizers' build alone.
extern "C" int __lsan_do_recoverable_leak_check() __attribute__((weak));

namespace faults {
namespace {

bool leaves_none_out() {
  const char *const wants_all = std::getenv("STPSNMP_TEST_ALL");
  return wants_all != nullptr && std::string_view(wants_all) == "1";
}

size_t mapped_images() {
  size_t count = 0;
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    count += line.find("stp-switch-image") != std::string::npos ? 1U : 0U;
  }
  return count;
}

// What an operation may leave behind in the process.
struct Holdings {
  size_t descriptors = open_descriptors();
  size_t images = mapped_images();

  bool operator==(const Holdings &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Holdings &holdings) {
  return out << holdings.descriptors << " descriptors, " << holdings.images << " mapped images";
}

// A switch in another thread closes its end of a connection a moment later.
testing::AssertionResult come_to_be(const Holdings &expected) {
  if (comes_true([&expected] { return Holdings() == expected; })) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure() << Holdings() << " instead of " << expected;
}

// Returns in how many ways the call can fail; 0 when there is no such call.
uint32_t strike(const Operation &operation, const Fault &fault, const Holdings &before) {
  operation.prepare();
  Injection injection(fault);
  operation.run();
  const std::string struck = injection.has_struck() ? injection.struck() : "";
  const uint32_t ways = injection.ways();
  injection.end();
  SCOPED_TRACE(
      "call " + std::to_string(fault.number) + ", " + (struck.empty() ? "which there is not" : struck) +
      (fault.lasts ? ", fails from then on" : ", fails once") + ", way " + std::to_string(fault.way));
  operation.verify();
  EXPECT_TRUE(come_to_be(before));
  return ways;
}

// Returns how many calls failed.
uint64_t strike_in_turn(const Operation &operation, Kind kind, bool lasts, const Holdings &before) {
  uint64_t struck = 0;
  for (uint64_t number = 1;; number = behind(number)) {
    uint32_t ways = 1;
    for (uint32_t way = 0; way < ways; ++way) {
      ways = strike(operation, {number, lasts, way, kind}, before);
      if (ways == 0 || testing::Test::HasFailure()) {
        return struck;
      }
    }
    ++struck;
  }
}

}  // namespace

uint64_t behind(uint64_t number) { return number + 1 + (leaves_none_out() ? 0 : number / 2); }

void strike_every_call(const Operation &operation) {
  operation.prepare();
  operation.run();
  operation.verify();
  const Holdings before;
  uint64_t struck = 0;
  for (const Kind kind : {kMemory, kSystem}) {
    for (const bool lasts : {false, true}) {
      struck += (operation.kinds & kind) != 0 ? strike_in_turn(operation, kind, lasts, before) : 0;
      if (testing::Test::HasFailure()) {
        return;
      }
    }
  }
  EXPECT_GT(struck, 0U);
  testing::Test::RecordProperty("calls_that_failed", std::to_string(struck));
  // Each look takes longer than all the rest. Without it, the one at the program's end finds the same.
  if (leaves_none_out() && __lsan_do_recoverable_leak_check != nullptr) {
    EXPECT_EQ(__lsan_do_recoverable_leak_check(), 0) << "memory has leaked";
  }
}

}  // namespace faults
