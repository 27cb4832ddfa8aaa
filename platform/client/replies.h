// Reply handles: what cmd_snmp_req_send_recv gives out. One block of memory each.
#pragma once

#include <cstdint>

#include "wire/attributes.h"

namespace stpplatform {

struct Reply {
  uint32_t cookie;
  uint32_t size;  // of the attributes, which follow

  wire::AttributeReader attributes() const { return wire::AttributeReader(this + 1, size); }
};

// Null for what is no reply handle.
const Reply *reply_of(const void *handle);

// Builds a handle from well-formed attributes. Null when memory is short.
void *make_reply(const void *attributes, uint32_t size);

}  // namespace stpplatform
