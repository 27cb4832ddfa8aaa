// Registration with the real agent library.
#include "registration.h"

#include <utility>

#include <gtest/gtest.h>

#include "stpsnmp/agent.h"
#include "stpsnmp/object_table.h"

namespace {

u_char *no_instance(variable *, oid *, size_t *, int, size_t *, WriteMethod **) { return nullptr; }

class Registration : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    snmp_disable_log();
    netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_ROLE, 1);
    init_agent("registration_test");
  }

  // The label under which the row's own OID is registered, empty when it is not.
  static std::string registrant(size_t row) {
    const variable7 &entry = stp_extensions_mib_variables[row];
    oid id[MAX_OID_LEN];
    std::copy_n(stp_extensions_mib_variables_oid, STP_EXTENSIONS_MIB_ROOT_LENGTH, id);
    std::copy_n(entry.name, entry.namelen, id + STP_EXTENSIONS_MIB_ROOT_LENGTH);
    const size_t length = STP_EXTENSIONS_MIB_ROOT_LENGTH + size_t{entry.namelen};
    const netsnmp_subtree *subtree = netsnmp_subtree_find(id, length, nullptr, "");
    if (subtree == nullptr || snmp_oid_compare(subtree->name_a, subtree->namelen, id, length) != 0) {
      return "";
    }
    return subtree->label_a;
  }

  static void expect_all(const std::string &registrant_of_all) {
    for (size_t row = 0; row < STP_EXTENSIONS_MIB_OBJECTS; ++row) {
      EXPECT_EQ(registrant(row), registrant_of_all) << "row " << row;
    }
  }
};

TEST_F(Registration, EveryObjectIsRegisteredAndTakenOutAgain) {
  EXPECT_EQ(stpsnmp::register_objects(), 0);
  expect_all("vantrelStpExtensionsMIB");
  stpsnmp::unregister_objects();
  expect_all("");
}

TEST_F(Registration, CanBeRepeated) {
  for (int round = 0; round < 100; ++round) {
    ASSERT_EQ(stpsnmp::register_objects(), 0) << "round " << round;
    stpsnmp::unregister_objects();
  }
  expect_all("");
}

TEST_F(Registration, TakingOutKeepsTheAgentsLookupCache) {
  ASSERT_EQ(stpsnmp::register_objects(), 0);
  netsnmp_set_lookup_cache_size(16);
  stpsnmp::unregister_objects();
  EXPECT_EQ(netsnmp_get_lookup_cache_size(), 16);
}

TEST_F(Registration, TakingOutWithoutRegistrationDoesNothing) {
  stpsnmp::unregister_objects();
  expect_all("");
}

TEST_F(Registration, ThatFailsHalfWayLeavesTheOtherModulesEntryAlone) {
  constexpr size_t kLoopGuardDefaultRow = 10;
  variable7 other = stp_extensions_mib_variables[kLoopGuardDefaultRow];
  other.findVar = no_instance;
  ASSERT_EQ(register_mib("other", reinterpret_cast<variable *>(&other), sizeof other, 1,
                         stp_extensions_mib_variables_oid, STP_EXTENSIONS_MIB_ROOT_LENGTH),
            0);

  EXPECT_NE(stpsnmp::register_objects(), 0);
  EXPECT_EQ(registrant(0), "vantrelStpExtensionsMIB");
  EXPECT_EQ(registrant(kLoopGuardDefaultRow), "other");
  EXPECT_EQ(registrant(kLoopGuardDefaultRow + 1), "");

  stpsnmp::unregister_objects();
  for (size_t row = 0; row < STP_EXTENSIONS_MIB_OBJECTS; ++row) {
    EXPECT_EQ(registrant(row), row == kLoopGuardDefaultRow ? "other" : "") << "row " << row;
  }

  oid id[] = {1, 3, 6, 1, 4, 1, ENTERPRISE, 9, 82, 1, 8, 3};
  EXPECT_EQ(unregister_mib(id, std::size(id)), 0);
}

// A module with one entry, whose OID is the root or lies below it.
int register_other(const oid *id, size_t length, int priority) {
  variable7 entry{};
  entry.type = ASN_INTEGER;
  entry.acl = NETSNMP_OLDAPI_RONLY;
  entry.findVar = no_instance;
  return register_mib_priority("other", reinterpret_cast<variable *>(&entry), sizeof entry, 1, id, length,
                               priority);
}

TEST_F(Registration, LeavesNothingBehindWhereAnotherModuleHoldsTheRoot) {
  ASSERT_EQ(
      register_other(stp_extensions_mib_variables_oid, STP_EXTENSIONS_MIB_ROOT_LENGTH, DEFAULT_MIB_PRIORITY),
      0);
  ASSERT_EQ(stpsnmp::register_objects(), 0);
  stpsnmp::unregister_objects();
  expect_all("");
}

// As the agent leaves it where there was no memory for a copy of who registered it.
TEST_F(Registration, LeavesAnEntryOfWhichNobodyTellsWhoRegisteredIt) {
  oid id[] = {1, 3, 6, 1, 4, 1, ENTERPRISE, 9, 82, 1, 8, 3};
  ASSERT_EQ(register_other(id, std::size(id), DEFAULT_MIB_PRIORITY), 0);
  netsnmp_subtree *const entry = netsnmp_subtree_find(id, std::size(id), nullptr, "");
  netsnmp_handler_registration *const registration = std::exchange(entry->reginfo, nullptr);
  stpsnmp::unregister_objects();
  EXPECT_EQ(registrant(10), "other");
  entry->reginfo = registration;
  EXPECT_EQ(unregister_mib(id, std::size(id)), 0);
}

TEST_F(Registration, LeavesAnEntryOfAnotherModuleWhoseHandlerHasNoVariable) {
  oid id[] = {1, 3, 6, 1, 4, 1, ENTERPRISE, 9, 82, 1, 8, 3};
  netsnmp_handler_registration *const other = netsnmp_create_handler_registration(
      "other", netsnmp_old_api_helper, id, std::size(id), HANDLER_CAN_RONLY);
  ASSERT_EQ(netsnmp_register_handler(other), MIB_REGISTERED_OK);
  stpsnmp::unregister_objects();
  EXPECT_EQ(registrant(10), "other");
  EXPECT_EQ(netsnmp_unregister_handler(other), MIB_UNREGISTERED_OK);
}

TEST_F(Registration, LeavesNothingBehindUnderAnEntryOfHigherPriority) {
  oid id[] = {1, 3, 6, 1, 4, 1, ENTERPRISE, 9, 82, 1, 8, 3};
  constexpr int kHigherPriority = DEFAULT_MIB_PRIORITY - 1;
  ASSERT_EQ(stpsnmp::register_objects(), 0);
  ASSERT_EQ(register_other(id, std::size(id), kHigherPriority), 0);
  stpsnmp::unregister_objects();
  EXPECT_EQ(registrant(10), "other");
  ASSERT_EQ(unregister_mib_priority(id, std::size(id), kHigherPriority), 0);
  expect_all("");
}

}  // namespace
