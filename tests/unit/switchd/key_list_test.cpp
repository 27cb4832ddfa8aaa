#include "keys/key_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

using namespace stpswitch;
using testing::Contains;
using testing::StartsWith;

namespace {

std::vector<std::string> lines_of_list() {
  std::istringstream list(list_keys());
  std::vector<std::string> lines;
  for (std::string line; std::getline(list, line);) {
    lines.push_back(line);
  }
  return lines;
}

TEST(KeyList, BeginsWithTheSwitch) {
  EXPECT_THAT(list_keys(),
              StartsWith("[switch]\t\t\t\tThe whole switch.\n"
                         "[switch]\tname\ttext, up to 64 octets\t\"\"\tWhat people call the switch.\n"
                         "[switch]\tmode\t\"mst\" or \"rapid-pvst\"\trequired\tThe spanning tree "
                         "protocol.\n"));
}

TEST(KeyList, TellsWhatEachKindOfValueMayBe) {
  const std::vector<std::string> lines = lines_of_list();
  EXPECT_THAT(lines, Contains(StartsWith("[switch]\tloop_guard_default\ttrue or false\tfalse\t")));
  EXPECT_THAT(lines, Contains(StartsWith("[mst]\tmax_hops\t6 to 40\t20\t")));
  EXPECT_THAT(lines, Contains(StartsWith("[mst]\tpre_standard_digest\t32 hexadecimal digits\t\"\"\t")));
  EXPECT_THAT(lines,
              Contains(StartsWith("[mst.cist]\tregional_root_mac\tsix pairs of hexadecimal digits between "
                                  "colons\t\"00:00:5e:00:53:00\"\t")));
  EXPECT_THAT(lines, Contains(StartsWith("[mst.cist]\tinternal_root_path_cost\t0 to 4294967295\t0\t")));
  EXPECT_THAT(lines, Contains(StartsWith("[bridge]\tpriority\t0 to 61440 in steps of 4096\t32768\t")));
  EXPECT_THAT(lines, Contains(StartsWith("[bridge]\troot\tpriority and address in hexadecimal digits, with a "
                                         "dot between them\t\"6000.00005e005301\"\t")));
  EXPECT_THAT(lines, Contains(StartsWith("[rapid_pvst]\tdisabled_vlans\tVLANs\t\"\"\t")));
  EXPECT_THAT(
      lines,
      Contains(StartsWith("[[port]]\tlink_type\t\"auto\", \"point-to-point\" or \"shared\"\t\"auto\"\t")));
  EXPECT_THAT(lines, Contains(StartsWith("[[port]]\troot_port_of\ttrees\t\"\"\t")));
  EXPECT_THAT(lines, Contains(StartsWith("[access]\trefused_users\tlist of names of 1 to 63 octets, without "
                                         "commas\t[]\t")));
}

TEST(KeyList, TellsTheNumbersAndDefaultsOfEntries) {
  const std::vector<std::string> lines = lines_of_list();
  EXPECT_THAT(lines, Contains(StartsWith("[[mst.instance]]\tid\t1 to 4094, at most 64 entries\trequired\t")));
  EXPECT_THAT(lines, Contains(StartsWith("[[mst.instance]]\tremaining_hops\t1 to 40\t20\t")));
  EXPECT_THAT(lines, Contains(StartsWith("[[port]]\tnumber\t1 to 3967\trequired\t")));
  EXPECT_THAT(lines, Contains(StartsWith("[[port]]\tname\ttext, 1 to 64 octets\t\"EthernetN\"\t")));
  EXPECT_THAT(lines, Contains(StartsWith("[[port]]\tvlans\tVLANs\t\"1\"\t")));
  EXPECT_THAT(lines, Contains(StartsWith("[[port]]\tif_mib_index\t1 to 2147483647\t128 + N\t")));
  EXPECT_THAT(lines, Contains(StartsWith("[[port_channel]]\tif_mib_index\t1 to 2147483647\t4096 + N\t")));
  EXPECT_THAT(lines, Contains(StartsWith("[[tree]]\tnumber\t0 to 4094\trequired\t")));
  EXPECT_THAT(lines, Contains(StartsWith("[[tree]]\troot_cost\t0 to 4294967295\tnone\t")));
  EXPECT_THAT(lines, Contains(StartsWith("[[port_channel]]\tnumber\t1 to 4095\trequired\t")));
  EXPECT_THAT(lines,
              Contains(StartsWith("[[port_channel]]\tname\ttext, 1 to 64 octets\t\"port-channelN\"\t")));
}

TEST(KeyList, HasFiveFieldsInEachLineAndAWholeSentenceInTheLast) {
  for (const std::string &line : lines_of_list()) {
    EXPECT_EQ(std::count(line.begin(), line.end(), '\t'), 4) << line;
    EXPECT_EQ(line.back(), '.') << line;
    EXPECT_GT(line.size() - line.rfind('\t'), 10U) << line;
  }
}

}  // namespace
