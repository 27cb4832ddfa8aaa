#include "packet_socket.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>

namespace stpplatform {
namespace {

cmd_result wait_for(int socket, short events, const Deadline &deadline) {
  for (;;) {
    pollfd entry{socket, events, 0};
    const int ready = poll(&entry, 1, deadline.remaining_ms());
    if (ready > 0) {
      return CMD_OK;
    }
    if (ready == 0) {
      return CMD_TIMEOUT;
    }
    if (errno != EINTR) {
      return CMD_UNREACHABLE;
    }
  }
}

// Takes over what the kernel has installed. Returns how many descriptors that is.
int take_descriptors(msghdr *message, OwnedFd *descriptor) {
  int taken = 0;
  for (cmsghdr *control = CMSG_FIRSTHDR(message); control != nullptr;
       control = CMSG_NXTHDR(message, control)) {
    // GCOVR_EXCL_BR_START: the kernel sends nothing else to a Unix socket that asks for nothing else
    if (control->cmsg_level == SOL_SOCKET && control->cmsg_type == SCM_RIGHTS &&
        control->cmsg_len >= CMSG_LEN(sizeof(int))) {
      int fd = -1;  // GCOVR_EXCL_BR_STOP
      std::memcpy(&fd, CMSG_DATA(control), sizeof fd);
      descriptor->reset(fd);
      ++taken;
    }
  }
  return taken;
}

}  // namespace

OwnedFd connect_packet_socket(const char *path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const size_t length = std::strlen(path);
  if (length >= sizeof address.sun_path) {
    errno = ENAMETOOLONG;
    return OwnedFd();
  }
  std::memcpy(address.sun_path, path, length);

  OwnedFd socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (socket.is_open() &&
      connect(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
    const int error = errno;
    socket.reset();
    errno = error;
  }
  return socket;
}

cmd_result send_packet(int socket, const void *packet, size_t size, const Deadline &deadline) {
  for (;;) {
    if (send(socket, packet, size, MSG_NOSIGNAL) >= 0) {
      return CMD_OK;
    }
    if (errno == EAGAIN) {
      const cmd_result ready = wait_for(socket, POLLOUT, deadline);
      if (ready != CMD_OK) {
        return ready;
      }
    } else if (errno != EINTR) {
      return CMD_UNREACHABLE;
    }
  }
}

cmd_result receive_packet(int socket, void *packet, size_t capacity, const Deadline &deadline, size_t *size,
                          OwnedFd *descriptor) {
  // Room for one descriptor and not for two: the kernel closes what does not fit, and says so.
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))];
  for (;;) {
    const cmd_result ready = wait_for(socket, POLLIN, deadline);
    if (ready != CMD_OK) {
      return ready;
    }
    iovec part{packet, capacity};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    if (descriptor != nullptr) {
      message.msg_control = control;
      message.msg_controllen = CMSG_LEN(sizeof(int));
    }
    const ssize_t received = recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
    if (received < 0) {
      if (errno == EAGAIN || errno == EINTR) {
        continue;
      }
      return CMD_UNREACHABLE;
    }
    const int wanted = descriptor != nullptr ? 1 : 0;
    const int taken = descriptor != nullptr ? take_descriptors(&message, descriptor) : 0;
    const bool is_cut = (message.msg_flags & MSG_CTRUNC) != 0;
    if (taken < wanted && is_cut) {
      return CMD_NO_MEMORY;
    }
    if (received == 0 && taken == 0) {
      return CMD_UNREACHABLE;
    }
    if ((message.msg_flags & MSG_TRUNC) != 0 || is_cut || taken != wanted) {
      return CMD_BAD_REPLY;
    }
    *size = static_cast<size_t>(received);
    return CMD_OK;
  }
}

const char *describe_failure(cmd_result result) {
  switch (result) {
    case CMD_UNREACHABLE:
      return "the switch has closed the connection";
    case CMD_TIMEOUT:
      return "the switch does not answer in time";
    case CMD_NO_MEMORY:
      return "the agent cannot take the image's descriptor: too many open files, or a security policy "
             "forbids "
             "it";
    default:
      return "the switch has sent something that is not a valid message";
  }
}

}  // namespace stpplatform
