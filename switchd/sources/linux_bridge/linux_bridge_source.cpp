#include "sources/linux_bridge/linux_bridge_source.h"

#include <linux/if.h>
#include <linux/rtnetlink.h>
#include <unistd.h>

#include <array>
#include <ctime>
#include <stdexcept>
#include <utility>

#include "base/log.h"
#include "base/printable.h"
#include "model/refusal.h"
#include "sources/read_only.h"

namespace stpswitch {
namespace {

// Room for more than a thousand notifications.
constexpr int kNewsBuffer = 2 * 1024 * 1024;

// Others have their turn on the loop after so many datagrams.
constexpr int kDatagramsAtOnce = 256;

constexpr std::chrono::milliseconds kSecond{1000};

// As often as that in succession, the bridge may change while it is read.
constexpr int kMostUnsettled = 4;

// Losses of notifications that follow each other sooner are one episode, with one line in the log.
constexpr std::chrono::minutes kOneEpisode{1};

// The kernel's port priorities are a quarter of those of IEEE 802.1D.
constexpr std::array<SetInstead, 7> kOfInterfaces = {{
    {"root_guard", "bridge link set dev % root_block on|off"},
    {"path_cost", "bridge link set dev % cost N"},
    {"priority", "bridge link set dev % priority N/4"},
    {"vlans", "bridge vlan add|del dev % vid N"},
    {"link", "ip link set dev % up|down"},
    {"name", "ip link set dev % name NAME"},
    {"channel", "ip link set dev % master NAME"},
}};

constexpr std::array<SetInstead, 6> kOfBridge = {{
    {"priority", "ip link set dev % type bridge priority N"},
    {"max_age", "ip link set dev % type bridge max_age N"},
    {"hello_time", "ip link set dev % type bridge hello_time N"},
    {"forward_delay", "ip link set dev % type bridge forward_delay N"},
    {"address", "ip link set dev % address ADDRESS"},
    {"mode", "ip link set dev % type bridge stp_state 0|1"},
}};

constexpr ReadOnlyKeys kKeys = {
    kOfInterfaces, kOfBridge,
    "cannot be set: stp-switchd only reads the Linux bridge, which has no such setting"};

TickRates tick_rates() {
  constexpr long kNanosecondsPerSecond = 1'000'000'000;
  const long user = ::sysconf(_SC_CLK_TCK);
  // The coarse clocks go on with each tick of the kernel, which need not be a whole number of nanoseconds.
  timespec kernel{};
  if (user <= 0 || ::clock_getres(CLOCK_MONOTONIC_COARSE, &kernel) != 0 || kernel.tv_nsec == 0) {
    throw std::runtime_error("the system does not tell how long its clocks' ticks are");
  }
  return {static_cast<uint32_t>(user),
          static_cast<uint32_t>((kNanosecondsPerSecond + kernel.tv_nsec / 2) / kernel.tv_nsec)};
}

std::string checked_name(std::string name) {
  if (!is_printable(name)) {
    throw Refusal("the name has characters that cannot be printed");
  }
  if (name.empty() || name.size() >= IFNAMSIZ) {
    throw Refusal("'" + name + "' cannot be a bridge's name, which has 1 to " + std::to_string(IFNAMSIZ - 1) +
                  " octets");
  }
  return name;
}

}  // namespace

LinuxBridgeSource::LinuxBridgeSource(EventLoop *loop, std::string bridge)
    : bridge_(checked_name(std::move(bridge))),
      tick_rates_(tick_rates()),
      news_(RTMGRP_LINK),
      burst_(loop, [this] { read_again(); }),
      news_event_(loop->make_event<&LinuxBridgeSource::on_news>(news_.fd(), EV_READ | EV_PERSIST, this)),
      second_timer_(loop->make_event<&LinuxBridgeSource::on_second>(-1, EV_PERSIST, this)) {
  news_.set_receive_buffer(kNewsBuffer);
}

SwitchState LinuxBridgeSource::start(Listener listener) {
  listener_ = std::move(listener);
  wait_for(news_event_);
  wait_for(second_timer_, kSecond);
  std::optional<SwitchState> state = read();
  for (int i = 1; !state && i < kMostUnsettled; ++i) {
    state = read();
  }
  if (!state) {
    burst_.add();
  }
  told_ = state ? std::move(*state) : nothing_known();
  return told_;
}

SwitchState LinuxBridgeSource::with_value(const SwitchState &now, const std::string &key,
                                          const std::string & /*value*/) const {
  refuse_to_set(kKeys, now, bridge_, key);
}

void LinuxBridgeSource::on_news() {
  if (receive_news()) {
    burst_.add();
  }
}

void LinuxBridgeSource::on_second() { burst_.add(); }

bool LinuxBridgeSource::receive_news() {
  bool concerns_bridge = false;
  for (int i = 0; i < kDatagramsAtOnce; ++i) {
    switch (news_.receive(std::chrono::milliseconds(0))) {
      case NetlinkSocket::Receipt::kDatagram:
        for_each_message(news_.datagram(), [this, &concerns_bridge](const nlmsghdr &message) {
          const auto parsed = parse_link_message(message);
          concerns_bridge |= parsed && take(*parsed);
        });
        break;
      case NetlinkSocket::Receipt::kNothing:
        return concerns_bridge;
      case NetlinkSocket::Receipt::kLost:
        note_loss();
        concerns_bridge = true;
        break;
    }
  }
  return true;  // there is more
}

bool LinuxBridgeSource::take(const LinkMessage &news) {
  forward_transitions_.see_notification(news.link.if_index);
  if (table_ && concerns(news, *table_)) {
    if (!news.is_gone && news.link.master == table_->bridge.if_index) {
      history_.see_port(news.link, std::chrono::steady_clock::now());
    }
    return true;
  }
  return news.link.name == bridge_;
}

// What was lost shows when everything is read, which comes next.
void LinuxBridgeSource::note_loss() {
  forward_transitions_.see_loss();
  const auto now = std::chrono::steady_clock::now();
  if (!last_loss_ || now - *last_loss_ > kOneEpisode) {
    log_line("the kernel notified of more changes than fit into memory: everything is read anew");
  }
  last_loss_ = now;
}

void LinuxBridgeSource::read_again() {
  std::optional<SwitchState> state;
  try {
    state = read();
  } catch (const std::runtime_error &error) {
    table_.reset();
    note(Condition::kUnreadable, error.what());
    state = nothing_known();
  }
  if (!state) {
    burst_.add();
  } else if (*state != told_) {
    told_ = *state;
    listener_(std::move(*state));
  }
}

std::optional<SwitchState> LinuxBridgeSource::read() {
  BridgeReading reading = read_bridge(bridge_, &forward_transitions_, &query_);
  switch (reading.result) {
    case BridgeReading::Result::kUnsettled:
      return std::nullopt;
    case BridgeReading::Result::kNoInterface:
      table_.reset();
      note(Condition::kNoInterface, "there is no bridge " + bridge_ + ": waiting for it; 'ip link add " +
                                        bridge_ + " type bridge stp_state 1' makes one");
      return nothing_known();
    case BridgeReading::Result::kNoBridge:
      table_.reset();
      note(Condition::kNoBridge,
           bridge_ + " is an interface, but no bridge: waiting for a bridge of that name");
      return nothing_known();
    case BridgeReading::Result::kTable:
      break;
  }
  table_ = std::move(reading.table);
  // Notifications that came meanwhile tell of what the table has already, or of what is newer: which of both,
  // nobody knows. A state that mixes them is told only where they do not end.
  const bool is_settled = !receive_news();
  if (!is_settled && ++unsettled_ < kMostUnsettled) {
    return std::nullopt;
  }
  unsettled_ = 0;
  note_stp();
  SwitchState state = state_of_table(is_settled);
  if (!is_settled) {
    burst_.add();
  }
  return state;
}

SwitchState LinuxBridgeSource::state_of_table(bool is_settled) {
  const auto now = std::chrono::steady_clock::now();
  history_.see_bridge(table_->bridge, now);
  if (is_settled) {
    history_.see_ports(*table_, now);
  }
  const auto max_age = duration_of(table_->bridge.bridge->max_age.value_or(0), tick_rates_.user);
  BridgeState result = bridge_state(*table_, history_.facts(max_age, now), tick_rates_);
  if (result.left_out > left_out_) {
    log_line("bridge " + bridge_ + ": " + std::to_string(result.left_out) +
             " interfaces are left out, as the switch has no numbers for them");
  }
  left_out_ = result.left_out;
  return std::move(result.state);
}

SwitchState LinuxBridgeSource::nothing_known() const {
  SwitchState state;
  state.settings.name = bridge_;
  return state;
}

void LinuxBridgeSource::note_stp() {
  switch (table_->bridge.bridge->stp_state.value_or(StpState::kNobody)) {
    case StpState::kKernel:
      note(Condition::kKernelStp, "bridge " + bridge_ + " is there, and runs a spanning tree");
      break;
    case StpState::kUserSpace:
      note(Condition::kUserSpaceStp, "a program outside the kernel runs the spanning tree of bridge " +
                                         bridge_ + ": only the states of ports are known");
      break;
    case StpState::kNobody:
      note(Condition::kNoStp, "bridge " + bridge_ + " runs no spanning tree: 'ip link set dev " + bridge_ +
                                  " type bridge stp_state 1' switches it on");
      break;
  }
}

void LinuxBridgeSource::note(Condition condition, const std::string &line) {
  // That all is well from the start needs no line.
  if (condition != condition_.value_or(Condition::kKernelStp)) {
    log_line(line);
  }
  condition_ = condition;
}

}  // namespace stpswitch
