// Bridges of Open vSwitch as a source: one bridge is a switch with a single spanning tree, several are one
// switch with a tree for each of their VLANs. Read from Open vSwitch's database, never written to it.
#pragma once

#include <chrono>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/event_loop.h"
#include "sources/burst.h"
#include "sources/openvswitch/ovsdb_connection.h"
#include "sources/openvswitch/ovsdb_rows.h"
#include "sources/openvswitch/vswitchd_watch.h"
#include "sources/openvswitch/watched_bridge.h"
#include "sources/source.h"

namespace stpswitch {

inline constexpr const char *kDefaultOvsdbSocket = "/var/run/openvswitch/db.sock";

struct OpenVSwitchTimes {
  // A server that is there says within this what is in the database; without one, the switch begins all the
  // same.
  std::chrono::milliseconds first_rows{2'000};
  OvsdbTimes database;
  WatchTimes daemon;
};

class OpenVSwitchSource : public Source {
 public:
  // `bridges`: at least one, as parse_watched_bridges returns them.
  OpenVSwitchSource(EventLoop *loop, std::string socket, std::vector<WatchedBridge> bridges,
                    const OpenVSwitchTimes &times = {});

  SwitchState start(Listener listener) override;
  SwitchState with_value(const SwitchState &now, const std::string &key,
                         const std::string &value) const override;
  std::optional<SwitchState> original() const override { return std::nullopt; }

 private:
  void take_rows(const nlohmann::json &table_updates);
  void take_update(const nlohmann::json &table_updates);
  void lose_rows(const std::string &why);
  void tell();
  SwitchState read();
  void note_left_out(std::set<std::string> lines);
  void note(const std::string &subject, const std::string &trouble, const std::string &end_of_it);

  std::string socket_;
  std::vector<WatchedBridge> bridges_;
  std::chrono::milliseconds first_rows_;
  Listener listener_;
  OvsdbRows rows_;
  bool has_rows_ = false;
  SwitchState told_;
  std::map<std::string, std::string> troubles_;  // of what there is, as the log has it
  std::set<std::string> left_out_;               // as the log has it
  Burst burst_;
  VswitchdWatch watch_;
  OvsdbConnection connection_;
};

}  // namespace stpswitch
