#include "support/temporary_folder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

TemporaryFolder::TemporaryFolder() : folder_(std::filesystem::temp_directory_path() / "switch-test-XXXXXX") {
  if (::mkdtemp(folder_.data()) == nullptr) {
    throw std::runtime_error("cannot create a folder like " + folder_);
  }
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

std::string TemporaryFolder::write(const std::string &name, const std::string &text) const {
  std::ofstream(path(name)) << text;
  return path(name);
}
