// What wrappers are made of. The program is linked with --wrap for each.
#pragma once

#include <cerrno>

#include "injector.h"

namespace faults {

template <class Result>
Result fail(int error, Result result) {
  errno = error;
  return result;
}

}  // namespace faults

// A call that fails in one way: with what `failure` is, after nothing has been done.
#define MAY_FAIL(kind, Result, name, parameters, arguments, failure)           \
  extern "C" {                                                                 \
  Result __real_##name parameters;                                             \
  Result __wrap_##name parameters;                                             \
  Result __wrap_##name parameters {                                            \
    return faults::strikes(kind, #name) ? (failure) : __real_##name arguments; \
  }                                                                            \
  }
