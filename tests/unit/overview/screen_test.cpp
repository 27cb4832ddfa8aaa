// Overviews as text.
#include "overview/screen.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

using namespace stpoverview;

namespace {

std::string shown(const char *text, const Terminal &terminal = {}) {
  return print_overview(nlohmann::json::parse(text), terminal);
}

constexpr char kMst[] = R"({
  "name": "s1", "mode": "mst", "region": {"name": "campus", "revision": 3, "digest": "0123456789abcdef"},
  "regional_root": {"bridge": "24576 / 00:00:5e:00:53:2a", "cost": 2000},
  "trees": [{"tree": 0, "vlans": "1-9,31-4094", "hops": 19}, {"tree": 1, "vlans": "10-30", "hops": 20},
            {"tree": 64, "vlans": ""}, {"tree": 4094}],
  "ports": [
    {"name": "uplink", "link": "point-to-point", "flags": ["peer"], "guards": ["loop"],
     "roles": {"root": "0", "alternate": "1"}, "inconsistent": {}},
    {"name": "lab", "link": "shared", "flags": ["boundary", "pre-standard", "dispute"], "guards": ["root", "loop"],
     "roles": {"designated": "0-1", "backup": "4094"}, "inconsistent": {"root": "0,4094", "loop": "0"}},
    {"name": "desk", "link": "down", "flags": ["edge"], "guards": [], "roles": {}, "inconsistent": {"type": "1"}},
    {"name": "far", "flags": [], "guards": [], "roles": {}, "inconsistent": {}}]})";

TEST(Screens, ShowTreesAndPortsOfAnMstSwitch) {
  EXPECT_EQ(shown(kMst), R"(Switch         s1
Mode           mst
Region         campus, revision 3, digest 01234567...
Regional root  24576 / 00:00:5e:00:53:2a, cost 2000

Tree  Root port  Hops  VLANs
0     uplink     19    1-9,31-4094
1     -          20    10-30
64    -          -     none
4094  -          -     -

Port    Link    Flags  Guards     0   1   64  4094
uplink  p2p     P      loop       R   a   -   -
lab     shared  BXS    root,loop  D!  D   -   b!
desk    down    E      -          -   -!  -   -
far     -       -      -          -   -   -   -

Port  Blocked by  In trees
lab   root guard  0,4094
lab   loop guard  0
desk  port type   1

R root, D designated, a alternate, b backup, - none, ! inconsistent
E edge, B boundary, P peer, X dispute, S pre-standard
)");
}

constexpr size_t kWidthOfTheGrid = 50;

TEST(Screens, ShowTheGridWhereItJustFits) {
  const std::string text = shown(kMst, {kWidthOfTheGrid, false});
  EXPECT_NE(text.find("lab     shared  BXS    root,loop  D!  D   -   b!\n"), std::string::npos);
}

TEST(Screens, FoldTreesIntoListsWhereTheTerminalIsTooNarrow) {
  const std::string text = shown(kMst, {kWidthOfTheGrid - 1, false});
  EXPECT_EQ(text.substr(text.find("\nPort"), text.find("\nPort  Blocked") - text.find("\nPort")), R"(
Port    Link    Flags  Guards     Roles in trees
uplink  p2p     P      loop       R 0, a 1
lab     shared  BXS    root,loop  D 1, D! 0, b! 4094
desk    down    E      -          -! 1
far     -       -      -          -
)");
}

TEST(Screens, GoOnWithALongListBelowItself) {
  EXPECT_EQ(shown(R"({"name": "", "mode": "mst", "ports": [], "trees": [
                  {"tree": 1, "vlans": "1,3,5,7,9,11,13,15,17,19,21,23"}, {"tree": 2, "vlans": "2"}]})",
                  {45, false}),
            R"(Mode  mst

Tree  Root port  Hops  VLANs
1     -          -     1,3,5,7,9,11,13,15,17,
                       19,21,23
2     -          -     2
)");
}

TEST(Screens, ShowWholeWhatHasNoCommaToGoOnBehind) {
  EXPECT_EQ(
      shown(R"({"name": "a-name-that-is-wider-than-the-terminal", "ports": [], "trees": []})", {20, false}),
      "Switch  a-name-that-is-wider-than-the-terminal\n");
}

