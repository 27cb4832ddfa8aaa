// The persisted trap setting. Every test loads the module anew, because it reads the file once.
#include <gmock/gmock.h>

#include "fake_platform.h"
#include "loaded_module.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class TrapEnable : public ::testing::Test {
 protected:
  void SetUp() override {
    fake::reset();
    fake_agent() = FakeAgent();
  }

  // The notification service's enable calls that an init with this file makes.
  static std::vector<std::string> enabled_by(const char *text) {
    fake_agent().trap_enable_text = text;
    const LoadedModule module;
    module.init();
    return taken_enable_calls();
  }

  static std::vector<std::string> taken_enable_calls() {
    std::vector<std::string> calls;
    for (const std::string &line : fake::taken_trace()) {
      if (line.starts_with("set_notification_enable_disable_status")) {
        calls.push_back(line);
      }
    }
    return calls;
  }
};

TEST_F(TrapEnable, FileHoldingFiveEnablesRootInconsistencyAndInconsistency) {
  EXPECT_THAT(enabled_by("5"), ElementsAre("set_notification_enable_disable_status(17421, 1)",
                                           "set_notification_enable_disable_status(17423, 1)"));
}

TEST_F(TrapEnable, FileHoldingFfEnablesAllThree) {
  EXPECT_THAT(enabled_by("ff\n"), ElementsAre("set_notification_enable_disable_status(17421, 1)",
                                              "set_notification_enable_disable_status(17423, 1)",
                                              "set_notification_enable_disable_status(17422, 1)"));
}

TEST_F(TrapEnable, AbsentFileEnablesNone) { EXPECT_THAT(enabled_by(nullptr), IsEmpty()); }

TEST_F(TrapEnable, EmptyFileEnablesNone) { EXPECT_THAT(enabled_by(""), IsEmpty()); }

TEST_F(TrapEnable, FileThatIsNotHexadecimalEnablesNone) { EXPECT_THAT(enabled_by("yes"), IsEmpty()); }

TEST_F(TrapEnable, LeadingZeroXIsAccepted) {
  EXPECT_THAT(enabled_by("0x5"), ElementsAre("set_notification_enable_disable_status(17421, 1)",
                                             "set_notification_enable_disable_status(17423, 1)"));
}

TEST_F(TrapEnable, EachBitEnablesItsOwnTrap) {
  EXPECT_THAT(enabled_by("1"), ElementsAre("set_notification_enable_disable_status(17423, 1)"));
  EXPECT_THAT(enabled_by("2"), ElementsAre("set_notification_enable_disable_status(17422, 1)"));
  EXPECT_THAT(enabled_by("4"), ElementsAre("set_notification_enable_disable_status(17421, 1)"));
  EXPECT_THAT(enabled_by("f8"), IsEmpty());
}

TEST_F(TrapEnable, FileIsReadOnceInTheLifeOfTheModule) {
  fake_agent().trap_enable_text = "1";
  const LoadedModule module;
  module.init();
  EXPECT_THAT(taken_enable_calls(), ElementsAre("set_notification_enable_disable_status(17423, 1)"));

  fake_agent().trap_enable_text = "2";
  module.deinit();
  module.init();
  EXPECT_THAT(taken_enable_calls(), ElementsAre("set_notification_enable_disable_status(17423, 1)"));
  EXPECT_EQ(fake_agent().trap_enable_file_opened, 1);
}

TEST_F(TrapEnable, AbsentFileIsNotLookedForAgain) {
  const LoadedModule module;
  module.init();
  module.deinit();
  module.init();
  EXPECT_EQ(fake_agent().trap_enable_file_opened, 1);
}

TEST_F(TrapEnable, FileIsReadAgainAfterTheModuleWasUnloaded) {
  EXPECT_THAT(enabled_by("1"), ElementsAre("set_notification_enable_disable_status(17423, 1)"));
  EXPECT_THAT(enabled_by("2"), ElementsAre("set_notification_enable_disable_status(17422, 1)"));
}

}  // namespace
