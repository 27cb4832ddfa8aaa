// The modules' registration and its end, with whatever is called for them failing.
#include <gtest/gtest.h>

#include <string>

#include "agent.h"
#include "every_fault.h"
#include "lab.h"
#include "small_switches.h"
#include "stp_bridge_mib.h"
#include "stpsnmp/stp_extensions_mib.h"

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

}  // namespace
