// Splits a stream of JSON objects, which nothing separates, into whole ones (RFC 7047 clause 4.1).
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace stpswitch {

class JsonStream {
 public:
  // Databases of tens of thousands of ports stay below it.
  static constexpr size_t kMaxSize = size_t{16} << 20;
  // What a database sends is some ten levels deep.
  static constexpr size_t kMaxDepth = 64;

  explicit JsonStream(size_t max_size = kMaxSize) : max_size_(max_size) {}

  void add(std::string_view octets) { pending_ += octets; }

  // The next object that is there from its first brace to its last; whether it is JSON in between is for a
  // parser to say. Throws Refusal for what does not begin with a brace, is too large or too deep: nothing
  // that follows can be understood then.
  std::optional<std::string> next();

 private:
  void skip_white_space();
  void read(char octet);

  size_t max_size_;
  std::string pending_;
  size_t read_ = 0;   // octets of it that belong to the object that has begun
  size_t depth_ = 0;  // of objects and arrays that are open there
  bool in_string_ = false;
  bool is_escaped_ = false;  // the next octet of the string
};

}  // namespace stpswitch
