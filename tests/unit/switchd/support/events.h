// Subscriptions and events as the two ends of the command socket see them.
#pragma once

#include <cstdint>
#include <vector>

#include "commands/packet.h"

inline constexpr uint32_t kPortClass = 17421;
inline constexpr uint32_t kLoopClass = 17422;
inline constexpr uint32_t kRootClass = 17423;

stpswitch::Packet make_subscription(const std::vector<uint32_t> &classes);
