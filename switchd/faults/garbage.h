// Replies that break the rules of platform/wire, each in one way.
#pragma once

#include "base/packet.h"

namespace stpswitch {

enum class Garbage : unsigned {
  kTruncated,         // ends in the middle of its head
  kWrongMagic,        //
  kWrongSequence,     // answers a request that was not made
  kLengthTooBig,      // claims to be longer than it is
  kAttributeOverrun,  // an attribute claims to go on behind the end
  kNumberTooLong,     // a numeric attribute of eight octets
  kOctetsTooLong,     // octets above CMD_ATTR_VALUE_MAX
  kRandom,            // octets without any meaning
  kCount
};

// Turns a good reply into garbage of that kind.
Packet spoil(Packet reply, Garbage kind);

// The kinds one after the other, over and over.
constexpr Garbage garbage_of_turn(unsigned turn) {
  return static_cast<Garbage>(turn % static_cast<unsigned>(Garbage::kCount));
}

}  // namespace stpswitch
