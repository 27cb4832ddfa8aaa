#include "sources/openvswitch/json_stream.h"

#include "model/refusal.h"

namespace stpswitch {

std::optional<std::string> JsonStream::next() {
  if (depth_ == 0) {
    skip_white_space();
  }
  while (read_ < pending_.size()) {
    if (read_ == max_size_) {
      throw Refusal("a message is larger than " + std::to_string(max_size_) + " octets");
    }
    read(pending_[read_++]);
    if (depth_ == 0) {
      std::string object = pending_.substr(0, read_);
      pending_.erase(0, read_);
      read_ = 0;
      return object;
    }
  }
  return std::nullopt;
}

void JsonStream::skip_white_space() {
  constexpr std::string_view kWhiteSpace = " \t\r\n";
  pending_.erase(0, pending_.find_first_not_of(kWhiteSpace));
  if (!pending_.empty() && pending_.front() != '{') {
    throw Refusal("a message is no JSON object");
  }
}

void JsonStream::read(char octet) {
  if (in_string_) {
    if (is_escaped_) {
      is_escaped_ = false;
    } else if (octet == '\\') {
      is_escaped_ = true;
    } else if (octet == '"') {
      in_string_ = false;
    }
    return;
  }
  switch (octet) {
    case '"':
      in_string_ = true;
      break;
    case '{':
    case '[':
      if (++depth_ > kMaxDepth) {
        throw Refusal("a message is nested deeper than " + std::to_string(kMaxDepth) + " levels");
      }
      break;
    case '}':
    case ']':
      --depth_;
      break;
    default:
      break;
  }
}

}  // namespace stpswitch
