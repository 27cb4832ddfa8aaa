#include "sources/openvswitch/openvswitch_source.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/log.h"
#include "sources/openvswitch/bridge_state.h"
#include "sources/read_only.h"

namespace stpswitch {
namespace {

// Of ports that are left out.
constexpr size_t kMostLinesAtOnce = 10;

constexpr auto kOfInterfaces = std::to_array<SetInstead>({
    {"path_cost", "ovs-vsctl set port % other_config:rstp-path-cost=N"},
    {"priority", "ovs-vsctl set port % other_config:rstp-port-priority=N"},
    {"admin_edge", "ovs-vsctl set port % other_config:rstp-port-admin-edge=true|false"},
    {"auto_edge", "ovs-vsctl set port % other_config:rstp-port-auto-edge=true|false"},
    {"vlans", "ovs-vsctl set port % tag=VLAN, or trunks=VLAN,..."},
});
constexpr auto kOfBridge = std::to_array<SetInstead>({
    {"mode", "ovs-vsctl set bridge % rstp_enable=true|false"},
    {"address", "ovs-vsctl set bridge % other_config:rstp-address=ADDRESS"},
    {"priority", "ovs-vsctl set bridge % other_config:rstp-priority=N"},
    {"max_age", "ovs-vsctl set bridge % other_config:rstp-max-age=SECONDS"},
    {"forward_delay", "ovs-vsctl set bridge % other_config:rstp-forward-delay=SECONDS"},
    {"hold_count", "ovs-vsctl set bridge % other_config:rstp-transmit-hold-count=N"},
    {"protocol_version", "ovs-vsctl set bridge % other_config:rstp-force-protocol-version=0|2"},
});
constexpr ReadOnlyKeys kReadOnly = {kOfInterfaces, kOfBridge,
                                    "cannot be set: it is what Open vSwitch says, or does not say"};

std::chrono::milliseconds interval_of(const OvsdbRows &rows) {
  return std::chrono::milliseconds(status_interval(rows));
}

}  // namespace

OpenVSwitchSource::OpenVSwitchSource(EventLoop *loop, std::string socket, std::vector<WatchedBridge> bridges,
                                     const OpenVSwitchTimes &times)
    : socket_(std::move(socket)),
      bridges_(std::move(bridges)),
      first_rows_(times.first_rows),
      burst_(loop, [this] { tell(); }),
      watch_(loop, pid_file_beside(socket_), times.daemon, [this] { burst_.add(); }),
      connection_(loop, socket_, times.database,
                  {.monitored = [this](const auto &rows) { take_rows(rows); },
                   .updated = [this](const auto &update) { take_update(update); },
                   .lost = [this](const auto &why) { lose_rows(why); }}) {}

SwitchState OpenVSwitchSource::start(Listener listener) {
  listener_ = std::move(listener);
  connection_.start();
  connection_.wait_for_rows(first_rows_);
  told_ = read();
  return told_;
}

SwitchState OpenVSwitchSource::with_value(const SwitchState &now, const std::string &key,
                                          const std::string & /*value*/) const {
  // Keys of a VLAN's tree are about that VLAN's bridge.
  const auto bridge = std::find_if(bridges_.begin(), bridges_.end(), [&key](const WatchedBridge &candidate) {
    return candidate.vlan && key.starts_with("tree." + std::to_string(*candidate.vlan) + ".");
  });
  refuse_to_set(kReadOnly, now, bridge != bridges_.end() ? bridge->name : bridges_.front().name, key);
}

void OpenVSwitchSource::take_rows(const nlohmann::json &table_updates) {
  rows_.reset(table_updates);
  has_rows_ = true;
  watch_.begin(interval_of(rows_));
  note("Open vSwitch's database at " + socket_, "", "is read");
  burst_.add();
}

void OpenVSwitchSource::take_update(const nlohmann::json &table_updates) {
  rows_.update(table_updates);
  if (tells_rstp(table_updates)) {
    watch_.note_sign(interval_of(rows_));
  } else {
    watch_.note_interval(interval_of(rows_));
  }
  burst_.add();
}

void OpenVSwitchSource::lose_rows(const std::string &why) {
  rows_.clear();
  has_rows_ = false;
  watch_.end();
  note("Open vSwitch's database at " + socket_, "cannot be read: " + why, {});
  burst_.add();
}

void OpenVSwitchSource::tell() {
  SwitchState state = read();
  if (state != told_) {
    told_ = state;
    listener_(std::move(state));
  }
}

SwitchState OpenVSwitchSource::read() {
  if (!has_rows_) {
    return unknown_state(bridges_);
  }
  note("ovs-vswitchd",
       watch_.runs() ? ""
                     : watch_.why_not() +
                           ": nothing is known of its bridges until it runs (systemctl status "
                           "openvswitch-switch)",
       "runs");
  if (!watch_.runs()) {
    return unknown_state(bridges_);
  }
  BridgesReading reading = read_bridges(rows_, bridges_);
  for (size_t place = 0; place < bridges_.size(); ++place) {
    note("bridge '" + bridges_[place].name + "'", reading.without_tree[place], "has a spanning tree");
  }
  note_left_out(std::move(reading.left_out));
  return std::move(reading.state);
}

void OpenVSwitchSource::note_left_out(std::set<std::string> lines) {
  size_t news = 0;
  for (const std::string &line : lines) {
    if (!left_out_.contains(line) && ++news <= kMostLinesAtOnce) {
      log_line(line);
    }
  }
  if (news > kMostLinesAtOnce) {
    log_line(std::to_string(news - kMostLinesAtOnce) + " more ports are left out");
  }
  left_out_ = std::move(lines);
}

// One line when trouble begins or becomes another, and one when it ends.
void OpenVSwitchSource::note(const std::string &subject, const std::string &trouble,
                             const std::string &end_of_it) {
  std::string &known = troubles_[subject];
  if (trouble != known) {
    log_line(subject + " " + (trouble.empty() ? end_of_it : trouble));
    known = trouble;
  }
}

}  // namespace stpswitch
