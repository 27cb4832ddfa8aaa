#include "sources/linux_bridge/link_query.h"

#include <libmnl/libmnl.h>
#include <linux/if_bridge.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <utility>

#include "base/system_failure.h"
#include "sources/linux_bridge/stp_statistics.h"

namespace stpswitch {
namespace {

constexpr uint32_t kNoGroups = 0;

// An answer is there when the question has been sent (link_query.h); this only keeps a fault of the kernel
// from being one of the whole process.
constexpr std::chrono::milliseconds kPatience{250};

// Every interface that somebody adds or removes anywhere on the machine interrupts a dump.
constexpr int kTries = 5;

// Of the bridges' ioctl: what is asked, where the answer is to stand, and two that this question has no use
// for.
constexpr size_t kIoctlArguments = 4;

// A question is far shorter.
constexpr size_t kLongestQuestion = 256;

}  // namespace

class LinkQuery::Question {
 public:
  Question(uint16_t type, uint16_t flags) : head_(*mnl_nlmsg_put_header(octets_.data())) {
    head_.nlmsg_type = type;
    head_.nlmsg_flags = static_cast<uint16_t>(NLM_F_REQUEST | flags);
  }
  Question(const Question &) = delete;
  Question &operator=(const Question &) = delete;

  nlmsghdr &head() { return head_; }

  // What messages of the type have in front of their attributes; zeros at first.
  template <class Body>
  Body &add_body() {
    return *static_cast<Body *>(mnl_nlmsg_put_extra_header(&head_, sizeof(Body)));
  }

 private:
  alignas(nlmsghdr) std::array<uint8_t, kLongestQuestion> octets_{};
  nlmsghdr &head_;
};

class LinkQuery::LinkQuestion : public Question {
 public:
  LinkQuestion(uint8_t family, uint16_t flags, uint32_t filter) : Question(RTM_GETLINK, flags) {
    add_body<ifinfomsg>().ifi_family = family;
    mnl_attr_put_u32(&head(), IFLA_EXT_MASK, filter);
  }
};

struct LinkQuery::Answer {
  bool is_complete = false;  // nothing more will come
  bool is_interrupted = false;
  int error = 0;
  std::vector<Link> links;
  std::optional<uint64_t> forward_transitions;

  void take(const nlmsghdr &message);
};

void LinkQuery::Answer::take(const nlmsghdr &message) {
  is_interrupted |= (message.nlmsg_flags & NLM_F_DUMP_INTR) != 0;
  if (message.nlmsg_type == NLMSG_ERROR || message.nlmsg_type == NLMSG_DONE) {
    // Both begin with an errno, negative; that of NLMSG_DONE may be missing.
    int status = 0;
    if (mnl_nlmsg_get_payload_len(&message) >= sizeof status) {
      std::memcpy(&status, mnl_nlmsg_get_payload(&message), sizeof status);
    }
    error = -status;
    is_complete = true;
    return;
  }
  if (auto parsed = parse_link_message(message)) {
    links.push_back(std::move(parsed->link));
  }
  forward_transitions = parse_forward_transitions(message);
  is_complete = (message.nlmsg_flags & NLM_F_MULTI) == 0;
}

LinkQuery::LinkQuery() : socket_(kNoGroups) {}

LinkQuery::Answer LinkQuery::ask(Question *question) {
  question->head().nlmsg_seq = ++sequence_;
  socket_.send(question->head());
  Answer answer;
  while (!answer.is_complete) {
    switch (socket_.receive(kPatience)) {
      case NetlinkSocket::Receipt::kDatagram:
        for_each_message(socket_.datagram(), [this, &answer](const nlmsghdr &message) {
          if (!answer.is_complete && mnl_nlmsg_seq_ok(&message, sequence_) && message.nlmsg_seq != 0) {
            answer.take(message);
          }
        });
        break;
      case NetlinkSocket::Receipt::kNothing:
        give_up(ETIMEDOUT);
      case NetlinkSocket::Receipt::kLost:
        answer.error = ENOBUFS;
        answer.is_complete = true;
        break;
    }
  }
  return answer;
}

// What is still to come would stand before the next answer.
void LinkQuery::give_up(int error) {
  socket_ = NetlinkSocket(kNoGroups);
  errno = error;
  throw system_failure("the kernel does not tell about its bridges");
}

std::optional<std::vector<Link>> LinkQuery::ask_for_all(Question *question) {
  for (int i = 0; i < kTries; ++i) {
    Answer answer = ask(question);
    if (answer.error != 0) {
      give_up(answer.error);
    }
    if (!answer.is_interrupted) {
      return std::move(answer.links);
    }
  }
  return std::nullopt;
}

std::optional<Link> LinkQuery::link(const std::string &name) {
  LinkQuestion question(AF_UNSPEC, 0, RTEXT_FILTER_SKIP_STATS);
  mnl_attr_put_strz(&question.head(), IFLA_IFNAME, name.c_str());
  Answer answer = ask(&question);
  if (answer.error == ENODEV) {
    return std::nullopt;
  }
  if (answer.error != 0) {
    give_up(answer.error);
  }
  return answer.links.empty() ? std::nullopt : std::optional(std::move(answer.links.front()));
}

std::optional<std::vector<Link>> LinkQuery::links_of(uint32_t master) {
  LinkQuestion question(AF_UNSPEC, NLM_F_DUMP, RTEXT_FILTER_SKIP_STATS);
  mnl_attr_put_u32(&question.head(), IFLA_MASTER, master);
  auto links = ask_for_all(&question);
  if (links) {
    // Kernels that do not know the filter tell of all.
    std::erase_if(*links, [master](const Link &link) { return link.master != master; });
  }
  return links;
}

std::optional<std::vector<Link>> LinkQuery::bridge_ports() {
  LinkQuestion question(AF_BRIDGE, NLM_F_DUMP, RTEXT_FILTER_BRVLAN_COMPRESSED);
  return ask_for_all(&question);
}

std::optional<uint64_t> LinkQuery::forward_transitions(uint32_t if_index) {
  Question question(RTM_GETSTATS, 0);
  auto &body = question.add_body<if_stats_msg>();
  body.ifindex = if_index;
  body.filter_mask = IFLA_STATS_FILTER_BIT(IFLA_STATS_LINK_XSTATS_SLAVE);
  return ask(&question).forward_transitions;
}

std::optional<OwnTimers> LinkQuery::own_timers(const std::string &bridge) {
  __bridge_info info{};
  std::array<unsigned long, kIoctlArguments> arguments{BRCTL_GET_BRIDGE_INFO,
                                                       reinterpret_cast<unsigned long>(&info)};
  ifreq request{};
  bridge.copy(request.ifr_name, sizeof request.ifr_name - 1);
  request.ifr_data = reinterpret_cast<char *>(arguments.data());
  if (::ioctl(socket_.fd(), SIOCDEVPRIVATE, &request) != 0) {
    return std::nullopt;
  }
  return OwnTimers{info.bridge_max_age, info.bridge_hello_time, info.bridge_forward_delay};
}

}  // namespace stpswitch
