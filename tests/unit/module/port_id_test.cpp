// Port ids of requests: the exact checks, the step to the next port by counting, and by asking the interface
// manager.
#include "search_test.h"
#include "stpsnmp/index_search.h"

namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::Not;
using ::testing::StartsWith;

constexpr uint8_t kChannelType = 22;
constexpr uint8_t kPhysicalType = 26;

constexpr uint32_t kGiven = 7777;  // what an output holds before a call

// By counting.

class PortId : public SearchTest {
 protected:
  static void set_interfaces(std::vector<fake::Interface> interfaces) {
    fake::platform().interfaces = std::move(interfaces);
  }

  int validate(uint32_t action, uint16_t port) {
    port_ = port;
    in_if_index_ = kGiven;
    ret_if_index_ = kGiven;
    type_ = 99;
    return validate_port_id_for_snmp_search(action, &in_if_index_, &ret_if_index_, &port_, &type_);
  }

  static std::string line(const std::string &text) {
    return logged("\\nvalidate_port_id_for_snmp_search(LINE)" + text + "\\n");
  }

  static Trace step(int from, int to, const std::string &bound) {
    const std::string candidate = std::to_string(to);
    return {line(": Check if port_id(" + std::to_string(from) + ") < MIN_STP_PORT_ID(129)"),
            line(": port_id(" + candidate + ") < " + bound), "stp_dot1dportnum2ifindex(" + candidate + ")"};
  }

  static Trace no_step(int port) {
    const std::string shown = std::to_string(port);
    return {line(": Check if port_id(" + shown + ") < MIN_STP_PORT_ID(129)"),
            line(": port_id: " + shown + " > MAX_CHANNEL_PORT_ID: 8191")};
  }

  // What follows a step to a port that has an interface index, and to one that has none.
  static Trace checked(uint32_t if_index) {
    return {line(": Checking if if_index: " + std::to_string(if_index) + " is valid"),
            "check_if_valid_base_port_ifindex(" + fake::hex(if_index) + ", 0)"};
  }

  static Trace unconverted(uint32_t latest_if_index) {
    return {line(":stp_dot1dportnum2ifindex FAIL"),
            line(": Checking if if_index: " + std::to_string(latest_if_index) + " is valid")};
  }

  static Trace bad(uint32_t if_index, int port) {
    return {line(": Bad if_index: " + std::to_string(if_index) +
                 ". Bumping up port_id: " + std::to_string(port))};
  }

  static Trace found(int port, uint32_t in_if_index, uint32_t ret_if_index, int type) {
    return {"stp_dot1dportnum2ifindex(" + std::to_string(port) + ")",
            line(": returning port_id(" + std::to_string(port) + "), in_if_index(" +
                 std::to_string(in_if_index) + "), ret_if_index(" + std::to_string(ret_if_index) +
                 "), ret_if_type(" + std::to_string(type) + ")")};
  }

  void expect_outputs(uint16_t port, uint32_t if_index, uint8_t type) const {
    EXPECT_EQ(port_, port);
    EXPECT_EQ(in_if_index_, if_index);
    EXPECT_EQ(ret_if_index_, if_index);
    EXPECT_EQ(type_, type);
  }

  uint16_t port_ = 0;
  uint32_t in_if_index_ = 0;
  uint32_t ret_if_index_ = 0;
  uint8_t type_ = 0;
};

constexpr char kMinimum[] = "MIN_STP_PORT_ID(129)";
constexpr char kMaximum[] = "MAX_STP_PORT_ID(4095)";
constexpr char kChannelMinimum[] = "MIN_CHANNEL_PORT_ID(4097)";
constexpr char kChannelMaximum[] = "MAX_CHANNEL_PORT_ID(8191)";

TEST_F(PortId, ExactPort) {
  set_interfaces({{2001, 129, kPhysicalType}, {1001, 4097, kChannelType}});
  EXPECT_EQ(validate(kGet, 129), 0);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{"stp_dot1dportnum2ifindex(129)", "stp_valid_if_index(0x000007D1)",
                                     "if_index_get_type(0x000007D1)"} +
                               found(129, 2001, 2001, 26)));
  expect_outputs(129, 2001, kPhysicalType);
  EXPECT_EQ(validate(kGet, 4097), 0);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{"stp_dot1dportnum2ifindex(4097)", "stp_valid_if_index(0x000003E9)",
                                     "if_index_get_type(0x000003E9)"} +
                               found(4097, 1001, 1001, 22)));
  expect_outputs(4097, 1001, kChannelType);
}

