#include "platform/bridge_mib.h"

#include "export.h"

extern "C" STPPLATFORM_EXPORT int dot1d_stringNonZeroLength(const uint8_t *octets, int length) {
  if (octets == nullptr) {
    return 0;
  }
  int used = length;
  while (used > 0 && octets[used - 1] == 0) {
    --used;
  }
  return used > 0 ? used : 0;
}
