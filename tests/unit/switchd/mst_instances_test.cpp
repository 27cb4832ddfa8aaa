// Command 122: the trees of the MST region.
#include <gmock/gmock.h>

#include "support/command_test.h"
#include "support/octets.h"
#include "support/states.h"

using namespace stpswitch;
using testing::ElementsAre;

namespace {

class MstInstancesCommand : public CommandTest {
 protected:
  static RequestText request(uint32_t action, uint32_t instance) {
    return {122, action, {one_tree(protocol::kMstTreeKey, instance)}};
  }
  static RequestText request_after(uint32_t instance) { return request(kGetNext, instance); }

  std::vector<uint32_t> rows_after(uint32_t from) const { return walk(request_after, from, 0x1402'9001); }
};

constexpr char kCist[] =
    "57505453 0100 0300 58000000 07000000 00000000 05000000"
    "01900214 04000000 00000000"
    "27900214 04000000 13000000"
    "2390020f 06000000 00005e00532a 0000"
    "24900214 04000000 00600000"
    "25900214 04000000 d0070000";

constexpr char kInstance2[] =
    "57505453 0100 0300 30000000 07000000 00000000 02000000"
    "01900214 04000000 02000000"
    "27900214 04000000 12000000";

TEST_F(MstInstancesCommand, AnswersForExactlyTheInstance) {
  EXPECT_EQ(reply_to(request(kGet, 0)), hex(octets(kCist)));
  EXPECT_EQ(reply_to(request(kGet, 2)), hex(octets(kInstance2)));
}

TEST_F(MstInstancesCommand, AnswersForTheNextInstance) {
  EXPECT_EQ(reply_to(request(kGetNext, 1)), hex(octets(kInstance2)));
}

TEST_F(MstInstancesCommand, HasARowForEachConfiguredInstance) {
  EXPECT_THAT(rows_after(0), ElementsAre(1, 2, 10));
  EXPECT_THAT(rows_after(2), ElementsAre(10));
  EXPECT_THAT(rows_after(9), ElementsAre(10));
}

TEST_F(MstInstancesCommand, HasNothingBehindTheLastRow) {
  for (const uint32_t instance : {10U, 4094U, 65536U, 0xFFFF'FFFFU}) {
    EXPECT_EQ(refusal_of(request(kGetNext, instance)), CMD_NO_ENTRY) << instance;
  }
}

TEST_F(MstInstancesCommand, HasNoRowForWhatIsNotConfigured) {
  for (const uint32_t instance : {3U, 11U, 4095U, 65536U, 65538U, 0xFFFF'FFFFU}) {
    EXPECT_EQ(refusal_of(request(kGet, instance)), CMD_NO_ENTRY) << instance;
  }
}

constexpr char kOtherCist[] =
    "57505453 0100 0300 58000000 07000000 00000000 05000000"
    "01900214 04000000 00000000"
    "27900214 04000000 01000000"
    "2390020f 06000000 ffeeddccbbaa 0000"
    "24900214 04000000 ffff0000"
    "25900214 04000000 ffffffff";

TEST_F(MstInstancesCommand, FollowsTheSettings) {
  set("mst.cist.remaining_hops", "1");
  set("mst.cist.regional_root_mac", "FF:EE:DD:CC:BB:AA");
  set("mst.cist.regional_root_priority", "65535");
  set("mst.cist.internal_root_path_cost", "4294967295");
  EXPECT_EQ(reply_to(request(kGet, 0)), hex(octets(kOtherCist)));
  set("mst.instance.2.remaining_hops", "40");
  std::string other(kInstance2);
  other.replace(other.size() - 8, 8, "28000000");
  EXPECT_EQ(reply_to(request(kGet, 2)), hex(octets(other)));
}

constexpr char kPlainCist[] =
    "57505453 0100 0300 58000000 07000000 00000000 05000000"
    "01900214 04000000 00000000"
    "27900214 04000000 14000000"
    "2390020f 06000000 00005e005300 0000"
    "24900214 04000000 00800000"
    "25900214 04000000 00000000";

TEST_F(MstInstancesCommand, HasTheCistOnASwitchWithoutInstances) {
  switch_.replace(empty_switch());
  EXPECT_EQ(reply_to(request(kGet, 0)), hex(octets(kPlainCist)));
  EXPECT_THAT(rows_after(0), ElementsAre());
}

TEST_F(MstInstancesCommand, HasNoRowsOutsideMstMode) {
  set("switch.mode", "rapid-pvst");
  for (const uint32_t action : {kGet, kGetNext}) {
    for (const uint32_t instance : {0U, 1U, 2U, 0xFFFF'FFFFU}) {
      EXPECT_EQ(refusal_of(request(action, instance)), CMD_NO_ENTRY) << instance;
    }
  }
}

TEST_F(MstInstancesCommand, TakesItsKeyOnly) {
  const KeyText key = one_tree(protocol::kMstTreeKey, 2);
  for (const char *const mode : {"mst", "rapid-pvst"}) {
    set("switch.mode", mode);
    for (const uint32_t action : {kGet, kGetNext}) {
      EXPECT_EQ(refusal_of({122, action, {}}), CMD_UNKNOWN_KEY);
      EXPECT_EQ(refusal_of({122, action, {key, key}}), CMD_UNKNOWN_KEY);
      EXPECT_EQ(refusal_of({122, action, {one_tree(protocol::kVlanTreeKey, 2)}}), CMD_UNKNOWN_KEY);
      EXPECT_EQ(refusal_of({122, action, {key, protocol::kMstDigestsKey}}), CMD_UNKNOWN_KEY);
    }
  }
}

TEST_F(MstInstancesCommand, TakesAListOfExactlyOneInstance) {
  const std::vector<std::vector<std::pair<uint32_t, uint32_t>>> lists = {
      {},       {{2, 2}, {2, 2}},   {{1, 2}},
      {{2, 1}}, {{0, 0xFFFF'FFFF}}, std::vector<std::pair<uint32_t, uint32_t>>(512, {2, 2})};
  for (const char *const mode : {"mst", "rapid-pvst"}) {
    set("switch.mode", mode);
    for (const auto &list : lists) {
      for (const uint32_t action : {kGet, kGetNext}) {
        EXPECT_EQ(refusal_of({122, action, {range_list(protocol::kMstTreeKey, list)}}), CMD_BAD_REQUEST);
      }
    }
  }
}

}  // namespace
