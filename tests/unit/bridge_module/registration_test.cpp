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

TEST_F(Registration, OfTheDefaultContextIsOfTwoGroups) {
  EXPECT_TRUE(stpbridge::register_default_context());
  EXPECT_EQ(registered::names(""), "dot1dBasedot1dStp");
  EXPECT_EQ(registered::names("20"), "");
  stpbridge::unregister_default_context();
  EXPECT_EQ(registered::names(""), "");
}

TEST_F(Registration, OfATreeIsOneEntryInItsContext) {
  for (const char *context : {"20", "vlan-20", "mst-0"}) {
    EXPECT_TRUE(stpbridge::register_context(context));
    EXPECT_EQ(registered::names(context), "dot1dBridge") << context;
  }
  EXPECT_EQ(registered::names(""), "");
  stpbridge::unregister_context("20");
  EXPECT_EQ(registered::names("20"), "");
  for (const char *context : {"vlan-20", "mst-0"}) {
    EXPECT_EQ(registered::names(context), "dot1dBridge") << context;
    stpbridge::unregister_context(context);
    EXPECT_EQ(registered::names(context), "") << context;
  }
}

TEST_F(Registration, CanBeRepeated) {
  for (int round = 0; round < 100; ++round) {
    ASSERT_TRUE(stpbridge::register_default_context()) << "round " << round;
    ASSERT_TRUE(stpbridge::register_context("20")) << "round " << round;
    stpbridge::unregister_context("20");
    stpbridge::unregister_default_context();
  }
  EXPECT_EQ(registered::names("") + registered::names("20"), "");
}

TEST_F(Registration, IsOfReadersAlone) {
  ASSERT_TRUE(stpbridge::register_context("mst-7"));
  oid id[] = {1, 3, 6, 1, 2, 1, 17};
  const netsnmp_subtree *subtree = netsnmp_subtree_find(id, std::size(id), nullptr, "mst-7");
  ASSERT_NE(subtree, nullptr);
  EXPECT_EQ(subtree->reginfo->modes, HANDLER_CAN_RONLY);
  EXPECT_STREQ(subtree->reginfo->contextName, "mst-7");
  stpbridge::unregister_context("mst-7");
}

TEST_F(Registration, LeavesTheOtherGroupsOfTheBridgeMibToOthers) {
  ASSERT_TRUE(stpbridge::register_default_context());
  for (const oid group : {0U, 3U, 4U, 5U, 6U, 7U}) {
    EXPECT_EQ(registered::name_of({group}, ""), "") << group;
  }
  stpbridge::unregister_default_context();
}

TEST_F(Registration, OfGroupsOfWhichOneIsRefusedRegistersNone) {
  for (const size_t accepted : {size_t{0}, size_t{1}}) {
    fake_agent::refuse_registration_after(accepted);
    EXPECT_FALSE(stpbridge::register_default_context());
    EXPECT_EQ(registered::names(""), "");
  }
  EXPECT_TRUE(stpbridge::register_default_context());
  stpbridge::unregister_default_context();
}

TEST_F(Registration, OfATreeThatIsRefusedRegistersNothing) {
  fake_agent::refuse_registration_after(0);
  EXPECT_FALSE(stpbridge::register_context("20"));
  EXPECT_EQ(registered::names("20"), "");
}

TEST_F(Registration, ThatMemoryIsLackingForRegistersNothing) {
  for (void (*const lack_memory)() : {fake_agent::fail_next_creation, fake_agent::fail_next_copy}) {
    lack_memory();
    EXPECT_FALSE(stpbridge::register_default_context());
    EXPECT_EQ(registered::names(""), "");
    lack_memory();
    EXPECT_FALSE(stpbridge::register_context("20"));
    EXPECT_EQ(registered::names("20"), "");
  }
  EXPECT_TRUE(stpbridge::register_context("20"));
  stpbridge::unregister_context("20");
}

TEST_F(Registration, WhereAnotherModuleIsLeavesItThere) {
  const oid id[] = {1, 3, 6, 1, 2, 1, 17, 2};
  netsnmp_handler_registration *other =
      netsnmp_create_handler_registration("other", answer_nothing, id, std::size(id), HANDLER_CAN_RONLY);
  ASSERT_EQ(netsnmp_register_handler(other), MIB_REGISTERED_OK);
  EXPECT_FALSE(stpbridge::register_default_context());
  EXPECT_EQ(registered::names(""), "other");
  EXPECT_EQ(netsnmp_unregister_handler(other), MIB_UNREGISTERED_OK);
}

TEST_F(Registration, BesideAnotherModuleThatHasAllOfTheBridgeMib) {
  const oid id[] = {1, 3, 6, 1, 2, 1, 17};
  netsnmp_handler_registration *other =
      netsnmp_create_handler_registration("other", answer_nothing, id, std::size(id), HANDLER_CAN_RONLY);
  ASSERT_EQ(netsnmp_register_handler(other), MIB_REGISTERED_OK);
  EXPECT_TRUE(stpbridge::register_default_context());
  EXPECT_EQ(registered::names(""), "otherdot1dBasedot1dStp");
  stpbridge::unregister_default_context();
  EXPECT_EQ(registered::names(""), "other");
  EXPECT_EQ(netsnmp_unregister_handler(other), MIB_UNREGISTERED_OK);
}

TEST_F(Registration, TakingOutKeepsTheAgentsLookupCache) {
  ASSERT_TRUE(stpbridge::register_default_context());
  netsnmp_set_lookup_cache_size(16);
  stpbridge::unregister_default_context();
  EXPECT_EQ(netsnmp_get_lookup_cache_size(), 16);
}

}  // namespace