TEST_F(PortId, ExactPortNeedBeInNoRangeAndNoBridgePort) {
  for (const uint16_t port : std::initializer_list<uint16_t>{1, 128, 4096, 8192, 65535}) {
    set_interfaces({{.if_index = 2001, .port = port, .is_base_port = false}});
    EXPECT_EQ(validate(kGet, port), 0) << port;
    expect_outputs(port, 2001, kPhysicalType);
  }
}

TEST_F(PortId, ExactPortOfUnknownTypeHasTypeZero) {
  set_interfaces({{2001, 129, 0}});
  EXPECT_EQ(validate(kGet, 129), 0);
  expect_outputs(129, 2001, 0);
}

TEST_F(PortId, ExactPortZeroFailsWithoutAnyCall) {
  fake::platform().next_if_indexes = {2001};
  set_interfaces({{2001, 129}});
  EXPECT_EQ(validate(kGet, 0), -1);
  EXPECT_THAT(fake::taken_trace(), ElementsAre(line(": returning FAILURE.")));
  expect_outputs(0, kGiven, 99);
}

TEST_F(PortId, ExactPortWithoutAnInterface) {
  EXPECT_EQ(validate(kGet, 129), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("stp_dot1dportnum2ifindex(129)", line(": returning FAILURE.")));
}

TEST_F(PortId, ExactPortOfAnUnusableInterface) {
  set_interfaces({{.if_index = 2001, .port = 129, .is_usable = false}});
  EXPECT_EQ(validate(kGet, 129), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("stp_dot1dportnum2ifindex(129)", "stp_valid_if_index(0x000007D1)",
                          line(": returning FAILURE.")));
  EXPECT_EQ(ret_if_index_, kGiven);
}

TEST_F(PortId, ExactPortOfInterfaceZero) {
  set_interfaces({{0, 129}});
  EXPECT_EQ(validate(kGet, 129), -1);
  EXPECT_THAT(fake::taken_trace(), ElementsAre("stp_dot1dportnum2ifindex(129)",
                                               "stp_valid_if_index(0x00000000)", line(": in_if_index == 0")));
}

TEST_F(PortId, ReturnedInterfaceIsConvertedOnceMore) {
  set_interfaces({{2001, 129}, {2002, 130}});
  fake::platform().next_if_indexes = {2001, 2002};
  EXPECT_EQ(validate(kGet, 129), 0);
  EXPECT_EQ(in_if_index_, 2001U);
  EXPECT_EQ(ret_if_index_, 2002U);
  fake::platform().next_if_indexes = {2001, 2002};
  fake::taken_trace();
  EXPECT_EQ(validate(kGetNext, 128), 0);
  EXPECT_EQ(in_if_index_, 2001U);
  EXPECT_EQ(ret_if_index_, 2002U);
  EXPECT_EQ(fake::taken_trace().back(),
            line(": returning port_id(129), in_if_index(2001), ret_if_index(2002), ret_if_type(26)"));
}

TEST_F(PortId, FailureOfThatConversionIsIgnored) {
  set_interfaces({{2001, 129}});
  for (const uint16_t port : std::initializer_list<uint16_t>{128, 129}) {
    fake::platform().next_if_indexes = {2001, std::nullopt};
    EXPECT_EQ(validate(port == 129 ? kGet : kGetNext, port), 0);
    expect_outputs(129, 2001, kPhysicalType);
  }
}

TEST_F(PortId, NextPortBelowTheRangesIsTheFirstPhysicalOne) {
  set_interfaces({{2001, 129}});
  for (const int port : {0, 1, 127, 128}) {
    EXPECT_EQ(validate(kGetNext, static_cast<uint16_t>(port)), 0);
    EXPECT_THAT(fake::taken_trace(),
                ElementsAreArray(step(port, 129, kMinimum) + checked(2001) + found(129, 2001, 2001, 26)));
    expect_outputs(129, 2001, kPhysicalType);
  }
}

TEST_F(PortId, NextPhysicalPort) {
  for (const int port : {129, 130, 4093, 4094}) {
    const int next = port + 1;
    set_interfaces({{2001, static_cast<uint16_t>(next)}});
    EXPECT_EQ(validate(kGetNext, static_cast<uint16_t>(port)), 0);
    EXPECT_THAT(fake::taken_trace(),
                ElementsAreArray(step(port, next, kMaximum) + checked(2001) + found(next, 2001, 2001, 26)));
    expect_outputs(static_cast<uint16_t>(next), 2001, kPhysicalType);
  }
}

