// The single-value query: one request, one attribute of its reply, one field.
#pragma once

#include <cstddef>
#include <optional>

#include "call_site.h"
#include "platform/stp_protocol.h"

namespace stpsnmp::query {

struct Question {
  stp_command command;
  std::optional<stp_key> key;  // sent with the value 0; none where the command takes none
  stp_attribute wanted;
  const char *object;  // the MIB object, as a failure names it
};

// Fetch a value with action GET. Return 0 with the field set; otherwise -1 or the command library's code,
// with the field left as it was. What goes wrong is logged for `caller`.

// The field is a 32-bit number, signed or not.
int fetch_number(const Question &question, void *field, CallSite caller = CallSite::here());

// What fetch_octets does, once the field is known to be large enough.
int fetch_octets_unchecked(const Question &question, char *field, CallSite caller);

// The room that fetch_octets needs: the longest attribute value and the two bytes after it.
inline constexpr size_t kOctetsFieldSize = CMD_ATTR_VALUE_MAX + 2;

// The value is copied into the field, and a zero is written behind the byte that follows it. That byte keeps
// what it held, deliberately: a shorter value after a longer one is followed by one byte of the longer one.
template <size_t N>
int fetch_octets(const Question &question, char (&field)[N], CallSite caller = CallSite::here()) {
  static_assert(N >= kOctetsFieldSize, "the value is copied without a check");
  return fetch_octets_unchecked(question, field, caller);
}

}  // namespace stpsnmp::query
