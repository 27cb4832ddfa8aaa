// Overviews as JSON texts.
#include "overview/overview.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "model/refusal.h"

using namespace stpoverview;
using nlohmann::json;

namespace {

constexpr char kEverything[] =
    R"({"disabled_vlans":"7,99","mode":"mst","name":"s1","ports":[{"flags":["edge","boundary","peer","dispute",)"
    R"("pre-standard"],"guards":["root","loop"],"inconsistent":{"loop":"2","pvid":"3","root":"1","type":"4"},)"
    R"("link":"shared","name":"p1","roles":{"alternate":"3","backup":"4","designated":"2","root":"0-1"}}],)"
    R"("region":{"digest":"00ff","name":"campus","revision":3},"regional_root":{"bridge":"1 / 02","cost":2000},)"
    R"("trees":[{"hops":20,"tree":0,"vlans":"1-9"},{"tree":5,"vlans":"7"},{"hops":3,"tree":6},{"tree":4094}]})";

constexpr char kLeast[] = R"({"name":"","ports":[],"trees":[]})";

TEST(Overviews, AreTheSameAfterTheirText) {
  for (const std::string text : {kEverything, kLeast}) {
    const Overview overview = json::parse(text);
    EXPECT_EQ(json(overview).dump(), text);
  }
}

TEST(Overviews, AreReadMemberByMember) {
  const Overview overview = json::parse(kEverything);
  EXPECT_EQ(overview.name, "s1");
  EXPECT_EQ(overview.mode, Mode::kMst);
  EXPECT_EQ(overview.region->name, "campus");
  EXPECT_EQ(overview.region->revision, 3U);
  EXPECT_EQ(overview.region->digest, "00ff");
  EXPECT_EQ(overview.regional_root->bridge, "1 / 02");
  EXPECT_EQ(overview.regional_root->cost, 2000U);
  EXPECT_EQ(stpswitch::print_vlans(overview.disabled_vlans), "7,99");
  ASSERT_EQ(overview.trees.size(), 4U);
  EXPECT_EQ(overview.trees.at(0).hops, 20U);
  EXPECT_EQ(stpswitch::print_vlans(*overview.trees.at(0).vlans), "1-9");
  EXPECT_FALSE(overview.trees.at(4094).vlans);
  EXPECT_FALSE(overview.trees.at(4094).hops);
  ASSERT_EQ(overview.ports.size(), 1U);
  const Port &port = overview.ports.front();
  EXPECT_EQ(port.name, "p1");
  EXPECT_EQ(port.link, Link::kShared);
  EXPECT_EQ(port.flags,
            (std::set{Flag::kEdge, Flag::kBoundary, Flag::kPeer, Flag::kDispute, Flag::kPreStandard}));
  EXPECT_EQ(port.guards, (std::set{Guard::kRoot, Guard::kLoop}));
  EXPECT_EQ(stpswitch::print_trees(port.roles.at(Role::kRoot)), "0-1");
  EXPECT_EQ(stpswitch::print_trees(port.roles.at(Role::kDesignated)), "2");
  EXPECT_EQ(stpswitch::print_trees(port.roles.at(Role::kAlternate)), "3");
  EXPECT_EQ(stpswitch::print_trees(port.roles.at(Role::kBackup)), "4");
  EXPECT_EQ(stpswitch::print_trees(port.inconsistent.at(Inconsistency::kRoot)), "1");
  EXPECT_EQ(stpswitch::print_trees(port.inconsistent.at(Inconsistency::kLoop)), "2");
  EXPECT_EQ(stpswitch::print_trees(port.inconsistent.at(Inconsistency::kPvid)), "3");
  EXPECT_EQ(stpswitch::print_trees(port.inconsistent.at(Inconsistency::kType)), "4");
}

std::string refusal_of(const std::string &text) {
  try {
    (void)json::parse(text).get<Overview>();
  } catch (const stpswitch::Refusal &refusal) {
    return refusal.what();
  }
  return "none";
}

// Of an overview without ports.
std::string refusal_with(const std::string &members) {
  return refusal_of(R"({"name":"","ports":[],)" + members + "}");
}

std::string refusal_of_tree(const std::string &members) {
  return refusal_with(R"("trees":[{)" + members + "}]");
}

std::string refusal_of_port(const std::string &members) {
  return refusal_of(R"({"name":"","trees":[],"ports":[{"name":"p",)" + members + "}]}");
}

TEST(Overviews, AreRefusedWhenTheyLackSomething) {
  EXPECT_EQ(refusal_of("{}"), "name: it is missing");
  EXPECT_EQ(refusal_of(R"({"name":"","ports":[]})"), "trees: it is missing");
  EXPECT_EQ(refusal_of(R"({"name":"","trees":[]})"), "ports: it is missing");
  EXPECT_EQ(refusal_of_tree(""), "tree: it is missing");
  EXPECT_EQ(refusal_of_port(R"("link":"down")"), "flags: it is missing");
  EXPECT_EQ(refusal_with(R"("trees":[],"region":{"name":"","digest":""})"), "revision: it is missing");
  EXPECT_EQ(refusal_with(R"("trees":[],"regional_root":{"bridge":""})"), "cost: it is missing");
}

TEST(Overviews, AreRefusedWhenAMemberIsOfAnotherKind) {
  EXPECT_EQ(refusal_of("[]"), "expected an object with 'name', not array");
  EXPECT_EQ(refusal_of(R"({"name":1})"), "name: expected a text, not number");
  EXPECT_EQ(refusal_with(R"("trees":{})"), "trees: expected a list, not object");
  EXPECT_EQ(refusal_with(R"("trees":[3])"), "expected an object with 'tree', not number");
  EXPECT_EQ(refusal_with(R"("trees":[],"region":3)"), "expected an object with 'name', not number");
  EXPECT_EQ(refusal_of_port(R"("flags":[],"guards":[],"roles":[],"inconsistent":{})"),
            "roles: expected an object, not array");
  EXPECT_EQ(refusal_of_port(R"("flags":[],"guards":[],"roles":{"root":3},"inconsistent":{})"),
            "roles: expected a text, not number");
  EXPECT_EQ(refusal_of_port(R"("flags":[1])"), "flags: expected a text, not number");
}

TEST(Overviews, AreRefusedWhenANumberIsNone) {
  for (const std::string number :
       {"-1", "4095", "4294967295", "4294967296", "1.5", "true", R"("1")", "null"}) {
    EXPECT_EQ(refusal_of_tree(R"("tree":)" + number), "tree: " + number + " is not in 0..4094");
  }
  for (const std::string number : {"-5", "4294967296", "1.5"}) {
    const std::string reason = number + " is not in 0..4294967295";
    EXPECT_EQ(refusal_of_tree(R"("tree":1,"hops":)" + number), "hops: " + reason);
    EXPECT_EQ(refusal_with(R"("trees":[],"region":{"name":"","digest":"","revision":)" + number + "}"),
              "revision: " + reason);
    EXPECT_EQ(refusal_with(R"("trees":[],"regional_root":{"bridge":"","cost":)" + number + "}"),
              "cost: " + reason);
  }
  EXPECT_EQ(refusal_of_tree(R"("tree":4094,"hops":4294967295)"), "none");
}

TEST(Overviews, AreRefusedWhenTheySayWhatHasNoMeaning) {
  EXPECT_EQ(refusal_with(R"("mode":"pvst","trees":[])"), "mode: 'pvst' has no meaning here");
  EXPECT_EQ(refusal_of_tree(R"("tree":0,"vlans":"0")"), "VLAN 0 is not in 1..4094");
  EXPECT_EQ(refusal_with(R"("trees":[{"tree":3},{"tree":3}])"), "tree: 3 is listed twice");
  EXPECT_EQ(refusal_of_port(R"("link":"up")"), "link: 'up' has no meaning here");
  EXPECT_EQ(refusal_of_port(R"("flags":["hub"])"), "flags: 'hub' has no meaning here");
  EXPECT_EQ(refusal_of_port(R"("flags":[],"guards":[],"roles":{"root":"5000"})"),
            "tree 5000 is not in 0..4094");
  EXPECT_EQ(refusal_of_port(R"("flags":[],"guards":[],"roles":{"hub":"5"})"),
            "roles: 'hub' has no meaning here");
}

}  // namespace
