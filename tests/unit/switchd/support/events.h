// Subscriptions and events as the two ends of the command socket see them.
#pragma once

#include <cstdint>
#include <vector>

#include "base/packet.h"
#include "protocol_numbers.h"

stpswitch::Packet make_subscription(const std::vector<uint32_t> &classes);
