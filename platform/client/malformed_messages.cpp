#include "malformed_messages.h"

#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/library/snmp_logging.h>

#include "deadline.h"
#include "settings.h"

namespace stpplatform {

bool MalformedMessages::take(uint64_t now_ms) {
  if (now_ms < silent_until_ms_) {
    ++left_out_;
    return false;
  }
  tell_left_out();
  silent_until_ms_ = now_ms + kSilenceMs;
  return true;
}

void MalformedMessages::tell() {
  if (left_out_ != 0 && monotonic_ms() >= silent_until_ms_) {
    tell_left_out();
  }
}

void MalformedMessages::reset() {
  tell_left_out();
  silent_until_ms_ = 0;
}

void MalformedMessages::tell_left_out() {
  if (left_out_ != 0) {
    snmp_log(LOG_WARNING, "stpplatform: %s: %s%u more messages were not valid\n", settings().socket_path,
             topic_, left_out_);
    left_out_ = 0;
  }
}

}  // namespace stpplatform
