// What is answered from an image that contradicts itself in one place, and where an answer has no room.
#include "answers/answers.h"

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "image_file.h"
#include "protocol_numbers.h"

namespace answers = stpplatform::answers;
namespace wire = stpplatform::wire;

namespace {

struct Key {
  uint32_t token;
  std::vector<uint32_t> value;
};

Key tree(uint32_t id) { return {protocol::kVlanTreeKey, {0, 1, id, id}}; }
Key bridge_port(uint32_t number) { return {protocol::kBridgePortKey, {number}}; }

ImageTreePort port_of_tree_1(uint16_t interface) {
  ImageTreePort port{};
  port.tree = 1;
  port.interface = interface;
  return port;
}

// Port-channel 1 and port 2 are of tree 1, port 1 of none.
class Answers : public testing::Test {
 protected:
  Answers()
      : octets_(lay_out({.interfaces = {port_channel(1, {1}), physical_port(1), physical_port(2, {1})},
                         .tree_ports = {port_of_tree_1(0), port_of_tree_1(2)},
                         .refused_users = {"guest"}})) {}

  ImageSlot &slot() { return *reinterpret_cast<ImageSlot *>(octets_.data()); }

  // The first record of a table.
  template <class Record>
  Record *records(const wire::ImageTable &table) {
    return reinterpret_cast<Record *>(octets_.data() + table.offset);
  }

  answers::Image image() { return {&slot(), octets_.size()}; }

  cmd_result ask(uint32_t command, std::initializer_list<Key> keys, const std::string &user = "operator",
                 cmd_action action = CMD_ACTION_GET) {
    wire::Request request{};
    request.destination = protocol::kDestination;
    request.service = protocol::kService;
    request.command = command;
    request.action = action;
    user.copy(request.user, sizeof request.user);
    uint8_t attributes[64];
    size_t size = 0;
    for (const Key &key : keys) {
      const auto length = static_cast<uint32_t>(key.value.size() * sizeof key.value[0]);
      size += wire::write_attribute(attributes + size, sizeof attributes - size,
                                    {key.token, length, key.value.data()});
      ++request.attribute_count;
    }
    answers::Answer answer;
    return answers::answer_request(image(), request, attributes, size, &answer);
  }

