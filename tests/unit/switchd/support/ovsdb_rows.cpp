#include "support/ovsdb_rows.h"

#include <nlohmann/json.hpp>

#include "model/refusal.h"
#include "sources/openvswitch/json_stream.h"

using nlohmann::json;

namespace {

json table_updates_in(const std::string &text) {
  const json message = json::parse(text);
  if (message.contains("result")) {
    return message["result"];
  }
  return message.contains("params") ? message["params"][1] : message;
}

}  // namespace

void reset_rows(stpswitch::OvsdbRows *rows, const std::string &text) { rows->reset(table_updates_in(text)); }

void update_rows(stpswitch::OvsdbRows *rows, const std::string &text) {
  rows->update(table_updates_in(text));
}

bool text_tells_rstp(const std::string &text) { return stpswitch::tells_rstp(table_updates_in(text)); }

stpswitch::OvsdbRows rows_of(const std::string &text) {
  stpswitch::OvsdbRows rows;
  reset_rows(&rows, text);
  return rows;
}

void update_rows_from_stream(stpswitch::OvsdbRows *rows, const std::string &octets) {
  stpswitch::JsonStream stream;
  stream.add(octets);
  try {
    while (const auto text = stream.next()) {
      const json message = json::parse(*text, nullptr, false);
      if (message.is_object() && message.contains("result")) {
        rows->reset(message["result"]);
      } else if (message.is_object() && message.contains("params") && message["params"].is_array() &&
                 message["params"].size() == 2) {
        rows->update(message["params"][1]);
        stpswitch::tells_rstp(message["params"][1]);
      }
    }
  } catch (const stpswitch::Refusal &) {
    // The connection would be lost here.
  }
}
