// The bridges that a command line names.
#include "sources/openvswitch/watched_bridge.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model/refusal.h"

using namespace stpswitch;

namespace {

using Bridges = std::vector<WatchedBridge>;
using Texts = std::vector<std::string>;

std::string refusal_of(const Texts &texts) {
  try {
    parse_watched_bridges(texts);
  } catch (const Refusal &refusal) {
    return refusal.what();
  }
  return "none";
}

TEST(WatchedBridges, AreOneOfAllVlansOrOneForEachVlan) {
  EXPECT_EQ(parse_watched_bridges({"br0"}), Bridges({{"br0", {}}}));
  EXPECT_EQ(parse_watched_bridges({"br0=1"}), Bridges({{"br0", 1}}));
  EXPECT_EQ(parse_watched_bridges({"br20=20", "br4094=4094", "a=7"}),
            Bridges({{"br20", 20}, {"br4094", 4094}, {"a", 7}}));
}

TEST(WatchedBridges, HaveNames) {
  EXPECT_EQ(refusal_of({}), "no bridge is named");
  EXPECT_EQ(refusal_of({""}), "'' names no bridge");
  EXPECT_EQ(refusal_of({"=10"}), "'=10' names no bridge");
  EXPECT_EQ(refusal_of({"a123456789012345"}), "'a123456789012345': a bridge's name has at most 15 octets");
  EXPECT_EQ(refusal_of({"br\n0"}), "a bridge's name has characters that cannot be printed");
}

TEST(WatchedBridges, HaveVlansThatThereAre) {
  for (const std::string vlan :
       {"", "0", "4095", "99999999999", "-1", "+1", "1x", "0x1", " 1", "1,2", "1=2"}) {
    const std::string bridge = "br0=" + vlan;
    EXPECT_EQ(refusal_of({bridge}), std::string("'").append(bridge).append("': '").append(vlan).append(
                                        "' is not a VLAN from 1 to 4094"));
  }
}

TEST(WatchedBridges, DoNotContradictEachOther) {
  EXPECT_EQ(refusal_of({"a=1", "a=2"}), "bridge 'a' is named twice");
  EXPECT_EQ(refusal_of({"a", "a"}), "bridge 'a' is named twice");
  EXPECT_EQ(refusal_of({"a=1", "b=2", "c=1"}), "VLAN 1 has two bridges, 'a' and 'c'");
  EXPECT_EQ(refusal_of({"a", "b"}),
            "bridge 'a' needs a VLAN, as in NAME=VLAN: each of several bridges is the tree of one");
  EXPECT_EQ(refusal_of({"a=1", "b"}),
            "bridge 'b' needs a VLAN, as in NAME=VLAN: each of several bridges is the tree of one");
}

TEST(WatchedBridges, AreFifteenAtMost) {
  Texts texts;
  for (int vlan = 1; vlan <= 15; ++vlan) {
    texts.push_back("br" + std::to_string(vlan) + "=" + std::to_string(vlan));
  }
  EXPECT_EQ(parse_watched_bridges(texts).size(), 15U);
  texts.emplace_back("br16=16");
  EXPECT_EQ(refusal_of(texts), "there are 16 bridges, more than 15");
}

TEST(WatchedBridges, NameTheSwitch) {
  EXPECT_EQ(joined_names({{"br0", {}}}), "br0");
  EXPECT_EQ(joined_names({{"br10", 10}, {"br20", 20}}), "br10,br20");
  EXPECT_EQ(joined_names(Bridges(4, {"a12345678901234", 1})),
            "a12345678901234,a12345678901234,a12345678901234,a12345678901234");
  EXPECT_EQ(joined_names(Bridges(5, {"a12345678901234", 1})), "a12345678901234 and 4 more");
}

}  // namespace