  std::vector<uint8_t> octets_;
};

TEST_F(Answers, AreGivenWhereNothingContradicts) {
  EXPECT_EQ(ask(protocol::kBridgeTrees, {tree(1)}), CMD_OK);
  EXPECT_EQ(ask(protocol::kBridgePorts, {tree(1), bridge_port(130)}), CMD_OK);
  EXPECT_EQ(ask(protocol::kBridgePorts, {tree(1), bridge_port(4097)}), CMD_OK);
  EXPECT_EQ(ask(protocol::kBridgePorts, {tree(1), bridge_port(129)}), CMD_NO_ENTRY);
  EXPECT_EQ(ask(protocol::kMstRegion, {}), CMD_OK);
  EXPECT_EQ(ask(protocol::kMstRegion, {}, "guest"), CMD_REFUSED);
}

TEST_F(Answers, NeedEachTableWithinTheSlot) {
  const std::vector<uint8_t> whole = octets_;
  for (size_t i = 0; i < wire::kSlotTables; ++i) {
    for (const wire::ImageTable wrong : {wire::ImageTable{0, UINT32_MAX}, {UINT32_MAX - 7, 0}, {4, 0}}) {
      octets_ = whole;
      reinterpret_cast<wire::ImageTable *>(octets_.data())[i] = wrong;
      EXPECT_FALSE(image().is_sound()) << "table " << i;
    }
  }
}

TEST_F(Answers, NeedAsManyRecordsOfBridgePortsAsInterfaces) {
  for (const uint32_t count : {0U, 2U, 4U}) {
    slot().bridge_ports.count = count;
    EXPECT_FALSE(image().is_sound()) << count;
    EXPECT_EQ(ask(protocol::kMstRegion, {}), CMD_BAD_REPLY) << count;
  }
}

TEST_F(Answers, NeedPortsOfATreeThatEndBehindTheirBeginningAndWithinTheTable) {
  slot().first_tree_port[1] = 3;
  const auto expect_bad_replies = [this] {
    EXPECT_EQ(ask(protocol::kBridgeTrees, {tree(1)}), CMD_BAD_REPLY);
    EXPECT_EQ(ask(protocol::kBridgePorts, {tree(1), bridge_port(130)}), CMD_BAD_REPLY);
    EXPECT_EQ(ask(protocol::kRapidPvstPorts, {tree(1), {protocol::kInterfaceKey, {0x1A000002}}}),
              CMD_BAD_REPLY);
  };
  expect_bad_replies();
  slot().first_tree_port[1] = 0;
  slot().first_tree_port[2] = 3;
  expect_bad_replies();
}

TEST_F(Answers, NeedTheOrderByNumberToNamePortsOfTheTree) {
  auto *const by_number = records<uint16_t>(slot().by_number);
  ASSERT_EQ(by_number[0], 2) << "port 2 before the port-channel";
  by_number[0] = 1;
  EXPECT_EQ(ask(protocol::kBridgePorts, {tree(1), bridge_port(129)}), CMD_BAD_REPLY);
  EXPECT_EQ(ask(protocol::kBridgePorts, {tree(1), bridge_port(0)}, "operator", CMD_ACTION_GET_NEXT),
            CMD_BAD_REPLY);
  EXPECT_EQ(ask(protocol::kBridgePorts, {tree(1), bridge_port(4097)}), CMD_OK);
}

TEST_F(Answers, NeedARegionNameThatFits) {
  slot().settings.has_region_name = 1;
  slot().settings.region_name_length = 32;
  EXPECT_EQ(ask(protocol::kMstRegion, {}), CMD_OK);
  slot().settings.region_name_length = 33;
  EXPECT_EQ(ask(protocol::kMstRegion, {}), CMD_BAD_REPLY);
}

TEST_F(Answers, AreRefusedToNobodyByANameWithoutAnEnd) {
  const std::string endless(sizeof(wire::ImageUser), 'x');
  endless.copy(records<wire::ImageUser>(slot().refused_users)->name, endless.size());
  EXPECT_EQ(ask(protocol::kMstRegion, {}, endless), CMD_OK);
}

TEST_F(Answers, KnowNoTreeThatCannotBe) {
  std::memset(slot().running_trees, 0xFF, sizeof slot().running_trees);
  EXPECT_TRUE(image().runs_tree(4095));
  EXPECT_FALSE(image().runs_tree(4096));
  EXPECT_FALSE(image().runs_tree(UINT32_MAX));
}

TEST(AnAnswer, LeavesOutWhatItHasNoRoomFor) {
  answers::Answer answer;
  const uint8_t octets[answers::Answer::kMaxSize + 1] = {};
  answer.add_octets(STP_ATTRIBUTE_MST_REGION_NAME, octets, sizeof octets);
  EXPECT_EQ(answer.attribute_count(), 0U) << "longer than any";
  answer.add_octets(STP_ATTRIBUTE_MST_REGION_NAME, octets, answers::Answer::kMaxSize);
  EXPECT_EQ(answer.attribute_count(), 0U) << "no room for its head";
  answer.add_octets(STP_ATTRIBUTE_MST_REGION_NAME, octets, answers::Answer::kMaxSize - 8);
  EXPECT_EQ(answer.attribute_count(), 1U);
  EXPECT_EQ(answer.size(), 384U);
  answer.add_number(STP_ATTRIBUTE_MODE, STP_MODE_MST);
  EXPECT_EQ(answer.attribute_count(), 1U);
  EXPECT_EQ(answer.size(), 384U);
}

}  // namespace
