// The one connection for requests to the switch: when it is made, kept, dropped and made again.
//
// A request fails within its deadline, and at once while a switch that was found dead or silent is left alone
// (backoff.h). Whatever goes wrong drops the connection, so that a late reply can never answer a later
// request, and with it the snapshot, so that no stale value is ever read. An idle connection is watched by
// the agent's main loop: a switch that goes away is noticed before the next SNMP request.
#pragma once

#include <cstddef>
#include <cstdint>

#include "backoff.h"
#include "deadline.h"
#include "malformed_messages.h"
#include "message_check.h"
#include "platform/cmd.h"
#include "snapshot_reader.h"
#include "wire/message.h"

namespace stpplatform {

class Connection {
 public:
  constexpr Connection() = default;
  Connection(const Connection &) = delete;
  Connection &operator=(const Connection &) = delete;

  // Sends a request, `request->header.length` bytes of which the header's other fields are filled in here,
  // and receives the reply. Returns CMD_OK with `*attributes` set, valid until the next call; the switch's
  // refusal; or what went wrong.
  cmd_result exchange(wire::Request *request, ReplyAttributes *attributes);

  // The switch's snapshot. Null when the switch cannot be asked.
  const SnapshotReader *snapshot();

  // Drops the connection and forgets that anything ever failed.
  void reset();

 private:
  cmd_result ensure_open(const Deadline &deadline);
  cmd_result open(const Deadline &deadline);
  cmd_result attempt(const wire::Request &request, bool was_idle, const Deadline &deadline,
                     cmd_result *status, ReplyAttributes *attributes);
  cmd_result failed(cmd_result result, const char *what);
  void answered();
  void drop();
  static void on_idle_input(int socket, void *connection);

  bool is_open() const { return socket_ >= 0; }

  int socket_ = -1;  // no owner with a destructor: at exit, that would run before the library's unloading
  SnapshotReader snapshot_;
  Backoff backoff_;
  uint32_t sequence_ = 0;
  bool failure_reported_ = false;
  MalformedMessages malformed_{""};
};

Connection &connection();

}  // namespace stpplatform