TEST(Screens, ShowTheTreesOfRapidPvstByTheirRootPort) {
  EXPECT_EQ(shown(R"({"name": "s2", "mode": "rapid-pvst", "disabled_vlans": "99",
                  "trees": [{"tree": 1}, {"tree": 2}, {"tree": 3}, {"tree": 4}, {"tree": 5}],
                  "ports": [{"name": "b", "flags": [], "guards": [], "roles": {"root": "2,4-5"}, "inconsistent": {}},
                            {"name": "a", "flags": [], "guards": [], "roles": {"root": "3-4"},
                             "inconsistent": {"pvid": "3"}}]})"),
            R"(Switch        s2
Mode          rapid-pvst
Without tree  99

Root port  Trees
-          1
b          2,5
a          3
b,a        4

Port  Link  Flags  Guards  1  2  3   4  5
b     -     -      -       -  R  -   R  R
a     -     -      -       -  -  R!  R  -

Port  Blocked by            In trees
a     port VLAN identifier  3

R root, D designated, a alternate, b backup, - none, ! inconsistent
)");
}

TEST(Screens, LeaveOutWhatNobodyKnows) {
  EXPECT_EQ(shown(R"({"name": "", "ports": [], "trees": []})"), "");
  EXPECT_EQ(shown(R"({"name": "", "mode": "mst", "region": {"name": "", "revision": 0, "digest": "00"},
                  "ports": [], "trees": []})"),
            "Mode    mst\nRegion  \"\", revision 0, digest 00...\n");
}

TEST(Screens, HaveColoursOnATerminalThatHas) {
  EXPECT_EQ(shown(R"({"name": "", "mode": "mst", "trees": [{"tree": 0}, {"tree": 1}],
                  "ports": [{"name": "a", "flags": [], "guards": [], "roles": {"root": "0"}, "inconsistent": {}},
                            {"name": "b", "flags": [], "guards": [], "roles": {"backup": "0"}, "inconsistent": {}},
                            {"name": "c", "flags": [], "guards": [], "roles": {"designated": "0"}, "inconsistent": {}},
                            {"name": "d", "link": "down", "flags": [], "guards": [], "roles": {}, "inconsistent": {}},
                            {"name": "e", "flags": [], "guards": [], "roles": {"root": "0"},
                             "inconsistent": {"root": "0"}}]})",
                  {80, true}),
            "Mode  mst\n\n"
            "Tree  Root port  Hops  VLANs\n"
            "0     \033[32ma,e\033[0m        -     -\n"
            "1     -          -     -\n\n"
            "Port  Link  Flags  Guards  0   1\n"
            "a     -     -      -       \033[32mR\033[0m   \033[2m-\033[0m\n"
            "b     -     -      -       \033[33mb\033[0m   \033[2m-\033[0m\n"
            "c     -     -      -       D   \033[2m-\033[0m\n"
            "\033[2md\033[0m     \033[2mdown\033[0m  -      -       \033[2m-\033[0m   \033[2m-\033[0m\n"
            "e     -     -      -       \033[1;31mR!\033[0m  \033[2m-\033[0m\n\n"
            "Port  Blocked by  In trees\n"
            "e     \033[1;31mroot guard\033[0m  0\n\n"
            "R root, D designated, a alternate, b backup, - none, ! inconsistent\n");
}

TEST(Screens, CountCharactersAndShowNoControlCharacters) {
  EXPECT_EQ(shown(R"({"name": "\u001b[2J\u009b3m", "trees": [], "ports": [
                  {"name": "Zürich", "flags": [], "guards": [], "roles": {}, "inconsistent": {}},
                  {"name": "Berlin", "flags": ["peer"], "guards": [], "roles": {}, "inconsistent": {}}]})"),
            "Switch  ?[2J?3m\n\n"
            "Port    Link  Flags  Guards\n"
            "Zürich  -     -      -\n"
            "Berlin  -     P      -\n\n"
            "R root, D designated, a alternate, b backup, - none, ! inconsistent\nP peer\n");
}

}  // namespace