TEST_F(PortId, FirstChannel) {
  set_interfaces({{1001, 4097, kChannelType}});
  EXPECT_EQ(validate(kGetNext, 4096), 0);
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(step(4096, 4097, kChannelMinimum) + checked(1001) +
                                                    found(4097, 1001, 1001, 22)));
  expect_outputs(4097, 1001, kChannelType);
}

TEST_F(PortId, NextChannel) {
  for (const int port : {4097, 4098, 8189, 8190}) {
    const int next = port + 1;
    set_interfaces({{1001, static_cast<uint16_t>(next), kChannelType}});
    EXPECT_EQ(validate(kGetNext, static_cast<uint16_t>(port)), 0);
    EXPECT_THAT(fake::taken_trace(), ElementsAreArray(step(port, next, kChannelMaximum) + checked(1001) +
                                                      found(next, 1001, 1001, 22)));
    expect_outputs(static_cast<uint16_t>(next), 1001, kChannelType);
  }
}

TEST_F(PortId, NoNextPortBehindTheRanges) {
  set_interfaces({{2001, 4096}, {1001, 4097, kChannelType}, {2002, 8192}, {2003, 65535}, {2004, 129}});
  for (const int port : {4095, 8191, 8192, 65534, 65535}) {
    EXPECT_EQ(validate(kGetNext, static_cast<uint16_t>(port)), -1) << port;
    EXPECT_THAT(fake::taken_trace(), ElementsAreArray(no_step(port)));
    expect_outputs(static_cast<uint16_t>(port), kGiven, 99);
  }
}

TEST_F(PortId, LastPhysicalPortIsNeverFollowedByAChannel) {
  set_interfaces({{1001, 4097, kChannelType}});
  EXPECT_EQ(validate(kGetNext, 4094), -1);
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(step(4094, 4095, kMaximum) + unconverted(kGiven) +
                                                    bad(kGiven, 4095) + no_step(4095)));
  EXPECT_EQ(port_, 4095) << "every port that is tried is written back";
  EXPECT_EQ(ret_if_index_, kGiven);
}

TEST_F(PortId, NoChannelBehindTheLastOne) {
  EXPECT_EQ(validate(kGetNext, 8190), -1);
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(step(8190, 8191, kChannelMaximum) + unconverted(kGiven) +
                                                    bad(kGiven, 8191) + no_step(8191)));
  EXPECT_EQ(port_, 8191);
}

TEST_F(PortId, PortsWithoutAnInterfaceOrThatAreNoBridgePortsAreSteppedOver) {
  set_interfaces({{.if_index = 2002, .port = 131, .is_base_port = false},
                  {.if_index = 2003, .port = 133, .is_usable = false}});
  EXPECT_EQ(validate(kGetNext, 129), 0);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(step(129, 130, kMaximum) + unconverted(kGiven) + bad(kGiven, 130) +
                               step(130, 131, kMaximum) + checked(2002) + bad(2002, 131) +
                               step(131, 132, kMaximum) + unconverted(2002) + bad(2002, 132) +
                               step(132, 133, kMaximum) + checked(2003) + found(133, 2003, 2003, 26)));
  expect_outputs(133, 2003, kPhysicalType);
}

TEST_F(PortId, TypeOfTheNextPortIsItsRanges) {
  set_interfaces({{2001, 129, kChannelType}, {1001, 4097, kPhysicalType}});
  EXPECT_EQ(validate(kGetNext, 0), 0);
  expect_outputs(129, 2001, kPhysicalType);
  EXPECT_EQ(validate(kGetNext, 4096), 0);
  expect_outputs(4097, 1001, kChannelType);
  EXPECT_THAT(fake::taken_trace(), Each(Not(StartsWith("if_index_get_type"))));
}

TEST_F(PortId, EveryActionButGetMeansNext) {
  set_interfaces({{2001, 129}});
  for (const uint32_t action : {0U, 2U, 3U, 0xFFFFFFFFU}) {
    EXPECT_EQ(validate(action, 0), 0);
    expect_outputs(129, 2001, kPhysicalType);
  }
}

// By asking the interface manager.

