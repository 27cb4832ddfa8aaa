#include "walk_test.h"

#include <cstdlib>
#include <string_view>

unsigned drawn_switches(unsigned few, unsigned all) {
  const char *const wants_all = std::getenv("STPSNMP_TEST_ALL");
  return wants_all != nullptr && std::string_view(wants_all) == "1" ? all : few;
}

void WalkTest::install_interfaces(const std::vector<fake::Interface> &interfaces) {
  fake::platform() = {};
  fake::platform().writes_trace = false;
  fake::platform().history_answers = {{100, 1}, {101, 1}};
  fake::platform().interfaces = interfaces;
}

std::optional<WalkTest::Served> WalkTest::next(const std::vector<oid> &index) {
  const auto value = get_next(column_, index);
  return value ? std::optional(Served{answered_row(), *value}) : std::nullopt;
}

Row WalkTest::answered_row() const {
  const std::string name = answered();
  const size_t port = name.rfind('.');
  const size_t tree = name.rfind('.', port - 1);
  return {static_cast<uint32_t>(std::stoul(name.substr(tree + 1))),
          static_cast<uint16_t>(std::stoul(name.substr(port + 1)))};
}

std::set<Row> WalkTest::walked(const std::map<Row, std::string> &existing) {
  std::set<Row> rows;
  std::vector<oid> index;
  while (const auto served = next(index)) {
    const auto found = existing.find(served->row);
    if (found == existing.end() || (!rows.empty() && !(*rows.rbegin() < served->row))) {
      ADD_FAILURE() << "the walk comes to " << served->row;
      break;
    }
    EXPECT_EQ(served->value, found->second) << served->row;
    rows.insert(served->row);
    index = {served->row.tree, served->row.port};
  }
  return rows;
}
