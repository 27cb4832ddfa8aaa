// Registration with the real agent library.
#include "registration.h"

#include <gtest/gtest.h>

#include "fake_alarms.h"
#include "registered.h"

namespace {

int answer_nothing(netsnmp_mib_handler *, netsnmp_handler_registration *, netsnmp_agent_request_info *,
                   netsnmp_request_info *) {
  return SNMP_ERR_NOERROR;
}

class Registration : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { registered::prepare_agent(); }
  void SetUp() override { fake_agent::reset(); }
};

TEST_F(Registration, BothGroupsInEachContext) {
  for (const char *context : {"", "20", "vlan-20", "mst-0"}) {
    EXPECT_TRUE(stpbridge::register_groups(context));
    EXPECT_EQ(registered::both(context), "both") << context;
  }
  stpbridge::unregister_groups("20");
  EXPECT_EQ(registered::both("20"), "none");
  for (const char *context : {"", "vlan-20", "mst-0"}) {
    EXPECT_EQ(registered::both(context), "both") << context;
    stpbridge::unregister_groups(context);
    EXPECT_EQ(registered::both(context), "none") << context;
  }
}

TEST_F(Registration, CanBeRepeated) {
  for (int round = 0; round < 100; ++round) {
    ASSERT_TRUE(stpbridge::register_groups("")) << "round " << round;
    stpbridge::unregister_groups("");
  }
  EXPECT_EQ(registered::both(""), "none");
}

TEST_F(Registration, IsOfReadersAlone) {
  ASSERT_TRUE(stpbridge::register_groups("mst-7"));
  oid id[] = {1, 3, 6, 1, 2, 1, 17, 2};
  const netsnmp_subtree *subtree = netsnmp_subtree_find(id, std::size(id), nullptr, "mst-7");
  ASSERT_NE(subtree, nullptr);
  EXPECT_EQ(subtree->reginfo->modes, HANDLER_CAN_RONLY);
  EXPECT_STREQ(subtree->reginfo->contextName, "mst-7");
  stpbridge::unregister_groups("mst-7");
}

TEST_F(Registration, LeavesTheOtherGroupsOfTheBridgeMibToOthers) {
  ASSERT_TRUE(stpbridge::register_groups(""));
  for (const oid group : {0U, 3U, 4U, 5U, 6U, 7U}) {
    EXPECT_EQ(registered::group(group, ""), "") << group;
  }
  stpbridge::unregister_groups("");
}

TEST_F(Registration, OfWhichOneIsRefusedRegistersNone) {
  for (const size_t accepted : {size_t{0}, size_t{1}}) {
    fake_agent::refuse_registration_after(accepted);
    EXPECT_FALSE(stpbridge::register_groups("20"));
    EXPECT_EQ(registered::both("20"), "none");
  }
  EXPECT_TRUE(stpbridge::register_groups("20"));
  stpbridge::unregister_groups("20");
}

TEST_F(Registration, WhereAnotherModuleIsLeavesItThere) {
  const oid id[] = {1, 3, 6, 1, 2, 1, 17, 2};
  netsnmp_handler_registration *other =
      netsnmp_create_handler_registration("other", answer_nothing, id, std::size(id), HANDLER_CAN_RONLY);
  ASSERT_EQ(netsnmp_register_handler(other), MIB_REGISTERED_OK);
  EXPECT_FALSE(stpbridge::register_groups(""));
  EXPECT_EQ(registered::group(1, ""), "");
  EXPECT_EQ(registered::group(2, ""), "other");
  EXPECT_EQ(netsnmp_unregister_handler(other), MIB_UNREGISTERED_OK);
}

TEST_F(Registration, TakingOutKeepsTheAgentsLookupCache) {
  ASSERT_TRUE(stpbridge::register_groups(""));
  netsnmp_set_lookup_cache_size(16);
  stpbridge::unregister_groups("");
  EXPECT_EQ(netsnmp_get_lookup_cache_size(), 16);
}

}  // namespace
