// Events of the switch that become notifications, with whatever is called for that failing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "agent.h"
#include "every_fault.h"
#include "lab.h"
#include "main_loop.h"
#include "platform/agent_ext.h"
#include "protocol_numbers.h"
#include "small_switches.h"

namespace {

using faults::kMemory;
using faults::kSystem;
using testing::IsSubsetOf;
using testing::UnorderedElementsAreArray;

// Of the change that leads to a state. A notification begins with its OID.
const std::array<std::vector<std::string>, 2> kNotifications = {
    {{"S.2.0.3, S.1.8.2.1.3.0.129 = INTEGER: 1, S.1.6.1 = INTEGER: 4",
      "S.2.0.3, S.1.8.2.1.3.10.130 = INTEGER: 2, S.1.6.1 = INTEGER: 4",
      "S.2.0.2, S.1.5.2.1.3.0.129 = INTEGER: 1, S.1.6.1 = INTEGER: 4",
      "S.2.0.2, S.1.5.2.1.3.10.130 = INTEGER: 2, S.1.6.1 = INTEGER: 4",
      "B.0.2, B.1.4.1.1.130 = INTEGER: 130, B.1.4.1.2.130 = INTEGER: 130"},
     {"S.2.0.3, S.1.8.2.1.3.0.129 = INTEGER: 2, S.1.6.1 = INTEGER: 4",
      "S.2.0.3, S.1.8.2.1.3.10.130 = INTEGER: 1, S.1.6.1 = INTEGER: 4",
      "S.2.0.2, S.1.5.2.1.3.0.129 = INTEGER: 2, S.1.6.1 = INTEGER: 4",
      "S.2.0.2, S.1.5.2.1.3.10.130 = INTEGER: 1, S.1.6.1 = INTEGER: 4",
      "B.0.2, B.1.4.1.1.129 = INTEGER: 129, B.1.4.1.2.129 = INTEGER: 201", "B.0.1"}}};

class Events : public testing::Test {
 protected:
  Events() {
    for (const uint32_t notification_class :
         {protocol::kLoopInconsistencyClass, protocol::kRootInconsistencyClass, protocol::kNewRootClass,
          protocol::kTopologyChangeClass}) {
      set_notification_enable_disable_status(notification_class, 1);
    }
  }

  // What is inconsistent is so in another tree and at another port from now on.
  void turn_over() {
    lab_.settle();
    agent::take_notifications();
    which_ = 1 - which_;
    lab_.replace(mst_switch(which_));
  }

  const std::vector<std::string> &right_notifications() const {
    return kNotifications[static_cast<size_t>(which_)];
  }

  Lab lab_{mst_switch(0), "mst-10"};
  int which_ = 0;
};

TEST_F(Events, BecomeRightNotificationsOrNone) {
  faults::strike_every_call({kMemory | kSystem,
                             [this] {
                               turn_over();
                               EXPECT_TRUE(agent::wait_for_input());
                             },
                             [] { run_main_loop_once(); },
                             [this] {
                               lab_.settle();
                               EXPECT_THAT(agent::take_notifications(), IsSubsetOf(right_notifications()));
                               turn_over();
                               EXPECT_TRUE(agent::run_until([this] {
                                 return agent::sent_notifications() == right_notifications().size();
                               }));
                               EXPECT_THAT(agent::take_notifications(),
                                           UnorderedElementsAreArray(right_notifications()));
                             }});
}

}  // namespace
