// A platform with a switch in it that answers at once: what is left is the module's own cost.
#pragma once

#include <cstdint>

namespace instant {

inline constexpr uint32_t kPorts = 48;
inline constexpr uint32_t kVlans = 200;     // from 1; every port is a member of each of them
inline constexpr uint32_t kInstances = 64;  // of MST, besides the CIST

// The mode in which the switch answers from now on: enum stp_mode.
void set_mode(uint32_t mode);

}  // namespace instant