class NextPort : public SearchTest {
 protected:
  static std::string line(const std::string &text) {
    return logged("stp_get_next_dot1dportnum[LINE]" + text);
  }

  static Trace candidate(uint32_t previous, uint32_t if_index, int selector = 0) {
    return {
        "im_get_next_ifindex(" + fake::hex(previous) + ")",
        "check_if_valid_base_port_ifindex(" + fake::hex(if_index) + ", " + std::to_string(selector) + ")"};
  }
};

TEST_F(NextPort, IsTheLowestOfThoseAbove) {
  fake::platform().interfaces = {{0x20, 200}, {0x10, 150}, {0x30, 160}, {0x40, 100}};
  EXPECT_EQ(stp_get_next_dot1dportnum(100, 0), 150);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(
          Trace{line("received base_port=100")} + candidate(0, 0x20) +
          Trace{"stp_ifindex2dot1dportnum(0x00000020)",
                line("(tmp_base_port=200, if_index=0x0next_base_port=65535, next_if_index=0x20")} +
          candidate(0x20, 0x10) +
          Trace{"stp_ifindex2dot1dportnum(0x00000010)",
                line("(tmp_base_port=150, if_index=0x20next_base_port=200, next_if_index=0x10")} +
          candidate(0x10, 0x30) + Trace{"stp_ifindex2dot1dportnum(0x00000030)"} + candidate(0x30, 0x40) +
          Trace{"stp_ifindex2dot1dportnum(0x00000040)", "im_get_next_ifindex(0x00000040)",
                line("(base_port=100, if_index=0x40next_base_port=150, next_if_index=0x0")}));
}

TEST_F(NextPort, NothingAboveTheBase) {
  fake::platform().interfaces = {{0x20, 200}, {0x10, 150}};
  EXPECT_EQ(stp_get_next_dot1dportnum(200, 0), 0);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(Trace{line("received base_port=200")} + candidate(0, 0x20) +
                       Trace{"stp_ifindex2dot1dportnum(0x00000020)"} + candidate(0x20, 0x10) +
                       Trace{"stp_ifindex2dot1dportnum(0x00000010)", "im_get_next_ifindex(0x00000010)",
                             line("no more if_indices; returning EOT")}));
}

TEST_F(NextPort, SwitchWithoutInterfaces) {
  EXPECT_EQ(stp_get_next_dot1dportnum(0, 0), 0);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre(line("received base_port=0"), "im_get_next_ifindex(0x00000000)",
                          line("no more if_indices; returning EOT")));
}

TEST_F(NextPort, InterfacesThatAreNotAcceptedAreSkippedSilently) {
  fake::platform().interfaces = {{.if_index = 0x20, .port = 129, .is_base_port = false}, {0x10, 150}};
  EXPECT_EQ(stp_get_next_dot1dportnum(0, 1), 150);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(
                  Trace{line("received base_port=0")} + candidate(0, 0x20, 1) + candidate(0x20, 0x10, 1) +
                  Trace{"stp_ifindex2dot1dportnum(0x00000010)",
                        line("(tmp_base_port=150, if_index=0x20next_base_port=65535, next_if_index=0x10"),
                        "im_get_next_ifindex(0x00000010)",
                        line("(base_port=0, if_index=0x10next_base_port=150, next_if_index=0x0")}));
}

TEST_F(NextPort, InterfacesWithoutAPortAreReportedAndSkipped) {
  fake::platform().interfaces = {{0xAB, 0}, {0x10, 150}};
  EXPECT_EQ(stp_get_next_dot1dportnum(0, 0), 150);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(
                  Trace{line("received base_port=0")} + candidate(0, 0xAB) +
                  Trace{"stp_ifindex2dot1dportnum(0x000000AB)",
                        line("error converting next_if_index=0xab to dot1dportnum")} +
                  candidate(0xAB, 0x10) +
                  Trace{"stp_ifindex2dot1dportnum(0x00000010)",
                        line("(tmp_base_port=150, if_index=0xabnext_base_port=65535, next_if_index=0x10"),
                        "im_get_next_ifindex(0x00000010)",
                        line("(base_port=0, if_index=0x10next_base_port=150, next_if_index=0x0")}));
}

