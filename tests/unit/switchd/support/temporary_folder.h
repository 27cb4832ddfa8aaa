// A folder of a test's own, removed with all that is in it.
#pragma once

#include <string>

class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder &) = delete;
  TemporaryFolder &operator=(const TemporaryFolder &) = delete;

  // The path of a file in it.
  std::string path(const std::string &name) const { return folder_ + "/" + name; }

  // Writes a file in it and returns its path.
  std::string write(const std::string &name, const std::string &text) const;

 private:
  std::string folder_;
};
