// newRoot and topologyChange: what their handlers make of a message.
#include "notifications.h"

#include <arpa/inet.h>

#include <gmock/gmock.h>

#include "bridge_requests.h"
#include "fake_platform.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Notifications : public ::testing::Test {
 protected:
  void SetUp() override { fake::reset(); }
  void TearDown() override { snmp_free_varbind(bindings_); }

  static void message_holds(const std::vector<uint32_t> &words) {
    fake::platform().payload = fake::Bytes();
    for (const uint32_t word : words) {
      const fake::Bytes octets = fake::number(htonl(word));
      fake::platform().payload->insert(fake::platform().payload->end(), octets.begin(), octets.end());
    }
  }

  std::vector<std::string> deliver(notification_handler handler, bool has_message = true) {
    int message = 0;
    oid trap_oid[MAX_OID_LEN] = {};
    size_t trap_oid_len = 0;
    snmp_free_varbind(bindings_);
    bindings_ = handler(has_message ? &message : nullptr, trap_oid, &trap_oid_len, &status_);
    trap_ = name_of(trap_oid, trap_oid_len);
    std::vector<std::string> shown;
    for (const netsnmp_variable_list *at = bindings_; at != nullptr; at = at->next_variable) {
      shown.push_back(name_of(at->name, at->name_length) + " = " + shown_value(*at));
    }
    return shown;
  }

  netsnmp_variable_list *bindings_ = nullptr;
  int status_ = 7;
  std::string trap_;
};

TEST_F(Notifications, TellOfPortAndInterface) {
  message_holds({20, 7, 107, 5});
  EXPECT_THAT(deliver(stpbridge::handle_topology_change),
              ElementsAre("1.4.1.1.7 = INTEGER 7", "1.4.1.2.7 = INTEGER 107"));
  EXPECT_EQ(trap_, "0.2");
  EXPECT_EQ(status_, 1);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAre("xport_payload_get(message)",
                  "log(0x00730000, 101) \"handle_topology_change: tree 20, bridge port 7, interface 107\\n\"",
                  "build_varbind(NULL, 07000000, 2, .1.3.6.1.2.1.17.1.4.1.1.7)",
                  "build_varbind(list, 6b000000, 2, .1.3.6.1.2.1.17.1.4.1.2.7)"));
  EXPECT_THAT(deliver(stpbridge::handle_new_root),
              ElementsAre("1.4.1.1.7 = INTEGER 7", "1.4.1.2.7 = INTEGER 107"));
  EXPECT_EQ(trap_, "0.1");
  EXPECT_EQ(status_, 1);
}

TEST_F(Notifications, TellOfWhatIsKnown) {
  message_holds({20, 7, 0, 5});
  EXPECT_THAT(deliver(stpbridge::handle_topology_change), ElementsAre("1.4.1.1.7 = INTEGER 7"));
  EXPECT_EQ(status_, 1);
}

TEST_F(Notifications, AreSentWithoutBindings) {
  for (const std::vector<uint32_t> &words :
       std::vector<std::vector<uint32_t>>{{1, 0, 0, 5}, {1, 0, 107, 5}}) {
    message_holds(words);
    EXPECT_THAT(deliver(stpbridge::handle_new_root), IsEmpty());
    EXPECT_EQ(trap_, "0.1");
    EXPECT_EQ(status_, 1);
  }
}

TEST_F(Notifications, WithoutPayloadNothingIsSent) {
  for (const bool has_message : {true, false}) {
    for (const notification_handler handler :
         {stpbridge::handle_new_root, stpbridge::handle_topology_change}) {
      status_ = 7;
      EXPECT_THAT(deliver(handler, has_message), IsEmpty());
      EXPECT_EQ(status_, 0);
    }
  }
}

}  // namespace
