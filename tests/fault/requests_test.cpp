// GET and GETNEXT of every table of both modules, with whatever is called for them failing: answered from the
// image, and by socket.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "agent.h"
#include "every_fault.h"
#include "lab.h"
#include "passing_time.h"
#include "small_switches.h"

namespace {

using agent::kNothing;
using faults::kMemory;
using faults::kSystem;

constexpr uint64_t kLongerThanALeaseMs = 600;

// For which a walk keeps the bridge ports that it has found.
constexpr uint32_t kLongerThanTheCacheSeconds = 11;

// Of a column, or a scalar without its instance: its first object, and what follows that.
struct Answers {
  const char *first;
  const char *second;
};

struct Column {
  const char *name;
  const char *oid;
  std::array<Answers, 2> answers;  // of a switch's two states
  const char *context = "";
};

const Column kOfMst[] = {
    {"RootGuard",
     "S.1.5.1.1.2",
     {{{"S.1.5.1.1.2.436207617 = INTEGER: 1", "S.1.5.1.1.2.436207618 = INTEGER: 2"},
       {"S.1.5.1.1.2.436207617 = INTEGER: 2", "S.1.5.1.1.2.436207618 = INTEGER: 2"}}}},
    {"RootInconsistency",
     "S.1.5.2.1.3",
     {{{"S.1.5.2.1.3.0.129 = INTEGER: 1", "S.1.6.1.0 = INTEGER: 4"},
       {"S.1.5.2.1.3.10.130 = INTEGER: 1", "S.1.6.1.0 = INTEGER: 4"}}}},
    {"PathCostMode",
     "S.1.6.2",
     {{{"S.1.6.2.0 = INTEGER: 1", "S.1.6.7.0 = INTEGER: 2"},
       {"S.1.6.2.0 = INTEGER: 2", "S.1.6.7.0 = INTEGER: 2"}}}},
    {"LongPathCost",
     "S.1.6.3.1.1",
     {{{"S.1.6.7.0 = INTEGER: 2", "S.1.8.1.1.3.129 = INTEGER: 1"},
       {"S.1.6.7.0 = INTEGER: 2", "S.1.8.1.1.3.129 = INTEGER: 2"}}}},
    {"LoopGuard",
     "S.1.8.1.1.3",
     {{{"S.1.8.1.1.3.129 = INTEGER: 1", "S.1.8.1.1.3.130 = INTEGER: 3"},
       {"S.1.8.1.1.3.129 = INTEGER: 2", "S.1.8.1.1.3.130 = INTEGER: 3"}}}},
    {"LoopInconsistency",
     "S.1.8.2.1.3",
     {{{"S.1.8.2.1.3.0.129 = INTEGER: 1", "S.1.8.3.0 = INTEGER: 1"},
       {"S.1.8.2.1.3.10.130 = INTEGER: 1", "S.1.8.3.0 = INTEGER: 2"}}}},
    {"RegionName",
     "S.1.11.2",
     {{{"S.1.11.2.0 = Hex-STRING: 6F 6E 65 ", "S.1.12.1.1.2.129 = INTEGER: 1"},
       {"S.1.11.2.0 = Hex-STRING: 74 77 6F ", "S.1.12.1.1.2.129 = INTEGER: 2"}}}},
    {"RstpPort",
     "S.1.12.1.1.2",
     {{{"S.1.12.1.1.2.129 = INTEGER: 1", "S.1.12.1.1.2.130 = INTEGER: 3"},
       {"S.1.12.1.1.2.129 = INTEGER: 2", "S.1.12.1.1.2.130 = INTEGER: 3"}}}},
    {"RstpPortRole",
     "S.1.12.2.1.3.10",
     {{{"S.1.12.2.1.3.10.129 = INTEGER: 2", "S.1.12.2.1.3.10.130 = INTEGER: 3"},
       {"S.1.12.2.1.3.10.129 = INTEGER: 4", "S.1.12.2.1.3.10.130 = INTEGER: 3"}}}},
    {"RegionRevision",
     "S.1.14.3",
     {{{"S.1.14.3.0 = Gauge32: 1", nullptr}, {"S.1.14.3.0 = Gauge32: 2", nullptr}}}},
    {"SmstInstanceVlans",
     "S.1.14.5.1.2.1",
     {{{"S.1.14.5.1.2.10 = Hex-STRING: 00 20 ", nullptr},
       {"S.1.14.5.1.2.10 = Hex-STRING: 00 20 ", nullptr}}}},
    {"SmstInstanceValue",
     "S.1.14.5.1.4.1",
     {{{"S.1.14.5.1.4.10 = INTEGER: 11", "S.1.14.5.1.5.0 = Hex-STRING: 80 00 00 00 5E 00 53 00 "},
       {"S.1.14.5.1.4.10 = INTEGER: 12", "S.1.14.5.1.5.0 = Hex-STRING: 80 00 00 00 5E 00 53 00 "}}}},
    {"SmstPort",
     "S.1.14.7.1.2",
     {{{"S.1.14.7.1.2.129 = Hex-STRING: 80 ", "S.1.14.7.1.2.130 = Hex-STRING: 00 "},
       {"S.1.14.7.1.2.129 = Hex-STRING: 00 ", "S.1.14.7.1.2.130 = Hex-STRING: 00 "}}}},
    {"MaxHopCount",
     "S.1.14.8",
     {{{"S.1.14.8.0 = Gauge32: 20", nullptr}, {"S.1.14.8.0 = Gauge32: 30", nullptr}}}},
    {"BaseAddress",
     "B.1.1",
     {{{"B.1.1.0 = Hex-STRING: 00 00 5E 00 53 01 ", "B.1.2.0 = INTEGER: 2"},
       {"B.1.1.0 = Hex-STRING: 00 00 5E 00 53 02 ", "B.1.2.0 = INTEGER: 2"}}}},
    {"BasePort",
     "B.1.4.1.2",
     {{{"B.1.4.1.2.129 = INTEGER: 101", "B.1.4.1.2.130 = INTEGER: 130"},
       {"B.1.4.1.2.129 = INTEGER: 201", "B.1.4.1.2.130 = INTEGER: 130"}}}},
    {"MaxAge",
     "B.2.8",
     {{{"B.2.8.0 = INTEGER: 2000", "B.2.9.0 = INTEGER: 200"},
       {"B.2.8.0 = INTEGER: 3000", "B.2.9.0 = INTEGER: 200"}}}},
    {"StpPort",
     "B.2.15.1.5",
     {{{"B.2.15.1.5.129 = INTEGER: 1000", "B.2.15.1.5.130 = INTEGER: 20000"},
       {"B.2.15.1.5.129 = INTEGER: 2000", "B.2.15.1.5.130 = INTEGER: 20000"}}}},
    {"StpExtPort",
     "B.2.19.1.3",
     {{{"B.2.19.1.3.129 = INTEGER: 1", "B.2.19.1.3.130 = INTEGER: 2"},
       {"B.2.19.1.3.129 = INTEGER: 2", "B.2.19.1.3.130 = INTEGER: 2"}}}},
    {"MaxAgeOfATree",
     "B.2.8",
     {{{"B.2.8.0 = INTEGER: 2000", "B.2.9.0 = INTEGER: 200"},
       {"B.2.8.0 = INTEGER: 3000", "B.2.9.0 = INTEGER: 200"}}},
     "mst-10"},
    {"StpPortOfATree",
     "B.2.15.1.5",
     {{{"B.2.15.1.5.129 = INTEGER: 1000", "B.2.15.1.5.130 = INTEGER: 20000"},
       {"B.2.15.1.5.129 = INTEGER: 2000", "B.2.15.1.5.130 = INTEGER: 20000"}}},
     "mst-10"},
};

const Column kOfRapidPvst[] = {
    {"PvstVlan",
     "S.1.2.2.1.2.10",
     {{{"S.1.2.2.1.2.20 = INTEGER: 1", "S.1.3.1.1.3.1.129 = Hex-STRING: 80 "},
       {"S.1.2.2.1.2.20 = INTEGER: 2", "S.1.3.1.1.3.1.129 = Hex-STRING: C0 "}}}},
    {"Inconsistency",
     "S.1.3.1.1.3",
     {{{"S.1.3.1.1.3.1.129 = Hex-STRING: 80 ", "S.1.5.1.1.2.436207617 = INTEGER: 2"},
       {"S.1.3.1.1.3.1.129 = Hex-STRING: C0 ", "S.1.5.1.1.2.436207617 = INTEGER: 2"}}}},
    {"RootInconsistency",
     "S.1.5.2.1.3",
     {{{"S.1.5.2.1.3.1.129 = INTEGER: 1", "S.1.6.1.0 = INTEGER: 5"},
       {"S.1.5.2.1.3.1.130 = INTEGER: 1", "S.1.6.1.0 = INTEGER: 5"}}}},
    {"RstpPortRole",
     "S.1.12.2.1.3",
     {{{"S.1.12.2.1.3.1.129 = INTEGER: 3", "S.1.12.2.1.3.1.130 = INTEGER: 3"},
       {"S.1.12.2.1.3.1.129 = INTEGER: 4", "S.1.12.2.1.3.1.130 = INTEGER: 3"}}}},
    {"RpvstPort",
     "S.1.13.1.1.3",
     {{{"S.1.13.1.1.3.1.129 = Hex-STRING: 80 ", "S.1.13.1.1.3.1.130 = Hex-STRING: 00 "},
       {"S.1.13.1.1.3.1.129 = Hex-STRING: 10 ", "S.1.13.1.1.3.1.130 = Hex-STRING: 00 "}}}},
    {"MaxAgeOfATree",
     "B.2.8",
     {{{"B.2.8.0 = INTEGER: 2000", "B.2.9.0 = INTEGER: 200"},
       {"B.2.8.0 = INTEGER: 3000", "B.2.9.0 = INTEGER: 200"}}},
     "vlan-10"},
};

// What tells of the time, or how often something has happened so far.
bool is_of_the_moment(const std::string &answer) {
  return answer.starts_with("B.2.3.0 = Timeticks: ") || answer.starts_with("B.2.4.0 = Counter32: ") ||
         answer.starts_with("B.2.15.1.10.");
}

// A kind of switch, in a lab that all its tests share.
struct Bench {
  stpswitch::SwitchState (*state)(int which);
  const char *context;  // one that it has
  std::unique_ptr<Lab> lab = nullptr;
  int which = 0;                                     // the state in which the switch is
  std::array<std::set<std::string>, 2> truths = {};  // all that there is to answer, by state

