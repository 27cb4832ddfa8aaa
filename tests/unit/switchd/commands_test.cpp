// Packets and their replies, octet by octet, with the plainest command.
#include "server/command_reply.h"

#include "support/command_test.h"
#include "support/octets.h"
#include "wire/attributes.h"

using namespace stpswitch;
namespace wire = stpplatform::wire;

namespace {

class Commands : public CommandTest {
 protected:
  // The status of a request in which one field is different.
  template <class Field>
  uint32_t refusal_with(size_t offset, Field value) const {
    Packet packet = good_request();
    put(&packet, offset, value);
    return refusal_of_packet(packet);
  }

  static Packet good_request() { return make_request({}); }
};

TEST_F(Commands, GlobalSettings) {
  EXPECT_EQ(reply_to({}), hex(octets("57505453 0100 0300 54000000 07000000 00000000 05000000"
                                     "01b00202 04000000 04000000"
                                     "0bb00214 04000000 01000000"
                                     "0cb00214 04000000 02000000"
                                     "1fa00202 04000000 01000000"
                                     "27900214 04000000 14000000")));
}

TEST_F(Commands, GlobalSettingsOfARapidPvstSwitch) {
  switch_.replace(load_scenario(SCENARIOS "/rapid-pvst-small.toml"));
  EXPECT_EQ(reply_to({}), hex(octets("57505453 0100 0300 54000000 07000000 00000000 05000000"
                                     "01b00202 04000000 05000000"
                                     "0bb00214 04000000 02000000"
                                     "0cb00214 04000000 02000000"
                                     "1fa00202 04000000 00000000"
                                     "27900214 04000000 14000000")));
}

TEST_F(Commands, IgnoreTheValueOfAKey) {
  Packet packet = good_request();
  put(&packet, sizeof(wire::Request) + sizeof(wire::AttributeHead), uint32_t{99});
  EXPECT_EQ(reply_to_packet(packet), reply_to({}));
}

TEST_F(Commands, GlobalSettingsHaveNoNextEntry) { EXPECT_EQ(refusal_of({104, kGetNext}), CMD_NO_ENTRY); }

TEST_F(Commands, GlobalSettingsTakeTheirKeyOnly) {
  EXPECT_EQ(refusal_of({104, 1, {}}), CMD_UNKNOWN_KEY);
  EXPECT_EQ(refusal_of({104, 1, {protocol::kMstDigestsKey}}), CMD_UNKNOWN_KEY);
  EXPECT_EQ(refusal_of({104, 1, {protocol::kGlobalSettingsKey, protocol::kGlobalSettingsKey}}),
            CMD_UNKNOWN_KEY);
  EXPECT_EQ(refusal_of({104, 1, {protocol::kGlobalSettingsKey, protocol::kMstDigestsKey}}), CMD_UNKNOWN_KEY);
}

TEST_F(Commands, RefuseUnknownNumbers) {
  EXPECT_EQ(refusal_of({0}), CMD_UNKNOWN_COMMAND);
  EXPECT_EQ(refusal_of({103}), CMD_UNKNOWN_COMMAND);
  EXPECT_EQ(refusal_of({0xFFFF'FFFF}), CMD_UNKNOWN_COMMAND);
}

TEST_F(Commands, RefuseListedUsersBeforeAnythingElseOfTheCommand) {
  EXPECT_EQ(refusal_of({104, 1, {protocol::kGlobalSettingsKey}, "guest"}), CMD_REFUSED);
  EXPECT_EQ(refusal_of({999, 1, {protocol::kMstDigestsKey}, "guest"}), CMD_REFUSED);
  EXPECT_EQ(refusal_of({104, 3, {}, "guest"}), CMD_REFUSED);
}

TEST_F(Commands, ServeUsersThatOnlyLookLikeListedOnes) {
  for (const char *const user : {"", "gues", "guest2", "Guest", " guest"}) {
    EXPECT_EQ(reply_to({104, 1, {protocol::kGlobalSettingsKey}, user}), reply_to({})) << user;
  }
}

TEST_F(Commands, KnowAUserNameOfFullLength) {
  const std::string longest(CMD_USER_MAX, 'u');
  SwitchState state = switch_.state();
  state.access.refused_users = {longest};
  switch_.replace(state);
  EXPECT_EQ(refusal_of({104, 1, {protocol::kGlobalSettingsKey}, longest}), CMD_REFUSED);
}

TEST_F(Commands, RefuseMalformedHeads) {
  EXPECT_EQ(refusal_with(offsetof(wire::MessageHeader, version), uint16_t{2}), CMD_BAD_REQUEST);
  EXPECT_EQ(refusal_with(offsetof(wire::MessageHeader, type), uint16_t{1}), CMD_BAD_REQUEST);
  EXPECT_EQ(refusal_with(offsetof(wire::MessageHeader, type), uint16_t{3}), CMD_BAD_REQUEST);
  EXPECT_EQ(refusal_with(offsetof(wire::MessageHeader, length), uint32_t{119}), CMD_BAD_REQUEST);
  EXPECT_EQ(refusal_with(offsetof(wire::MessageHeader, length), uint32_t{0xFFFF'FFFF}), CMD_BAD_REQUEST);
  EXPECT_EQ(refusal_with(offsetof(wire::Request, destination), uint32_t{0xFE00'0001}), CMD_BAD_REQUEST);
  EXPECT_EQ(refusal_with(offsetof(wire::Request, service), uint32_t{170}), CMD_BAD_REQUEST);
  EXPECT_EQ(refusal_with(offsetof(wire::Request, action), uint32_t{0}), CMD_BAD_REQUEST);
  EXPECT_EQ(refusal_with(offsetof(wire::Request, action), uint32_t{2}), CMD_BAD_REQUEST);
  EXPECT_EQ(refusal_with(offsetof(wire::Request, action), uint32_t{4}), CMD_BAD_REQUEST);
  EXPECT_EQ(refusal_with(offsetof(wire::Request, flags), uint32_t{1}), CMD_BAD_REQUEST);
}

TEST_F(Commands, RefuseAUserWithoutATerminator) {
  std::array<char, CMD_USER_MAX + 1> user;
  user.fill('u');
  EXPECT_EQ(refusal_with(offsetof(wire::Request, user), user), CMD_BAD_REQUEST);
}

TEST_F(Commands, RefuseAttributesThatDoNotAddUp) {
  EXPECT_EQ(refusal_with(offsetof(wire::Request, attribute_count), uint32_t{0}), CMD_BAD_REQUEST);
  EXPECT_EQ(refusal_with(offsetof(wire::Request, attribute_count), uint32_t{2}), CMD_BAD_REQUEST);
  EXPECT_EQ(refusal_with(offsetof(wire::Request, attribute_count), uint32_t{0xFFFF'FFFF}), CMD_BAD_REQUEST);
  constexpr size_t kToken = sizeof(wire::Request);
  constexpr size_t kLength = kToken + offsetof(wire::AttributeHead, length);
  EXPECT_EQ(refusal_with(kLength, uint32_t{3}), CMD_BAD_REQUEST);
  EXPECT_EQ(refusal_with(kLength, uint32_t{8}), CMD_BAD_REQUEST);
  EXPECT_EQ(refusal_with(kLength, uint32_t{0xFFFF'FFFD}), CMD_BAD_REQUEST);
  EXPECT_EQ(refusal_with(kToken, uint32_t{0x7F02'0227}), CMD_BAD_REQUEST);
}

TEST_F(Commands, RefuseARequestOfAnyShorterSize) {
  const Packet whole = good_request();
  for (size_t size = sizeof(wire::MessageHeader); size < whole.size(); ++size) {
    Packet cut(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size));
    EXPECT_EQ(refusal_of_packet(cut), CMD_BAD_REQUEST) << size;
    put(&cut, offsetof(wire::MessageHeader, length), static_cast<uint32_t>(size));
    EXPECT_EQ(refusal_of_packet(cut), CMD_BAD_REQUEST) << size;
  }
}

TEST_F(Commands, RefuseAPacketThatWasLongerThanWhatWasReceived) {
  const Packet packet = good_request();
  const auto reply = answer_packet(publisher_.view(), packet, packet.size() + 1);
  EXPECT_EQ(reply_head(reply.value()).status, CMD_BAD_REQUEST);
}

TEST_F(Commands, DoNotAnswerWithoutAReadableHead) {
  const Packet whole = good_request();
  for (size_t size = 0; size < sizeof(wire::MessageHeader); ++size) {
    EXPECT_EQ(reply_to_packet({whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size)}), "none") << size;
  }
  Packet strange = whole;
  put(&strange, offsetof(wire::MessageHeader, magic), uint32_t{0x5357'5450});
  EXPECT_EQ(reply_to_packet(strange), "none");
}

}  // namespace
