// One packet in or out of a local SOCK_SEQPACKET socket, within a deadline and without ever blocking longer.
#pragma once

#include <cstddef>
#include <cstdint>

#include "deadline.h"
#include "platform/cmd.h"
#include "wire/owned_fd.h"

namespace stpplatform {

// Connects at once or not at all: a switch whose queue is full counts as unreachable. On failure the socket
// is not open and errno tells why.
OwnedFd connect_packet_socket(const char *path);

// Returns CMD_OK, CMD_TIMEOUT or CMD_UNREACHABLE.
cmd_result send_packet(int socket, const void *packet, size_t size, const Deadline &deadline);

// Returns CMD_OK with `*size` set, CMD_TIMEOUT, CMD_UNREACHABLE when the peer has gone, or CMD_BAD_REPLY for
// a packet longer than `capacity`. With `descriptor`, exactly one file descriptor must come with the packet;
// without it, none may. Descriptors that are not wanted are closed. CMD_NO_MEMORY means that the kernel had
// no place for the one that is wanted.
cmd_result receive_packet(int socket, void *packet, size_t capacity, const Deadline &deadline, size_t *size,
                          OwnedFd *descriptor = nullptr);

// Why a packet could not be received, as the agent's log says it.
const char *describe_failure(cmd_result result);

}  // namespace stpplatform
