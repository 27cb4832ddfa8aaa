// Octets of one message on the command socket.
#pragma once

#include <cstdint>
#include <vector>

namespace stpswitch {

using Packet = std::vector<uint8_t>;

}  // namespace stpswitch
