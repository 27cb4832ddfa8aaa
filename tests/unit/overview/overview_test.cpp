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

TEST(Overviews, AreRefusedWhenTheyLackSomethingOrSayWhatHasNoMeaning) {
  for (const std::string text :
       {"[]", "{}", R"({"name":"","ports":[]})", R"({"name":1,"ports":[],"trees":[]})",
        R"({"name":"","ports":[{}],"trees":[]})", R"({"name":"","ports":[],"trees":[{}]})",
        R"({"name":"","ports":[],"trees":[{"tree":"x"}]})"}) {
    EXPECT_THROW((void)json::parse(text).get<Overview>(), json::exception) << text;
  }
  for (
      const std::string text :
      {R"({"mode":"pvst","name":"","ports":[],"trees":[]})",
       R"({"name":"","ports":[],"trees":[{"tree":0,"vlans":"0"}]})",
       R"({"name":"","ports":[{"flags":["hub"],"guards":[],"inconsistent":{},"name":"","roles":{}}],"trees":[]})",
       R"({"name":"","ports":[{"flags":[],"guards":[],"inconsistent":{},"name":"","roles":{"root":"5000"}}],)"
       R"("trees":[]})"}) {
    EXPECT_THROW((void)json::parse(text).get<Overview>(), stpswitch::Refusal) << text;
  }
}

}  // namespace
