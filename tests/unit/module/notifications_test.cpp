// Notifications: a message of the spanning-tree process becomes a trap's OID and bindings, or nothing.
#include "stpsnmp/notifications.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "fake_platform.h"
#include "stpsnmp/agent.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uint32_t kIfIndex = 0x1A000005;
constexpr uint16_t kPort = 133;
constexpr size_t kTrapLength = 12;
constexpr oid kUntouched = 4711;

const std::string kRoot = ".1.3.6.1.4.1." + std::to_string(ENTERPRISE) + ".9.82";

std::vector<oid> below_root(const std::vector<oid> &suffix) {
  std::vector<oid> arcs{1, 3, 6, 1, 4, 1, ENTERPRISE, 9, 82};
  arcs.insert(arcs.end(), suffix.begin(), suffix.end());
  return arcs;
}

class Notifications : public ::testing::Test {
 protected:
  void SetUp() override {
    fake::reset();
    fake::platform().interfaces = {{kIfIndex, kPort}};
  }

  void TearDown() override {
    snmp_free_varbind(bindings_);
    fake::reset();
  }

  // Words as a message carries them, most significant octet first.
  static void message_holds(std::initializer_list<uint32_t> words) {
    fake::Bytes payload;
    for (const uint32_t word : words) {
      for (const unsigned shift : {24U, 16U, 8U, 0U}) {
        payload.push_back(static_cast<uint8_t>(word >> shift));
      }
    }
    fake::platform().payload = payload;
  }

  void deliver(notification_handler handler, bool has_message = true) {
    int message = 0;
    status_ = 9;
    trap_oid_len_ = 0;
    trap_oid_[kTrapLength] = kUntouched;
    bindings_ = handler(has_message ? &message : nullptr, trap_oid_, &trap_oid_len_, &status_);
    EXPECT_EQ(trap_oid_[kTrapLength], kUntouched);
  }

  std::vector<oid> trap() const { return {trap_oid_, trap_oid_ + trap_oid_len_}; }

  void expect_nothing_sent() const {
    EXPECT_EQ(bindings_, nullptr);
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(trap_oid_len_, 0U) << "no OID is written";
  }

  oid trap_oid_[MAX_OID_LEN] = {};
  size_t trap_oid_len_ = 0;
  int status_ = 9;
  netsnmp_variable_list *bindings_ = nullptr;
};

TEST_F(Notifications, RootInconsistencyOfTree10AndPort5) {
  fake::platform().interfaces = {{kIfIndex, 5}};
  message_holds({10, kIfIndex, 1, 2});
  deliver(handle_noti_stpxRootInconsistencyUpdate);
  ASSERT_NE(bindings_, nullptr);
  EXPECT_EQ(status_, 1);
  EXPECT_EQ(trap(), below_root({2, 0, 2}));
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("xport_payload_get(message)", "stp_ifindex2dot1dportnum(0x1A000005)",
                          "build_varbind(NULL, 01000000, 2, " + kRoot + ".1.5.2.1.3.10.5)",
                          "build_varbind(list, 02000000, 2, " + kRoot + ".1.6.1)"));
}

TEST_F(Notifications, LoopInconsistency) {
  message_holds({0x01020304, kIfIndex, 0xFFFFFFFE, 4});
  deliver(handle_noti_stpxLoopInconsistencyUpdate);
  ASSERT_NE(bindings_, nullptr);
  EXPECT_EQ(status_, 1);
  EXPECT_EQ(trap(), below_root({2, 0, 3}));
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("xport_payload_get(message)", "stp_ifindex2dot1dportnum(0x1A000005)",
                          "build_varbind(NULL, feffffff, 2, " + kRoot + ".1.8.2.1.3.16909060.133)",
                          "build_varbind(list, 04000000, 2, " + kRoot + ".1.6.1)"));
}

// The numbers of the log lines are fixed.
TEST_F(Notifications, PortInconsistencyServesTheFirstOctetOfTheStateAsBits) {
  message_holds({20, kIfIndex, 3U << 24U, 5});
  deliver(handle_noti_stpxInconsistencyUpdate);
  ASSERT_NE(bindings_, nullptr);
  EXPECT_EQ(status_, 1);
  EXPECT_EQ(trap(), below_root({2, 0, 1}));
  EXPECT_THAT(fake::platform().trace,
              ElementsAre("xport_payload_get(message)", "stp_ifindex2dot1dportnum(0x1A000005)",
                          "log(0x00730000, 101) \"\\nhandle_noti_stpxInconsistencyUpdate(646): "
                          "stpxInconsistentState from stp: 3\\n\"",
                          "log(0x00730000, 101) \"\\nhandle_noti_stpxInconsistencyUpdate(648): "
                          "stpxInconsistentState after mapping: -64\\n\"",
                          "build_varbind(NULL, c0, 4, " + kRoot + ".1.3.1.1.3.20.133)"));
}

