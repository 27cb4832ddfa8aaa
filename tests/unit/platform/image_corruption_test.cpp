// Images with any octets in them: an error or an answer, never a crash, a read beyond the image or a search
// without end. The sanitizers judge.
#include <fcntl.h>

#include <cstring>
#include <iterator>
#include <map>

#include "answers/answers.h"
#include "connection.h"
#include "image_reader.h"
#include "mutation.h"
#include "platform/im.h"
#include "platform/pcm.h"
#include "platform/stp.h"
#include "platform/vlan_mgr.h"
#include "platform_test.h"
#include "protocol_numbers.h"

namespace wire = stpplatform::wire;
using stpplatform::ImageReader;
using stpplatform::Reading;

namespace {

// Trees 1, 5 and 4095 over three ports, with an inconsistency of each kind.
ImageContent content(uint8_t mode) {
  ImageContent content{{port_channel(1, {1, 5, 4095}), physical_port(1, {1, 5}), physical_port(2, {4094})},
                       {mst_instance(0, {1}), mst_instance(5, {5}), mst_instance(64, {4094})}};
  content.mode = mode;
  content.refused_users = {"guest", "mallory"};
  content.disabled_vlans = {5};
  content.designated.resize(2);
  for (const uint16_t tree : std::initializer_list<uint16_t>{1, 5, 4095}) {
    for (const uint16_t interface : std::initializer_list<uint16_t>{0, 1}) {
      content.tree_ports.push_back(
          {tree, interface, STP_ROLE_DESIGNATED, static_cast<uint8_t>(1U << content.tree_ports.size() % 4),
           STP_PORT_STATE_BLOCKING, 0, static_cast<uint32_t>(content.tree_ports.size() % 3)});
    }
  }
  return content;
}

uint32_t below(Random *random, size_t limit) { return static_cast<uint32_t>((*random)() % limit); }

uint32_t odd_number(Random *random) {
  constexpr uint32_t kOdd[] = {0,      1,      2,       3,          4,          7,          8,         64,
                               0x7FFF, 0xFFFF, 0x10000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFF8, 0xFFFFFFFF};
  return below(random, 2) == 0 ? kOdd[below(random, std::size(kOdd))] : static_cast<uint32_t>((*random)());
}

// Mostly where there is something; rarely in the places of the tables, most of which make it no image at all.
size_t odd_place(Random *random, size_t slot_size) {
  constexpr size_t kTables = 512;
  switch (below(random, 8)) {
    case 0:
      return below(random, offsetof(ImageSlot, settings));
    case 1:
    case 2:
      return offsetof(ImageSlot, settings) + below(random, sizeof(ImageSlot) - offsetof(ImageSlot, settings));
    case 3:
      return sizeof(ImageSlot) + below(random, slot_size - sizeof(ImageSlot));
    default:
      return sizeof(ImageSlot) + below(random, kTables);
  }
}

void corrupt(std::vector<uint8_t> *slot, Random *random) {
  for (uint32_t times = 1 + below(random, 12); times > 0; --times) {
    const size_t place = odd_place(random, slot->size()) & ~size_t{3};
    const uint32_t number = odd_number(random);
    const size_t size = below(random, 2) == 0 ? 1 : sizeof number;
    std::memcpy(slot->data() + place, &number, size);
  }
}

// A request for anything, as a caller's buffer has it.
struct AnyRequest {
  wire::Request head;
  uint8_t attributes[256];
  uint32_t size;
};

void add_key(AnyRequest *request, uint32_t token, const void *value, uint32_t length) {
  request->size += static_cast<uint32_t>(wire::write_attribute(request->attributes + request->size,
                                                               sizeof request->attributes - request->size,
                                                               {token, length, value}));
  ++request->head.attribute_count;
}

uint32_t any_tree(Random *random) {
  constexpr uint32_t kTrees[] = {0, 1, 4, 5, 4094, 4095, 4096, UINT32_MAX};
  return kTrees[below(random, std::size(kTrees))];
}

uint32_t any_if_index(Random *random) {
  constexpr uint32_t kIndexes[] = {0, 0x16000001, 0x1A000000, 0x1A000001, 0x1A000002, 0x1A000003, UINT32_MAX};
  return kIndexes[below(random, std::size(kIndexes))];
}

AnyRequest any_request(Random *random) {
  AnyRequest request{};
  request.head.destination = protocol::kDestination;
  request.head.service = protocol::kService;
  request.head.command = protocol::kAllCommands[below(random, std::size(protocol::kAllCommands))];
  request.head.action = below(random, 2) == 0 ? CMD_ACTION_GET : CMD_ACTION_GET_NEXT;
  std::strcpy(request.head.user, below(random, 8) == 0 ? "guest" : "operator");
  const bool is_of_mst = below(random, 2) == 0;
  const uint32_t keys = below(random, 4);
  if ((keys & 1) != 0) {
    const uint32_t tree = any_tree(random);
    const uint32_t list[4] = {0, 1, tree, tree};
    add_key(&request, is_of_mst ? protocol::kMstTreeKey : protocol::kVlanTreeKey, list, sizeof list);
  }
  if ((keys & 2) != 0) {
    const uint32_t if_index = any_if_index(random);
    add_key(&request,
            is_of_mst && below(random, 4) != 0 ? protocol::kMstInterfaceKey : protocol::kInterfaceKey,
            &if_index, sizeof if_index);
  }
  if (request.head.command == protocol::kBridgePorts && (keys & 2) == 0) {
    constexpr uint32_t kNumbers[] = {0, 129, 130, 4097, 65535, UINT32_MAX};
    const uint32_t number = kNumbers[below(random, std::size(kNumbers))];
    add_key(&request, protocol::kBridgePortKey, &number, sizeof number);
  }
  if (keys == 0 && below(random, 2) == 0) {
    const uint32_t nothing = 0;
    add_key(&request, protocol::kGlobalSettingsKey, &nothing, sizeof nothing);
  }
  return request;
}

bool is_well_formed(const stpplatform::answers::Answer &answer) {
  return wire::attributes_are_well_formed(answer.attributes(), answer.size(), answer.attribute_count());
}

// Memory of its own for each slot, which ends where the slot does: the sanitizers see what is read behind it.
TEST(CorruptedImages, AreNotReadBeyondTheirEnd) {
  constexpr int kRounds = 1000;
  constexpr int kQuestions = 15;
  Random random = seeded(17);
  int answered = 0;
  for (const uint8_t mode : {uint8_t{STP_MODE_RAPID_PVST}, uint8_t{STP_MODE_MST}}) {
    const std::vector<uint8_t> good = lay_out(content(mode));
    for (int round = 0; round < kRounds; ++round) {
      std::vector<uint8_t> slot(good.begin(), good.end());
      corrupt(&slot, &random);
      const stpplatform::answers::Image image(reinterpret_cast<const ImageSlot *>(slot.data()), slot.size());
      for (int i = 0; i < kQuestions; ++i) {
        const AnyRequest request = any_request(&random);
        stpplatform::answers::Answer answer;
        const cmd_result result = stpplatform::answers::answer_request(
            image, request.head, request.attributes, request.size, &answer);
        ASSERT_TRUE(is_well_formed(answer));
        answered += result == CMD_OK ? 1 : 0;
      }
    }
  }
  EXPECT_GT(answered, 500);
}

// The same in shared memory, as the agent reads it.
TEST(CorruptedImages, AnswerOrFail) {
  constexpr int kRounds = 2000;
  constexpr int kQuestions = 15;
  Random random = seeded(15);
  const StoppedClock clock;
  ImageReader reader;
  std::map<cmd_result, int> results;
  for (const uint8_t mode : {uint8_t{STP_MODE_RAPID_PVST}, uint8_t{STP_MODE_MST}}) {
    const std::vector<uint8_t> good = lay_out(content(mode));
    // No room behind the tables.
    const ImageFile file(static_cast<uint32_t>(good.size()));
    file.seal(F_SEAL_SHRINK | F_SEAL_GROW);
    file.renew_lease();
    ASSERT_EQ(reader.map(file.descriptor(), file.size()), nullptr);
    for (int round = 0; round < kRounds; ++round) {
      std::vector<uint8_t> slot = good;
      corrupt(&slot, &random);
      file.publish(slot);
      for (int i = 0; i < kQuestions; ++i) {
        const AnyRequest request = any_request(&random);
        cmd_result result = CMD_OK;
        stpplatform::answers::Answer answer;
        const Reading reading = reader.read(
            wire::kMoved, stpplatform::Vouching::kNow,
            [&](const stpplatform::answers::Image &image) {
              answer.clear();
              return stpplatform::answers::answer_request(image, request.head, request.attributes,
                                                          request.size, &answer);
            },
            &result);
        ASSERT_TRUE(reading == Reading::kCounts || reading == Reading::kUnsound);
        ASSERT_EQ(reading == Reading::kUnsound, result == CMD_BAD_REPLY);
        ASSERT_TRUE(is_well_formed(answer));
        ++results[result];
      }
    }
  }
  reader.unmap();
  for (const cmd_result result : {CMD_OK, CMD_BAD_REPLY, CMD_NO_ENTRY, CMD_UNKNOWN_KEY, CMD_REFUSED}) {
    EXPECT_GT(results[result], 500) << result;
  }
}

class CorruptedSwitches : public PlatformTest {
 protected:
  static void ask_managers(Random *random) {
    const uint32_t if_index = any_if_index(random);
    uint32_t next = 0;
    uint16_t port = 0;
    pcm_port_channel record;
    im_oper_status_entry entry{};
    entry.if_index = if_index;
    stp_vlan_bmp vlans{STP_VLAN_BITMAP_SIZE, {}};
    add_vlan(vlans.bits, static_cast<uint16_t>(any_tree(random) % 4096));
    im_get_next_ifindex(if_index, &next);
    im_get_ifindex_oper_status_list(&entry, 1);
    check_if_valid_base_port_ifindex(if_index, BASE_PORT_ACTIVE);
    pcm_get_pc_for_port(if_index, &record);
    stp_ifindex2dot1dportnum(if_index, &port);
    stp_dot1dportnum2ifindex(static_cast<uint16_t>(odd_number(random)), &next);
    std::free(vlan_mgr_get_baseport_membership_range(&vlans));
    stp_dot1d_bridgemib_get_mst_ctx(static_cast<uint16_t>(any_tree(random)), &vlans);
    for (const uint32_t command : {protocol::kMstRegion, 1U}) {
      const int result = ask(command);
      EXPECT_TRUE(result == CMD_OK || result == CMD_BAD_REPLY || result == CMD_UNREACHABLE ||
                  result == CMD_TIMEOUT || result == CMD_UNKNOWN_COMMAND || result == CMD_BAD_REQUEST)
          << result;
    }
  }
};

TEST_F(CorruptedSwitches, DoNotHurtTheAgent) {
  constexpr int kRounds = 500;
  Random random = seeded(16);
  const std::vector<uint8_t> good = lay_out(content(STP_MODE_MST));
  const ImageFile file(static_cast<uint32_t>(good.size()));
  file.seal(F_SEAL_SHRINK | F_SEAL_GROW);
  switch_.hand_out(file);
  const std::vector<uint8_t> good_head(reinterpret_cast<uint8_t *>(file.head()),
                                       reinterpret_cast<uint8_t *>(file.head()) + sizeof(ImageHead));
  for (int round = 0; round < kRounds; ++round) {
    std::vector<uint8_t> slot = good;
    corrupt(&slot, &random);
    file.publish(slot);
    file.renew_lease();
    ask_managers(&random);
    // And with another head.
    auto *head = reinterpret_cast<uint8_t *>(file.head());
    const uint32_t number = odd_number(&random);
    const size_t place = below(&random, sizeof(ImageHead) / sizeof number) * sizeof number;
    std::memcpy(head + place, &number, sizeof number);
    ask_managers(&random);
    if (below(&random, 2) == 0) {
      stpplatform::connection().reset();
    }
    wait_for_backoff();
    ask_managers(&random);
    std::memcpy(head, good_head.data(), good_head.size());
    wait_for_backoff();
  }
  stpplatform::connection().reset();
  LogCapture::take();
  switch_.hand_out(switch_.image());
  EXPECT_TRUE(switch_answers());
}

}  // namespace
