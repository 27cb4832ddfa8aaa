/* Port-channel manager: membership in port-channels (link aggregation, IEEE 802.1AX). */
#ifndef PLATFORM_PCM_H
#define PLATFORM_PCM_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* What the port-channel manager knows of one port. The record is packed. */
struct pcm_port_channel {
  uint16_t channel;     /* number of the port-channel that the port belongs to, 0 for none */
  uint32_t if_index;    /* the port asked about */
  uint32_t pc_if_index; /* interface index of that port-channel, 0 for none */
}
#ifdef __GNUC__
__attribute__((packed))
#endif
;

/* Fills `record` for a port. Returns non-zero, with the record left as it was, when there is no such
 * interface or the switch cannot be asked. A port that is in no port-channel is a success with `pc_if_index`
 * 0. */
int pcm_get_pc_for_port(uint32_t if_index, struct pcm_port_channel *record);

#ifdef __cplusplus
}
static_assert(offsetof(struct pcm_port_channel, pc_if_index) == 6, "port-channel record layout");
#else
_Static_assert(offsetof(struct pcm_port_channel, pc_if_index) == 6, "port-channel record layout");
#endif

#endif
