#include "commands/command.h"

#include <algorithm>

namespace stpswitch {

bool has_keys(const CommandRequest &request, std::initializer_list<stp_key> expected) {
  std::vector<stp_key> keys;
  for (const auto &attribute : request.keys) {
    keys.push_back(static_cast<stp_key>(attribute.token));
  }
  return std::is_permutation(keys.begin(), keys.end(), expected.begin(), expected.end());
}

}  // namespace stpswitch
