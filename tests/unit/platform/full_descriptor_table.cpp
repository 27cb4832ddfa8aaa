#include "full_descriptor_table.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <string>

namespace {

// More than the tests have open.
constexpr rlim_t kLimit = 200;

// What the kernel itself says.
rlim_t limit_in_force() {
  const std::string name = "Max open files";
  std::ifstream limits("/proc/self/limits");
  for (std::string line; std::getline(limits, line);) {
    if (line.compare(0, name.size(), name) == 0) {
      return std::stoul(line.substr(name.size()));
    }
  }
  return RLIM_INFINITY;
}

}  // namespace

FullDescriptorTable::FullDescriptorTable(size_t free) {
  getrlimit(RLIMIT_NOFILE, &before_);
  rlimit limit = before_;
  limit.rlim_cur = kLimit;
  setrlimit(RLIMIT_NOFILE, &limit);
  is_enforced_ = limit_in_force() == kLimit;
  for (int fd = dup(STDERR_FILENO); fd >= 0; fd = dup(STDERR_FILENO)) {
    taken_.emplace_back(fd);
  }
  EXPECT_LE(free, taken_.size()) << "the process already has more descriptors open than the limit leaves";
  taken_.resize(taken_.size() - std::min(free, taken_.size()));
}

FullDescriptorTable::~FullDescriptorTable() {
  taken_.clear();
  setrlimit(RLIMIT_NOFILE, &before_);
}