TEST_F(NextPort, StepThatFailsEndsTheScan) {
  fake::platform().interfaces = {{0x20, 200}, {0x10, 150}};
  fake::platform().no_step_behind = 0x20;
  EXPECT_EQ(stp_get_next_dot1dportnum(0, 0), 200);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(Trace{line("received base_port=0")} + candidate(0, 0x20) +
                       Trace{"stp_ifindex2dot1dportnum(0x00000020)",
                             line("(tmp_base_port=200, if_index=0x0next_base_port=65535, next_if_index=0x20"),
                             "im_get_next_ifindex(0x00000020)",
                             line("(base_port=0, if_index=0x20next_base_port=200, next_if_index=0x0")}));
}

TEST_F(NextPort, HighestPorts) {
  fake::platform().interfaces = {{0x10, 65535}, {0x20, 65534}};
  EXPECT_EQ(stp_get_next_dot1dportnum(65533, 0), 65534);
  EXPECT_EQ(stp_get_next_dot1dportnum(65534, 0), 0) << "65535 is never found";
  EXPECT_EQ(stp_get_next_dot1dportnum(65535, 0), 0);
}

TEST_F(NextPort, PortOfTwoInterfacesIsFoundOnce) {
  fake::platform().interfaces = {{0x10, 150}, {0x20, 150}};
  EXPECT_EQ(stp_get_next_dot1dportnum(149, 0), 150);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(
                  Trace{line("received base_port=149")} + candidate(0, 0x10) +
                  Trace{"stp_ifindex2dot1dportnum(0x00000010)",
                        line("(tmp_base_port=150, if_index=0x0next_base_port=65535, next_if_index=0x10")} +
                  candidate(0x10, 0x20) +
                  Trace{"stp_ifindex2dot1dportnum(0x00000020)", "im_get_next_ifindex(0x00000020)",
                        line("(base_port=149, if_index=0x20next_base_port=150, next_if_index=0x0")}));
}

class PortIdFromInterfaces : public NextPort {
 protected:
  int validate(uint32_t action, uint16_t port, uint8_t selector = 0) {
    port_ = port;
    in_if_index_ = kGiven;
    ret_if_index_ = kGiven + 1;
    return validate_port_id_for_snmp_search_from_im(action, &in_if_index_, &ret_if_index_, &port_, selector);
  }

  static std::string rejection(const std::string &text) {
    return logged_rejection("\\nvalidate_port_id_for_snmp_search_from_im(LINE)" + text + "\\n");
  }

  static std::string report(const std::string &text) {
    return logged_rejection("validate_port_id_for_snmp_search_from_im(LINE) " + text + "\\n");
  }

  // The scan of a switch without interfaces.
  static Trace empty_scan(int base) {
    return {line("received base_port=" + std::to_string(base)), "im_get_next_ifindex(0x00000000)",
            line("no more if_indices; returning EOT")};
  }

  void expect_found(uint16_t port, uint32_t if_index) const {
    EXPECT_EQ(port_, port);
    EXPECT_EQ(in_if_index_, if_index);
    EXPECT_EQ(ret_if_index_, if_index);
  }

  void expect_unchanged(uint16_t port) const {
    EXPECT_EQ(port_, port);
    EXPECT_EQ(in_if_index_, kGiven);
    EXPECT_EQ(ret_if_index_, kGiven + 1);
  }

  uint16_t port_ = 0;
  uint32_t in_if_index_ = 0;
  uint32_t ret_if_index_ = 0;
};

TEST_F(PortIdFromInterfaces, ExactPortIsAcceptedSilently) {
  for (const uint16_t port : std::initializer_list<uint16_t>{1, 129, 4096, 4097, 65535}) {
    fake::platform().interfaces = {{.if_index = 2001, .port = port, .is_base_port = false}};
    EXPECT_EQ(validate(kGet, port, 1), 0);
    EXPECT_THAT(fake::taken_trace(), ElementsAre("stp_dot1dportnum2ifindex(" + std::to_string(port) + ")",
                                                 "stp_valid_if_index(0x000007D1)"));
    expect_found(port, 2001);
  }
}

TEST_F(PortIdFromInterfaces, ExactPortZeroFailsWithoutAnyCall) {
  fake::platform().next_if_indexes = {2001};
  fake::platform().interfaces = {{2001, 129}};
  EXPECT_EQ(validate(kGet, 0), -1);
  EXPECT_THAT(fake::taken_trace(), ElementsAre(rejection(": returning FAILURE.")));
  expect_unchanged(0);
}

