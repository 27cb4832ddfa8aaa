// Asks the kernel about links.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "sources/linux_bridge/link_message.h"
#include "sources/linux_bridge/netlink_socket.h"

namespace stpswitch {

// Each question waits for its answer. The kernel makes that within the calls that ask and receive: there is
// nothing to wait for but the kernel's own lock, for which nonblocking calls wait as well.
//
// Throws std::runtime_error when the kernel refuses to answer.
class LinkQuery {
 public:
  // Throws std::runtime_error when nothing can be asked here.
  LinkQuery();

  // The interface of that name; none where there is no such.
  std::optional<Link> link(const std::string &name);

  // The ports or members of an interface; none where they changed again and again while the kernel told them.
  std::optional<std::vector<Link>> links_of(uint32_t master);

  // The same of the ports of all bridges, with their VLANs.
  std::optional<std::vector<Link>> bridge_ports();

  // How often a bridge port began to forward; none where the kernel does not tell, for whatever reason: it is
  // too old (before 5.6), the port has gone, or it has so many VLANs that what is told of them does not fit
  // into a datagram.
  std::optional<uint64_t> forward_transitions(uint32_t if_index);

  // A bridge's own timers; none where the kernel does not tell. rtnetlink has those in force alone: this is
  // an ioctl of old, which a kernel of 64 bits refuses to processes of 32.
  std::optional<OwnTimers> own_timers(const std::string &bridge);

 private:
  class Question;
  class LinkQuestion;
  struct Answer;

  Answer ask(Question *question);
  std::optional<std::vector<Link>> ask_for_all(Question *question);
  [[noreturn]] void give_up(int error);

  NetlinkSocket socket_;
  uint32_t sequence_ = 0;
};

}  // namespace stpswitch
