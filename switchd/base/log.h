// The log: one line each on standard error.
#pragma once

#include <string_view>

namespace stpswitch {

void log_line(std::string_view line);

}  // namespace stpswitch
