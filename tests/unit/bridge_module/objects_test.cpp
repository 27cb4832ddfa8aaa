// Every object: what it is of what the process tells, and that it is absent without it.
#include <gmock/gmock.h>

#include "bridge_requests.h"
#include "protocol_numbers.h"
#include "scripted_bridge.h"

namespace {

using fake::number;
using protocol::kAdminEdge;
using protocol::kBridgeMac;
using protocol::kBridgePortCount;
using protocol::kBridgePriority;
using protocol::kEdge;
using protocol::kLinkType;
using protocol::kPathCost;
using protocol::kPointToPoint;
using protocol::kPortState;
using protocol::kProtocolVersion;
using protocol::kRootMac;
using protocol::kRootPort;
using protocol::kRootPriority;
using ::testing::ElementsAre;

class Objects : public BridgeTest {
 protected:
  static std::string value_of(const std::string &name) {
    const std::string answer = get({name}).front();
    return answer.substr(answer.find(" = ") + 3);
  }
};

TEST_F(Objects, OfTheBase) {
  EXPECT_THAT(
      get({"1.1.0", "1.2.0", "1.3.0", "1.4.1.1.7", "1.4.1.2.7", "1.4.1.3.7", "1.4.1.4.7", "1.4.1.5.7"}),
      ElementsAre("1.1.0 = OCTETS 02000000000a", "1.2.0 = INTEGER 2", "1.3.0 = INTEGER 2",
                  "1.4.1.1.7 = INTEGER 7", "1.4.1.2.7 = INTEGER 107", "1.4.1.3.7 = OID .0.0",
                  "1.4.1.4.7 = noSuchInstance", "1.4.1.5.7 = noSuchInstance"));
}

TEST_F(Objects, OfTheTree) {
  EXPECT_THAT(
      get({"2.1.0", "2.2.0", "2.3.0", "2.4.0", "2.5.0", "2.6.0", "2.7.0", "2.8.0", "2.9.0", "2.10.0",
           "2.11.0", "2.12.0", "2.13.0", "2.14.0", "2.16.0", "2.17.0"}),
      ElementsAre("2.1.0 = INTEGER 3", "2.2.0 = INTEGER 32769", "2.3.0 = TimeTicks 360000",
                  "2.4.0 = Counter32 41", "2.5.0 = OCTETS 100102000000000b", "2.6.0 = INTEGER 20004",
                  "2.7.0 = INTEGER 3", "2.8.0 = INTEGER 2000", "2.9.0 = INTEGER 200", "2.10.0 = INTEGER 100",
                  "2.11.0 = INTEGER 1500", "2.12.0 = INTEGER 1900", "2.13.0 = INTEGER 100",
                  "2.14.0 = INTEGER 1400", "2.16.0 = INTEGER 2", "2.17.0 = INTEGER 6"));
}

TEST_F(Objects, OfAPort) {
  EXPECT_THAT(get({"2.15.1.1.3", "2.15.1.2.3", "2.15.1.3.3", "2.15.1.4.3", "2.15.1.5.3", "2.15.1.6.3",
                   "2.15.1.7.3", "2.15.1.8.3", "2.15.1.9.3", "2.15.1.10.3", "2.15.1.11.3"}),
              ElementsAre("2.15.1.1.3 = INTEGER 3", "2.15.1.2.3 = INTEGER 128", "2.15.1.3.3 = INTEGER 5",
                          "2.15.1.4.3 = INTEGER 1", "2.15.1.5.3 = INTEGER 65535",
                          "2.15.1.6.3 = OCTETS 100102000000000b", "2.15.1.7.3 = INTEGER 20000",
                          "2.15.1.8.3 = OCTETS 200102000000000c", "2.15.1.9.3 = OCTETS 8003",
                          "2.15.1.10.3 = Counter32 5", "2.15.1.11.3 = INTEGER 200000"));
}

TEST_F(Objects, OfAPortThatRstpAdds) {
  EXPECT_THAT(get({"2.19.1.1.3", "2.19.1.2.3", "2.19.1.3.3", "2.19.1.4.3", "2.19.1.5.3", "2.19.1.6.3"}),
              ElementsAre("2.19.1.1.3 = INTEGER 2", "2.19.1.2.3 = INTEGER 2", "2.19.1.3.3 = INTEGER 1",
                          "2.19.1.4.3 = INTEGER 2", "2.19.1.5.3 = INTEGER 1", "2.19.1.6.3 = noSuchInstance"));
}

struct Dependent {
  uint32_t attribute;
  std::vector<std::string> objects;
};

const std::vector<std::string> kOfTheTree{"1.1.0",  "1.2.0",  "1.3.0",  "2.1.0",  "2.2.0", "2.3.0",  "2.4.0",
                                          "2.5.0",  "2.6.0",  "2.7.0",  "2.8.0",  "2.9.0", "2.10.0", "2.11.0",
                                          "2.12.0", "2.13.0", "2.14.0", "2.16.0", "2.17.0"};

const std::vector<std::string> kOfPort3{
    "1.4.1.1.3",  "1.4.1.2.3",  "1.4.1.3.3",  "2.15.1.1.3", "2.15.1.2.3", "2.15.1.3.3",  "2.15.1.4.3",
    "2.15.1.5.3", "2.15.1.6.3", "2.15.1.7.3", "2.15.1.8.3", "2.15.1.9.3", "2.15.1.10.3", "2.15.1.11.3",
    "2.19.1.1.3", "2.19.1.2.3", "2.19.1.3.3", "2.19.1.4.3", "2.19.1.5.3"};

TEST_F(Objects, OfTheTreeAreAbsentOneByOne) {
  const std::vector<Dependent> dependents{
      {0x14029040, {"2.2.0"}},  {0x0F029041, {"1.1.0"}},  {0x14029042, {"2.5.0"}},  {0x0F029043, {"2.5.0"}},
      {0x14029044, {"2.6.0"}},  {0x14029045, {"2.7.0"}},  {0x14029046, {"2.8.0"}},  {0x14029047, {"2.9.0"}},
      {0x14029048, {"2.11.0"}}, {0x14029049, {"2.12.0"}}, {0x1402904A, {"2.13.0"}}, {0x1402904B, {"2.14.0"}},
      {0x1402904C, {"2.17.0"}}, {0x0202904D, {"2.16.0"}}, {0x1402904E, {"2.4.0"}},  {0x1402904F, {"2.3.0"}},
      {0x14029050, {"1.2.0"}}};
  ASSERT_EQ(dependents.size(), whole_tree().size());
  for (const auto &[attribute, objects] : dependents) {
    tree() = whole_tree();
    ASSERT_EQ(tree().erase(attribute), 1U);
    for (const std::string &name : kOfTheTree) {
      EXPECT_EQ(value_of(name) == "noSuchInstance", std::count(objects.begin(), objects.end(), name) == 1)
          << name << " without " << fake::hex(attribute);
    }
  }
}

TEST_F(Objects, OfAPortAreAbsentOneByOne) {
  const std::vector<Dependent> dependents{{0x1402A041, {"1.4.1.2.3"}},
                                          {0x1402A042, {"2.15.1.2.3"}},
                                          {0x0202A043, {"2.15.1.3.3", "2.15.1.4.3"}},
                                          {0x1402A008, {"2.15.1.5.3", "2.15.1.11.3"}},
                                          {0x1402A044, {"2.15.1.6.3"}},
                                          {0x0F02A045, {"2.15.1.6.3"}},
                                          {0x1402A046, {"2.15.1.7.3"}},
                                          {0x1402A047, {"2.15.1.8.3"}},
                                          {0x0F02A048, {"2.15.1.8.3"}},
                                          {0x1402A049, {"2.15.1.9.3"}},
                                          {0x1402A04A, {"2.15.1.10.3"}},
                                          {0x0202A04B, {"2.19.1.2.3"}},
                                          {0x0202A01D, {"2.19.1.3.3"}},
                                          {0x0202A019, {"2.19.1.4.3"}},
                                          {0x0202A01E, {"2.19.1.5.3"}},
                                          {0x1402A040, kOfPort3}};
  ASSERT_EQ(dependents.size(), whole_port(3).size());
  for (const auto &[attribute, objects] : dependents) {
    port(3) = whole_port(3);
    ASSERT_EQ(port(3).erase(attribute), 1U);
    for (const std::string &name : kOfPort3) {
      EXPECT_EQ(value_of(name) == "noSuchInstance", std::count(objects.begin(), objects.end(), name) == 1)
          << name << " without " << fake::hex(attribute);
    }
  }
}

TEST_F(Objects, AreAbsentWithoutATree) {
  bridge_.trees.clear();
  for (const auto &names : {kOfTheTree, kOfPort3}) {
    for (const std::string &name : names) {
      EXPECT_EQ(value_of(name), "noSuchInstance") << name;
    }
  }
}

TEST_F(Objects, AreAbsentWhereTheProcessAnswersWithoutAReply) {
  fake::platform().answer = [](const fake::Request &) { return fake::Send{0, false}; };
  EXPECT_EQ(value_of("2.1.0"), "noSuchInstance");
  EXPECT_EQ(value_of("2.15.1.3.3"), "noSuchInstance");
}

TEST_F(Objects, PortStatesAreNumberedFromOne) {
  const std::vector<std::string> states{"INTEGER 1", "INTEGER 2", "INTEGER 3", "INTEGER 4",
                                        "INTEGER 5", "INTEGER 6", "INTEGER 6"};
  for (uint32_t state = 0; state < states.size(); ++state) {
    port(3)[kPortState] = number(state);
    EXPECT_EQ(value_of("2.15.1.3.3"), states[state]) << state;
    EXPECT_EQ(value_of("2.15.1.4.3"), state == 0 ? "INTEGER 2" : "INTEGER 1") << state;
  }
}

TEST_F(Objects, PathCostsAreCutWhereOneObjectEnds) {
  const auto costs = [this](uint32_t cost) {
    port(3)[kPathCost] = number(cost);
    return value_of("2.15.1.5.3") + ", " + value_of("2.15.1.11.3");
  };
  EXPECT_EQ(costs(0), "noSuchInstance, noSuchInstance");
  EXPECT_EQ(costs(1), "INTEGER 1, INTEGER 1");
  EXPECT_EQ(costs(65535), "INTEGER 65535, INTEGER 65535");
  EXPECT_EQ(costs(65536), "INTEGER 65535, INTEGER 65536");
  EXPECT_EQ(costs(0x7FFFFFFF), "INTEGER 65535, INTEGER 2147483647");
  EXPECT_EQ(costs(0x80000000), "INTEGER 65535, noSuchInstance");
}

TEST_F(Objects, VersionsAreThoseThatTheObjectKnows) {
  const auto version = [this](uint32_t number_of_version) {
    tree()[kProtocolVersion] = number(number_of_version);
    return value_of("2.16.0");
  };
  EXPECT_EQ(version(0), "INTEGER 0");
  EXPECT_EQ(version(1), "noSuchInstance");
  EXPECT_EQ(version(2), "INTEGER 2");
  EXPECT_EQ(version(3), "INTEGER 2");
  EXPECT_EQ(version(4), "noSuchInstance");
}

TEST_F(Objects, LinkTypesAreThoseThatTheObjectKnows) {
  const auto link_type = [this](uint32_t type) {
    port(3)[kLinkType] = number(type);
    return value_of("2.19.1.4.3");
  };
  EXPECT_EQ(link_type(0), "noSuchInstance");
  EXPECT_EQ(link_type(1), "INTEGER 0");
  EXPECT_EQ(link_type(2), "INTEGER 1");
  EXPECT_EQ(link_type(3), "INTEGER 2");
  EXPECT_EQ(link_type(4), "noSuchInstance");
}

TEST_F(Objects, FlagsAreTruthValues) {
  const std::vector<std::string> values{"INTEGER 2", "INTEGER 1", "noSuchInstance"};
  for (uint32_t flag = 0; flag < values.size(); ++flag) {
    port(3)[kAdminEdge] = number(flag);
    port(3)[kEdge] = number(flag);
    port(3)[kPointToPoint] = number(flag);
    for (const char *name : {"2.19.1.2.3", "2.19.1.3.3", "2.19.1.5.3"}) {
      EXPECT_EQ(value_of(name), values[flag]) << name;
    }
  }
}

struct Limited {
  bool is_of_port;
  uint32_t attribute;
  const char *object;
  uint32_t first;
  uint32_t last;
};

TEST_F(Objects, ValuesThatAnObjectCannotHaveAreAbsent) {
  const std::vector<Limited> all{
      {false, 0x14029050, "1.2.0", 0, 0x7FFFFFFF},     {false, 0x14029040, "2.2.0", 0, 65535},
      {false, 0x14029044, "2.6.0", 0, 0x7FFFFFFF},     {false, 0x14029045, "2.7.0", 0, 65535},
      {false, 0x14029046, "2.8.0", 0, 0x7FFFFFFF},     {false, 0x14029047, "2.9.0", 0, 0x7FFFFFFF},
      {false, 0x14029048, "2.11.0", 0, 0x7FFFFFFF},    {false, 0x14029049, "2.12.0", 0, 0x7FFFFFFF},
      {false, 0x1402904A, "2.13.0", 0, 0x7FFFFFFF},    {false, 0x1402904B, "2.14.0", 0, 0x7FFFFFFF},
      {false, 0x1402904C, "2.17.0", 0, 0x7FFFFFFF},    {false, 0x1402904E, "2.4.0", 0, 0xFFFFFFFF},
      {false, 0x1402904F, "2.3.0", 0, 0xFFFFFFFF},     {true, 0x1402A041, "1.4.1.2.3", 1, 0x7FFFFFFF},
      {true, 0x1402A042, "2.15.1.2.3", 0, 255},        {true, 0x1402A008, "2.15.1.11.3", 1, 0x7FFFFFFF},
      {true, 0x1402A046, "2.15.1.7.3", 0, 0x7FFFFFFF}, {true, 0x1402A04A, "2.15.1.10.3", 0, 0xFFFFFFFF},
      {false, 0x14029042, "2.5.0", 0, 65535},          {true, 0x1402A044, "2.15.1.6.3", 0, 65535},
      {true, 0x1402A047, "2.15.1.8.3", 0, 65535},      {true, 0x1402A049, "2.15.1.9.3", 0, 65535}};
  for (const Limited &limited : all) {
    tree() = whole_tree();
    port(3) = whole_port(3);
    const auto is_there = [&](uint32_t value) {
      (limited.is_of_port ? port(3) : tree())[limited.attribute] = number(value);
      return value_of(limited.object) != "noSuchInstance";
    };
    EXPECT_TRUE(is_there(limited.first)) << limited.object;
    EXPECT_TRUE(is_there(limited.last)) << limited.object;
    if (limited.first > 0) {
      EXPECT_FALSE(is_there(limited.first - 1)) << limited.object;
    }
    if (limited.last < 0xFFFFFFFF) {
      EXPECT_FALSE(is_there(limited.last + 1)) << limited.object;
    }
  }
}

TEST_F(Objects, NumbersOf32BitsAreWhole) {
  tree()[protocol::kTopologyAge] = number(0xFFFFFFFF);
  tree()[protocol::kTopologyChanges] = number(0x80000000);
  EXPECT_EQ(value_of("2.3.0"), "TimeTicks 4294967295");
  EXPECT_EQ(value_of("2.4.0"), "Counter32 2147483648");
}

TEST_F(Objects, TheBridgeIsItsOwnRoot) {
  tree()[kRootPriority] = tree()[kBridgePriority];
  tree()[kRootMac] = tree()[kBridgeMac];
  tree()[kRootPort] = number(0);
  EXPECT_EQ(value_of("2.5.0"), "OCTETS 800102000000000a");
  EXPECT_EQ(value_of("2.7.0"), "INTEGER 0");
  tree()[kBridgePortCount] = number(0);
  EXPECT_EQ(value_of("1.2.0"), "INTEGER 0");
}

}  // namespace
