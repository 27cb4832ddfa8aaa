/* STP library: bridge port numbers (dot1dBasePort, RFC 4188) and the VLANs of MST instances (IEEE 802.1Q
 * clause 13). */
#ifndef PLATFORM_STP_H
#define PLATFORM_STP_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Octets of a VLAN bitmap: one bit for each of the VLAN identifiers 0 to 4095. */
#define STP_VLAN_BITMAP_SIZE 512

/* A set of VLANs. VLAN v is the bit 0x80 >> (v % 8) of octet v / 8. */
struct stp_vlan_bmp {
  uint32_t size; /* octets in use: STP_VLAN_BITMAP_SIZE */
  uint8_t bits[STP_VLAN_BITMAP_SIZE];
};

/* Converts between interface index and bridge port number. Return 0 on success; another code, with the output
 * left as it was, when there is no such interface or port, or the switch cannot be asked. */
int stp_ifindex2dot1dportnum(uint32_t if_index, uint16_t *port);
int stp_dot1dportnum2ifindex(uint16_t port, uint32_t *if_index);

/* Non-zero when the interface exists and takes part in bridging, be it by itself or as a member of a
 * port-channel. */
int stp_valid_if_index(uint32_t if_index);

/* The VLANs of an MST instance, for whoever has a reply about the MST region that the process has given it.
 * Whether they stand in the reply or are looked up when they are asked for is the platform's business.
 * `action` is CMD_ACTION_GET for the instance `*instance`, CMD_ACTION_GET_NEXT for the one after it. Returns
 * 0 with `*instance` set to the instance found and `*vlans` filled; another code, with the outputs left as
 * they were, when there is none, or the switch cannot be asked. */
int stp_get_mst_vlan_bmp(void *reply, uint32_t action, uint16_t *instance, struct stp_vlan_bmp *vlans);

/* The VLANs mapped to an MST instance. Returns 0 on success; another code, with `*vlans` left as it was, when
 * the switch has no such instance. */
int stp_dot1d_bridgemib_get_mst_ctx(uint16_t instance, struct stp_vlan_bmp *vlans);

#ifdef __cplusplus
}
static_assert(sizeof(struct stp_vlan_bmp) == 516 && offsetof(struct stp_vlan_bmp, bits) == 4,
              "VLAN bitmap layout");
#else
_Static_assert(sizeof(struct stp_vlan_bmp) == 516 && offsetof(struct stp_vlan_bmp, bits) == 4,
               "VLAN bitmap layout");
#endif

#endif