  void set_up();
  void turn_over();
  bool is_true(const std::string &answer) const;
};

void Bench::set_up() {
  lab = std::make_unique<Lab>(state(0), context);
  for (which = 0; which < 2; ++which) {
    lab->replace(state(which));
    lab->settle();
    pass_wall_seconds(kLongerThanTheCacheSeconds);
    for (const char *const place : {"", context}) {
      for (const char *const root : {agent::kExtensions, agent::kBridge}) {
        const std::vector<std::string> answers = agent::walk({root, place});
        truths[static_cast<size_t>(which)].insert(answers.begin(), answers.end());
      }
    }
  }
  which = 1;
}

void Bench::turn_over() {
  which = 1 - which;
  lab->replace(state(which));
}

bool Bench::is_true(const std::string &answer) const {
  return answer == kNothing || truths[static_cast<size_t>(which)].contains(answer) ||
         is_of_the_moment(answer);
}

Bench mst{mst_switch, "mst-10"};
Bench rapid_pvst{rapid_pvst_switch, "vlan-10"};

enum class Kind { kGet, kGetNextOfColumn, kGetNextOfRow };

// How a request is answered: from the image, by socket, or from the image once its lease has been renewed by
// socket.
enum class Way { kByImage, kBySocket, kByRenewal };

struct Case {
  Bench *bench;
  const Column *column;
  Kind kind;
  Way way;
};

void PrintTo(const Case &tested, std::ostream *out) { *out << tested.column->name; }

std::string name_of(const testing::TestParamInfo<Case> &tested) {
  constexpr const char *kWays[] = {"ByImage", "BySocket", "ByRenewal"};
  constexpr const char *kKinds[] = {"Get", "GetNextOfColumn", "GetNextOfRow"};
  return std::string(kKinds[static_cast<int>(tested.param.kind)]) + tested.param.column->name +
         (tested.param.bench == &mst ? "OfMst" : "OfRapidPvst") + kWays[static_cast<int>(tested.param.way)];
}

std::vector<Case> all_cases() {
  std::vector<Case> cases;
  const auto add = [&cases](Bench *bench, const auto &columns) {
    for (const Column &column : columns) {
      for (const Kind kind : {Kind::kGet, Kind::kGetNextOfColumn, Kind::kGetNextOfRow}) {
        for (const Way way : {Way::kByImage, Way::kBySocket, Way::kByRenewal}) {
          cases.push_back({bench, &column, kind, way});
        }
      }
    }
  };
  add(&mst, kOfMst);
  add(&rapid_pvst, kOfRapidPvst);
  // What has no second answer is not asked for it.
  std::erase_if(cases, [](const Case &tested) {
    return tested.kind == Kind::kGetNextOfRow && tested.column->answers[0].second == nullptr;
  });
  return cases;
}

class Requests : public testing::TestWithParam<Case> {
 protected:
  static void TearDownTestSuite() {
    mst.lab.reset();
    rapid_pvst.lab.reset();
  }

