#include "query/reply.h"

#include <cstring>

#include "result.h"

namespace stpsnmp::query {
namespace {

// Finds a value that must be there when it is `needed` or has a length.
int find_octets(void *handle, stp_attribute attribute, bool needed, Octets *value) {
  void *data = nullptr;
  uint32_t length = 0;
  const int result = cmd_rsp_attr_get(handle, attribute, &data, &length);
  if (result != 0) {
    return result;
  }
  if (data == nullptr && (needed || length != 0)) {
    return kFailed;
  }
  *value = {data, length};
  return 0;
}

}  // namespace

int Reply::find(stp_attribute attribute, const void **value) const {
  Octets octets;
  const int result = find_octets(handle_, attribute, true, &octets);
  if (result == 0) {
    *value = octets.data;
  }
  return result;
}

int Reply::read_number(stp_attribute attribute, uint32_t *number) const {
  const void *value = nullptr;
  const int result = find(attribute, &value);
  if (result == 0) {
    // The library promises the length, but no alignment.
    std::memcpy(number, value, sizeof *number);
  }
  return result;
}

int Reply::read_octets(stp_attribute attribute, Octets *octets) const {
  return find_octets(handle_, attribute, false, octets);
}

void Reply::release() {
  if (handle_ != nullptr) {
    cmd_snmp_free_rx_hndl(handle_);
    handle_ = nullptr;
  }
}

}  // namespace stpsnmp::query
