// What is registered or subscribed and does not answer yet must do so quietly.
#include <gmock/gmock.h>

#include "fake_platform.h"
#include "lookup_handlers.h"
#include "notifications.h"
#include "object_table.h"

namespace {

TEST(Unserved, TablesAnswerNullWithoutAQuery) {
  fake::reset();
  for (const variable7 &entry : stp_extensions_mib_variables) {
    if (entry.findVar != get_vantrelStpExtensionsMIB) {
      EXPECT_EQ(entry.findVar(nullptr, nullptr, nullptr, 1, nullptr, nullptr), nullptr) << int{entry.magic};
    }
  }
  EXPECT_THAT(fake::taken_trace(), ::testing::IsEmpty());
}

TEST(Unserved, NotificationsGiveNoTrap) {
  for (const notification_handler handler :
       {handle_noti_stpxInconsistencyUpdate, handle_noti_stpxLoopInconsistencyUpdate,
        handle_noti_stpxRootInconsistencyUpdate}) {
    int status = 9;
    EXPECT_EQ(handler(nullptr, nullptr, nullptr, &status), nullptr);
    EXPECT_EQ(status, 0);
  }
}

}  // namespace
