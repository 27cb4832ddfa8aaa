// One question to the spanning-tree process: a request is built, sent and freed, and its reply handed over.
// What goes wrong is logged for `caller`.
#pragma once

#include <span>

#include "call_site.h"
#include "platform/stp_protocol.h"
#include "query/reply.h"
#include "query/request.h"
#include "result.h"

namespace stpsnmp::query {

// Returns 0, and the reply may still be empty; -1 where memory is short; otherwise the command library's
// code.
int ask(stp_command command, cmd_action action, std::span<const Key> keys, Reply *reply,
        CallSite caller = CallSite::here());

// The same for callers to whom an empty reply is a failed send: returns 0 with a reply, otherwise -1.
int ask_for_reply(stp_command command, cmd_action action, std::span<const Key> keys, Reply *reply,
                  CallSite caller = CallSite::here());

}  // namespace stpsnmp::query
