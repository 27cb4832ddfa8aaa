// The octets of an input, taken from its front. Behind its end everything is zero.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <vector>

namespace fuzz {

class Input {
 public:
  Input(const uint8_t *data, size_t size) : left_(data, size) {}

  bool is_over() const { return left_.empty(); }

  template <class Number>
  Number number() {
    Number taken{};
    const std::span<const uint8_t> octets = take(sizeof taken);
    if (!octets.empty()) {
      std::memcpy(&taken, octets.data(), octets.size());
    }
    return taken;
  }

  uint32_t below(uint32_t end) { return number<uint32_t>() % end; }

  // At most so many, in memory of their own: the sanitizers see what is read behind them.
  std::vector<uint8_t> octets(size_t most) {
    const std::span<const uint8_t> taken = take(most);
    return {taken.begin(), taken.end()};
  }

  // Octets behind one or two that tell how many they are.
  std::vector<uint8_t> short_octets() { return octets(number<uint8_t>()); }
  std::vector<uint8_t> long_octets() { return octets(number<uint16_t>()); }

  std::vector<uint8_t> rest() { return octets(left_.size()); }

 private:
  std::span<const uint8_t> take(size_t most) {
    const std::span<const uint8_t> taken = left_.first(std::min(most, left_.size()));
    left_ = left_.subspan(taken.size());
    return taken;
  }

  std::span<const uint8_t> left_;
};

inline std::string_view text_of(std::span<const uint8_t> octets) {
  return {reinterpret_cast<const char *>(octets.data()), octets.size()};
}

}  // namespace fuzz
