#include "values.h"

#include <gtest/gtest.h>

namespace {

int32_t converted(int32_t fetched) {
  ScalarValueRecord record{};
  record.loop_guard_default = fetched;
  stp_loopguard_global_default_mode_2_snmp_val(&record);
  return record.loop_guard_default;
}

TEST(LoopGuardDefault, ZeroBecomesTwo) { EXPECT_EQ(converted(0), 2); }

TEST(LoopGuardDefault, AnythingElseBecomesOne) {
  EXPECT_EQ(converted(1), 1);
  EXPECT_EQ(converted(5), 1);
  EXPECT_EQ(converted(-1), 1);
}

}  // namespace
