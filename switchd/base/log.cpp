#include "base/log.h"

#include <cstdio>
#include <string>

namespace stpswitch {

void log_line(std::string_view line) {
  std::string text = "stp-switchd: ";
  text += line;
  text += '\n';
  std::fwrite(text.data(), 1, text.size(), stderr);
}

}  // namespace stpswitch
