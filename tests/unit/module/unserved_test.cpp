// What is registered and does not answer must do so quietly.
#include <gmock/gmock.h>

#include "fake_platform.h"
#include "lookup_handlers.h"

namespace {

TEST(Unserved, TablesAnswerNullWithoutAQuery) {
  fake::reset();
  for (FindVarMethod *const handler :
       {get_stpxLongStpPortPathCostTable, get_stpxLoopGuardConfigTable, get_stpxRPVSTPortTable,
        get_stpxRSTPPortRoleTable, get_stpxRSTPPortTable, get_stpxSMSTPortTable}) {
    EXPECT_EQ(handler(nullptr, nullptr, nullptr, 1, nullptr, nullptr), nullptr);
  }
  EXPECT_THAT(fake::taken_trace(), ::testing::IsEmpty());
}

}  // namespace
