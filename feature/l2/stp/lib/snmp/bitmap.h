// Bitmaps of VLANs and of bridge ports: bit n is 0x80 >> (n % 8) of octet n / 8. Their size is a multiple of
// eight octets.
#pragma once

#include <cstdint>

#include "platform/stp.h"

namespace stpsnmp::bitmap {

// The first bit at or after `from` that is set, or clear; `bits`, the size of the bitmap, where none is.
uint32_t find_set(const uint8_t *octets, uint32_t bits, uint32_t from);
uint32_t find_clear(const uint8_t *octets, uint32_t bits, uint32_t from);

// Room for any list of VLANs: each of them adds its number, of up to four digits, and a separator at most.
inline constexpr uint32_t kVlans = 8 * STP_VLAN_BITMAP_SIZE;
inline constexpr uint32_t kVlanListSize = kVlans * 5;

// Writes the runs of VLANs in ascending order, such as "1,10-19", and returns the text.
const char *write_vlan_list(const stp_vlan_bmp &vlans, char (&text)[kVlanListSize]);

}  // namespace stpsnmp::bitmap
