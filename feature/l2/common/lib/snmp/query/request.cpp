#include "query/request.h"

#include <cstdlib>

#include "diagnostics.h"
#include "platform/agent_ext.h"

namespace stpsnmp::query {
namespace {

constexpr uint32_t kRequestBufferSize = 16000;

}  // namespace

int add_key(void *request, const Key &key) {
  const uint32_t length = token_type_2len(key.token, key.value);
  return cmd_req_attr_add(request, key.token, key.value, length);
}

Request::Request(stp_command command, cmd_action action, CallSite caller)
    : buffer_(malloc(kRequestBufferSize)) {
  if (buffer_ == nullptr) {
    STP_LOG(diagnostics::kTrace, "%s(%d) malloc failed \n", caller.function, caller.line);
    return;
  }
  handle_ = cmd_req_init(buffer_, kRequestBufferSize);
  cmd_req_cmdId_set(handle_, command);
  cmd_req_action_set(handle_, action);
}

Request::~Request() { free(buffer_); }

int Request::send(Reply *reply) {
  // The session is asked for before the user.
  const uint32_t session = get_snmp_sessionid(0);
  const char *user = get_snmp_username(0);
  const int result =
      cmd_snmp_req_send_recv(STP_DESTINATION, STP_SERVICE, handle_, user, session, reply->out(), 0);
  if (result != 0) {
    reply->detach();  // whatever the library left there is not a reply
  }
  return result;
}

}  // namespace stpsnmp::query
