// Walks over random bridges, beside a plain map of what there is to see.
#include <map>
#include <random>

#include <gtest/gtest.h>

#include "bridge_requests.h"
#include "scripted_bridge.h"

namespace {

using Name = std::vector<oid>;

// An attribute, and the objects that show its number as it is.
struct Shown {
  uint32_t attribute;
  const char *type;
  std::vector<Name> objects;
};

const std::vector<Shown> kOfTree{{0x14029050, "INTEGER", {{1, 2}}},   {0x14029040, "INTEGER", {{2, 2}}},
                                 {0x1402904F, "TimeTicks", {{2, 3}}}, {0x1402904E, "Counter32", {{2, 4}}},
                                 {0x14029044, "INTEGER", {{2, 6}}},   {0x14029045, "INTEGER", {{2, 7}}},
                                 {0x14029046, "INTEGER", {{2, 8}}},   {0x14029047, "INTEGER", {{2, 9}}},
                                 {0x14029048, "INTEGER", {{2, 11}}},  {0x14029049, "INTEGER", {{2, 12}}},
                                 {0x1402904A, "INTEGER", {{2, 13}}},  {0x1402904B, "INTEGER", {{2, 14}}},
                                 {0x1402904C, "INTEGER", {{2, 17}}}};

const std::vector<Shown> kOfPort{{0x1402A041, "INTEGER", {{1, 4, 1, 2}}},
                                 {0x1402A042, "INTEGER", {{2, 15, 1, 2}}},
                                 {0x1402A008, "INTEGER", {{2, 15, 1, 5}, {2, 15, 1, 11}}},
                                 {0x1402A046, "INTEGER", {{2, 15, 1, 7}}},
                                 {0x1402A04A, "Counter32", {{2, 15, 1, 10}}}};

Name with(Name name, oid instance) {
  name.push_back(instance);
  return name;
}

class WalkModel : public BridgeTest {
 protected:
  void SetUp() override {
    BridgeTest::SetUp();
    fake::platform().writes_trace = false;
  }

  bool chance(int percent) { return std::uniform_int_distribution(0, 99)(random_) < percent; }

  void fill(const std::vector<Shown> &shown, oid instance, fake::Attributes *attributes) {
    for (const auto &[attribute, type, objects] : shown) {
      if (!chance(70)) {
        continue;
      }
      const auto value = std::uniform_int_distribution<uint32_t>(1, 255)(random_);
      (*attributes)[attribute] = fake::number(value);
      for (const Name &object : objects) {
        model_[with(object, instance)] = type + (" " + std::to_string(value));
      }
    }
  }

  void make_bridge() {
    model_.clear();
    bridge_.trees.clear();
    if (chance(5)) {
      return;
    }
    ScriptedTree &tree = bridge_.trees[1];
    model_[{1, 3, 0}] = "INTEGER 2";
    model_[{2, 1, 0}] = "INTEGER 3";
    model_[{2, 10, 0}] = "INTEGER 100";
    fill(kOfTree, 0, &tree.attributes);
    const int ports = std::uniform_int_distribution(0, 8)(random_);
    for (int i = 0; i < ports; ++i) {
      const uint32_t port = chance(10) ? 65535 : std::uniform_int_distribution<uint32_t>(1, 12)(random_);
      if (tree.ports.contains(port)) {
        continue;
      }
      fake::Attributes &attributes = tree.ports[port];
      attributes[0x1402A040] = fake::number(port);
      model_[{1, 4, 1, 1, port}] = model_[{2, 15, 1, 1, port}] = "INTEGER " + std::to_string(port);
      model_[{1, 4, 1, 3, port}] = "OID .0.0";
      model_[{2, 19, 1, 1, port}] = "INTEGER 2";
      fill(kOfPort, port, &attributes);
    }
  }

  // A name near those that there are: some of their arcs, some others, some more.
  Name near_name() {
    Name name{chance(50) ? oid{1} : oid{2}};
    if (!model_.empty() && chance(80)) {
      auto at = model_.begin();
      std::advance(at, std::uniform_int_distribution<size_t>(0, model_.size() - 1)(random_));
      name = at->first;
    }
    if (chance(30)) {
      name.resize(std::uniform_int_distribution<size_t>(1, name.size())(random_));
    }
    if (chance(30)) {
      oid &arc =
          name[std::uniform_int_distribution<size_t>(name.size() > 1 ? 1 : 0, name.size() - 1)(random_)];
      arc = chance(50) ? arc + 1 : arc - (arc > 0 ? 1 : 0);
    }
    if (chance(20)) {
      name.push_back(std::uniform_int_distribution<oid>(0, 3)(random_));
    }
    return name;
  }

  static std::string text(const Name &name) {
    std::string shown;
    for (const oid arc : name) {
      shown += (shown.empty() ? "" : ".") + std::to_string(arc);
    }
    return shown;
  }

  std::mt19937 random_{20261122};  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same requests each time
  std::map<Name, std::string> model_;
};

TEST_F(WalkModel, EveryStepIsTheModels) {
  for (int round = 0; round < 150; ++round) {
    make_bridge();
    for (int question = 0; question < 40; ++question) {
      const Name name = near_name();
      if (name[0] != 1 && name[0] != 2) {
        continue;
      }
      const auto behind = model_.upper_bound(name);
      const bool is_in_group = behind != model_.end() && behind->first[0] == name[0];
      EXPECT_EQ(get_next({text(name)}).front(),
                is_in_group ? text(behind->first) + " = " + behind->second : text(name) + " = nothing");
      const auto exact = model_.find(name);
      const std::string answer = get({text(name)}).front();
      if (exact != model_.end()) {
        EXPECT_EQ(answer, text(name) + " = " + exact->second);
      } else {
        EXPECT_TRUE(answer == text(name) + " = noSuchInstance" || answer == text(name) + " = noSuchObject")
            << answer;
      }
    }
  }
}

TEST_F(WalkModel, AWalkSeesAll) {
  for (int round = 0; round < 100; ++round) {
    make_bridge();
    std::map<Name, std::string> seen;
    for (const char *group : {"1", "2"}) {
      std::string at = group;
      for (size_t steps = 0; steps <= model_.size(); ++steps) {
        const std::string answer = get_next({at}).front();
        at = answer.substr(0, answer.find(' '));
        const std::string value = answer.substr(answer.find(" = ") + 3);
        if (value == "nothing") {
          break;
        }
        const std::vector<oid> name = arcs_of(at);
        seen[Name(name.begin() + 7, name.end())] = value;
      }
    }
    EXPECT_EQ(seen, model_);
  }
}

}  // namespace