TEST_F(Notifications, PortInconsistencyIgnoresTheStatesOtherOctets) {
  message_holds({20, kIfIndex, 3, 5});
  deliver(handle_noti_stpxInconsistencyUpdate);
  ASSERT_NE(bindings_, nullptr);
  EXPECT_EQ(status_, 1);
  const auto &trace = fake::platform().trace;
  ASSERT_EQ(trace.size(), 5U);
  EXPECT_THAT(trace[2], ::testing::HasSubstr("from stp: 0\\n"));
  EXPECT_THAT(trace[3], ::testing::HasSubstr("after mapping: 0\\n"));
  EXPECT_EQ(trace[4], "build_varbind(NULL, 00, 4, " + kRoot + ".1.3.1.1.3.20.133)");
}

TEST_F(Notifications, PortInconsistencyLogsTheStateSignedAndMapsItUnsigned) {
  message_holds({20, kIfIndex, 0xFD000000, 5});
  deliver(handle_noti_stpxInconsistencyUpdate);
  const auto &trace = fake::platform().trace;
  ASSERT_EQ(trace.size(), 5U);
  EXPECT_THAT(trace[2], ::testing::HasSubstr("from stp: -3\\n"));
  EXPECT_THAT(trace[3], ::testing::HasSubstr("after mapping: -128\\n"));
  EXPECT_EQ(trace[4], "build_varbind(NULL, 80, 4, " + kRoot + ".1.3.1.1.3.20.133)");
}

struct Class {
  notification_handler handler;
  const char *failure;
};

const Class kClasses[] = {
    {handle_noti_stpxInconsistencyUpdate, "\\nhandle_noti_stpxInconsistencyUpdate(633): "},
    {handle_noti_stpxLoopInconsistencyUpdate, "\\nhandle_noti_stpxLoopInconsistencyUpdate(733): "},
    {handle_noti_stpxRootInconsistencyUpdate, "\\nhandle_noti_stpxRootInconsistencyUpdate(835): "}};

TEST_F(Notifications, InterfaceThatIsNoPortGivesNoTrap) {
  for (const auto &[handler, failure] : kClasses) {
    message_holds({10, kIfIndex + 1, 1, 2});
    deliver(handler);
    expect_nothing_sent();
    EXPECT_THAT(fake::platform().trace,
                ElementsAre("xport_payload_get(message)", "stp_ifindex2dot1dportnum(0x1A000006)",
                            std::string("log(0x00730000, 101) \"") + failure +
                                "stp_ifindex2dot1dportnum() returned FAILURE\\n\""));
    fake::platform().trace.clear();
  }
}

TEST_F(Notifications, MessageWithoutPayloadGivesNoTrap) {
  for (const auto &[handler, failure] : kClasses) {
    deliver(handler);
    expect_nothing_sent();
    EXPECT_THAT(fake::taken_trace(), ElementsAre("xport_payload_get(message)"));
  }
}

TEST_F(Notifications, NoMessageGivesNoTrap) {
  for (const auto &[handler, failure] : kClasses) {
    deliver(handler, false);
    expect_nothing_sent();
    EXPECT_THAT(fake::taken_trace(), IsEmpty());
  }
}

TEST_F(Notifications, NothingIsSentWhereTheBindingsCannotBeBuilt) {
  fake::platform().build_varbind_fails = true;
  for (const auto &[handler, failure] : kClasses) {
    message_holds({10, kIfIndex, 1, 2});
    deliver(handler);
    expect_nothing_sent();
  }
}

TEST_F(Notifications, EachOneHasItsOwnTreeAndPort) {
  fake::platform().interfaces = {{kIfIndex, kPort}, {0x16000001, 4097, 22}};
  message_holds({10, kIfIndex, 1, 2});
  deliver(handle_noti_stpxRootInconsistencyUpdate);
  snmp_free_varbind(bindings_);
  fake::taken_trace();
  message_holds({0, 0x16000001, 2, 2});
  deliver(handle_noti_stpxRootInconsistencyUpdate);
  EXPECT_THAT(fake::taken_trace(),
              ::testing::Contains("build_varbind(NULL, 02000000, 2, " + kRoot + ".1.5.2.1.3.0.4097)"));
}

}  // namespace
