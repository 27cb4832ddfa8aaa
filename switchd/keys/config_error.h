// A refusal together with the key that it is about.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace stpswitch {

class ConfigError : public std::runtime_error {
 public:
  ConfigError(std::string key, const std::string &reason)
      : std::runtime_error(key + ": " + reason), key_(std::move(key)) {}

  const std::string &key() const { return key_; }

 private:
  std::string key_;
};

}  // namespace stpswitch
