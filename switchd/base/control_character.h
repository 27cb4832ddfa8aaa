// Texts reach logs and terminals, where a control character would break the line that shows them.
#pragma once

namespace stpswitch {

inline bool is_control(char octet) {
  constexpr char kDelete = 0x7F;
  return (octet >= 0 && octet < ' ') || octet == kDelete;
}

}  // namespace stpswitch
