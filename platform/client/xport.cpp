#include "xport.h"

#include "export.h"
#include "platform/xport.h"

extern "C" STPPLATFORM_EXPORT void *xport_payload_get(void *message) {
  return message == nullptr ? nullptr : static_cast<stpplatform::TransportMessage *>(message)->payload;
}
