#include "connection.h"

#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>
//
#include <net-snmp/library/fd_event_manager.h>
#include <net-snmp/library/snmp_logging.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "packet_socket.h"
#include "settings.h"
#include "waiting_time.h"

namespace stpplatform {

constinit Connection the_connection;

namespace {

// Where packets arrive. Static, because most replies are short: copying one out is cheaper than a system call
// more that asks for its size first.
alignas(uint32_t) uint8_t packet[wire::kMaxMessageSize];

}  // namespace

cmd_result Connection::exchange(wire::Request *request, ReplyAttributes *attributes) {
  return exchange(&request->header, wire::MessageType::kRequest, attributes);
}

cmd_result Connection::renew_lease() {
  wire::MessageHeader renewal{};
  renewal.length = sizeof renewal;
  ReplyAttributes none;
  return exchange(&renewal, wire::MessageType::kRenewal, &none);
}

cmd_result Connection::exchange(wire::MessageHeader *message, wire::MessageType type,
                                ReplyAttributes *attributes) {
  return waiting_time().spend([&](const Deadline &deadline) {
    sequence_ = wire::next_sequence(sequence_);
    *message = {wire::kMagic, wire::kVersion, static_cast<uint16_t>(type), message->length, sequence_};
    cmd_result status = CMD_OK;
    const cmd_result result = attempt(*message, deadline, &status, attributes);
    return result == CMD_OK ? status : result;
  });
}

cmd_result Connection::attempt(const wire::MessageHeader &message, const Deadline &deadline,
                               cmd_result *status, ReplyAttributes *attributes) {
  cmd_result result = send_packet(socket_, &message, message.length, deadline);
  if (result == CMD_UNREACHABLE) {
    // The switch was restarted since the last request. It has not seen this one.
    drop();
    result = connect_unless_left_alone(deadline);
    if (result != CMD_OK) {
      return result;
    }
    result = send_packet(socket_, &message, message.length, deadline);
  }
  size_t size = 0;
  if (result == CMD_OK) {
    result = receive_packet(socket_, packet, sizeof packet, deadline, &size);
  }
  if (result == CMD_OK) {
    result = check_reply(packet, size, message.sequence, status, attributes);
  }
  if (result != CMD_OK) {
    return failed(result, describe_failure(result));
  }
  answered();
  return CMD_OK;
}

cmd_result Connection::open() {
  return waiting_time().spend(
      [this](const Deadline &deadline) { return connect_unless_left_alone(deadline); });
}

cmd_result Connection::reopen() {
  return waiting_time().spend([this](const Deadline &deadline) {
    drop();
    return connect(deadline);
  });
}

cmd_result Connection::image_failed(const char *what) { return failed(CMD_BAD_REPLY, what); }

void Connection::reset() {
  drop();
  backoff_.reset();
  is_recovering_ = false;
  failure_reported_ = false;
  malformed_.reset();
}

cmd_result Connection::connect_unless_left_alone(const Deadline &deadline) {
  if (!backoff_.allows(monotonic_ms())) {
    return CMD_UNREACHABLE;
  }
  return connect(deadline);
}

cmd_result Connection::connect(const Deadline &deadline) {
  OwnedFd socket = connect_packet_socket(settings().socket_path);
  if (!socket.is_open()) {
    return failed(CMD_UNREACHABLE, std::strerror(errno));
  }
  OwnedFd shared_memory;
  size_t size = 0;
  const cmd_result result =
      receive_packet(socket.get(), packet, sizeof packet, deadline, &size, &shared_memory);
  if (result != CMD_OK) {
    return failed(result, describe_failure(result));
  }
  uint32_t image_size = 0;
  if (!check_hello(packet, size, &image_size)) {
    return failed(CMD_BAD_REPLY, describe_failure(CMD_BAD_REPLY));
  }
  const char *fault = image_.map(shared_memory.get(), image_size);
  if (fault != nullptr) {
    return failed(CMD_BAD_REPLY, fault);
  }
  socket_ = socket.release();
  // Where the main loop has no room for it, the next request notices that the switch has gone.
  register_readfd(socket_, on_idle_input, this);
  return CMD_OK;
}

cmd_result Connection::failed(cmd_result result, const char *what) {
  const uint64_t now = monotonic_ms();
  drop();
  backoff_.failed(now);
  is_recovering_ = true;
  // Messages that are not valid are counted even while the log already tells of a failure.
  const bool is_told = result == CMD_BAD_REPLY ? malformed_.take(now) : !failure_reported_;
  if (is_told) {
    failure_reported_ = true;
    snmp_log(LOG_WARNING, "stpplatform: %s: %s\n", settings().socket_path, what);
  }
  return result;
}

void Connection::answered() {
  backoff_.reset();
  if (failure_reported_) {
    failure_reported_ = false;
    snmp_log(LOG_NOTICE, "stpplatform: %s: the switch answers again\n", settings().socket_path);
  }
  malformed_.tell();
  is_recovering_ = malformed_.has_left_out();
}

void Connection::drop() {
  if (is_open()) {
    unregister_readfd(socket_);
    // No shutdown: a process that the agent forked off may hold the same socket.
    close(socket_);
    socket_ = -1;
  }
  image_.unmap();
}

// Nothing is due on an idle connection: input is the switch's farewell, or a breach of the protocol.
void Connection::on_idle_input(int socket, void *connection) {
  char octet = 0;
  const ssize_t received = recv(socket, &octet, sizeof octet, MSG_PEEK | MSG_DONTWAIT);
  if (received < 0 && (errno == EAGAIN || errno == EINTR)) {
    return;
  }
  static_cast<Connection *>(connection)->drop();
}

}  // namespace stpplatform
