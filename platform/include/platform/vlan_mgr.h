/* VLAN manager: which bridge ports are members of which VLANs (IEEE 802.1Q clause 8). */
#ifndef PLATFORM_VLAN_MGR_H
#define PLATFORM_VLAN_MGR_H

#include <stddef.h>
#include <stdint.h>

#include "platform/stp.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Octets of a base-port bitmap: one bit for each 16-bit bridge port number. */
#define BASEPORT_BITMAP_SIZE 8192

/* A set of bridge ports. Port p is the bit 0x80 >> (p % 8) of octet p / 8. */
struct vlan_mgr_baseport_bmp {
  uint32_t size; /* octets in use: BASEPORT_BITMAP_SIZE, or 0 when the set is not known */
  uint8_t bits[BASEPORT_BITMAP_SIZE];
};

/* The bridge ports that are members of at least one of the VLANs. Returns a record on the heap, released with
 * free(); null when memory is short or the switch cannot be asked. */
struct vlan_mgr_baseport_bmp *vlan_mgr_get_baseport_membership_range(const struct stp_vlan_bmp *vlans);

#ifdef __cplusplus
}
static_assert(sizeof(struct vlan_mgr_baseport_bmp) == 8196 &&
                  offsetof(struct vlan_mgr_baseport_bmp, bits) == 4,
              "base-port bitmap layout");
#else
_Static_assert(sizeof(struct vlan_mgr_baseport_bmp) == 8196 &&
                   offsetof(struct vlan_mgr_baseport_bmp, bits) == 4,
               "base-port bitmap layout");
#endif

#endif
