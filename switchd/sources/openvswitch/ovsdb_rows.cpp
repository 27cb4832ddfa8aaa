#include "sources/openvswitch/ovsdb_rows.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "model/refusal.h"

namespace stpswitch {
namespace {

using nlohmann::json;

constexpr std::string_view kSwitchTable = "Open_vSwitch";
constexpr std::string_view kBridgeTable = "Bridge";
constexpr std::string_view kPortTable = "Port";
constexpr std::string_view kInterfaceTable = "Interface";

constexpr const char *kRstpStatus = "rstp_status";
constexpr const char *kRstpStatistics = "rstp_statistics";
constexpr const char *kOtherConfig = "other_config";

constexpr auto kSwitchColumns = std::to_array<std::string_view>({"other_config"});
constexpr auto kBridgeColumns = std::to_array<std::string_view>(
    {"name", "ports", "rstp_enable", "stp_enable", "rstp_status", "other_config"});
constexpr auto kPortColumns = std::to_array<std::string_view>(
    {"name", "interfaces", "tag", "trunks", "vlan_mode", "rstp_status", "rstp_statistics", "other_config"});
constexpr auto kInterfaceColumns =
    std::to_array<std::string_view>({"name", "ofport", "ifindex", "link_state", "duplex"});
constexpr auto kWanted = std::to_array<WantedTable>({{kSwitchTable, kSwitchColumns},
                                                     {kBridgeTable, kBridgeColumns},
                                                     {kPortTable, kPortColumns},
                                                     {kInterfaceTable, kInterfaceColumns}});

const json *member(const json &object, const char *name) {
  const auto found = object.find(name);
  return found != object.end() ? &*found : nullptr;
}

// What stands for one of several types: ["set", [...]], ["map", [...]], ["uuid", "..."] (RFC 7047
// clause 5.1).
const json *content_of(const json &value, std::string_view tag) {
  const bool is_tagged = value.is_array() && value.size() == 2 && value[0].is_string() &&
                         value[0].get_ref<const std::string &>() == tag;
  return is_tagged ? &value[1] : nullptr;
}

// A set of one value may stand as that value alone.
std::vector<const json *> elements_of(const json *value) {
  if (value == nullptr) {
    return {};
  }
  const json *const set = content_of(*value, "set");
  if (set == nullptr) {
    return {value};
  }
  std::vector<const json *> elements;
  if (set->is_array()) {
    for (const json &element : *set) {
      elements.push_back(&element);
    }
  }
  return elements;
}

std::optional<int64_t> integer_in(const json &value) {
  // What is larger than any column's range would not survive the conversion.
  if (!value.is_number_integer() ||
      (value.is_number_unsigned() && value.get<uint64_t>() > uint64_t{INT64_MAX})) {
    return std::nullopt;
  }
  return value.get<int64_t>();
}

// The value of a column that has at most one.
const json *only_element(const json &row, const char *column) {
  const auto elements = elements_of(member(row, column));
  return elements.size() == 1 ? elements.front() : nullptr;
}

std::string text_in(const json &row, const char *column) {
  const json *const value = only_element(row, column);
  return value != nullptr && value->is_string() ? value->get<std::string>() : std::string();
}

std::optional<bool> flag_in(const json &row, const char *column) {
  const json *const value = only_element(row, column);
  return value != nullptr && value->is_boolean() ? std::optional(value->get<bool>()) : std::nullopt;
}

std::optional<int64_t> number_in(const json &row, const char *column) {
  const json *const value = only_element(row, column);
  return value != nullptr ? integer_in(*value) : std::nullopt;
}

std::set<int64_t> numbers_in(const json &row, const char *column) {
  std::set<int64_t> numbers;
  for (const json *const element : elements_of(member(row, column))) {
    if (const auto number = integer_in(*element)) {
      numbers.insert(*number);
    }
  }
  return numbers;
}

std::vector<RowId> references_in(const json &row, const char *column) {
  std::vector<RowId> references;
  for (const json *const element : elements_of(member(row, column))) {
    const json *const id = content_of(*element, "uuid");
    if (id != nullptr && id->is_string()) {
      references.push_back(id->get<std::string>());
    }
  }
  return references;
}

// Pairs that are not of texts are left out.
OvsdbMap map_in(const json &row, const char *column) {
  const json *const value = member(row, column);
  const json *const pairs = value != nullptr ? content_of(*value, "map") : nullptr;
  OvsdbMap map;
  if (pairs != nullptr && pairs->is_array()) {
    for (const json &pair : *pairs) {
      if (pair.is_array() && pair.size() == 2 && pair[0].is_string() && pair[1].is_string()) {
        map.insert_or_assign(pair[0].get<std::string>(), pair[1].get<std::string>());
      }
    }
  }
  return map;
}

bool has_entries(const json &row, const char *column) {
  const json *const value = member(row, column);
  const json *const pairs = value != nullptr ? content_of(*value, "map") : nullptr;
  return pairs != nullptr && pairs->is_array() && !pairs->empty();
}

BridgeRow bridge_row(const json &row) {
  return {.name = text_in(row, "name"),
          .ports = references_in(row, "ports"),
          .rstp_enable = flag_in(row, "rstp_enable"),
          .stp_enable = flag_in(row, "stp_enable"),
          .rstp_status = map_in(row, kRstpStatus),
          .other_config = map_in(row, kOtherConfig)};
}

PortRow port_row(const json &row) {
  return {.name = text_in(row, "name"),
          .interfaces = references_in(row, "interfaces"),
          .tag = number_in(row, "tag"),
          .trunks = numbers_in(row, "trunks"),
          .vlan_mode = text_in(row, "vlan_mode"),
          .rstp_status = map_in(row, kRstpStatus),
          .has_rstp_statistics = has_entries(row, kRstpStatistics),
          .other_config = map_in(row, kOtherConfig)};
}

InterfaceRow interface_row(const json &row) {
  return {.name = text_in(row, "name"),
          .ofport = number_in(row, "ofport"),
          .ifindex = number_in(row, "ifindex"),
          .link_state = text_in(row, "link_state"),
          .duplex = text_in(row, "duplex")};
}

template <class Row>
void put(std::map<RowId, Row> *rows, const RowId &id, const json *row, Row (*read)(const json &row)) {
  if (row == nullptr) {
    rows->erase(id);
  } else {
    rows->insert_or_assign(id, read(*row));
  }
}

// A row whose update has no "new" is gone; otherwise "new" has all its columns, changed or not.
const json *new_row(const json &row_update) {
  if (!row_update.is_object()) {
    throw Refusal("an update of a row is no JSON object");
  }
  const json *const row = member(row_update, "new");
  if (row != nullptr && !row->is_object()) {
    throw Refusal("a row is no JSON object");
  }
  return row;
}

const json &rows_of(const json &table_update) {
  if (!table_update.is_object()) {
    throw Refusal("an update of a table is no JSON object");
  }
  return table_update;
}

// A column was written: it is among the old values, or it has a value in a row that is new.
bool has_written(const json &row_update, const char *column) {
  const json *const old = member(row_update, "old");
  if (old != nullptr) {
    return old->is_object() && row_update.contains("new") && old->contains(column);
  }
  const json *const row = member(row_update, "new");
  return row != nullptr && has_entries(*row, column);
}

}  // namespace

std::span<const WantedTable> OvsdbRows::wanted() { return kWanted; }

void OvsdbRows::reset(const json &table_updates) {
  clear();
  try {
    update(table_updates);
  } catch (...) {
    clear();
    throw;
  }
}

void OvsdbRows::update(const json &table_updates) {
  if (!table_updates.is_object()) {
    throw Refusal("an update is no JSON object");
  }
  for (const auto &[table, table_update] : table_updates.items()) {
    for (const auto &[id, row_update] : rows_of(table_update).items()) {
      change_row(table, id, new_row(row_update));
    }
  }
}

void OvsdbRows::clear() {
  bridges_.clear();
  ports_.clear();
  interfaces_.clear();
  other_config_.clear();
}

void OvsdbRows::change_row(const std::string &table, const RowId &id, const json *row) {
  if (table == kBridgeTable) {
    put(&bridges_, id, row, bridge_row);
  } else if (table == kPortTable) {
    put(&ports_, id, row, port_row);
  } else if (table == kInterfaceTable) {
    put(&interfaces_, id, row, interface_row);
  } else if (table == kSwitchTable) {
    other_config_ = row != nullptr ? map_in(*row, kOtherConfig) : OvsdbMap();
  }
}

bool tells_rstp(const json &table_updates) {
  for (const auto &[table, table_update] : table_updates.items()) {
    if (table != kBridgeTable && table != kPortTable) {
      continue;
    }
    const bool tells = std::any_of(table_update.begin(), table_update.end(), [](const json &row_update) {
      return has_written(row_update, kRstpStatus) || has_written(row_update, kRstpStatistics);
    });
    if (tells) {
      return true;
    }
  }
  return false;
}

}  // namespace stpswitch
