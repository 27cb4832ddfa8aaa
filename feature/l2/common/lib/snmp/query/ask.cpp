#include "query/ask.h"

#include "diagnostics.h"

namespace stpsnmp::query {
namespace {

using diagnostics::kTrace;

int send(Request *request, std::span<const Key> keys, Reply *reply) {
  for (const Key &key : keys) {
    request->add(key);
  }
  return request->send(reply);
}

}  // namespace

int ask(stp_command command, cmd_action action, std::span<const Key> keys, Reply *reply, CallSite caller) {
  Request request(command, action, caller);
  if (!request) {
    return kFailed;
  }
  const int result = send(&request, keys, reply);
  if (result != 0) {
    STP_LOG(kTrace, "%s(%d) cmd_req_snmp_send_recv() failed\n", caller.function, caller.line);
  }
  return result;
}

int ask_for_reply(stp_command command, cmd_action action, std::span<const Key> keys, Reply *reply,
                  CallSite caller) {
  Request request(command, action, caller);
  if (!request) {
    return kFailed;
  }
  const int result = send(&request, keys, reply);
  if (result != 0 || !*reply) {
    STP_LOG(kTrace, "%s(%d) cmd_req_snmp_send_recv() failed, ret:%d\n", caller.function, caller.line, result);
    return kFailed;
  }
  return 0;
}

}  // namespace stpsnmp::query