  void SetUp() override {
    for (Bench *const other : {&mst, &rapid_pvst}) {
      if (other != &bench()) {
        other->lab.reset();
      }
    }
    if (!bench().lab) {
      bench().set_up();
    }
    bench().lab->ask_me(GetParam().way == Way::kBySocket);
  }

  static Bench &bench() { return *GetParam().bench; }
  static const Column &column() { return *GetParam().column; }
  static const Answers &answers() { return column().answers[static_cast<size_t>(bench().which)]; }

  // The row that is asked for, or what follows it: the first one of the first state.
  static std::string row() {
    const std::string answer = column().answers[0].first;
    return answer.substr(0, answer.find(' '));
  }

  static std::string ask() {
    switch (GetParam().kind) {
      case Kind::kGet:
        return agent::get({row(), column().context});
      case Kind::kGetNextOfColumn:
        return agent::get_next({column().oid, column().context});
      default:
        return agent::get_next({row(), column().context});
    }
  }

  static std::string right_answer() {
    std::string first = answers().first;
    const bool is_there = first.starts_with(row() + " ");
    switch (GetParam().kind) {
      case Kind::kGet:
        return is_there ? first : kNothing;
      case Kind::kGetNextOfColumn:
        return first;
      default:
        return is_there ? answers().second : first;
    }
  }
};

TEST_P(Requests, AreAnsweredRightOrNotAtAll) {
  std::string answer;
  faults::strike_every_call({kMemory | kSystem,
                             [] {
                               EXPECT_EQ(ask(), right_answer());
                               bench().turn_over();
                               pass_wall_seconds(kLongerThanTheCacheSeconds);
                               if (GetParam().way == Way::kByRenewal) {
                                 pass_ms(kLongerThanALeaseMs);
                               }
                             },
                             [&answer] { answer = ask(); },
                             [&answer] {
                               EXPECT_TRUE(bench().is_true(answer)) << answer;
                               bench().lab->settle();
                               pass_wall_seconds(kLongerThanTheCacheSeconds);
                               EXPECT_EQ(ask(), right_answer());
                             }});
}

INSTANTIATE_TEST_SUITE_P(Every, Requests, testing::ValuesIn(all_cases()), name_of);

}  // namespace
