/* Bridge MIB helper. */
#ifndef PLATFORM_BRIDGE_MIB_H
#define PLATFORM_BRIDGE_MIB_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The number of octets up to and including the last one that is not zero; 0 when all are zero. */
int dot1d_stringNonZeroLength(const uint8_t *octets, int length);

#ifdef __cplusplus
}
#endif

#endif
