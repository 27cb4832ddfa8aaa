// Bitmaps of VLANs and of bridge ports: bit n is 0x80 >> (n % 8) of octet n / 8. Their size is a multiple of
// eight octets.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/stp.h"

namespace stpsnmp::bitmap {

// The first bit at or after `from` that is set, or clear; `bits`, the size of the bitmap, where none is.
uint32_t find_set(const uint8_t *octets, uint32_t bits, uint32_t from);
uint32_t find_clear(const uint8_t *octets, uint32_t bits, uint32_t from);

// Bits that are set, from the first one to the last one.
struct Run {
  uint32_t first;
  uint32_t last;
};

// Finds the first run that begins at or after `from`, or goes on there. False where there is none.
bool find_run(const uint8_t *octets, uint32_t bits, uint32_t from, Run *run);

// Writes a run such as "7" or "10-19", without a terminator, where there is room for as much as its size.
// Returns its end.
char *write_run(char *at, const Run &run);
size_t run_size(const Run &run);

// Room for any list of VLANs: each of them adds its number, of up to four digits, and a separator at most.
inline constexpr uint32_t kVlans = 8 * STP_VLAN_BITMAP_SIZE;
inline constexpr uint32_t kVlanListSize = kVlans * 5;

// Writes the runs of VLANs in ascending order, such as "1,10-19", and returns the text.
const char *write_vlan_list(const stp_vlan_bmp &vlans, char (&text)[kVlanListSize]);

// Every VLAN that can be: 1 to 4094 (IEEE 802.1Q clause 9.6).
extern const stp_vlan_bmp kAllVlans;

// Adds a VLAN; a number that has no bit is passed over.
void add_vlan(uint32_t vlan, stp_vlan_bmp *vlans);

// Takes out every VLAN that can be. The bits 0 and 4095 stay as they are.
void remove_all_vlans(stp_vlan_bmp *vlans);

}  // namespace stpsnmp::bitmap
