// A request that has to connect, to a switch that was restarted or to a larger image, with whatever is called
// for that failing.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "agent.h"
#include "agent_session.h"
#include "connection.h"
#include "every_fault.h"
#include "lab.h"
#include "platform/vlan_mgr.h"
#include "small_switches.h"
#include "support/states.h"

namespace {

using faults::kMemory;
using faults::kSystem;

class Connections : public testing::TestWithParam<bool> {
 protected:
  Connections() { lab_.ask_me(GetParam()); }

  static std::string ask() { return agent::get({"S.1.14.8.0"}); }

  std::string right_answer() const {
    return which_ == 0 ? "S.1.14.8.0 = Gauge32: 20" : "S.1.14.8.0 = Gauge32: 30";
  }

  stpswitch::SwitchState other_state() {
    which_ = 1 - which_;
    return mst_switch(which_);
  }

  void restart() {
    lab_.restart(other_state());
    lab_.ask_me(GetParam());
  }

  // A connection that the main loop could not watch has been good so far.
  void connect_anew() {
    stpplatform::connection().reset();
    lab_.settle();
  }

  // What comes before a request that has to connect.
  void strike(const std::function<void()> &prepare) {
    std::string answer;
    faults::strike_every_call({kMemory | kSystem,
                               [this, &prepare] {
                                 EXPECT_EQ(ask(), right_answer());
                                 prepare();
                               },
                               [&answer] { answer = ask(); },
                               [this, &answer] {
                                 EXPECT_TRUE(answer == right_answer() || answer == agent::kNothing) << answer;
                                 lab_.pass_backoff();
                                 EXPECT_EQ(ask(), right_answer());
                                 connect_anew();
                               }});
  }

  Lab lab_{mst_switch(0), "mst-10"};
  int which_ = 0;
};

TEST_P(Connections, AreMadeForTheFirstRequest) {
  strike([this] {
    lab_.replace(other_state());
    stpplatform::connection().reset();
  });
}

TEST_P(Connections, AreMadeAgainWhereTheSwitchWasRestarted) {
  strike([this] { restart(); });
}

TEST_P(Connections, FollowAnImageThatHasGrown) {
  constexpr uint32_t kManyPorts = 2000;
  strike([this] {
    restart();
    EXPECT_EQ(ask(), right_answer());
    stpswitch::SwitchState large = other_state();
    for (uint32_t number = 3; number <= kManyPorts; ++number) {
      port(large, number).vlans = large.ports.at(1).vlans;
    }
    const uint32_t size = lab_.image_size();
    lab_.replace(std::move(large));
    EXPECT_GT(lab_.image_size(), size);
  });
}

// A question that is asked in the image alone.
TEST_P(Connections, AreMadeForAManager) {
  constexpr uint8_t kVlan10 = 0x20;
  stp_vlan_bmp vlans{STP_VLAN_BITMAP_SIZE, {}};
  vlans.bits[1] = kVlan10;
  using Members = std::unique_ptr<vlan_mgr_baseport_bmp, decltype(&std::free)>;
  const auto ask_manager = [&vlans] {
    stpplatform::end_of_request();
    return Members(vlan_mgr_get_baseport_membership_range(&vlans), &std::free);
  };
  const auto has_both_ports = [](const Members &members) {
    constexpr uint8_t kPorts129And130 = 0x60;
    return members->bits[16] == kPorts129And130;
  };
  Members members = ask_manager();
  faults::strike_every_call({kMemory | kSystem, [] { stpplatform::connection().reset(); },
                             [&] { members = ask_manager(); },
                             [&] {
                               EXPECT_TRUE(members == nullptr || has_both_ports(members));
                               lab_.pass_backoff();
                               members = ask_manager();
                               ASSERT_NE(members, nullptr);
                               EXPECT_TRUE(has_both_ports(members));
                               connect_anew();
                             }});
}

INSTANTIATE_TEST_SUITE_P(Both, Connections, testing::Bool(),
                         [](const auto &tested) { return tested.param ? "BySocket" : "ByImage"; });

}  // namespace
