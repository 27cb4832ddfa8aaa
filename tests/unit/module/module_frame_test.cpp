#include <gmock/gmock.h>

#include "fake_platform.h"
#include "loaded_module.h"
#include "stpsnmp/notifications.h"
#include "stpsnmp/scalars.h"

namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

const std::string kRoot = ".1.3.6.1.4.1." + std::to_string(ENTERPRISE) + ".9.82";

class ModuleFrame : public ::testing::Test {
 protected:
  void SetUp() override {
    fake::reset();
    fake_agent() = FakeAgent();
  }
};

TEST_F(ModuleFrame, InitRegistersThenSubscribesThenReadsTheTrapSetting) {
  const LoadedModule module;
  module.init();
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAre(
          "log(0x00730000, 101) \"init_stp_extensions_mib: registering VANTREL-STP-EXTENSIONS-MIB ....\\n\"",
          "register_mib(" + kRoot + ")", "register_for_notification(17421)",
          "register_for_notification(17422)", "register_for_notification(17423)",
          "fopen(/mnt/pss/stp_trap_value, r)"));
}

TEST_F(ModuleFrame, InitHandsTheAgentTheWholeTable) {
  const LoadedModule module;
  module.init();
  EXPECT_EQ(fake_agent().registered_name, "vantrelStpExtensionsMIB");
  EXPECT_EQ(fake_agent().entry_size, sizeof(variable7));
  EXPECT_EQ(fake_agent().entry_count, 46U);
  EXPECT_EQ(fake_agent().registered_root.size(), 9U);
  EXPECT_EQ(fake_agent().registered_entries, module.symbol("stp_extensions_mib_variables"));
}

TEST_F(ModuleFrame, InitSubscribesEachClassToItsHandler) {
  const LoadedModule module;
  module.init();
  const auto handler = [&module](const char *name) {
    return reinterpret_cast<notification_handler>(module.symbol(name));
  };
  EXPECT_EQ(fake::platform().subscriptions[17421], handler("handle_noti_stpxInconsistencyUpdate"));
  EXPECT_EQ(fake::platform().subscriptions[17422], handler("handle_noti_stpxLoopInconsistencyUpdate"));
  EXPECT_EQ(fake::platform().subscriptions[17423], handler("handle_noti_stpxRootInconsistencyUpdate"));
}

TEST_F(ModuleFrame, FailedRegistrationIsReportedInFourDebugMessagesAndIsNotFatal) {
  fake_agent().register_result = 2;
  fake_agent().debugging = 1;
  const LoadedModule module;
  module.init();
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray({
          std::string("log(0x00730000, 101) \"init_stp_extensions_mib: registering "
                      "VANTREL-STP-EXTENSIONS-MIB ....\\n\""),
          "register_mib(" + kRoot + ")",
          std::string("snmp_get_do_debugging"),
          std::string("debugmsgtoken(trace) \"init_stp_extensions_mib(): "
                      "../feature/l2/stp/lib/snmp/stp_extensions_mib, 926:\\n\""),
          std::string("debugmsg(trace) \"init_stp_extensions_mib(): "
                      "../feature/l2/stp/lib/snmp/stp_extensions_mib, 926:\\n\""),
          std::string("debugmsgtoken(register_mib) \"vantrelStpExtensionsMIB registration failed\\n\""),
          std::string("debugmsg(register_mib) \"vantrelStpExtensionsMIB registration failed\\n\""),
          std::string("register_for_notification(17421)"),
          std::string("register_for_notification(17422)"),
          std::string("register_for_notification(17423)"),
          std::string("fopen(/mnt/pss/stp_trap_value, r)"),
      }));
}

TEST_F(ModuleFrame, FailedRegistrationIsSilentWhileTheAgentDoesNotDebug) {
  fake_agent().register_result = -1;
  const LoadedModule module;
  module.init();
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAre(
          "log(0x00730000, 101) \"init_stp_extensions_mib: registering VANTREL-STP-EXTENSIONS-MIB ....\\n\"",
          "register_mib(" + kRoot + ")", "snmp_get_do_debugging", "register_for_notification(17421)",
          "register_for_notification(17422)", "register_for_notification(17423)",
          "fopen(/mnt/pss/stp_trap_value, r)"));
}

TEST_F(ModuleFrame, DeinitUnregistersThenUnsubscribesAndReturnsTheLastResult) {
  const LoadedModule module;
  module.init();
  fake::taken_trace();
  fake::platform().unregister_result = 21;  // the fake counts up: 21, 22, 23
  EXPECT_EQ(module.deinit(), 23);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("log(0x00730000, 101) \"deinit_stp_extensions_mib: unregistering "
                          "VANTREL-STP-EXTENSIONS-MIB ...\\n\"",
                          "unregister_mib(" + kRoot + ")", "unregister_for_notification(17421)",
                          "unregister_for_notification(17422)", "unregister_for_notification(17423)"));
}

TEST_F(ModuleFrame, LeavesTheProcessWhenItIsUnloaded) {
  EXPECT_FALSE(LoadedModule::is_mapped());
  for (int round = 0; round < 100; ++round) {
    const LoadedModule module;
    module.init();
    EXPECT_TRUE(LoadedModule::is_mapped());
    EXPECT_EQ(module.deinit(), 0);
  }
  EXPECT_FALSE(LoadedModule::is_mapped());
}

TEST_F(ModuleFrame, AProgramsOwnPlatformWinsOverTheLibrarys) {
  const LoadedModule module;
  fake::platform().attributes[0x0202B001] = fake::number(5);
  ScalarValueRecord record{};
  const auto get_type =
      reinterpret_cast<decltype(&get_stpxSpanningTreeType)>(module.symbol("get_stpxSpanningTreeType"));
  EXPECT_EQ(get_type(&record), 0);
  EXPECT_EQ(record.spanning_tree_type, 5);
  EXPECT_THAT(fake::taken_trace(),
              ::testing::Contains("cmd_snmp_req_send_recv(0xFE000000, 171, request, operator, 4711, 0)"));
}

}  // namespace
