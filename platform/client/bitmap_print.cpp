#include "platform/bitmap_print.h"

#include "export.h"

extern "C" {
STPPLATFORM_EXPORT int printf_curr_idx = 0;
}
