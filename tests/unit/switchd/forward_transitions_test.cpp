// When the ports of a Linux bridge are asked how often they began to forward.
#include "sources/linux_bridge/forward_transitions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

using namespace stpswitch;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

class TransitionsOfPorts : public testing::Test {
 protected:
  TransitionsOfPorts() {
    table_.bridge.bridge = BridgeAttributes();
    table_.bridge.bridge->stp_state = StpState::kKernel;
    add_port(11, PortState::kForwarding);
    add_port(12, PortState::kBlocking);
    kernel_ = {{11, 5}, {12, 0}};
  }

  void add_port(uint32_t if_index, PortState state) {
    Link link;
    link.if_index = if_index;
    link.bridge_port = BridgePortAttributes();
    link.bridge_port->state = state;
    table_.ports[if_index] = link;
  }

  void set_state(uint32_t if_index, PortState state) { table_.ports.at(if_index).bridge_port->state = state; }

  // The ports that are asked for when the bridge is read again.
  std::vector<uint32_t> asked() {
    std::vector<uint32_t> asked;
    for (auto &[if_index, port] : table_.ports) {
      port.forward_transitions.reset();
    }
    transitions_.add_to(&table_, [this, &asked](uint32_t if_index) {
      asked.push_back(if_index);
      return kernel_.at(if_index);
    });
    return asked;
  }

  // What the table says.
  std::map<uint32_t, std::optional<uint64_t>> told() const {
    std::map<uint32_t, std::optional<uint64_t>> told;
    for (const auto &[if_index, port] : table_.ports) {
      told[if_index] = port.forward_transitions;
    }
    return told;
  }

  LinkTable table_;
  std::map<uint32_t, std::optional<uint64_t>> kernel_;  // what it tells of ports
  ForwardTransitions transitions_;
};

TEST_F(TransitionsOfPorts, AreAskedForOnce) {
  EXPECT_THAT(asked(), ElementsAre(11U, 12U));
  EXPECT_THAT(told(), ElementsAre(Pair(11U, 5U), Pair(12U, 0U)));
  kernel_ = {{11, 6}, {12, 1}};
  EXPECT_THAT(asked(), IsEmpty());
  EXPECT_THAT(told(), ElementsAre(Pair(11U, 5U), Pair(12U, 0U)));
}

TEST_F(TransitionsOfPorts, AreAskedForAgainAfterANotification) {
  asked();
  kernel_ = {{11, 6}, {12, 1}};
  transitions_.see_notification(11);
  transitions_.see_notification(13);  // no port of this bridge
  EXPECT_THAT(asked(), ElementsAre(11U));
  EXPECT_THAT(told(), ElementsAre(Pair(11U, 6U), Pair(12U, 0U)));
  EXPECT_THAT(asked(), IsEmpty());
}

TEST_F(TransitionsOfPorts, AreAskedForAgainInAnotherState) {
  asked();
  kernel_ = {{11, 5}, {12, 1}};
  set_state(12, PortState::kForwarding);
  EXPECT_THAT(asked(), ElementsAre(12U));
  EXPECT_THAT(told(), ElementsAre(Pair(11U, 5U), Pair(12U, 1U)));
  EXPECT_THAT(asked(), IsEmpty());
  set_state(12, PortState::kBlocking);
  EXPECT_THAT(asked(), ElementsAre(12U));
}

TEST_F(TransitionsOfPorts, AreAllAskedForWhenNotificationsWereLost) {
  asked();
  kernel_ = {{11, 7}, {12, 1}};
  transitions_.see_loss();
  EXPECT_THAT(asked(), ElementsAre(11U, 12U));
  EXPECT_THAT(told(), ElementsAre(Pair(11U, 7U), Pair(12U, 1U)));
}

TEST_F(TransitionsOfPorts, AreAskedForWhenAPortJoins) {
  asked();
  add_port(13, PortState::kListening);
  kernel_[13] = 2;
  EXPECT_THAT(asked(), ElementsAre(13U));
  EXPECT_THAT(told(), ElementsAre(Pair(11U, 5U), Pair(12U, 0U), Pair(13U, 2U)));
}

TEST_F(TransitionsOfPorts, AreForgottenWhenThePortHasGone) {
  asked();
  table_.ports.erase(11);
  EXPECT_THAT(asked(), IsEmpty());
  add_port(11, PortState::kForwarding);
  kernel_[11] = 1;
  EXPECT_THAT(asked(), ElementsAre(11U));
  EXPECT_THAT(told(), ElementsAre(Pair(11U, 1U), Pair(12U, 0U)));
}

TEST_F(TransitionsOfPorts, AreUnknownWhereTheKernelDoesNotTellAndNotAskedForAgain) {
  kernel_ = {{11, std::nullopt}, {12, 0}};
  EXPECT_THAT(asked(), ElementsAre(11U, 12U));
  EXPECT_THAT(told(), ElementsAre(Pair(11U, std::nullopt), Pair(12U, 0U)));
  EXPECT_THAT(asked(), IsEmpty());
  EXPECT_THAT(told(), ElementsAre(Pair(11U, std::nullopt), Pair(12U, 0U)));
}

TEST_F(TransitionsOfPorts, AreAskedForWithTheKernelsOwnSpanningTreeOnly) {
  for (const auto &others :
       {std::optional(StpState::kUserSpace), std::optional(StpState::kNobody), std::optional<StpState>()}) {
    table_.bridge.bridge->stp_state = others;
    EXPECT_THAT(asked(), IsEmpty());
    EXPECT_THAT(told(), ElementsAre(Pair(11U, std::nullopt), Pair(12U, std::nullopt)));
    table_.bridge.bridge->stp_state = StpState::kKernel;
    EXPECT_THAT(asked(), ElementsAre(11U, 12U));
  }
}

TEST_F(TransitionsOfPorts, AreAskedForAgainWhenTheKernelDidNotAnswer) {
  EXPECT_THROW(transitions_.add_to(&table_,
                                   [](uint32_t if_index) -> std::optional<uint64_t> {
                                     return if_index == 11 ? std::optional(uint64_t{5})
                                                           : throw std::runtime_error("no answer");
                                   }),
               std::runtime_error);
  EXPECT_THAT(asked(), ElementsAre(12U));
  EXPECT_THAT(told(), ElementsAre(Pair(11U, 5U), Pair(12U, 0U)));
}

}  // namespace
