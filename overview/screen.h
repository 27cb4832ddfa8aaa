// An overview as text.
#pragma once

#include <string>

#include "overview/overview.h"
#include "overview/terminal.h"

namespace stpoverview {

std::string print_overview(const Overview &overview, const Terminal &terminal);

}  // namespace stpoverview
