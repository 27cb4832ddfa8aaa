// The two questions about a port: its operational state, and whether a port-channel has it.
#include "stpsnmp/port_state.h"

#include <type_traits>

#include "search_test.h"

namespace {

using ::testing::ElementsAre;

constexpr int kQueryFailure = 0x40DD0001;
constexpr uint32_t kPort = 0x1A000005;
constexpr uint32_t kChannel = 0x16000003;
constexpr uint32_t kGiven = 7777;  // what an output holds before a call

static_assert(std::is_same_v<decltype(&stp_get_port_oper_state), int (*)(uint32_t, uint32_t *)>);
static_assert(std::is_same_v<decltype(&stp_is_member_port_of_pc), int (*)(uint32_t, uint32_t *)>);

class PortOperState : public SearchTest {
 protected:
  static constexpr char kQuestion[] = "im_get_ifindex_oper_status_list(0x1A000005, 1)";

  uint32_t state_ = kGiven;
};

TEST_F(PortOperState, IsTheInterfaceManagersByteUnchangedAndUnlogged) {
  for (const int status : {0, 1, 2, 3, 127, 128, 255}) {
    fake::platform().interfaces = {
        {.if_index = kPort, .port = 133, .oper_status = static_cast<uint8_t>(status)}};
    state_ = 0xFFFFFFFF;
    EXPECT_EQ(stp_get_port_oper_state(kPort, &state_), 0);
    EXPECT_EQ(state_, static_cast<uint32_t>(status));
    EXPECT_THAT(fake::taken_trace(), ElementsAre(kQuestion));
  }
}

TEST_F(PortOperState, IsAskedOfThatInterface) {
  fake::platform().interfaces = {{.if_index = kPort, .port = 133, .oper_status = 2},
                                 {.if_index = kChannel, .port = 4099, .oper_status = 1}};
  EXPECT_EQ(stp_get_port_oper_state(kChannel, &state_), 0);
  EXPECT_EQ(state_, 1U);
  EXPECT_THAT(fake::taken_trace(), ElementsAre("im_get_ifindex_oper_status_list(0x16000003, 1)"));
}

TEST_F(PortOperState, UnknownInterfaceKeepsTheCallersState) {
  EXPECT_EQ(stp_get_port_oper_state(kPort, &state_), kQueryFailure);
  EXPECT_EQ(state_, kGiven);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAre(kQuestion,
                  logged_rejection("stp_get_port_oper_state(LINE) : Failed to read ifdb for 436207621\\n")));
}

TEST_F(PortOperState, InterfaceOfAFailureIsShownSigned) {
  EXPECT_EQ(stp_get_port_oper_state(0xFFFFFFFE, &state_), kQueryFailure);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("im_get_ifindex_oper_status_list(0xFFFFFFFE, 1)",
                          logged_rejection("stp_get_port_oper_state(LINE) : Failed to read ifdb for -2\\n")));
}

class ChannelMembership : public SearchTest {
 protected:
  static constexpr char kQuestion[] = "pcm_get_pc_for_port(0x1A000005)";

  uint32_t is_member_ = kGiven;
};

TEST_F(ChannelMembership, PortInNoChannelIsNoMemberAndIsNotLogged) {
  fake::platform().interfaces = {{kPort, 133}};
  EXPECT_EQ(stp_is_member_port_of_pc(kPort, &is_member_), 0);
  EXPECT_EQ(is_member_, 0U);
  EXPECT_THAT(fake::taken_trace(), ElementsAre(kQuestion));
}

TEST_F(ChannelMembership, MemberIsLoggedWithBothInterfacesAndWithoutANewline) {
  fake::platform().interfaces = {{.if_index = kPort, .port = 133, .channel_if_index = kChannel}};
  EXPECT_EQ(stp_is_member_port_of_pc(kPort, &is_member_), 0);
  EXPECT_EQ(is_member_, 1U);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre(kQuestion, logged_rejection("stp_is_member_port_of_pc(LINE): 0x1a000005 is part of "
                                                      "port-channel 0x16000003")));
}

TEST_F(ChannelMembership, EveryOctetOfTheChannelCounts) {
  for (const uint32_t channel : {1U, 0x100U, 0x10000U, 0x80000000U, 0xFFFFFFFFU}) {
    fake::platform().interfaces = {{.if_index = kPort, .port = 133, .channel_if_index = channel}};
    is_member_ = kGiven;
    EXPECT_EQ(stp_is_member_port_of_pc(kPort, &is_member_), 0);
    EXPECT_EQ(is_member_, 1U) << channel;
  }
}

TEST_F(ChannelMembership, IsAskedOfThatInterface) {
  fake::platform().interfaces = {{kPort, 133}, {.if_index = 0xA, .port = 134, .channel_if_index = 0xB}};
  EXPECT_EQ(stp_is_member_port_of_pc(0xA, &is_member_), 0);
  EXPECT_EQ(is_member_, 1U);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAre("pcm_get_pc_for_port(0x0000000A)",
                  logged_rejection("stp_is_member_port_of_pc(LINE): 0xa is part of port-channel 0xb")));
}

TEST_F(ChannelMembership, FailureLeavesTheFlagAtZeroAndKeepsTheManagersCodeToItself) {
  fake::platform().interfaces = {
      {.if_index = kPort, .port = 133, .channel_if_index = kChannel, .is_known_to_channels = false}};
  EXPECT_EQ(stp_is_member_port_of_pc(kPort, &is_member_), kQueryFailure);
  EXPECT_EQ(is_member_, 0U);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre(kQuestion, logged_rejection("stp_is_member_port_of_pc(LINE): Failed to read pcm "
                                                      "ifdb for 436207621 Error: 9\\n")));
}

TEST_F(ChannelMembership, InterfaceOfAFailureIsShownSigned) {
  EXPECT_EQ(stp_is_member_port_of_pc(0xFFFFFFFE, &is_member_), kQueryFailure);
  EXPECT_EQ(fake::taken_trace().back(),
            logged_rejection("stp_is_member_port_of_pc(LINE): Failed to read pcm ifdb for -2 Error: 9\\n"));
}

TEST_F(ChannelMembership, NullPointerIsRefusedWithoutAQuestion) {
  fake::platform().interfaces = {{kPort, 133}};
  EXPECT_EQ(stp_is_member_port_of_pc(kPort, nullptr), kQueryFailure);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre(logged_rejection("stp_is_member_port_of_pc(LINE): NULL Pointer\\n")));
}

}  // namespace
