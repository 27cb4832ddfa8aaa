// The modules' registration and its end, with whatever is called for them failing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include "agent.h"
#include "agent_session.h"
#include "event_history.h"
#include "every_fault.h"
#include "lab.h"
#include "platform/evhist.h"
#include "platform/stp_protocol.h"
#include "settings.h"
#include "small_switches.h"
#include "stp_bridge_mib.h"
#include "stpsnmp/stp_extensions_mib.h"
#include "support/temporary_folder.h"

namespace {

using faults::kMemory;
using faults::kSystem;

constexpr char kContext[] = "mst-10";

class ModuleFrames : public testing::Test {
 protected:
  static void init() {
    init_stp_extensions_mib();
    init_stp_bridge_mib();
  }

  static void deinit() {
    deinit_stp_bridge_mib();
    deinit_stp_extensions_mib();
  }

  static bool is_complete() {
    return agent::has_context(kContext) && agent::watched_descriptors() == 2 && !agent::has_alarm();
  }

  void expect_right_answers() {
    init();
    EXPECT_TRUE(agent::run_until([] { return agent::has_context(kContext); }));
    lab_.settle();
    EXPECT_EQ(agent::get({"S.1.14.8.0"}), "S.1.14.8.0 = Gauge32: 20");
    EXPECT_EQ(agent::get({"B.2.8.0"}), "B.2.8.0 = INTEGER: 2000");
    EXPECT_EQ(agent::get({"B.2.8.0", kContext}), "B.2.8.0 = INTEGER: 2000");
    deinit();
  }

  static void expect_nothing_registered() {
    EXPECT_EQ(agent::get_next({agent::kExtensions}), agent::kNothing);
    EXPECT_EQ(agent::get_next({agent::kBridge}), agent::kNothing);
    EXPECT_FALSE(agent::has_context(kContext));
    EXPECT_FALSE(agent::has_alarm());
  }

  Lab lab_{mst_switch(0), kContext};
};

TEST_F(ModuleFrames, LeaveNothingBehindWhateverFails) {
  deinit();
  faults::strike_every_call({kMemory | kSystem, [] {},
                             [] {
                               init();
                               agent::run_until_struck_or(is_complete);
                               deinit();
                             },
                             [this] {
                               expect_nothing_registered();
                               expect_right_answers();
                               expect_nothing_registered();
                               lab_.synchronize();
                             }});
  init();
}

// Contexts that found no memory come with the next notification of trees.
TEST_F(ModuleFrames, GiveContextsToTheTreesThatRun) {
  const std::string contexts[] = {"mst-10", "vlan-10"};
  constexpr char kMaxAge[] = "B.2.8.0 = INTEGER: 2000";
  int mode = 0;
  const auto change_mode = [&] {
    mode = 1 - mode;
    lab_.replace(mode == 0 ? mst_switch(0) : rapid_pvst_switch(0));
  };
  const auto answer_in = [&contexts](int number) { return agent::get({"B.2.8.0", contexts[number]}); };
  const auto is_followed = [&] {
    return agent::has_context(contexts[mode]) && !agent::has_context(contexts[1 - mode]) &&
           !agent::has_alarm();
  };
  faults::strike_every_call({kMemory | kSystem, change_mode, [&] { agent::run_until_struck_or(is_followed); },
                             [&] {
                               lab_.settle();
                               EXPECT_THAT(answer_in(mode), testing::AnyOf(kMaxAge, agent::kNothing));
                               EXPECT_EQ(answer_in(1 - mode), agent::kNothing);
                               change_mode();
                               EXPECT_TRUE(agent::run_until(is_followed));
                               EXPECT_EQ(answer_in(mode), kMaxAge);
                             }});
}

// Requests are told of by callbacks of the agent's, which it may have no memory for.
TEST_F(ModuleFrames, AnswerWhereTheAgentTellsOfNoRequest) {
  faults::strike_every_call({kMemory | kSystem, [] {},
                             [] {
                               stpplatform::stop_watching_requests();
                               stpplatform::watch_requests();
                             },
                             [this] {
                               EXPECT_EQ(agent::get({"S.1.14.8.0"}), "S.1.14.8.0 = Gauge32: 20");
                               stpplatform::stop_watching_requests();
                               stpplatform::watch_requests();
                               lab_.settle();
                               EXPECT_EQ(agent::get({"B.2.8.0", kContext}), "B.2.8.0 = INTEGER: 2000");
                             }});
}

// With everything that goes to the agent's log and to the event history.
TEST_F(ModuleFrames, AnswerWhateverBecomesOfTraces) {
  setenv("STPPLATFORM_DEBUG_LEVEL", "101", 1);
  setenv("STPPLATFORM_HISTORY_LEVEL", "101", 1);
  stpplatform::read_settings();
  constexpr char kRootGuard[] = "S.1.5.1.1.2.436207617";
  constexpr char kSetting[] = "S.1.5.1.1.2.436207617 = INTEGER: 1";
  std::string answer;
  faults::strike_every_call({kMemory | kSystem, [] {}, [&] { answer = agent::get({kRootGuard}); },
                             [&] {
                               EXPECT_THAT(answer, testing::AnyOf(kSetting, agent::kNothing));
                               lab_.settle();
                               EXPECT_EQ(agent::get({kRootGuard}), kSetting);
                             }});
  unsetenv("STPPLATFORM_DEBUG_LEVEL");
  unsetenv("STPPLATFORM_HISTORY_LEVEL");
  stpplatform::read_settings();
}

// What the agent leaves when it unloads the library.
TEST_F(ModuleFrames, SaveTheEventHistoryOrLeaveIt) {
  const TemporaryFolder folder;
  const std::string file = folder.path("history");
  setenv("STPPLATFORM_HISTORY_FILE", file.c_str(), 1);
  stpplatform::read_settings();
  evhist_record record{};
  std::strcpy(record.text, "a line");
  ASSERT_EQ(evhist_hist_event(STP_EVENT_CLASS, sizeof record, &record), 0);
  faults::strike_every_call({kMemory | kSystem, [] {}, [] { stpplatform::save_event_history(); },
                             [&file] {
                               stpplatform::save_event_history();
                               std::ostringstream text;
                               text << std::ifstream(file).rdbuf();
                               EXPECT_THAT(text.str(), testing::EndsWith(" a line\n"));
                             }});
  unsetenv("STPPLATFORM_HISTORY_FILE");
  stpplatform::read_settings();
}

}  // namespace
