// A process that has hardly any file descriptor left.
#pragma once

#include <sys/resource.h>

#include <cstddef>
#include <vector>

#include "wire/owned_fd.h"

// While one exists, the process can open `free` descriptors more.
class FullDescriptorTable {
 public:
  explicit FullDescriptorTable(size_t free);
  ~FullDescriptorTable();
  FullDescriptorTable(const FullDescriptorTable &) = delete;
  FullDescriptorTable &operator=(const FullDescriptorTable &) = delete;

  // Whether the kernel knows of the limit. It does not where a tool that runs the program keeps it to itself.
  bool is_enforced() const { return is_enforced_; }

 private:
  rlimit before_{};
  bool is_enforced_ = false;
  std::vector<stpplatform::OwnedFd> taken_;
};
