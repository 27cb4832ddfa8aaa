// The one connection for requests to the switch, and the image that comes with it: when it is made, kept,
// dropped and made again.
//
// Whatever waits for the switch fails when the waiting time (waiting_time.h) is over, and at once while a
// switch that was found dead or silent is left alone (backoff.h). Whatever goes wrong drops the connection,
// so that a late reply can never answer a later request, and with it the image. An idle connection is watched
// by the agent's main loop: a switch that goes away is noticed before the next SNMP request.
#pragma once

#include <cstddef>
#include <cstdint>

#include "backoff.h"
#include "deadline.h"
#include "image_reader.h"
#include "malformed_messages.h"
#include "message_check.h"
#include "platform/cmd.h"
#include "wire/message.h"

namespace stpplatform {

class Connection {
 public:
  constexpr Connection() = default;
  Connection(const Connection &) = delete;
  Connection &operator=(const Connection &) = delete;

  // Sends a request on the connection, which stands: `request->header.length` bytes of which the header's
  // other fields are filled in here. Receives the reply. Returns CMD_OK with `*attributes` set, valid until
  // the next call; the switch's refusal; or what went wrong.
  cmd_result exchange(wire::Request *request, ReplyAttributes *attributes);

  // Has the switch renew the image's lease. Returns as above.
  cmd_result renew_lease();

  // The switch's image, mapped while the connection stands.
  ImageReader &image() { return image_; }

  // Makes the connection, which does not stand; makes it anew, because the image was moved.
  cmd_result open();
  cmd_result reopen();

  // The image has answered a command in the switch's place.
  void image_answered() {
    if (is_recovering_) {
      answered();
    }
  }

  // The image has proved useless for the reason `what`. Returns CMD_BAD_REPLY.
  cmd_result image_failed(const char *what);

  // Drops the connection and forgets that anything ever failed.
  void reset();

 private:
  cmd_result exchange(wire::MessageHeader *message, wire::MessageType type, ReplyAttributes *attributes);
  cmd_result connect_unless_left_alone(const Deadline &deadline);
  cmd_result connect(const Deadline &deadline);
  cmd_result attempt(const wire::MessageHeader &message, const Deadline &deadline, cmd_result *status,
                     ReplyAttributes *attributes);
  cmd_result failed(cmd_result result, const char *what);
  void answered();
  void drop();
  static void on_idle_input(int socket, void *connection);

  bool is_open() const { return socket_ >= 0; }

  int socket_ = -1;  // no owner with a destructor: at exit, that would run before the library's unloading
  ImageReader image_;
  Backoff backoff_;
  uint32_t sequence_ = 0;
  bool is_recovering_ = false;  // a failure has left behind what the next answer ends
  bool failure_reported_ = false;
  MalformedMessages malformed_{""};
};

extern Connection the_connection;
inline Connection &connection() { return the_connection; }

}  // namespace stpplatform