TEST_F(PortIdFromInterfaces, ExactPortWithoutAnInterface) {
  EXPECT_EQ(validate(kGet, 129), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("stp_dot1dportnum2ifindex(129)", rejection(": returning FAILURE.")));
  expect_unchanged(129);
}

TEST_F(PortIdFromInterfaces, ExactPortOfAnUnusableInterface) {
  fake::platform().interfaces = {{.if_index = 2001, .port = 129, .is_usable = false}};
  EXPECT_EQ(validate(kGet, 129), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("stp_dot1dportnum2ifindex(129)", "stp_valid_if_index(0x000007D1)",
                          rejection(": returning FAILURE.")));
  expect_unchanged(129);
}

TEST_F(PortIdFromInterfaces, ExactPortOfInterfaceZero) {
  fake::platform().interfaces = {{0, 129}};
  EXPECT_EQ(validate(kGet, 129), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("stp_dot1dportnum2ifindex(129)", "stp_valid_if_index(0x00000000)",
                          rejection(": ifindex == 0")));
  expect_unchanged(129);
}

TEST_F(PortIdFromInterfaces, NextPort) {
  fake::platform().interfaces = {{0x10, 150}};
  for (const uint32_t action : {0U, 2U, 3U}) {
    EXPECT_EQ(validate(action, 100, 1), 0);
    EXPECT_THAT(fake::taken_trace(),
                ElementsAreArray(
                    Trace{line("received base_port=100")} + candidate(0, 0x10, 1) +
                    Trace{"stp_ifindex2dot1dportnum(0x00000010)",
                          line("(tmp_base_port=150, if_index=0x0next_base_port=65535, next_if_index=0x10"),
                          "im_get_next_ifindex(0x00000010)",
                          line("(base_port=100, if_index=0x10next_base_port=150, next_if_index=0x0"),
                          report("base_port:100, stp_flag:1, stp_get_next_dot1dportnum() next_port:150"),
                          "stp_dot1dportnum2ifindex(150)", report("return SUCCESS"),
                          logged("\\nvalidate_port_id_for_snmp_search_from_im(LINE): returning port_id(150), "
                                 "in_if_index(16), ret_if_index(16)\\n")}));
    expect_found(150, 0x10);
  }
}

TEST_F(PortIdFromInterfaces, PhysicalPortsAreFollowedByChannels) {
  fake::platform().interfaces = {{1001, 4097, kChannelType}, {2001, 4094}, {1002, 8191, kChannelType}};
  EXPECT_EQ(validate(kGetNext, 0), 0);
  expect_found(4094, 2001);
  EXPECT_EQ(validate(kGetNext, 4094), 0);
  expect_found(4097, 1001);
  EXPECT_EQ(validate(kGetNext, 4097), 0);
  expect_found(8191, 1002);
  EXPECT_EQ(validate(kGetNext, 8191), -1);
  expect_unchanged(8191);
}

TEST_F(PortIdFromInterfaces, NoNextPort) {
  EXPECT_EQ(validate(kGetNext, 4098), -1);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(empty_scan(4098) +
                       Trace{report("base_port:4098, stp_flag:0, stp_get_next_dot1dportnum() next_port:0"),
                             "stp_dot1dportnum2ifindex(0)", report("Invalid stp port:0 ifindex: 0")}));
  expect_unchanged(4098);
}

TEST_F(PortIdFromInterfaces, NoNextPortEvenWherePortZeroHasAnInterface) {
  fake::platform().next_if_indexes = {33};
  EXPECT_EQ(validate(kGetNext, 4098), -1);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(empty_scan(4098) +
                       Trace{report("base_port:4098, stp_flag:0, stp_get_next_dot1dportnum() next_port:0"),
                             "stp_dot1dportnum2ifindex(0)", report("Invalid stp port:0 ifindex: 33")}));
  expect_unchanged(4098);
}

TEST_F(PortIdFromInterfaces, NextPortThatCannotBeConvertedBack) {
  fake::platform().interfaces = {{.if_index = 0x10, .port = 150, .has_if_index_of_port = false}};
  EXPECT_EQ(validate(kGetNext, 0), -1);
  const Trace trace = fake::taken_trace();
  EXPECT_EQ(trace.at(trace.size() - 2), "stp_dot1dportnum2ifindex(150)");
  EXPECT_EQ(trace.back(), report("Invalid stp port:150 ifindex: 0"));
  expect_unchanged(0);
}

}  // namespace
