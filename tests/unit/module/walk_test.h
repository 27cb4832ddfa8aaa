// What the tests share that hold walks of tables by tree and port against a model: rows, random choices, and
// the requests.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <ostream>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "fake_platform.h"
#include "table_test.h"

struct Row {
  uint32_t tree;
  uint16_t port;

  bool operator==(const Row &) const = default;
  bool operator<(const Row &other) const { return std::tie(tree, port) < std::tie(other.tree, other.port); }
};

inline std::ostream &operator<<(std::ostream &out, const Row &row) {
  return out << row.tree << '.' << row.port;
}

// Random choices that a seed determines.
class Dice {
 public:
  explicit Dice(unsigned seed) : random_(seed) {}

  uint32_t below(uint32_t bound) { return static_cast<uint32_t>(random_() % bound); }

  template <class Values>
  auto one_of(const Values &values) {
    return values[below(static_cast<uint32_t>(std::size(values)))];
  }

  template <class Values>
  void shuffle(Values *values) {
    std::shuffle(values->begin(), values->end(), random_);
  }

 private:
  std::mt19937 random_;
};

// How many switches a test draws: the first few, or all where the environment asks for the long run.
unsigned drawn_switches(unsigned few, unsigned all);

class WalkTest : public TableTest {
 protected:
  WalkTest(FindVarMethod *handler, uint8_t column) : TableTest(handler), column_(column) {}

  // A platform with these interfaces that writes nothing down.
  static void install_interfaces(const std::vector<fake::Interface> &interfaces);

  // The row that a request is answered with, and its value.
  struct Served {
    Row row;
    std::string value;
  };

  std::optional<Served> next(const std::vector<oid> &index);

  std::optional<std::string> exact(const Row &row) { return get(column_, {row.tree, row.port}); }

  Row answered_row() const;

  // The rows of a walk from the bare column, which must ascend and be among these, with their values.
  std::set<Row> walked(const std::map<Row, std::string> &existing);

 private:
  uint8_t column_;
};
