#include "overview/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <cstring>

namespace stpoverview {
namespace {

size_t width_of_environment() {
  const char *const columns = std::getenv("COLUMNS");
  if (columns == nullptr) {
    return kUsualWidth;
  }
  size_t width = 0;
  std::from_chars(columns, columns + std::strlen(columns), width);
  return width != 0 ? width : kUsualWidth;
}

bool colours_are_unwanted() {
  const char *const unwanted = std::getenv("NO_COLOR");
  return unwanted != nullptr && *unwanted != '\0';
}

}  // namespace

Terminal standard_output() {
  if (::isatty(STDOUT_FILENO) == 0) {
    return {width_of_environment(), false};
  }
  winsize size{};
  const bool is_known = ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
  return {is_known ? size.ws_col : width_of_environment(), !colours_are_unwanted()};
}

}  // namespace stpoverview
