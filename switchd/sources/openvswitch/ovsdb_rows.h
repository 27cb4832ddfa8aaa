// The rows of Open vSwitch's database that tell about spanning trees, as a monitor keeps them up to date
// (RFC 7047 clauses 4.1.5 and 4.1.6).
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace stpswitch {

using RowId = std::string;  // a UUID
using OvsdbMap = std::map<std::string, std::string>;

// A column that the schema does not have, that is empty, or that has another type than it should, is unset
// or empty in these.
struct BridgeRow {
  std::string name;
  std::vector<RowId> ports;
  std::optional<bool> rstp_enable;
  std::optional<bool> stp_enable;  // IEEE 802.1D-1998
  OvsdbMap rstp_status;
  OvsdbMap other_config;
};

struct PortRow {
  std::string name;
  std::vector<RowId> interfaces;
  std::optional<int64_t> tag;
  std::set<int64_t> trunks;
  std::string vlan_mode;
  OvsdbMap rstp_status;
  bool has_rstp_statistics = false;  // counted, and written with each turn of the statistics
  OvsdbMap other_config;
};

struct InterfaceRow {
  std::string name;
  std::optional<int64_t> ofport;
  std::optional<int64_t> ifindex;
  std::string link_state;
  std::string duplex;
};

struct WantedTable {
  std::string_view name;
  std::span<const std::string_view> columns;
};

class OvsdbRows {
 public:
  // What to monitor.
  static std::span<const WantedTable> wanted();

  // Takes the first reply of a monitor in place of all there was. Throws Refusal for what is no such reply,
  // and has no rows then.
  void reset(const nlohmann::json &table_updates);

  // Takes an update. Throws Refusal for what is none; what the rows are worth is unknown then.
  void update(const nlohmann::json &table_updates);

  void clear();

  const std::map<RowId, BridgeRow> &bridges() const { return bridges_; }
  const std::map<RowId, PortRow> &ports() const { return ports_; }
  const std::map<RowId, InterfaceRow> &interfaces() const { return interfaces_; }

  // Of the switch as a whole.
  const OvsdbMap &other_config() const { return other_config_; }

 private:
  void change_row(const std::string &table, const RowId &id, const nlohmann::json *row);

  std::map<RowId, BridgeRow> bridges_;
  std::map<RowId, PortRow> ports_;
  std::map<RowId, InterfaceRow> interfaces_;
  OvsdbMap other_config_;
};

// Some row in the update has, or has got, a value of spanning tree that ovs-vswitchd writes by itself. The
// update must be one that OvsdbRows takes.
bool tells_rstp(const nlohmann::json &table_updates);

}  // namespace stpswitch
