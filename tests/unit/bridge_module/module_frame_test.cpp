// The module as the agent loads and unloads it, over the fake platform and the real agent library.
#include <dlfcn.h>

#include <cstdio>
#include <cstring>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "fake_platform.h"
#include "registered.h"

namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

// What the file of the persisted traps holds; null: there is none.
const char *trap_enable_text = nullptr;

class LoadedModule {
 public:
  LoadedModule() : library_(dlopen(MODULE_PATH, RTLD_NOW)) {
    if (library_ == nullptr) {
      ADD_FAILURE() << dlerror();
      abort();
    }
  }
  ~LoadedModule() { dlclose(library_); }
  LoadedModule(const LoadedModule &) = delete;
  LoadedModule &operator=(const LoadedModule &) = delete;

  void init() const { reinterpret_cast<void (*)()>(dlsym(library_, "init_stp_bridge_mib"))(); }
  int deinit() const { return reinterpret_cast<int (*)()>(dlsym(library_, "deinit_stp_bridge_mib"))(); }

  static bool is_mapped() {
    void *const library = dlopen(MODULE_PATH, RTLD_NOW | RTLD_NOLOAD);
    if (library != nullptr) {
      dlclose(library);
    }
    return library != nullptr;
  }

 private:
  void *library_;
};

std::string output_of(const std::string &command) {
  std::string output;
  // NOLINTNEXTLINE(cert-env33-c): the test's own literal commands
  FILE *pipe = popen(command.c_str(), "r");
  char buffer[4096];
  for (size_t got = fread(buffer, 1, sizeof buffer, pipe); got != 0;
       got = fread(buffer, 1, sizeof buffer, pipe)) {
    output.append(buffer, got);
  }
  EXPECT_EQ(pclose(pipe), 0) << command;
  return output;
}

std::string logged(const std::string &text) { return "log(0x00730000, 101) \"" + text + "\""; }

class ModuleFrame : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { registered::prepare_agent(); }
  void SetUp() override {
    fake::reset();
    trap_enable_text = nullptr;
  }
};

}  // namespace

extern "C" {

// Two definitions of the platform's data symbols are what these tests are about.
const char *__asan_default_options(void);
const char *__asan_default_options(void) { return "detect_odr_violation=0"; }

FILE *fopen(const char *path, const char *mode) {
  static const auto real = reinterpret_cast<FILE *(*)(const char *, const char *)>(dlsym(RTLD_NEXT, "fopen"));
  if (strcmp(path, "/mnt/pss/stp_trap_value") != 0) {
    return real(path, mode);
  }
  fake::trace("fopen");
  if (trap_enable_text == nullptr) {
    return nullptr;
  }
  FILE *const file = tmpfile();
  fputs(trap_enable_text, file);
  rewind(file);
  return file;
}
}

namespace {

TEST_F(ModuleFrame, InitRegistersThenSubscribes) {
  const LoadedModule module;
  module.init();
  EXPECT_EQ(registered::names(""), "dot1dBasedot1dStp");
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAre(logged("init_stp_bridge_mib: registering BRIDGE-MIB\\n"),
                  "register_for_notification(17424)", "fopen", "register_for_notification(17425)",
                  "register_for_notification(17426)", "set_notification_enable_disable_status(17426, 1)"));
  EXPECT_EQ(module.deinit(), 0);
  EXPECT_EQ(registered::names(""), "");
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre(logged("deinit_stp_bridge_mib: unregistering BRIDGE-MIB\\n"),
                          "unregister_for_notification(17426)", "unregister_for_notification(17425)",
                          "unregister_for_notification(17424)"));
}

TEST_F(ModuleFrame, BitsOfThePersistedWordSwitchTheTraps) {
  const std::string new_root = "set_notification_enable_disable_status(17424, 1)";
  const std::string topology_change = "set_notification_enable_disable_status(17425, 1)";
  struct Case {
    const char *text;
    bool has_new_root;
    bool has_topology_change;
  };
  for (const Case &persisted :
       {Case{"7", false, false}, Case{"8", true, false}, Case{"10", false, true}, Case{"18", true, true},
        Case{"ffffffe7", false, false}, Case{"", false, false}}) {
    trap_enable_text = persisted.text;
    const LoadedModule module;
    module.init();
    const std::vector<std::string> trace = fake::taken_trace();
    EXPECT_EQ(std::count(trace.begin(), trace.end(), new_root), persisted.has_new_root ? 1 : 0);
    EXPECT_EQ(std::count(trace.begin(), trace.end(), topology_change), persisted.has_topology_change ? 1 : 0);
    module.deinit();
    fake::taken_trace();
  }
}

TEST_F(ModuleFrame, IsLoadedWhereTheAgentRefusesIt) {
  const oid id[] = {1, 3, 6, 1, 2, 1, 17, 1};
  netsnmp_handler_registration *other = netsnmp_create_handler_registration(
      "other",
      [](netsnmp_mib_handler *, netsnmp_handler_registration *, netsnmp_agent_request_info *,
         netsnmp_request_info *) { return SNMP_ERR_NOERROR; },
      id, std::size(id), HANDLER_CAN_RONLY);
  ASSERT_EQ(netsnmp_register_handler(other), MIB_REGISTERED_OK);
  const LoadedModule module;
  module.init();
  EXPECT_THAT(fake::taken_trace(),
              Contains("log(0x00730000, 100) \"init_stp_bridge_mib: the agent refuses BRIDGE-MIB\\n\""));
  EXPECT_EQ(registered::name_of({1}, ""), "other");
  EXPECT_EQ(module.deinit(), 0);
  EXPECT_EQ(registered::name_of({1}, ""), "other");
  EXPECT_EQ(netsnmp_unregister_handler(other), MIB_UNREGISTERED_OK);
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

TEST_F(ModuleFrame, ExportsItsEntryAndExitAlone) {
  std::istringstream lines(output_of("nm -D -P --defined-only " MODULE_PATH));
  std::set<std::string> names;
  for (std::string line; std::getline(lines, line);) {
    names.insert(line.substr(0, line.find(' ')));
  }
  EXPECT_EQ(names, (std::set<std::string>{"init_stp_bridge_mib", "deinit_stp_bridge_mib"}));
}

TEST_F(ModuleFrame, NeedsThePlatformAndNoRuntime) {
  const std::string needed = output_of("readelf -d " MODULE_PATH);
  EXPECT_THAT(needed,
              AllOf(HasSubstr("[libstpplatform.so]"), HasSubstr("[libnetsnmpagent.so"),
                    Not(HasSubstr("libstpsnmp")), Not(HasSubstr("libstdc++")), Not(HasSubstr("libgcc_s"))));
}

}  // namespace
