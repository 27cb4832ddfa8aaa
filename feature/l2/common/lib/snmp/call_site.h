// Who logs: diagnostics name the routine and its source line, also where a helper writes them on its behalf.
#pragma once

namespace stpsnmp {

struct CallSite {
  const char *function;
  int line;

  // As a default argument, this is the place of the call that it defaults in.
  static constexpr CallSite here(const char *function = __builtin_FUNCTION(), int line = __builtin_LINE()) {
    return {function, line};
  }
};

}  // namespace stpsnmp
