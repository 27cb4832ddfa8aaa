// A switch whose answers lead nowhere holds the agent no longer than one deadline.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <string>

#include "agent.h"
#include "connection.h"
#include "fake_switch.h"
#include "passing_time.h"
#include "platform/cmd.h"
#include "protocol_numbers.h"
#include "settings.h"
#include "stpsnmp/stp_extensions_mib.h"
#include "wire/attributes.h"
#include "wire/message.h"

namespace wire = stpplatform::wire;

namespace {

constexpr uint32_t kDeadlineMs = 2000;
constexpr uint32_t kReplyMs = 100;
constexpr uint32_t kMst = 4;

// As the first tree of the list under this key.
uint32_t tree_in(const Bytes &request) {
  constexpr size_t kTree = sizeof(wire::AttributeHead) + 2 * sizeof(uint32_t);  // behind two words
  size_t place = sizeof(wire::Request);
  while (get32(request, place) != protocol::kVlanTreeKey) {
    place += sizeof(wire::AttributeHead) + wire::padded(get32(request, place + sizeof(uint32_t)));
  }
  return get32(request, place + kTree);
}

class RogueSwitches : public testing::Test {
 protected:
  RogueSwitches() {
    agent::prepare();
    setenv("STPPLATFORM_SOCKET", switch_.path().c_str(), 1);
    setenv("STPPLATFORM_DEADLINE_MS", std::to_string(kDeadlineMs).c_str(), 1);
    stpplatform::read_settings();
    init_stp_extensions_mib();
  }
  ~RogueSwitches() override {
    deinit_stp_extensions_mib();
    stpplatform::connection().reset();
    unsetenv("STPPLATFORM_SOCKET");
    unsetenv("STPPLATFORM_DEADLINE_MS");
    stpplatform::read_settings();
  }

  FakeSwitch switch_;
};

// A search goes on in the next tree where behind the port-channels of one come its physical ports: as there
// are no such, it comes back to the port-channels.
TEST_F(RogueSwitches, DoNotSendASearchThroughAllTrees) {
  switch_.image().publish({{port_channel(1, {1})}});
  switch_.answer_with([](const Bytes &request) {
    pass_ms(kReplyMs);
    const uint32_t sequence = get32(request, offsetof(wire::MessageHeader, sequence));
    const uint32_t command = get32(request, offsetof(wire::Request, command));
    if (command == protocol::kGlobalSettings) {
      return Answer{{make_reply_packet(sequence, CMD_OK, {{protocol::kMode, bytes_of(kMst)}})}};
    }
    if (get32(request, offsetof(wire::Request, action)) == CMD_ACTION_GET) {
      return Answer{{make_reply_packet(sequence, CMD_NO_ENTRY)}};
    }
    return Answer{{make_reply_packet(sequence, CMD_OK,
                                     {{protocol::kInterface, bytes_of(physical_port(1).if_index)},
                                      {protocol::kPortTree, bytes_of(tree_in(request))},
                                      {protocol::kInconsistency, bytes_of(1)}})}};
  });
  const std::string answer = agent::get_next({"S.1.5.2.1.3"});
  EXPECT_FALSE(answer.starts_with("S.1.5.2.1.3")) << answer;
  const size_t questions = switch_.requests().size();
  EXPECT_GT(questions, kDeadlineMs / kReplyMs / 2) << "the search has gone through trees";
  EXPECT_LE(questions, kDeadlineMs / kReplyMs + 1);
  EXPECT_EQ(agent::get({"S.1.6.1.0"}), "S.1.6.1.0 = INTEGER: 4") << "the next request has all its time";
}

// The same in an image, where the agent asks itself: there are no more trees than an image has.
TEST_F(RogueSwitches, DoNotSendASearchThroughMoreTreesThanAnImageHas) {
  ImagePort no_bridge_port = physical_port(1);
  no_bridge_port.base_port = 0;
  ImageContent content{{port_channel(1, {1}), no_bridge_port}};
  content.mode = STP_MODE_MST;
  constexpr uint16_t kTrees = 500;  // for which the file has room
  for (uint16_t tree = 0; tree < kTrees; ++tree) {
    content.tree_ports.push_back(
        {tree, 1, STP_ROLE_DESIGNATED, wire::kRootInconsistent, STP_PORT_STATE_BLOCKING, 0, 0});
  }
  switch_.image().publish(content);
  switch_.want_to_be_asked(false);
  const std::string answer = agent::get_next({"S.1.5.2.1.3"});
  EXPECT_FALSE(answer.starts_with("S.1.5.2.1.3")) << answer;
  EXPECT_TRUE(switch_.requests().empty());
  EXPECT_EQ(agent::get({"S.1.6.1.0"}), "S.1.6.1.0 = INTEGER: 4");
}

}  // namespace
