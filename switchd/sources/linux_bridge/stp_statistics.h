// What the kernel has counted of a bridge port's spanning tree.
#pragma once

#include <linux/netlink.h>

#include <cstdint>
#include <optional>

namespace stpswitch {

// How often the port that the message tells of began to forward; none where the message is about something
// else, does not tell it, or is broken. The message lies within memory of its stated length, and is aligned
// as netlink aligns messages.
std::optional<uint64_t> parse_forward_transitions(const nlmsghdr &message);

}  // namespace stpswitch
