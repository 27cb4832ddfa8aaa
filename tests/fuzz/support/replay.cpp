// Takes the place of libFuzzer's main: runs the target over the files of a folder and over what is next to
// them. What must not be is left to the sanitizers and to the target itself.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
// Targets have one where there is something to be done once.
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int *argc, char ***argv);

namespace {

using Octets = std::vector<uint8_t>;

// Of all inputs together: of each, an even share of the places, which lie evenly in it.
constexpr size_t kPlaces = 256;
// What an octet there becomes, beside all other bits.
constexpr uint8_t kOtherOctets[] = {0x00, 0x01, 0x80};
constexpr uint8_t kAllBits = 0xFF;

std::vector<std::filesystem::path> files_in(const std::filesystem::path &folder) {
  std::vector<std::filesystem::path> files;
  for (const auto &entry : std::filesystem::directory_iterator(folder)) {
    files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  if (files.empty()) {
    throw std::runtime_error(folder.string() + " is empty");
  }
  return files;
}

Octets read(const std::filesystem::path &path) {
  std::ifstream file(path, std::ios::binary);
  Octets octets{std::istreambuf_iterator<char>(file), {}};
  if (!file) {
    throw std::runtime_error("cannot read " + path.string());
  }
  return octets;
}

// In memory of its own: the sanitizers see what is read behind it.
void run(Octets input) {
  input.shrink_to_fit();
  LLVMFuzzerTestOneInput(input.data(), input.size());
}

void run_neighbours(const Octets &input, size_t places) {
  const size_t step = input.size() / places + 1;
  for (size_t place = 0; place < input.size(); place += step) {
    run({input.begin(), input.begin() + static_cast<std::ptrdiff_t>(place)});
    Octets changed = input;
    changed[place] ^= kAllBits;
    run(changed);
    for (const uint8_t octet : kOtherOctets) {
      changed[place] = octet;
      run(changed);
    }
  }
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
    return EXIT_FAILURE;
  }
  if (LLVMFuzzerInitialize != nullptr) {
    LLVMFuzzerInitialize(&argc, &argv);
  }
  try {
    const std::vector<std::filesystem::path> files = files_in(argv[1]);
    const size_t places_each = kPlaces / files.size() + 1;
    for (const std::filesystem::path &path : files) {
      // The last line tells which input it was, should it be the end of the program.
      std::printf("%s\n", path.c_str());
      std::fflush(stdout);
      const Octets input = read(path);
      run(input);
      run_neighbours(input, places_each);
    }
  } catch (const std::exception &error) {
    std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
