// An operation of the product, repeated with every call that it makes failing in turn.
#pragma once

#include <cstdint>
#include <functional>

#include "injector.h"

namespace faults {

struct Operation {
  uint32_t kinds;                 // of calls that fail
  std::function<void()> prepare;  // what precedes it each time, without a fault
  std::function<void()> run;      // what calls fail in
  std::function<void()> verify;   // without a fault: it has done nothing wrong, and all is right again
};

// Runs the operation again and again, each call failing once and from then on, in each way that it can, until
// it makes no more calls. After each, descriptors and mapped images must be as many as before; after all, no
// memory may have leaked. Ends with the first failure.
//
// By default some of the calls are left out, as behind() says.
void strike_every_call(const Operation &operation);

// The call that is to fail when this one has. By default some are left out, the more the later they come;
// with STPSNMP_TEST_ALL=1 none.
uint64_t behind(uint64_t number);

}  // namespace faults
