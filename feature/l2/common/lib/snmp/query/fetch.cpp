#include "query/fetch.h"

#include <algorithm>
#include <cstring>

#include "diagnostics.h"
#include "query/ask.h"

namespace stpsnmp::query {
namespace {

using diagnostics::kTrace;

// Reads the wanted attribute into the field; `shown` is what the trace prints of it.
using Read = int (*)(const Reply &reply, stp_attribute wanted, void *field, uint32_t *shown);

int read_number(const Reply &reply, stp_attribute wanted, void *field, uint32_t *shown) {
  const int result = reply.read_number(wanted, shown);
  if (result == 0) {
    std::memcpy(field, shown, sizeof *shown);
  }
  return result;
}

int read_octets(const Reply &reply, stp_attribute wanted, void *field, uint32_t *shown) {
  Octets octets;
  const int result = reply.read_octets(wanted, &octets);
  if (result != 0) {
    return result;
  }
  auto *text = static_cast<char *>(field);
  if (octets.length != 0) {
    std::memcpy(text, octets.data, octets.length);
    std::memcpy(shown, octets.data, std::min<size_t>(octets.length, sizeof *shown));
  }
  text[octets.length + 1] = '\0';
  return 0;
}

int send(const Question &question, Reply *reply, CallSite caller) {
  if (!question.key) {
    return ask(question.command, CMD_ACTION_GET, {}, reply, caller);
  }
  const uint32_t value = 0;
  const Key key{*question.key, &value};
  return ask(question.command, CMD_ACTION_GET, {&key, 1}, reply, caller);
}

int fetch(const Question &question, Read read, void *field, CallSite caller) {
  Reply reply;
  const int sent = send(question, &reply, caller);
  if (sent != 0) {
    return sent;
  }
  int result = kFailed;
  if (reply) {
    uint32_t shown = 0;
    result = read(reply, question.wanted, field, &shown);
    if (result == 0) {
      STP_LOG(kTrace, "value %d\n", static_cast<int32_t>(shown));
      return 0;
    }
    reply.release();
  }
  STP_LOG(kTrace, "parse_reply_%s failed\n", question.object);
  return result;
}

}  // namespace

int fetch_number(const Question &question, void *field, CallSite caller) {
  return fetch(question, read_number, field, caller);
}

int fetch_octets_unchecked(const Question &question, char *field, CallSite caller) {
  return fetch(question, read_octets, field, caller);
}

}  // namespace stpsnmp::query
