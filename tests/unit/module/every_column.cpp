#include "every_column.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <sstream>
#include <utility>

#include "ledger.h"
#include "protocol_numbers.h"
#include "search_test.h"

namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::Not;

using Key = std::pair<uint32_t, uint32_t>;  // tree and interface, 0 where the table has none

std::string line_of(const fake::Request &request) {
  std::string line = (request.action == kGet ? "GET " : "GETNEXT ") + std::to_string(request.command);
  for (const auto &[token, value] : request.keys) {
    line += " " + fake::hex(token) + "=" + fake::hex(value.data(), value.size());
  }
  return line;
}

// A word of the first of these keys that the request has.
std::optional<uint32_t> word(const fake::Request &request, std::initializer_list<uint32_t> tokens,
                             size_t position) {
  for (const uint32_t token : tokens) {
    if (const auto key = request.keys.find(token); key != request.keys.end()) {
      uint32_t value = 0;
      std::memcpy(&value, key->second.data() + position * sizeof value, sizeof value);
      return value;
    }
  }
  return std::nullopt;
}

std::set<Key> entries(bool has_trees, bool has_ports, bool has_cist) {
  std::set<Key> keys;
  for (const uint32_t tree : {0U, 10U, 20U}) {
    for (const uint32_t if_index : {kPort129, kPort130}) {
      if (tree != 0 || !has_trees || has_cist) {
        keys.insert({has_trees ? tree : 0, has_ports ? if_index : 0});
      }
    }
  }
  return keys;
}

}  // namespace

std::vector<TableColumn> columns_where(bool (*is_meant)(const TableColumn &)) {
  std::vector<TableColumn> columns = all_columns();
  std::erase_if(columns, [is_meant](const TableColumn &column) { return !is_meant(column); });
  return columns;
}

std::string dotted(const std::vector<oid> &arcs) {
  std::string text;
  for (const oid arc : arcs) {
    text += "." + std::to_string(arc);
  }
  return text;
}

void EveryColumn::SetUp() {
  TableTest::SetUp();
  empty_base_port_cache();
  fake::platform().interfaces = {{.if_index = kPort129, .port = 129, .vlans = {10, 20}},
                                 {.if_index = kPort130, .port = 130, .vlans = {10, 20}}};
  fake::platform().mst_contexts = {{0, {1}}, {10, {10}}, {20, {20}}};
  fake::platform().mst_vlans.vlans = {1, 8, 9, 10, 2049};
  fake::platform().answer = [this](const fake::Request &request) { return answer(request); };
  value_ = column().value;
}

std::vector<oid> EveryColumn::answered_index() const {
  std::vector<oid> arcs;
  std::istringstream text(answered().substr(dotted(column().column).size() + 1));
  for (std::string arc; std::getline(text, arc, '.');) {
    arcs.push_back(std::stoul(arc));
  }
  return arcs;
}

Trace EveryColumn::lines() {
  Trace trace = fake::taken_trace();
  EXPECT_THAT(trace, Each(AllOf(Not(HasSubstr("FREE OF UNKNOWN")), Not(HasSubstr("FREED ")))));
  EXPECT_EQ(ledger::outstanding(), 0U) << "request buffers left";
  EXPECT_EQ(fake::live_replies(), 0U) << "replies left";
  return trace;
}

std::string EveryColumn::opening(int exact, size_t arcs) {
  return logged("exact " + std::to_string(exact) + " *length " + std::to_string(14 + arcs) +
                " vp_namelen 14\\n");
}

void EveryColumn::query_fares(size_t query, const fake::Send &send) {
  queries_.clear();
  failing_query_ = query;
  failure_ = send;
}

fake::Send EveryColumn::answer(const fake::Request &request) {
  const size_t number = queries_.size();
  queries_.push_back(line_of(request));
  if (number == failing_query_) {
    return failure_;
  }
  if (request.command == protocol::kGlobalSettings) {
    return {.attributes = fake::Attributes{{protocol::kMode, fake::number(column().mode)}}};
  }
  return entry_of(request);
}

fake::Send EveryColumn::entry_of(const fake::Request &request) const {
  fake::Attributes attributes = value_;
  const auto tree = word(request, {protocol::kVlanTreeKey, protocol::kMstTreeKey}, 2);
  const auto if_index = word(request, {protocol::kInterfaceKey, protocol::kMstInterfaceKey}, 0);
  if (tree || if_index) {
    const bool has_cist = !if_index && request.keys.contains(protocol::kMstTreeKey);
    const std::set<Key> keys = entries(tree.has_value(), if_index.has_value(), has_cist);
    const Key asked{tree.value_or(0), if_index.value_or(0)};
    const auto found = request.action == kGet ? keys.find(asked) : keys.upper_bound(asked);
    if (found == keys.end()) {
      return no_entry();
    }
    attributes[protocol::kInterface] = fake::number(named_if_index_.value_or(found->second));
    if (!lacks_tree_) {
      attributes[protocol::kPortTree] = fake::number(named_tree_.value_or(found->first));
      attributes[protocol::kTree] = fake::number(found->first);
    }
  }
  return {.attributes = attributes};
}
